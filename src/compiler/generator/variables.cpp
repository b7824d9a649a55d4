// Variables: names become numbers, each table counting its own, and the compiler makes variables of its own.

#include "backend/instructions/opcode.h"
#include "compiler/generator/compiler_parser.h"
#include "core/integer_text.h"
#include "core/text_length.h"

#include <algorithm>
#include <cstring>

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
    const int next = table->Entries();
    Variable* variable = table->Find_Or_Make(
        name, length, [&] { return Generating() ? new Variable(name, length, next) : nullptr; });
    const int ident = variable ? variable->value_integer() : 0;
    if (table->Entries() != next)
        Output_Variable_Directive(saved_output, name, length, ident, scope);
    return ident;
}

// Code of two files never shares such a variable.
int CompilerParser::Find_ScratchVariable_Ident(const char* base, int number) {
    if (!Generating())
        return 0;
    const std::string_view key = Scratch_Key(base, number);
    const int next = local_variables->Entries();
    const int ident = scratch_variables->Number_Of(key, next);
    if (ident == next)
        Make_Scratch_Variable(base, number, ident);
    return ident;
}

// Short, since it is all that is looked at for a known variable.
std::string_view CompilerParser::Scratch_Key(std::string_view base, int number) {
    const String* source = Source_Name();
    scratch_name.resize(base.size() + sizeof number + sizeof source);
    char* end = std::copy(base.begin(), base.end(), scratch_name.data());
    std::memcpy(end, &number, sizeof number);
    std::memcpy(end + sizeof number, &source, sizeof source);
    return scratch_name;
}

// The name holds the digest of the source file.
void CompilerParser::Make_Scratch_Variable(std::string_view base, int number, int ident) {
    const Integer_Text digits(number);
    const std::string_view pieces[] = {"__scratch:",  base, "_",
                                       digits.view(), ":",  {file_ident, sizeof file_ident}};
    std::size_t size = 0;
    for (const std::string_view piece : pieces)
        size += piece.size();
    scratch_name.resize(size);
    char* end = scratch_name.data();
    for (const std::string_view piece : pieces)
        end = std::copy(piece.begin(), piece.end(), end);
    const int length = Length_Of(scratch_name);
    local_variables->Insert(new Variable(scratch_name.data(), length, ident));
    Output_Variable_Directive(saved_output, scratch_name.data(), length, ident, SCOPE_LOCAL);
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
