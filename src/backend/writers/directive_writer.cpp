// The text of directives, passages and quoted strings.

#include "backend/outputs/assembly_item.h"
#include "backend/outputs/quoted_text.h"
#include "backend/writers/file_compiler_parser.h"
#include "compiler/generator/keyword_lists.h"
#include "core/text_length.h"

#include <cstring>
#include <string_view>

namespace {

// Sends items to another output for as long as it lives; a null one changes nothing.
class Redirection {
  public:
    Redirection(CompilerOutput*& output, CompilerOutput* target) : output(output), previous(output) {
        if (target)
            output = target;
    }
    ~Redirection() { output = previous; }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

  private:
    CompilerOutput*& output;
    CompilerOutput* const previous;
};

// A directive of a variable up to the variable's number.
std::string_view Variable_Directive(Variable_Scope scope) {
    switch (scope) {
    case SCOPE_LOCAL: return "\n.local\tl_";
    case SCOPE_GLOBAL: return "\n.global\tl_";
    case SCOPE_SYSTEM: return "\n.system\tsys_";
    default: return "\n; variable directive not done yet";
    }
}

// A variable's name has no quoting but for its escapes, which are resolved.
void Write_Unescaped(CompilerOutput* output, const char* text, int length) {
    const char* end = text + Text_Length(text, length);
    while (const void* found = std::memchr(text, '\\', end - text)) {
        const char* backslash = static_cast<const char*>(found);
        output->Write(text, static_cast<int>(backslash - text));
        if (backslash + 1 == end)
            return;
        output->Write(backslash + 1, 1);
        text = backslash + 2;
    }
    output->Write(text, static_cast<int>(end - text));
}

void Write_Function_Flags(CompilerOutput* output, int kind, int stdout_level, int error_level) {
    Assembly_Item flags(output);
    if (kind & FUNCTION_EXTERNAL)
        flags.Text("\texternal");
    if (kind & FUNCTION_UNRESOLVED)
        flags.Text("\tunresolved");
    if (error_level != -1)
        flags.Text(error_level & ERROR_OUTPUT_RUNTIME ? "\terroroutputlevelon" : "\terroroutputleveloff");
    if (stdout_level == -1)
        flags.Text("\tstdoutinherit");
    else if (stdout_level & OUTPUT_COMPRESS)
        flags.Text("\tcompresswhitespace");
}

} // namespace

// Afterwards the position is given anew, because the passage may have changed what the engine believes.
void FileCompilerParser::Output_Assembly(const char* text, int length) {
    Output_LineNo();
    Assembly_Item(output).Text("\n");
    output->Write(text, length);
    Assembly_Item(output).Text("\n");
    Reset_LineNo();
    Queue_Source_File();
}

void FileCompilerParser::Output_String_Directive(CompilerOutput* target, const char* text, int length,
                                                 int ident, ExpressionState state) {
    const Redirection redirection(output, target);
    Assembly_Item(output).Text("\n.string\ts_").Number(ident);
    Output_Directive_Quoted_String(text, length, state);
}

void FileCompilerParser::Output_Variable_Directive(CompilerOutput* target, const char* name, int length,
                                                   int ident, Variable_Scope scope) {
    if (scope == SCOPE_DATABASE)
        return;
    const Redirection redirection(output, target);
    Assembly_Item(output).Text(Variable_Directive(scope)).Number(ident).Text("\t\"");
    Write_Unescaped(output, name, length);
    Assembly_Item(output).Text("\"");
}

void FileCompilerParser::Output_Localized_Directive(const char* language, int language_length, const char* id,
                                                    int id_length, const char* text, int text_length) {
    Assembly_Item(output).Text("\n.localized");
    Output_Directive_Quoted_String(language, language_length, EXPRESSION_STATE_ESCAPED);
    Output_Directive_Quoted_String(id, id_length, EXPRESSION_STATE_ESCAPED);
    Output_Directive_Quoted_String(text, text_length, EXPRESSION_STATE_TEXT);
}

void FileCompilerParser::Output_Function_Directive(const char* name, int length, int kind, int stdout_level,
                                                   int error_level, int access) {
    Assembly_Item(output).Text("\n\n.function ");
    output->Write_Lower(name, length);
    Write_Function_Flags(output, kind, stdout_level, error_level);
    if (access != ACCESS_UNSET && access & ACCESS_PRIVATE) {
        Assembly_Item(output).Text("\tprivate");
        (void)Output_Version(file_version_major, FILE_VERSION_PRIVATE_FUNCTIONS); // a directive has no status
    }
}

void FileCompilerParser::Output_End_Function_Directive() {
    Assembly_Item(output).Text("\n.endfunction");
}

void FileCompilerParser::Output_Parameter_Directive(const char* name, int length, int ident, int by_value) {
    Assembly_Item(output).Text("\n.parameter\tl_").Number(ident).Text("\t\"");
    output->Write(name, length);
    Assembly_Item(output).Text(by_value ? "\"" : "\"\treference");
}

void FileCompilerParser::Output_Ident_Directive(CompilerOutput* target, const char* text, int length) {
    const Redirection redirection(output, target);
    Assembly_Item(output).Text("\n.ident");
    Output_Directive_Quoted_String(text, length, EXPRESSION_STATE_TEXT);
}

void FileCompilerParser::Output_DisableLogging_Directive() {
    Assembly_Item(output).Text("\n.disable_logging");
}

void FileCompilerParser::Output_Directive_Quoted_String(const char* text, int length, ExpressionState state) {
    Assembly_Item(output).Text("\t\"");
    Write_Quoted_Text(output, text, Text_Length(text, length), state);
    Assembly_Item(output).Text("\"");
}
