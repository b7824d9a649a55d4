#include "backend/coverage_compiler_parser.h"

#include "backend/assembly_item.h"
#include "core/list.h"

CoverageCompilerParser::CoverageCompilerParser(Tokenizer* tokenizer, CompilerOutput* output,
                                               ExternalCallManager* external_calls,
                                               CompilerApplication* application, int function_stdout_default,
                                               int function_access_default, ParserStartState start_state,
                                               HashTable<Variable>* locals, HashTable<Variable>* globals,
                                               HashTable<Variable>* system)
    : FileCompilerParser(tokenizer, output, external_calls, application, function_stdout_default,
                         function_access_default, start_state, locals, globals, system),
      lines(1) {
}

CoverageCompilerParser::~CoverageCompilerParser() {
    List<int> sorted(0);
    lines.AppendToList(sorted);
    for (const int* line = sorted.First(); line; line = sorted.Next())
        Assembly_Item(output).Number(*line).Text("\n");
    output->Flush();
}

// The lines of an included file would mix with those of the named files.
ParserStatus CoverageCompilerParser::End_Of_Tag(int self_closing) {
    return current_tag == Tag::Include ? PARSER_OK : FileCompilerParser::End_Of_Tag(self_closing);
}

ParserStatus CoverageCompilerParser::End_Of_File(ParserStatus) {
    return PARSER_OK;
}

void CoverageCompilerParser::Output_Variable_Instruction(int, int, Variable_Scope, int, int) {
}

void CoverageCompilerParser::Output_Comment(const char*, int) {
}

void CoverageCompilerParser::Output_Assembly(const char*, int) {
}

void CoverageCompilerParser::Generate_Label(ParserLabelType, int) {
}

void CoverageCompilerParser::Output_String_Directive(CompilerOutput*, const char*, int, int,
                                                     ExpressionState) {
}

void CoverageCompilerParser::Output_Variable_Directive(CompilerOutput*, const char*, int, int,
                                                       Variable_Scope) {
}

void CoverageCompilerParser::Output_Generated_Label(ParserLabelType, int) {
}

void CoverageCompilerParser::Output_Opcode_With_Label(int, ParserLabelType, int) {
    Output_LineNo();
}

void CoverageCompilerParser::Output_Opcode_With_Label_and_Immediate(int, ParserLabelType, int, int) {
    Output_LineNo();
}

// Every line with code comes by as the operand of lineno.
void CoverageCompilerParser::Output_Opcode(int opcode, int first, int) {
    if (opcode == OPCODE_LINENO)
        Note_Line(first);
    else if (opcode != OPCODE_SOURCEFILE)
        Output_LineNo();
}

void CoverageCompilerParser::Output_Opcode(int, const char*, int, int) {
    Output_LineNo();
}

ParserStatus CoverageCompilerParser::Output_Version(int, int) {
    return PARSER_OK;
}

void CoverageCompilerParser::Output_Localized_Directive(const char*, int, const char*, int, const char*,
                                                        int) {
}

void CoverageCompilerParser::Output_Function_Directive(const char*, int, int, int, int, int) {
}

void CoverageCompilerParser::Output_End_Function_Directive() {
}

void CoverageCompilerParser::Output_Parameter_Directive(const char*, int, int, int) {
}

void CoverageCompilerParser::Output_Ident_Directive(CompilerOutput*, const char*, int) {
}

void CoverageCompilerParser::Output_End_Of_File() {
    Output_LineNo();
}

int CoverageCompilerParser::Output_Fragment(StringOutput*) {
    return 0;
}

void CoverageCompilerParser::Output_Directive_Quoted_String(const char*, int, ExpressionState) {
}

void CoverageCompilerParser::Note_Line(int line) {
    if (!lines.Find(line))
        lines.Insert(new int(line));
}
