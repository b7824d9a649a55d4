// The generator's own life, its output and its queue, and what sources of all subjects ask for.

#include "compiler/generator/compiler_parser.h"

#include "app/driver/compiler_application.h"
#include "backend/instructions/engine_version.h"
#include "backend/instructions/opcode.h"
#include "backend/outputs/compiler_output.h"
#include "backend/queue/opcode_queue.h"
#include "compiler/generator/filter_parser.h"

#include <algorithm>

CompilerParser::CompilerParser(Tokenizer* tokenizer, ExternalCallManager* external_calls,
                               CompilerApplication* application, int function_stdout_default,
                               int function_access_default, ParserStartState start_state,
                               HashTable<Variable>* locals, HashTable<Variable>* globals,
                               HashTable<Variable>* system)
    : Parser(tokenizer, application, start_state), external_calls(external_calls),
      function_stdout_default(function_stdout_default), function_access_default(function_access_default),
      local_variables(locals), global_variables(globals), system_variables(system),
      attribute_values(std::make_unique<AttributeValueArray>(this, 15, 10)),
      opcode_queue(new OpcodeQueueOutput(this)) {
    if (!global_variables) {
        global_variables = new HashTable<Variable>(1, 1, table_bucket_bits, table_initial_slots);
        owns_globals = 1;
    }
    if (!system_variables) {
        system_variables = new HashTable<Variable>(1, 1, table_bucket_bits, table_initial_slots);
        owns_system = 1;
    }
    if (!local_variables)
        local_variables = global_variables;
    std::fill(std::begin(file_ident), std::end(file_ident), '0');
}

CompilerParser::~CompilerParser() {
    delete opcode_queue;
    if (owns_system)
        delete system_variables;
    if (owns_globals)
        delete global_variables;
}

void CompilerParser::Reset_Output() {
    if (saved_output) {
        (void)Set_Output(saved_output); // the fragment belongs to its attribute value
        saved_output = nullptr;
    }
}

void CompilerParser::Set_Output_Flags(int flags) {
    output_flags = flags;
    Parser::Set_Output_Flags(flags);
}

OpcodeQueue* CompilerParser::Opcode_Queue() {
    return opcode_queue;
}

// The queue is replaced ahead of its flush: what is replayed forces line numbers, which go out through
// opcode_queue and must not be queued again.
void CompilerParser::Flush_Opcode_Queue() {
    OpcodeQueue* complete = opcode_queue;
    opcode_queue = OpcodeQueue::Replace(complete, OPCODE_QUEUE_OUTPUT);
    complete->Flush();
}

QueuedOpcode* CompilerParser::Output_Run(QueuedOpcode* first, const QueuedOpcode*) {
    first->Output(this);
    return first->Next();
}

void CompilerParser::Expect_Code(std::size_t) {
}

void CompilerParser::Output_Pushed_Constant(int ident, int opcode) {
    Output_Opcode(OPCODE_PUSHC, ident, 0);
    Output_Opcode(opcode, 0, 0);
}

void CompilerParser::Queue(int opcode, int first, int second) {
    opcode_queue->Queue_Opcode(opcode, first, second);
}

void CompilerParser::Last_File() {
}

double CompilerParser::Engine_Version() const {
    return application ? application->engine_version : newest_engine_version;
}

String CompilerParser::Engine_Version_Text() const {
    return String("", 0) + Engine_Version();
}

void CompilerParser::Set_Default(AttributeValue* value, std::string_view text) {
    if (!value->Is_Set())
        (void)value->Set_Literal(Constant(text), ATTREXPR_VALUE); // an unset value takes it
}

ParserStatus CompilerParser::Report_Stored_Error(const AttributeValue& value) {
    return CompileError(value.error_code, value.error_message, -1, nullptr);
}
