// The back end of -d: a declaration for each function.

#include "backend/writers/doxygen_compiler_parser.h"

#include "backend/outputs/compiler_output.h"

DoxygenCompilerParser::DoxygenCompilerParser(Tokenizer* tokenizer, CompilerOutput* output,
                                             ExternalCallManager* external_calls,
                                             CompilerApplication* application)
    : SilentCompilerParser(tokenizer, output, external_calls, application, -1, ACCESS_UNSET, START_FILE,
                           nullptr, nullptr, nullptr) {
}

DoxygenCompilerParser::~DoxygenCompilerParser() = default;

void DoxygenCompilerParser::Output_Comment(const char* text, int length) {
    if (Inside_Function())
        return;
    output->Write("/*", -1);
    output->Write(text, length);
    output->Write("*/\n", -1);
}

void DoxygenCompilerParser::Output_Opcode_With_Label(int, ParserLabelType, int) {
}

void DoxygenCompilerParser::Output_Opcode_With_Label_and_Immediate(int, ParserLabelType, int, int) {
}

void DoxygenCompilerParser::Output_Opcode(int, int, int) {
}

void DoxygenCompilerParser::Output_Opcode(int, const char*, int, int) {
}

void DoxygenCompilerParser::Output_Function_Directive(const char* name, int length, int kind, int, int, int) {
    if (kind & FUNCTION_EXTERNAL)
        return;
    output->Write("value ", -1);
    output->Write(name, length);
    output->Write("( ", -1);
}

void DoxygenCompilerParser::Output_End_Function_Directive() {
    output->Write(" );\n", -1);
}

void DoxygenCompilerParser::Output_Parameter_Directive(const char* name, int length, int ident,
                                                       int by_value) {
    if (ident != 0)
        output->Write(", ", -1);
    output->Write(by_value ? "value " : "variable ", -1);
    output->Write(name, length);
}

void DoxygenCompilerParser::Output_End_Of_File() {
}
