// The back end that lists the lines with code.
#ifndef BACKEND_COVERAGE_COMPILER_PARSER_H
#define BACKEND_COVERAGE_COMPILER_PARSER_H

#include "backend/writers/silent_compiler_parser.h"
#include "core/splay_tree.h"

// CoverageCompilerParser gathers the line numbers that the code would carry. The list is written by the
// destructor, in ascending order and each line once, so the parser must go before its output. Lines of
// several source files run together; included files are not opened.
class CoverageCompilerParser : public SilentCompilerParser {
  public:
    CoverageCompilerParser(Tokenizer* tokenizer, CompilerOutput* output, ExternalCallManager* external_calls,
                           CompilerApplication* application, int function_stdout_default,
                           int function_access_default, ParserStartState start_state,
                           HashTable<Variable>* locals, HashTable<Variable>* globals,
                           HashTable<Variable>* system);
    ~CoverageCompilerParser() override;

    ParserStatus End_Of_Tag(int self_closing) override;
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

  private:
    void Note_Line(int line);

    SplayTree<int, int> lines{1}; // with code; owns its numbers
};

#endif
