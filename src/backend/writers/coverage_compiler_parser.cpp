// The back end of -L: the lines of each file that hold code, in order.

#include "backend/writers/coverage_compiler_parser.h"

#include "backend/outputs/assembly_item.h"

CoverageCompilerParser::CoverageCompilerParser(Tokenizer* tokenizer, CompilerOutput* output,
                                               ExternalCallManager* external_calls,
                                               CompilerApplication* application, int function_stdout_default,
                                               int function_access_default, ParserStartState start_state,
                                               HashTable<Variable>* locals, HashTable<Variable>* globals,
                                               HashTable<Variable>* system)
    : SilentCompilerParser(tokenizer, output, external_calls, application, function_stdout_default,
                           function_access_default, start_state, locals, globals, system) {
}

CoverageCompilerParser::~CoverageCompilerParser() {
    for (const int* line = lines.First(); line; line = lines.Next(*line))
        Assembly_Item(output).Number(*line).Text("\n");
    output->Flush();
}

// The lines of an included file would mix with those of the named files.
ParserStatus CoverageCompilerParser::End_Of_Tag(int self_closing) {
    return current_tag == Tag::Include ? PARSER_OK : SilentCompilerParser::End_Of_Tag(self_closing);
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

void CoverageCompilerParser::Output_Function_Directive(const char*, int, int, int, int, int) {
}

void CoverageCompilerParser::Output_End_Function_Directive() {
}

void CoverageCompilerParser::Output_Parameter_Directive(const char*, int, int, int) {
}

void CoverageCompilerParser::Output_End_Of_File() {
    Output_LineNo();
}

void CoverageCompilerParser::Note_Line(int line) {
    if (!lines.Find(line))
        lines.Insert(new int(line));
}
