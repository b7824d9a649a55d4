// Where calls meet definitions: nothing is resolved before the end of the last file, since a definition may
// follow its calls.

#include "compiler/generator/compiler_parser.h"
#include "core/text_length.h"
#include "extension/external_call.h"
#include "extension/external_function.h"

#include <string>

namespace {

ExternalCall* Find_External(ExternalCallManager* manager, const std::string& name) {
    return manager ? manager->Lookup_External(name.data(), Length_Of(name)) : nullptr;
}

} // namespace

// Looked up once for all calls of a function.
const Function_Resolution_Info* CompilerParser::Definition_Of(Function_Resolution_Info* call) {
    Function_Resolution_Info* first = call->First();
    if (!first->definition)
        first->definition = defined_functions.Find(first->name.data(), Length_Of(first->name));
    return first->definition;
}

// Calls are checked in source order. A later call of an undefined function is checked against the count that
// the record before it left behind. Counts are compared as long as nothing is wrong, and from the first
// mismatch on to the end. When the first fault is another one, of the file or an undefined function, no count
// is compared behind it.
ParserStatus CompilerParser::Resolve_Calls(ParserStatus status) {
    int expected = 0;
    bool mismatched = false;
    for (const Function_Call& call : call_list) {
        const std::string& name = call.function->name;
        if (const Function_Resolution_Info* definition = Definition_Of(call.function)) {
            expected = definition->parameters;
        } else if (const ExternalCall* external = Find_External(external_calls, name)) {
            expected = external->record->parameter_count;
        } else if (!unresolved_functions.Find(name.data(), Length_Of(name))) {
            expected = call.parameters;
            status = Declare_Unresolved_Function(call);
        }
        if (status != PARSER_OK && !mismatched)
            continue;
        if (call.parameters != expected) {
            mismatched = true;
            status =
                Report_At<Message::Function_Arity>(call.line, call.file, name, expected, call.parameters);
        }
    }
    return status;
}

// The stub of an undefined function numbers its parameters from 1.
ParserStatus CompilerParser::Declare_Unresolved_Function(const Function_Call& call) {
    const std::string& called = call.function->name;
    unresolved_functions.Insert(call.function);
    Generate_Function_Directive(called.data(), Length_Of(called), FUNCTION_UNRESOLVED, -1, -1, ACCESS_UNSET);
    for (int number = 1; number <= call.parameters; ++number) {
        const std::string name = "param" + std::to_string(number);
        Output_Parameter_Directive(name.data(), Length_Of(name), number, 1);
    }
    Output_End_Function_Directive();
    return Report_At<Message::Function_Undefined>(call.line, call.file, called);
}

// Walks what was called, calls that stand only in filters included.
void CompilerParser::Declare_External_Functions() {
    for (Function_Resolution_Info* call = called_functions.First(); call; call = called_functions.Next()) {
        if (Definition_Of(call))
            continue;
        const std::string& name = call->name;
        const ExternalCall* external = Find_External(external_calls, name);
        if (!external)
            continue;
        Generate_Function_Directive(name.data(), Length_Of(name), FUNCTION_EXTERNAL, -1, -1, ACCESS_UNSET);
        int index = 0;
        for (const _TN_EL_Parameter& parameter : Parameters_Of(*external->record)) {
            const bool by_value = !(parameter.flags & TN_BY_REFERENCE);
            Output_Parameter_Directive(parameter.name, parameter.name_length, index++, by_value);
        }
        Output_End_Function_Directive();
    }
}

// A body that is compiled here begins with its own source file.
void CompilerParser::Generate_Function_Directive(const char* name, int length, int kind, int stdout_level,
                                                 int error_level, int access) {
    Output_Function_Directive(name, length, kind, stdout_level, error_level, access);
    if (!(kind & FUNCTION_EXTERNAL))
        (void)Start_Of_File(); // can't fail
}
