// String constants: each distinct text is written once, with the quoting of its first use.

#include "app/services/tarn_application.h"
#include "compiler/generator/compiler_parser.h"

int CompilerParser::Generate_String_Directive(const char* text, int length, ExpressionState state) {
    if (!Generating())
        return 0;
    if (Variable* known = string_table.Find(text, length))
        return known->value_integer();
    const int ident = next_string_ident++;
    Output_String_Directive(saved_output, text, length, ident, state);
    string_table.Insert(new Variable(text, length, ident));
    return ident;
}

int CompilerParser::Generate_Integral_String_Directive(const char* text, int length, ExpressionState state) {
    int error = 0;
    if (TarnApplication::stoi(text, length, &error) < 1)
        Note<Message::Literal_Index_Not_Positive>(); // the constant is made all the same
    return Generate_String_Directive(text, length, state);
}
