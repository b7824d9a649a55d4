// Calls: the instruction, and the records by which they meet their definitions at the end.

#include "backend/instructions/opcode.h"
#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"
#include "core/text_length.h"

#include <utility>

// Null when no call of the name, in any case, has been recorded.
Function_Resolution_Info* CompilerParser::Find_Called(const char* name, int length) {
    if (const int number = recent_calls.Find(name, length); number != -1)
        return referenced_functions.Record(number);
    Function_Resolution_Info* called = called_functions.Find(name, length);
    if (called && called->name == View(name, length))
        recent_calls.Keep(name, length, called->number);
    return called;
}

void CompilerParser::Open_Call(const char* name, int length) {
    Pending_Call& call = open_calls.emplace_back();
    call.line = Linenumber();
    call.function = Find_Called(name, length);
    if (!call.function || call.function->name != View(name, length)) {
        call.spelling.reset(new Function_Resolution_Info(call.line, name, length, Source_Name()));
        call.function = call.spelling.get();
    }
}

// The callee has its own position: behind the call the caller's is restored. A call in code that goes nowhere
// leaves no record, nor does one in the text of a filter, where nothing is resolved.
ParserStatus CompilerParser::Output_Pending_Call() {
    if (open_calls.empty())
        return Report<Message::Internal_Call_Without_Function>();
    Pending_Call call = std::move(open_calls.back());
    open_calls.pop_back();
    if (!Generating())
        return PARSER_OK;
    const ParserStatus status = application ? Record_Call(call) : PARSER_OK;
    const std::string& name = call.function->name;
    opcode_queue->Queue_Opcode(OPCODE_CALL, name.data(), Length_Of(name), 1);
    Queue_Source_File();
    Queue(OPCODE_LINENO, Linenumber());
    return status;
}

ParserStatus CompilerParser::Record_Call(Pending_Call& call) {
    if (call.spelling)
        Record_Spelling(call);
    call_list.push_back({call.function, Source_Name(), call.line, call.parameters});
    const Function_Resolution_Info* first = call.function->First();
    if (first->line == -1 || first->parameters == call.parameters)
        return PARSER_OK;
    return Report<Message::Function_Called_Differently>(call.function->name, call.parameters,
                                                        first->parameters, first->line);
}

// The name may have been called meanwhile, among the arguments.
void CompilerParser::Record_Spelling(Pending_Call& call) {
    call.spelling->parameters = call.parameters;
    Function_Resolution_Info* first = called_functions.Find_Or_Insert(call.spelling.get());
    if (first != call.spelling.get()) {
        if (first->name == call.spelling->name) {
            call.function = first;
            return;
        }
        call.spelling->first = first;
    }
    referenced_functions.Keep(call.spelling.release());
}

void CompilerParser::Output_Call(const char* name, int length, int parameters, int lower) {
    if (!Find_Called(name, length)) {
        auto* call = new Function_Resolution_Info(Linenumber(), name, length, Source_Name());
        referenced_functions.Keep(call);
        call->parameters = parameters;
        call_list.push_back({call, call->file, call->line, parameters});
        called_functions.Insert(call);
    }
    opcode_queue->Queue_Opcode(OPCODE_CALL, name, length, lower);
}
