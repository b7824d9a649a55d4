// Numbers that the tokenizer, the scanner, the code generator and the options share.
#ifndef FRONTEND_PARSER_TYPES_H
#define FRONTEND_PARSER_TYPES_H

enum Tokenizer_TokenType : int {
    TOKEN_GT = 0,
    TOKEN_LT = 1,
    TOKEN_BANG = 2,
    TOKEN_IDENT = 3,
    TOKEN_EQUALS = 4,
    TOKEN_DQUOTE = 5,
    TOKEN_SQUOTE = 6,
    TOKEN_OPERATOR = 7, // $ * , / : [ ] + - and the doubled ++ and --
    TOKEN_NUMBER = 8,
    TOKEN_LBRACE = 10,
    TOKEN_RBRACE = 11,
    TOKEN_LPAREN = 12,
    TOKEN_RPAREN = 13,
    TOKEN_DOT = 14,
    TOKEN_SPACE = 15,        // a run of white space
    TOKEN_UNTERMINATED = 16, // of Read_Until: the text ended ahead of the terminator
    TOKEN_EOF = 17,
    TOKEN_BACKSLASH = 18,
    TOKEN_OTHER = 19, // any other byte; of Read_Until: the terminator was found
};

// What the expression scanner is handed, with no text, at the end of an expression.
inline constexpr Tokenizer_TokenType END_OF_EXPRESSION = TOKEN_UNTERMINATED;

// Bits of output_flags: what of the source outside known tags reaches the output.
enum Output_Flag : int {
    OUTPUT_HTML = 1,     // tags that are not in the tag table, and declarations
    OUTPUT_TEXT = 2,     // plain text
    OUTPUT_COMPRESS = 4, // of plain text, with its white space compressed
};

// Who may call a TnFUNCTION.
enum Function_Access : int { ACCESS_UNSET = -1, ACCESS_PUBLIC = 1, ACCESS_PRIVATE = 2 };

enum ParserStartState : int {
    START_FILE = 0,       // a source file
    START_EXPRESSION = 1, // a piece of text that holds one expression
};

// The result of all events of the scanner.
enum ParserStatus : int {
    PARSER_OK = 0,
    PARSER_ERROR = 1, // an error was reported: the scanner resets the output and goes on
    PARSER_FATAL = 2, // scanning stops
};

enum ParserState : int {
    STATE_TEXT = 0,
    STATE_DONE = 1,
    STATE_TAG_OPEN = 2,       // behind <
    STATE_DECLARATION = 3,    // behind <!
    STATE_ATTRIBUTE = 4,      // in a tag, ahead of an attribute's name
    STATE_EQUALS = 5,         // behind an attribute's name
    STATE_VALUE = 6,          // behind =
    STATE_DQUOTE = 7,         // behind the opening quote of a value
    STATE_EXPRESSION_END = 8, // behind the closing brace
    STATE_EXPRESSION = 9,     // between the braces
    STATE_CLOSE_NAME = 10,    // behind </
    STATE_CLOSE_GT = 11,      // ahead of the > of a closing or self-closing tag
    STATE_BARE_VALUE = 12,    // in an unquoted value
};

#endif
