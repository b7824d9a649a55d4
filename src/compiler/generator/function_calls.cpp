// Calls: the instruction, and the records by which they meet their definitions at the end.

#include "backend/instructions/opcode.h"
#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"

#include <memory>

Function_Resolution_Info* CompilerParser::New_Call(const char* name, int length) {
    return new Function_Resolution_Info(Linenumber(), name, length, Shared_File(),
                                        called_functions.Find(name, length));
}

// The callee has its own position: behind the call the caller's is restored. A call in code that goes nowhere
// leaves no record, nor does one in the text of a filter, where nothing is resolved.
ParserStatus CompilerParser::Output_Pending_Call() {
    if (!open_calls.Top())
        return Report<Message::Internal_Call_Without_Function>();
    std::unique_ptr<Function_Resolution_Info> call(open_calls.Pop());
    if (!Generating())
        return PARSER_OK;
    const ParserStatus status = application ? Record_Call(call.get()) : PARSER_OK;
    opcode_queue->Queue_Opcode(OPCODE_CALL, call->Name().text(), call->Name().length(), 1);
    Queue_Source_File();
    Queue(OPCODE_LINENO, Linenumber());
    if (application) {
        call_list.Insert(call.get(), LIST_LAST);
        referenced_functions.Insert(call.release());
    }
    return status;
}

ParserStatus CompilerParser::Record_Call(Function_Resolution_Info* call) {
    if (!call->first) {
        Function_Resolution_Info* first = called_functions.Find_Or_Insert(call);
        if (first == call)
            return PARSER_OK;
        call->first = first;
    }
    const Function_Resolution_Info* first = call->first;
    if (first->line == -1 || first->parameters == call->parameters)
        return PARSER_OK;
    return Report<Message::Function_Called_Differently>(call->Name(), call->parameters, first->parameters,
                                                        first->line);
}

void CompilerParser::Output_Call(const char* name, int length, int parameters, int lower) {
    if (!called_functions.Find(name, length)) {
        Function_Resolution_Info* call = New_Call(name, length);
        call->parameters = parameters;
        call_list.Insert(call, LIST_LAST);
        called_functions.Insert(call);
        referenced_functions.Insert(call);
    }
    opcode_queue->Queue_Opcode(OPCODE_CALL, name, length, lower);
}
