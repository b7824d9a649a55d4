// Text that is read in one step, not by tokens: the bodies of comments and assembly passages, and quoted
// values.

#include "app/services/tarn_application.h"
#include "core/text_length.h"
#include "core/text_search.h"
#include "frontend/scanner/parser.h"

#include <algorithm>

namespace {

constexpr std::string_view comment_open = "<TnCOMMENT>";
constexpr std::string_view comment_close = "</TnCOMMENT>";
constexpr std::string_view assembly_close = "</TnASSEMBLY>";

// What stands between a tag's name and its closing tag, less the byte behind the name, which as a rule is the
// >.
std::string_view Body(const char* text, int length, std::string_view close) {
    const int body_length = length - 1 - Length_Of(close);
    return Slice(text + 1, std::max(body_length, 0));
}

} // namespace

ParserStatus Parser::Eat_TnCOMMENT() {
    const int line = Linenumber();
    const char* text;
    int length = 0;
    state = STATE_TEXT;
    const Tokenizer_TokenType type =
        tokenizer->Read_Until(&text, length, comment_close.data(), Length_Of(comment_close));
    if (type == TOKEN_EOF)
        return PARSER_OK;
    if (type == TOKEN_UNTERMINATED)
        return Fatal_At<Message::Comment_Unterminated>(line, nullptr);
    const std::string_view body = Body(text, length, comment_close);
    const auto search = length > longest_brute_force ? bm_searchi : bf_searchi;
    if (search(comment_open.data(), Length_Of(comment_open), body.data(), Length_Of(body)) >= 0)
        Note_At<Message::Comment_Nested>(line, nullptr);
    Output_Comment(body.data(), Length_Of(body));
    return PARSER_OK;
}

// Unlike a comment, a passage that is not closed is taken as if the text ended with its closing tag: sources
// rely on neither being reported, nor on the bytes that this costs.
ParserStatus Parser::Eat_TnASSEMBLY() {
    const int line = Linenumber();
    const char* text;
    int length = 0;
    state = STATE_TEXT;
    if (tokenizer->Read_Until(&text, length, assembly_close.data(), Length_Of(assembly_close)) == TOKEN_EOF)
        return Fatal_At<Message::Assembly_Unterminated>(line, nullptr);
    const std::string_view body = Body(text, length, assembly_close);
    Output_Assembly(body.data(), Length_Of(body));
    return PARSER_OK;
}

// Reads the rest of a value, whose first token is given. The escapes stay in the value, the closing quote
// does not belong to it. A value that is not closed runs to the end of the text.
ParserStatus Parser::Process_Quoted_String(char quote, const char* text, int length) {
    if (pending_text) {
        pending_length += length;
        value_length = 0;
    } else {
        value_text = text;
        value_length = length;
    }
    const int line = Linenumber();
    const char* rest;
    int rest_length;
    state = STATE_ATTRIBUTE;
    if (Read_Until(&rest, rest_length, quote) == TOKEN_EOF)
        return Fatal_At<Message::Quoted_Value_Unterminated>(line, nullptr);
    if (pending_text) {
        pending_length += rest_length;
        return PARSER_OK;
    }
    return Attribute_Value(value_text, std::max(value_length + rest_length - 1, 0));
}

bool Parser::Verify_Numeric(const char* text, int length) {
    int bad_number = 0;
    TarnApplication::stod(text, length, length, &bad_number);
    return !bad_number;
}
