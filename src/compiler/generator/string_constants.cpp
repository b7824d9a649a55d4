// String constants: each distinct text is written once, with the quoting of its first use.

#include "app/services/tarn_application.h"
#include "compiler/generator/compiler_parser.h"
#include "core/text_length.h"

int CompilerParser::Generate_String_Directive(const char* text, int length, ExpressionState state) {
    if (!Generating())
        return 0;
    if (length != 1)
        return Find_Constant(text, length, state);
    int& kept = byte_constants[static_cast<unsigned char>(*text)];
    if (!kept)
        kept = Find_Constant(text, length, state) + 1;
    return kept - 1;
}

int CompilerParser::Find_Constant(const char* text, int length, ExpressionState state) {
    const int ident = string_table.Number_Of(View(text, length), next_string_ident);
    if (ident == next_string_ident) {
        ++next_string_ident;
        Output_String_Directive(saved_output, text, length, ident, state);
    }
    return ident;
}

int CompilerParser::Generate_Integral_String_Directive(const char* text, int length, ExpressionState state) {
    int error = 0;
    if (TarnApplication::stoi(text, length, &error) < 1)
        Note<Message::Literal_Index_Not_Positive>(); // the constant is made all the same
    return Generate_String_Directive(text, length, state);
}
