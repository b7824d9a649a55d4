// The documentation back end.
#ifndef BACKEND_DOXYGEN_COMPILER_PARSER_H
#define BACKEND_DOXYGEN_COMPILER_PARSER_H

#include "backend/file_compiler_parser.h"

// DoxygenCompilerParser runs the whole compiler, but writes only a pseudo-C declaration for each function and
// the comments that stand outside of functions, as a documentation generator reads them. What it does not
// override still reaches the file: a number computed by the compiler, and the directive that turns logging
// off.
class DoxygenCompilerParser : public FileCompilerParser {
  public:
    DoxygenCompilerParser(Tokenizer* tokenizer, CompilerOutput* output, ExternalCallManager* external_calls,
                          CompilerApplication* application);
    ~DoxygenCompilerParser() override;

    // No check of open blocks and of calls: a file with declarations alone is complete.
    ParserStatus End_Of_File(ParserStatus status) override;
    void Output_Variable_Instruction(int is_pop, int ident, Variable_Scope scope, int alias,
                                     int by_reference) override;
    void Output_Comment(const char* text, int length) override;
    void Output_Assembly(const char* text, int length) override;
    void Generate_Label(ParserLabelType type, int number) override;
    void Output_String_Directive(CompilerOutput* target, const char* text, int length, int ident,
                                 ExpressionState state) override;
    void Output_Variable_Directive(CompilerOutput* target, const char* name, int length, int ident,
                                   Variable_Scope scope) override;
    void Output_Generated_Label(ParserLabelType type, int number) override;
    void Output_Opcode_With_Label(int opcode, ParserLabelType type, int number) override;
    void Output_Opcode_With_Label_and_Immediate(int opcode, ParserLabelType type, int number,
                                                int immediate) override;
    using FileCompilerParser::Output_Opcode;
    void Output_Opcode(int opcode, int first, int second) override;
    void Output_Opcode(int opcode, const char* text, int length, int lower) override;
    ParserStatus Output_Version(int major, int minor) override;
    void Output_Localized_Directive(const char* language, int language_length, const char* id, int id_length,
                                    const char* text, int text_length) override;
    void Output_Function_Directive(const char* name, int length, int kind, int stdout_level, int error_level,
                                   int access) override;
    void Output_End_Function_Directive() override;
    void Output_Parameter_Directive(const char* name, int length, int ident, int by_value) override;
    void Output_Ident_Directive(CompilerOutput* target, const char* text, int length) override;
    void Output_End_Of_File() override;
    // The fragment keeps what it holds.
    int Output_Fragment(StringOutput* fragment) override;
    void Output_Directive_Quoted_String(const char* text, int length, ExpressionState state) override;
};

#endif
