// What a back end shares that writes no instructions.

#include "backend/writers/silent_compiler_parser.h"

SilentCompilerParser::~SilentCompilerParser() = default;

ParserStatus SilentCompilerParser::End_Of_File(ParserStatus) {
    return PARSER_OK;
}

void SilentCompilerParser::Output_Variable_Instruction(int, int, Variable_Scope, int, int) {
}

void SilentCompilerParser::Output_Assembly(const char*, int) {
}

void SilentCompilerParser::Generate_Label(ParserLabelType, int) {
}

void SilentCompilerParser::Output_String_Directive(CompilerOutput*, const char*, int, int, ExpressionState) {
}

void SilentCompilerParser::Output_Variable_Directive(CompilerOutput*, const char*, int, int, Variable_Scope) {
}

void SilentCompilerParser::Output_Generated_Label(ParserLabelType, int) {
}

ParserStatus SilentCompilerParser::Output_Version(int, int) {
    return PARSER_OK;
}

void SilentCompilerParser::Output_Localized_Directive(const char*, int, const char*, int, const char*, int) {
}

void SilentCompilerParser::Output_Ident_Directive(CompilerOutput*, const char*, int) {
}

int SilentCompilerParser::Output_Fragment(StringOutput*) {
    return 0;
}

void SilentCompilerParser::Output_Directive_Quoted_String(const char*, int, ExpressionState) {
}

QueuedOpcode* SilentCompilerParser::Output_Run(QueuedOpcode* first, const QueuedOpcode* end) {
    return CompilerParser::Output_Run(first, end);
}

void SilentCompilerParser::Output_Pushed_Constant(int ident, int opcode) {
    CompilerParser::Output_Pushed_Constant(ident, opcode);
}
