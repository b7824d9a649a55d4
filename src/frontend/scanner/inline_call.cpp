// Calls of functions in other files from within an expression: [ file ].function( arguments ).
//
// The arguments stay text, which the code generator compiles. A call of this form among them can't stay
// there: it is compiled in its place, ahead of the outer call, its result goes into a scratch variable, and
// the variable's name takes its place in the text.

#include "backend/queue/opcode_queue.h"
#include "core/text_length.h"
#include "frontend/scanner/expression_parser.h"
#include "frontend/scanner/parser.h"

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

// The calls that are open at one place of the source, outermost first. Calls nest as deep as the source
// likes, so they are kept here and not on the stack of the process; the text of all of them is one, each
// call's behind that of the call around it.
class ExpressionParser::Inline_Calls {
  public:
    Inline_Calls(ExpressionParser& expression, Tokenizer* tokenizer, ParserState* state)
        : expression(expression), parser(*expression.parser), tokenizer(*tokenizer), state(state) {}

    // Reads the call whose file expression has just been scanned, and all calls among its arguments.
    ParserStatus Read_Calls(int depth);

  private:
    struct Call {
        int text_start;            // of its part of the text
        std::size_t first_bracket; // of its open brackets
        int open_parentheses;
        int depth; // number of the next scratch variable
    };

    ParserStatus Open_Call(int depth);
    ParserStatus Read_Argument_Token();
    ParserStatus Read_String(const char* quote, int length);
    ParserStatus Read_Close_Parenthesis();
    ParserStatus Read_Open_Bracket(const char* sign);
    ParserStatus Read_Close_Bracket(const char* sign);
    ParserStatus Open_Nested(const char* bracket_end);
    ParserStatus Scan_File_Expression(const char* bracket_end);
    void Close_Call();
    void Store_Result();

    Tokenizer_TokenType Read_Token(const char** token, int& length);
    void Add(const char* token, int length);
    bool Has_Open_Bracket() const { return open_brackets.size() > calls.back().first_bracket; }
    String Scratch_Name(int depth);

    ExpressionParser& expression;
    Parser& parser;
    Tokenizer& tokenizer;
    ParserState* state;
    String text;
    std::deque<Call> calls;         // which gives memory back as they end
    std::vector<int> open_brackets; // their places in the text
    const char* bracket = nullptr;  // the last open one in the source, null when none is noted
    // Of the source from it on, without counting the parentheses among it. The file expression is scanned to
    // this length, and so loses as many bytes at its end as it has parentheses; sources rely on that.
    int bracket_length = 0;
};

ParserStatus ExpressionParser::Parse_Funcdo(Tokenizer* tokenizer, int depth, ParserState* state) {
    return Inline_Calls(*this, tokenizer, state).Read_Calls(depth);
}

// A failure ends all calls, but those around the one that failed store its result all the same.
ParserStatus ExpressionParser::Inline_Calls::Read_Calls(int depth) {
    ParserStatus status = Open_Call(depth);
    while (status == PARSER_OK && !calls.empty())
        status = Read_Argument_Token();
    while (!calls.empty())
        Close_Call();
    return status;
}

// Reads the name of a call, behind the ] that ends its file expression and up to its opening parenthesis.
ParserStatus ExpressionParser::Inline_Calls::Open_Call(int depth) {
    calls.push_back({text.length(), open_brackets.size(), 1, depth});
    bracket = nullptr;
    const char* token;
    int length;
    Tokenizer_TokenType type = tokenizer.Get_Next_Token(&token, length);
    if (type != TOKEN_DOT)
        return parser.Report<Message::Internal_Inline_Call_Dot>();
    while (type != TOKEN_LPAREN) {
        type = Read_Token(&token, length);
        if (type == TOKEN_RBRACE || type == TOKEN_EOF)
            return length ? parser.Report<Message::Unexpected_In_Inline_Call>(Slice(token, length))
                          : parser.Report<Message::Inline_Call_Unterminated>();
        text.cat(token, length);
    }
    return PARSER_OK;
}

// The end of the expression is left for the scanner to read.
Tokenizer_TokenType ExpressionParser::Inline_Calls::Read_Token(const char** token, int& length) {
    const Tokenizer_TokenType type = tokenizer.Peek(token, length);
    return type == TOKEN_RBRACE || type == TOKEN_EOF ? type : tokenizer.Get_Next_Token(token, length);
}

ParserStatus ExpressionParser::Inline_Calls::Read_Argument_Token() {
    const char* token;
    int length;
    switch (Read_Token(&token, length)) {
    case TOKEN_RBRACE:
    case TOKEN_EOF: return parser.Report<Message::Inline_Call_Unclosed>();
    case TOKEN_SQUOTE: return Read_String(token, length);
    case TOKEN_LPAREN:
        ++calls.back().open_parentheses;
        text.cat('(');
        return PARSER_OK;
    case TOKEN_RPAREN: return Read_Close_Parenthesis();
    case TOKEN_OPERATOR:
        if (*token == '[')
            return Read_Open_Bracket(token);
        if (*token == ']')
            return Read_Close_Bracket(token);
        break;
    default: break;
    }
    Add(token, length);
    return PARSER_OK;
}

void ExpressionParser::Inline_Calls::Add(const char* token, int length) {
    text.cat(token, length);
    if (bracket)
        bracket_length += length;
}

ParserStatus ExpressionParser::Inline_Calls::Read_String(const char* quote, int length) {
    const int line = parser.Linenumber();
    Add(quote, length);
    const char* rest;
    int rest_length;
    const Tokenizer_TokenType end = tokenizer.Read_Until(&rest, rest_length, '\'', '\\');
    Add(rest, rest_length);
    if (end != TOKEN_EOF)
        return PARSER_OK;
    return parser.Fatal_At<Message::String_Literal_Unterminated>(line, nullptr);
}

ParserStatus ExpressionParser::Inline_Calls::Read_Close_Parenthesis() {
    Call& call = calls.back();
    text.cat(')');
    if (--call.open_parentheses > 0)
        return PARSER_OK;
    const ParserStatus status = parser.Expression_StartFunctionCall(text.text() + call.text_start,
                                                                    text.length() - call.text_start, 1);
    Close_Call();
    return status;
}

ParserStatus ExpressionParser::Inline_Calls::Read_Open_Bracket(const char* sign) {
    open_brackets.push_back(text.length());
    bracket = sign;
    bracket_length = 1;
    text.cat('[');
    return PARSER_OK;
}

ParserStatus ExpressionParser::Inline_Calls::Read_Close_Bracket(const char* sign) {
    const char* token;
    int length;
    if (tokenizer.Peek(&token, length) == TOKEN_DOT)
        return Open_Nested(sign);
    if (Has_Open_Bracket())
        open_brackets.pop_back();
    bracket = nullptr;
    text.cat(']');
    return PARSER_OK;
}

// The code of the file expression comes first.
ParserStatus ExpressionParser::Inline_Calls::Open_Nested(const char* bracket_end) {
    if (bracket) {
        if (const ParserStatus status = Scan_File_Expression(bracket_end); status != PARSER_OK)
            return status;
    }
    if (!Has_Open_Bracket())
        return parser.Fatal<Message::Inline_Call_Bracket_Unopened>();
    text.truncate(static_cast<unsigned>(open_brackets.back()));
    open_brackets.pop_back();
    const int depth = calls.back().depth++;
    return Open_Call(depth + 1);
}

ParserStatus ExpressionParser::Inline_Calls::Scan_File_Expression(const char* bracket_end) {
    const Scan_State outer_state = expression.scan_state;
    const char* start = bracket + 1;
    Tokenizer file_expression(start, static_cast<int>(bracket_end - start), 0);
    file_expression.End_Early(bracket_length - 1);
    const char* token;
    int length;
    for (;;) {
        const Tokenizer_TokenType type = file_expression.Get_Next_Token(&token, length);
        if (type == TOKEN_EOF)
            break;
        const ParserStatus status =
            expression.Process_Expression_Fragment(type, token, length, &file_expression, state);
        if (status != PARSER_OK)
            return status;
    }
    const ParserStatus status = expression.Expression_Flush();
    expression.scan_state = outer_state;
    parser.Decrement_Stackcount();
    return status;
}

// Ends the innermost call; the one around it goes on behind it.
void ExpressionParser::Inline_Calls::Close_Call() {
    text.truncate(static_cast<unsigned>(calls.back().text_start));
    open_brackets.resize(calls.back().first_bracket);
    calls.pop_back();
    bracket = nullptr;
    if (!calls.empty())
        Store_Result();
}

// Takes the result of a nested call from the stack into its scratch variable, which takes the place of the
// whole call in the text.
void ExpressionParser::Inline_Calls::Store_Result() {
    const String name = Scratch_Name(calls.back().depth - 1);
    const int ident = parser.Find_Variable_Ident(name.text(), name.length(), SCOPE_LOCAL);
    parser.Opcode_Queue()->Queue_Variable_Instruction(1, ident, SCOPE_LOCAL, 0, 0);
    parser.Decrement_Stackcount();
    text += "l.";
    text += name;
}

String ExpressionParser::Inline_Calls::Scratch_Name(int depth) {
    String name("__scratch_funcdo_");
    name += std::to_string(depth).c_str();
    name += '_';
    name += parser.ScratchVariable_Ident();
    return name;
}
