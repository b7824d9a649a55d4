// Variables: names become numbers, each table counting its own, and the compiler makes variables of its own.

#include "backend/instructions/opcode.h"
#include "compiler/generator/compiler_parser.h"
#include "core/integer_text.h"
#include "core/text_length.h"

HashTable<Variable>* CompilerParser::Variables_Of(Variable_Scope scope) const {
    switch (scope) {
    case SCOPE_LOCAL: return local_variables;
    case SCOPE_GLOBAL: return global_variables;
    case SCOPE_SYSTEM: return system_variables;
    default: return nullptr;
    }
}

int CompilerParser::Find_Variable_Ident(const char* name, int length, Variable_Scope scope) {
    if (scope != SCOPE_GLOBAL)
        return Find_In_Table(name, length, scope);
    int ident = recent_globals.Find(name, length);
    if (ident == -1) {
        ident = Find_In_Table(name, length, scope);
        if (Generating())
            recent_globals.Keep(name, length, ident);
    }
    return ident;
}

int CompilerParser::Find_In_Table(const char* name, int length, Variable_Scope scope) {
    HashTable<Variable>* table = Variables_Of(scope);
    if (!table)
        return Generate_String_Directive(name, length, EXPRESSION_STATE_ESCAPED);
    if (Variable* known = table->Find(name, length))
        return known->value_integer();
    if (!Generating())
        return 0;
    const int ident = table->Entries();
    table->Insert(new Variable(name, length, ident));
    Output_Variable_Directive(saved_output, name, length, ident, scope);
    return ident;
}

// The name holds the digest of the source file, so code of two files never shares such a variable.
int CompilerParser::Find_ScratchVariable_Ident(const char* base, int number) {
    if (!Generating())
        return 0;
    std::string& name = scratch_name;
    name.assign("__scratch:").append(base).append(1, '_').append(Integer_Text(number).view());
    name.append(1, ':').append(file_ident, sizeof file_ident);
    const int length = Length_Of(name);
    if (Variable* known = scratch_variables->Find(name.data(), length))
        return known->value_integer();
    const int ident = local_variables->Entries();
    auto* variable = new Variable(name.data(), length, ident);
    local_variables->Insert(variable);
    scratch_variables->Insert(variable);
    Output_Variable_Directive(saved_output, name.data(), length, ident, SCOPE_LOCAL);
    return ident;
}

String CompilerParser::ScratchVariable_Ident() {
    return String(file_ident, sizeof file_ident);
}

ParserStatus CompilerParser::Expression_Variable(const char* name, int length, Variable_Scope scope,
                                                 const char* alias, int alias_length, const char* full_text,
                                                 int full_length) {
    Count_Value();
    if (scope == SCOPE_DATABASE && alias_length == 0) {
        Queue(OPCODE_PUSHNC, Generate_String_Directive(full_text, full_length, EXPRESSION_STATE_ESCAPED));
        return PARSER_OK;
    }
    const int ident = Find_Variable_Ident(name, length, scope);
    switch (scope) {
    case SCOPE_LOCAL: Queue(OPCODE_PUSHL, ident); return PARSER_OK;
    case SCOPE_GLOBAL: Queue(OPCODE_PUSHG, ident); return PARSER_OK;
    case SCOPE_SYSTEM: Queue(OPCODE_PUSHS, ident); return PARSER_OK;
    case SCOPE_DATABASE:
        Queue(OPCODE_PUSHDC, Generate_String_Directive(alias, alias_length, EXPRESSION_STATE_ESCAPED), ident);
        return PARSER_OK;
    case SCOPE_LOCAL_BY_NAME: return PARSER_ERROR; // never comes out of the text of an expression
    case SCOPE_UNSCOPED: Queue(OPCODE_PUSHNC, ident); return PARSER_OK;
    }
    return PARSER_OK;
}
