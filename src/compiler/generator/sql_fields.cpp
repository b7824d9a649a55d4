// The FIELDS of a query: variables that receive its columns. They are checked for the scope that they need at
// run time; the checks warn and stop nothing.

#include "compiler/generator/compiler_parser.h"
#include "core/text_length.h"
#include "frontend/values/text_pieces.h"

void CompilerParser::Validate_SQL_Fields(const AttributeValue& fields) {
    const std::string_view text = Text_Of(fields); // empty when the fields are an expression
    Validate_SQL_Fields(text.data(), Length_Of(text));
}

void CompilerParser::Validate_SQL_Fields(const char* text, int length) {
    const std::string_view fields = Trimmed(Slice(text, length));
    if (fields.empty())
        return;
    For_Each_Comma_Piece(
        fields, [this](std::string_view field) { Validate_SQL_Field(field.data(), Length_Of(field)); });
}

// Two characters are taken for a scope without a name, whatever they are.
void CompilerParser::Validate_SQL_Field(const char* text, int length) {
    const std::string_view field = Trimmed(Slice(text, length));
    if (field.empty()) {
        Note<Message::Field_Empty>();
        return;
    }
    if (field.size() == 2) {
        Note<Message::Field_Empty_Name>(field);
        return;
    }
    constexpr std::string_view scopes = "lgsdLGSD";
    const bool scoped =
        field.size() > 2 && field[1] == '.' && scopes.find(field[0]) != std::string_view::npos;
    if (!scoped && field.find(".d.") == std::string_view::npos)
        Note<Message::Field_Unscoped>(field);
}
