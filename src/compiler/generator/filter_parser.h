// The silent check of expressions that stay text for the engine.
#ifndef COMPILER_FILTER_PARSER_H
#define COMPILER_FILTER_PARSER_H

#include "compiler/generator/compiler_parser.h"

// FilterParser is the whole scanner and expression compiler with its output cut off. It has no application,
// so its diagnostics are counted and the text of the last one kept, see Get_Last_Error. What it finds called
// is entered in the function tables of its parent, so that external functions which only a filter calls are
// declared too.
//
// The parent makes one at its first check and owns it; Set_Tokenizer gives it the next text.
class FilterParser : public CompilerParser {
  public:
    FilterParser(CompilerParser* parent, Function_Records* names, HashTable<Function_Resolution_Info>* calls);

    ParserStatus Expression_Operator(int id, int priority, int operands, int type, int flags) override;
    ParserStatus Expression_StartFunctionCall(const char* name, int length, int dynamic) override;
    ParserStatus Expression_StringLiteral(const char* text, int length) override;
    ParserStatus End_Of_File(ParserStatus status) override;
    int Find_Variable_Ident(const char* name, int length, Variable_Scope scope) override;
    void Output_Variable_Instruction(int is_pop, int ident, Variable_Scope scope, int alias,
                                     int by_reference) override;
    void Output_Assembly(const char* text, int length) override;
    ParserStatus Unknown_Common(const char* text, int length, int opcode) override;
    void Generate_Label(ParserLabelType type, int number) override;
    void Output_String_Directive(CompilerOutput* target, const char* text, int length, int ident,
                                 ExpressionState state) override;
    void Output_Variable_Directive(CompilerOutput* target, const char* name, int length, int ident,
                                   Variable_Scope scope) override;
    void Output_Generated_Label(ParserLabelType type, int number) override;
    void Output_Opcode_With_Label(int opcode, ParserLabelType type, int number) override;
    void Output_Opcode_With_Label_and_Immediate(int opcode, ParserLabelType type, int number,
                                                int immediate) override;
    void Output_Opcode(int opcode, double value) override;
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
    void Output_DisableLogging_Directive() override;
    void Output_End_Of_File() override;
    CompilerOutput* Set_Output(CompilerOutput* output) override;
    int Output_Fragment(StringOutput* fragment) override;
    void Output_Directive_Quoted_String(const char* text, int length, ExpressionState state) override;

  private:
    CompilerParser* parent;
    // Of the parent: the records of calls, and the first call of each name.
    Function_Records* names;
    HashTable<Function_Resolution_Info>* calls;
};

#endif
