// The parser that checks the text of filters and writes nothing.

#include "compiler/generator/filter_parser.h"

#include "backend/instructions/engine_version.h"
#include "frontend/scanner/operator_lookup.h"

FilterParser::FilterParser(CompilerParser* parent, Function_Records* names,
                           HashTable<Function_Resolution_Info>* calls)
    : CompilerParser(nullptr, nullptr, nullptr, -1, -1, START_EXPRESSION, nullptr, nullptr, nullptr),
      parent(parent), names(names), calls(calls) {
}

// The code of the filter is compiled by the engine, which must know these operators as well.
ParserStatus FilterParser::Expression_Operator(int id, int priority, int operands, int type, int flags) {
    if (id == OPERATOR_INCREMENT || id == OPERATOR_DECREMENT)
        (void)parent->Output_Version(file_version_major, FILE_VERSION_INCREMENT); // has reported
    return CompilerParser::Expression_Operator(id, priority, operands, type, flags);
}

// A record made here has no line and no count: it declares the function when that is external, and is checked
// for nothing.
ParserStatus FilterParser::Expression_StartFunctionCall(const char* name, int length, int dynamic) {
    const ParserStatus status = CompilerParser::Expression_StartFunctionCall(name, length, dynamic);
    if (!dynamic && status == PARSER_OK && !calls->Find(name, length)) {
        auto* call = new Function_Resolution_Info(-1, name, length, nullptr);
        names->Keep(call);
        calls->Insert(call);
    }
    return status;
}

ParserStatus FilterParser::Expression_StringLiteral(const char*, int) {
    Count_Value();
    return Check_Types(OPERAND_STRING);
}

ParserStatus FilterParser::End_Of_File(ParserStatus status) {
    return status;
}

// Nothing is written that needs a number.
int FilterParser::Find_Variable_Ident(const char*, int, Variable_Scope) {
    return 0;
}

ParserStatus FilterParser::Unknown_Common(const char*, int, int) {
    return PARSER_OK;
}

ParserStatus FilterParser::Output_Version(int, int) {
    return PARSER_OK;
}

CompilerOutput* FilterParser::Set_Output(CompilerOutput*) {
    return nullptr;
}

int FilterParser::Output_Fragment(StringOutput*) {
    return 0;
}

// The rest of the back end writes nothing.
void FilterParser::Output_Variable_Instruction(int, int, Variable_Scope, int, int) {
}
void FilterParser::Output_Assembly(const char*, int) {
}
void FilterParser::Generate_Label(ParserLabelType, int) {
}
void FilterParser::Output_String_Directive(CompilerOutput*, const char*, int, int, ExpressionState) {
}
void FilterParser::Output_Variable_Directive(CompilerOutput*, const char*, int, int, Variable_Scope) {
}
void FilterParser::Output_Generated_Label(ParserLabelType, int) {
}
void FilterParser::Output_Opcode_With_Label(int, ParserLabelType, int) {
}
void FilterParser::Output_Opcode_With_Label_and_Immediate(int, ParserLabelType, int, int) {
}
void FilterParser::Output_Opcode(int, double) {
}
void FilterParser::Output_Opcode(int, int, int) {
}
void FilterParser::Output_Opcode(int, const char*, int, int) {
}
void FilterParser::Output_Localized_Directive(const char*, int, const char*, int, const char*, int) {
}
void FilterParser::Output_Function_Directive(const char*, int, int, int, int, int) {
}
void FilterParser::Output_End_Function_Directive() {
}
void FilterParser::Output_Parameter_Directive(const char*, int, int, int) {
}
void FilterParser::Output_Ident_Directive(CompilerOutput*, const char*, int) {
}
void FilterParser::Output_DisableLogging_Directive() {
}
void FilterParser::Output_End_Of_File() {
}
void FilterParser::Output_Directive_Quoted_String(const char*, int, ExpressionState) {
}
