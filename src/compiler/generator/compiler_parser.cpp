// The generator's own life, its tables, and the start and end of expressions.

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
      saved_function_flags(0), saved_localized_flags(3), localized_text_flags(3), localized_text_count(0),
      saved_capture_flags(-1), output_flags(3), tag_error_code(0), conditional_operators(0),
      subexpressions(1), current_tag(-1), tag_name(nullptr), current_attribute(0),
      localized_ids(1, 1, table_bucket_bits, table_initial_slots), localized_sequence(0),
      localized_text(nullptr), local_variables(locals), global_variables(globals), system_variables(system),
      function_variables(1, 1, table_bucket_bits, table_initial_slots),
      scratch_variables(&file_scratch_variables),
      file_scratch_variables(0, 1, table_bucket_bits, table_initial_slots),
      function_scratch_variables(0, 1, table_bucket_bits, table_initial_slots), next_string_ident(0),
      priority_bias(0), operators(1), referenced_functions(1, 1, table_bucket_bits, table_initial_slots),
      called_functions(0, 1, table_bucket_bits, table_initial_slots),
      unresolved_functions(0, 1, table_bucket_bits, table_initial_slots),
      defined_functions(1, 1, table_bucket_bits, table_initial_slots), open_calls(1), call_list(0),
      next_label(1), while_stack(1), if_stack(1), ifdef_stack(1), import_stack(1), commerce_stack(1),
      pop_stack(1), lockfile_stack(1), call_stack(1), foreach_stack(1), for_stack(1), capture_stack(1),
      async_depth(0), async_block(nullptr), smtp_block(nullptr), last_lineno(0), lineno_forced(0),
      saved_output(nullptr), suspended_output(nullptr),
      attribute_values(new AttributeValueArray(this, 15, 10)), array_kind(ARRAY_NONE), array_count(0),
      array_values(nullptr), expression_type(ATTREXPR_VALUE), interpret_expressions(1),
      filter_parser(nullptr), owns_globals(0), owns_system(0), opcode_queue(new OpcodeQueueOutput(this)),
      include_interpret(1), byte_constants() {
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
    delete filter_parser;
    delete array_values;
    delete attribute_values;
    delete smtp_block;
    delete async_block;
    delete localized_text;
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

QueuedOpcode* CompilerParser::Output_Run(QueuedOpcode* first) {
    first->Output(this);
    return first->next;
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
