// What the back ends that don't write assembly have in common.
#ifndef BACKEND_SILENT_COMPILER_PARSER_H
#define BACKEND_SILENT_COMPILER_PARSER_H

#include "backend/writers/file_compiler_parser.h"

// SilentCompilerParser runs the whole compiler and writes nothing of its code. What it does not override
// still reaches the output: a number that the compiler computed, and the directive that turns logging off.
class SilentCompilerParser : public FileCompilerParser {
  public:
    using FileCompilerParser::FileCompilerParser;
    ~SilentCompilerParser() override;

    // No check of open blocks and of calls, and no end marker.
    ParserStatus End_Of_File(ParserStatus status) override;
    void Output_Variable_Instruction(int is_pop, int ident, Variable_Scope scope, int alias,
                                     int by_reference) override;
    void Output_Assembly(const char* text, int length) override;
    void Generate_Label(ParserLabelType type, int number) override;
    void Output_String_Directive(CompilerOutput* target, const char* text, int length, int ident,
                                 ExpressionState state) override;
    void Output_Variable_Directive(CompilerOutput* target, const char* name, int length, int ident,
                                   Variable_Scope scope) override;
    void Output_Generated_Label(ParserLabelType type, int number) override;
    ParserStatus Output_Version(int major, int minor) override;
    void Output_Localized_Directive(const char* language, int language_length, const char* id, int id_length,
                                    const char* text, int text_length) override;
    void Output_Ident_Directive(CompilerOutput* target, const char* text, int length) override;
    // The fragment keeps what it holds.
    int Output_Fragment(StringOutput* fragment) override;
    void Output_Directive_Quoted_String(const char* text, int length, ExpressionState state) override;
    // One instruction at a time, for the descendants that look at each.
    QueuedOpcode* Output_Run(QueuedOpcode* first, const QueuedOpcode* end) override;
    void Output_Pushed_Constant(int ident, int opcode) override;
};

#endif
