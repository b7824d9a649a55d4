// The assembly back end.
#ifndef BACKEND_FILE_COMPILER_PARSER_H
#define BACKEND_FILE_COMPILER_PARSER_H

#include "backend/instructions/engine_version.h"
#include "compiler/generator/compiler_parser.h"

struct Opcode_Info;

// FileCompilerParser writes what CompilerParser generates as assembly text. Every item begins with its own
// line feed and ends without one. The driver makes one, of this class or of one that derives from it, for all
// source files.
class FileCompilerParser : public CompilerParser {
  public:
    // The output stays the caller's. For the rest see CompilerParser.
    FileCompilerParser(Tokenizer* tokenizer, CompilerOutput* output, ExternalCallManager* external_calls,
                       CompilerApplication* application, int function_stdout_default,
                       int function_access_default, ParserStartState start_state, HashTable<Variable>* locals,
                       HashTable<Variable>* globals, HashTable<Variable>* system);
    ~FileCompilerParser() override;

    // The end of a source file that is not the last one leaves no mark and checks nothing.
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
    // The file about to be compiled is the last one.
    void Last_File() override;
    QueuedOpcode* Output_Run(QueuedOpcode* first, const QueuedOpcode* end) override;
    void Expect_Code(std::size_t length) override;
    void Output_Pushed_Constant(int ident, int opcode) override;

    // Engine that brought each minor file version, by that version.
    static constexpr auto& TaggedFileVersions = file_version_engines;

  protected:
    // The order of the fields is part of the binary interface.
    CompilerOutput* output; // where every item goes now; not owned
    int last_file = 0;

  private:
    ParserStatus Report_Old_Engine();
    void Output_Special_Opcode(const Opcode_Info* row, int opcode, int first, int second); // not plain
    void Output_Read_Only_Access(int opcode);
    void Output_Unknown_Opcode(int opcode, int first);
};

#endif
