#ifndef FRONTEND_EXPRESSION_PARSER_H
#define FRONTEND_EXPRESSION_PARSER_H

#include "core/string.h"
#include "core/text_length.h"
#include "frontend/scanner/operator_lookup.h"
#include "frontend/scanner/parser_types.h"
#include "frontend/scanner/tokenizer.h"

#include <string_view>

class Parser;

// ExpressionParser groups the tokens between braces into operands and operators and calls the Expression_
// operations of its parser, in source order. It knows no precedence: the numbers of an operator come from the
// table and go on to the code generator.
//
// The parser makes it and frees it. Every answer is the status of the last event or report.
class ExpressionParser {
  public:
    explicit ExpressionParser(Parser* parser);
    virtual ~ExpressionParser();
    ExpressionParser(const ExpressionParser&) = delete;
    ExpressionParser& operator=(const ExpressionParser&) = delete;

    void Start_Of_Expression();
    // Drops the operand that is being collected.
    void Reset() {
        operand = "";
        scan_state = SCAN_IDLE;
        dot_count = 0;
    }
    // Takes the next token. Where the token can't stand in an expression, the rest of the value is read from
    // the tokenizer and the state of the scanner set to what follows. With END_OF_EXPRESSION, tokenizer and
    // state may be null.
    ParserStatus Process_Expression_Fragment(Tokenizer_TokenType type, const char* token, int length,
                                             Tokenizer* tokenizer, ParserState* state);
    // Draws and takes tokens up to the closing brace, the end of the text, or what the scanner has to look at
    // first: a report, or another state. The type is then that of the last token drawn.
    ParserStatus Process_Tokens(Tokenizer_TokenType& type, Tokenizer* tokenizer, ParserState* state);
    // Hands on the operand that is being collected, if any.
    ParserStatus Expression_Flush() {
        const ParserStatus status = scan_state == SCAN_IDLE ? PARSER_OK : Send_Operand();
        Reset();
        return status;
    }
    // Reads the call that follows the ] of [file].function(arguments), entered at the dot. The arguments are
    // handed on as text, for the code generator to compile; calls of the same form inside them are compiled
    // first, each into a scratch variable that takes its place in the text. Depth numbers these variables.
    ParserStatus Parse_Funcdo(Tokenizer* tokenizer, int depth, ParserState* state);

  private:
    enum Scan_State : int {
        SCAN_IDLE = 0,
        SCAN_DOTTED_NAME = 1,
        SCAN_NUMBER = 2,
        SCAN_MINUS = 3,  // behind a minus that waits for its operand
        SCAN_MEMBER = 4, // a name behind :
        SCAN_NAME = 5,
        SCAN_CALL_BRACKET = 6, // behind a ] that a dot follows
        SCAN_CALL_DOT = 7,     // behind that dot
        SCAN_CALL_NAME = 8,    // a name behind that dot
    };

    int Length() const { return Length_Of(operand); } // of the operand
    void Collect(const char* token, int length);
    ParserStatus Take_Identifier(const char* token, int length, Tokenizer* tokenizer);
    ParserStatus Take_Name(Tokenizer::Dotted_Name name, Tokenizer* tokenizer);
    ParserStatus Take_Word(const _OperatorLookup& word, const char* token);
    ParserStatus Take_Whole_Name(const char* name, int length, Tokenizer* tokenizer);
    ParserStatus Take_String(Tokenizer* tokenizer);
    ParserStatus Take_Operator(const char* token, int length, Tokenizer* tokenizer, ParserState* state);
    ParserStatus Take_Number(const char* token, int length);
    ParserStatus Take_Open_Parenthesis(const char* token);
    ParserStatus Take_Close_Parenthesis(const char* token);
    ParserStatus Close_Call_Text(const char* token);
    ParserStatus Take_Dot(const char* token);
    ParserStatus Take_Space();
    ParserStatus Skip_Expression(const char* token, int length, Tokenizer* tokenizer, ParserState* state);
    ParserStatus Hand_On(const _OperatorLookup& op, int flags);

    ParserStatus Send_Operand();
    ParserStatus Flush_Name();
    ParserStatus Flush_Number();

    ParserStatus Check_Scope();

    class Inline_Calls; // of inline_call.cpp

    // The order of the fields is part of the binary interface.
    Parser* parser; // not owned
    OperatorLookup operator_lookup;
    const _OperatorLookup* minus_operator;
    int operand_seen = 0; // the last thing completed was an operand, so an operator has a left side
    Scan_State scan_state = SCAN_IDLE;
    int dot_count = 0;   // dots taken into text so far
    int first_dot = 0;   // position behind the first of them
    int last_dot = 0;    // position behind the latest
    String text;         // takes an operand that is no slice of the source
    int paren_depth = 0; // within the states behind a ] that a dot follows

    std::string_view operand;      // that is being collected: a slice of the source, or all of text
    bool operand_is_plain = false; // a name that is known to hold no backslash
};

#endif
