// The documentation back end.
#ifndef BACKEND_DOXYGEN_COMPILER_PARSER_H
#define BACKEND_DOXYGEN_COMPILER_PARSER_H

#include "backend/writers/silent_compiler_parser.h"

// DoxygenCompilerParser writes a pseudo-C declaration for each function and the comments that stand outside
// of functions, in the order of the source, as a documentation generator reads them.
class DoxygenCompilerParser : public SilentCompilerParser {
  public:
    DoxygenCompilerParser(Tokenizer* tokenizer, CompilerOutput* output, ExternalCallManager* external_calls,
                          CompilerApplication* application);
    ~DoxygenCompilerParser() override;

    void Output_Comment(const char* text, int length) override;
    void Output_Opcode_With_Label(int opcode, ParserLabelType type, int number) override;
    void Output_Opcode_With_Label_and_Immediate(int opcode, ParserLabelType type, int number,
                                                int immediate) override;
    using SilentCompilerParser::Output_Opcode;
    void Output_Opcode(int opcode, int first, int second) override;
    void Output_Opcode(int opcode, const char* text, int length, int lower) override;
    void Output_Function_Directive(const char* name, int length, int kind, int stdout_level, int error_level,
                                   int access) override;
    void Output_End_Function_Directive() override;
    void Output_Parameter_Directive(const char* name, int length, int ident, int by_value) override;
    void Output_End_Of_File() override;
};

#endif
