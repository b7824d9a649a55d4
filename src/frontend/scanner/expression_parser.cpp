// Expressions: tokens in, operands and operators out.

#include "frontend/scanner/expression_parser.h"

#include "core/text_length.h"
#include "frontend/scanner/parser.h"
#include "value/variable_hash.h"

#include <algorithm>
#include <string_view>

ExpressionParser::ExpressionParser(Parser* parser)
    : parser(parser), minus_operator(operator_lookup.Lookup("-", 1)) {
}

ExpressionParser::~ExpressionParser() = default;

void ExpressionParser::Start_Of_Expression() {
    operand_seen = 0;
    Reset();
}

// Nearly every operand stands in the source as one piece.
void ExpressionParser::Collect(const char* token, int length) {
    const std::string_view piece = Slice(token, length);
    if (operand.empty()) {
        operand = piece;
    } else if (operand.data() + operand.size() == token) {
        operand = {operand.data(), operand.size() + piece.size()};
    } else {
        if (operand.data() != text.text())
            text.assign(operand.data(), Length());
        text.cat(token, length);
        operand = text.view();
    }
}

// White space is passed where it stands: all that it does is to end an operand.
ParserStatus ExpressionParser::Process_Tokens(Tokenizer_TokenType& type, Tokenizer* tokenizer,
                                              ParserState* state) {
    ParserStatus status = PARSER_OK;
    while (status == PARSER_OK && *state == STATE_EXPRESSION) {
        const Tokenizer::Dotted_Name name =
            scan_state == SCAN_IDLE ? tokenizer->Next_Name() : Tokenizer::Dotted_Name{};
        if (name.length != 0) {
            status = Take_Name(name, tokenizer);
            continue;
        }
        const char* token;
        int length;
        type = tokenizer->Get_Next_Token(&token, length);
        if (type == TOKEN_RBRACE || type == TOKEN_EOF)
            break;
        status = Process_Expression_Fragment(type, token, length, tokenizer, state);
        if (status == PARSER_OK && *state == STATE_EXPRESSION && tokenizer->Skip_Space())
            status = Take_Space();
    }
    return status;
}

ParserStatus ExpressionParser::Process_Expression_Fragment(Tokenizer_TokenType type, const char* token,
                                                           int length, Tokenizer* tokenizer,
                                                           ParserState* state) {
    switch (type) {
    case TOKEN_IDENT: return Take_Identifier(token, length, tokenizer);
    case TOKEN_SQUOTE: return Take_String(tokenizer);
    case TOKEN_OPERATOR: return Take_Operator(token, length, tokenizer, state);
    case TOKEN_NUMBER: return Take_Number(token, length);
    case TOKEN_LPAREN: return Take_Open_Parenthesis(token);
    case TOKEN_RPAREN: return Take_Close_Parenthesis(token);
    case TOKEN_DOT: return Take_Dot(token);
    case TOKEN_SPACE: return Take_Space();
    case END_OF_EXPRESSION: return Expression_Flush();
    default: return Skip_Expression(token, length, tokenizer, state);
    }
}

inline ParserStatus ExpressionParser::Take_Whole_Name(const char* name, int length, Tokenizer* tokenizer) {
    if (tokenizer->Take('('))
        return parser->Expression_StartFunctionCall(name, length, 0);
    operand = Slice(name, length);
    scan_state = SCAN_NAME;
    if (!tokenizer->Skip_Space())
        return PARSER_OK;
    const ParserStatus status = Flush_Name();
    Reset();
    return status;
}

// A word is an operator only where no operand is being collected: behind one it needs white space in front. A
// dotted name, and the parenthesis that makes it a call, are taken at once; by its tokens it would end up in
// the same state.
ParserStatus ExpressionParser::Take_Identifier(const char* token, int length, Tokenizer* tokenizer) {
    operand_is_plain = false;
    if (scan_state == SCAN_IDLE) {
        if (const _OperatorLookup* word = operator_lookup.Lookup(token, length))
            return Take_Word(*word, token);
        tokenizer->Read_Dotted_Name(length);
        return Take_Whole_Name(token, length, tokenizer);
    }
    Collect(token, length);
    if (scan_state == SCAN_CALL_DOT)
        scan_state = SCAN_CALL_NAME;
    else if (scan_state != SCAN_CALL_NAME && scan_state != SCAN_MEMBER)
        scan_state = SCAN_NAME;
    return PARSER_OK;
}

// The same without the tokens, for a name that the tokenizer has seen whole.
ParserStatus ExpressionParser::Take_Name(Tokenizer::Dotted_Name name, Tokenizer* tokenizer) {
    const _OperatorLookup* word =
        name.first_length > 1 ? operator_lookup.Lookup(name.text, name.first_length) : nullptr;
    if (word) {
        tokenizer->Pass(name.first_length);
        const ParserStatus status = Take_Word(*word, name.text);
        return status == PARSER_OK && tokenizer->Skip_Space() ? Take_Space() : status;
    }
    tokenizer->Pass(name.length);
    operand_is_plain = true;
    return Take_Whole_Name(name.text, name.length, tokenizer);
}

ParserStatus ExpressionParser::Take_Word(const _OperatorLookup& word, const char* token) {
    if (word.id == OPERATOR_FMT || word.id == OPERATOR_SUBSTR)
        return parser->Report<Message::Operator_Obsolete>(Slice(token, word.length));
    operand_seen = 0;
    return Hand_On(word, 0);
}

// A name directly in front of the literal is not flushed, and so comes behind it.
ParserStatus ExpressionParser::Take_String(Tokenizer* tokenizer) {
    const int line = parser->Linenumber();
    const char* literal;
    int length;
    const Tokenizer_TokenType end = tokenizer->Read_Until(&literal, length, '\'', '\\');
    const ParserStatus status = parser->Expression_StringLiteral(literal, std::max(length - 1, 0));
    if (end != TOKEN_EOF)
        return status;
    return parser->Fatal_At<Message::String_Literal_Unterminated>(line, nullptr);
}

ParserStatus ExpressionParser::Take_Operator(const char* token, int length, Tokenizer* tokenizer,
                                             ParserState* state) {
    const char sign = length == 1 ? *token : '\0';
    if (!operand_seen && scan_state == SCAN_IDLE && sign == '-') {
        Collect(token, length);
        scan_state = SCAN_MINUS;
        return PARSER_OK;
    }
    if (const ParserStatus status = Expression_Flush(); status != PARSER_OK)
        return status;

    int flags = operand_seen ? 0 : OPERATOR_PREFIX;
    const char* next;
    int next_length;
    if (sign == ']' && tokenizer->Peek(&next, next_length) == TOKEN_DOT) {
        scan_state = SCAN_CALL_BRACKET;
        flags |= OPERATOR_BEFORE_DOT;
    }
    const _OperatorLookup* found =
        sign ? operator_lookup.Lookup_Sign(sign) : operator_lookup.Lookup(token, length);
    if (!found)
        return parser->Report<Message::Internal_Operator_Unidentified>(Slice(token, length));
    if (const ParserStatus status = Hand_On(*found, flags); status != PARSER_OK)
        return status;

    if (scan_state == SCAN_CALL_BRACKET) {
        const ParserStatus status = Parse_Funcdo(tokenizer, 0, state);
        scan_state = SCAN_IDLE;
        operand_seen = 1;
        return status;
    }
    if (found->id == OPERATOR_MEMBER)
        scan_state = SCAN_MEMBER;
    if (found->id != OPERATOR_DECREMENT && found->id != OPERATOR_INCREMENT)
        operand_seen = 0;
    return PARSER_OK;
}

ParserStatus ExpressionParser::Hand_On(const _OperatorLookup& op, int flags) {
    return parser->Expression_Operator(op.id, op.priority, op.operands, op.type, flags);
}

// A number behind a number is the rest of something like 1.2.3, and ends it.
ParserStatus ExpressionParser::Take_Number(const char* token, int length) {
    Collect(token, length);
    if (scan_state == SCAN_NUMBER)
        return Expression_Flush();
    if (scan_state == SCAN_IDLE || scan_state == SCAN_MINUS)
        scan_state = SCAN_NUMBER;
    return PARSER_OK;
}

// Nothing is flushed: a minus or number that waits is dropped, so that -(a) is (a).
ParserStatus ExpressionParser::Take_Open_Parenthesis(const char* token) {
    ParserStatus status;
    switch (scan_state) {
    case SCAN_CALL_NAME:
        Collect(token, 1);
        ++paren_depth;
        return PARSER_OK;
    case SCAN_NAME: status = parser->Expression_StartFunctionCall(operand.data(), Length(), 0); break;
    case SCAN_MEMBER: status = parser->Report<Message::Expected_Member_Name>(); break;
    default: status = parser->Expression_StartParen(); break;
    }
    Reset();
    return status;
}

ParserStatus ExpressionParser::Take_Close_Parenthesis(const char* token) {
    if (scan_state == SCAN_CALL_NAME)
        return Close_Call_Text(token);
    ParserStatus status = Expression_Flush();
    if (status == PARSER_OK)
        status = parser->Expression_CloseParen();
    operand_seen = 1;
    return status;
}

ParserStatus ExpressionParser::Close_Call_Text(const char* token) {
    Collect(token, 1);
    if (--paren_depth > 0)
        return PARSER_OK;
    if (paren_depth < 0)
        return parser->Report<Message::Expected_Open_Parenthesis>();
    parser->Capture_Expression_Text(0);
    return Expression_Flush();
}

ParserStatus ExpressionParser::Take_Dot(const char* token) {
    ParserStatus status = PARSER_OK;
    switch (scan_state) {
    case SCAN_IDLE: scan_state = SCAN_NUMBER; break;
    case SCAN_NAME:
    case SCAN_DOTTED_NAME:
        scan_state = SCAN_DOTTED_NAME;
        (dot_count == 0 ? first_dot : last_dot) = Length() + 1;
        break;
    case SCAN_CALL_BRACKET:
        scan_state = SCAN_CALL_DOT;
        paren_depth = 0;
        parser->Capture_Expression_Text(1);
        break;
    case SCAN_CALL_DOT: status = parser->Report<Message::Expected_Function_Name>(); break;
    default: break;
    }
    ++dot_count;
    Collect(token, 1);
    return status;
}

// A minus in front of white space is no sign of a literal but the operator, which has no left side.
ParserStatus ExpressionParser::Take_Space() {
    if (scan_state == SCAN_CALL_NAME)
        return PARSER_OK;
    if (scan_state == SCAN_MINUS) {
        if (const ParserStatus status = Hand_On(*minus_operator, 0); status != PARSER_OK)
            return status;
    }
    return Expression_Flush();
}

// Reads the rest of the value, so that the scan goes on behind it. Identifiers keep the rule of expressions
// until the next expression ends.
ParserStatus ExpressionParser::Skip_Expression(const char* token, int length, Tokenizer* tokenizer,
                                               ParserState* state) {
    const std::string_view unexpected = Slice(token, length);
    parser->Reset_Expression();
    parser->Reset_Output();
    const ParserStatus status = parser->Report<Message::Unexpected_In_Expression>(unexpected);
    if (!tokenizer)
        return status;
    Tokenizer_TokenType type;
    const char* skipped;
    int skipped_length;
    do
        type = tokenizer->Get_Next_Token(&skipped, skipped_length);
    while (type != TOKEN_RBRACE && type != TOKEN_EOF);
    if (tokenizer->Get_Next_Token(&skipped, skipped_length) != TOKEN_DQUOTE)
        parser->Note<Message::Unexpected_At_Expression_End>(unexpected);
    *state = STATE_ATTRIBUTE;
    return PARSER_OK;
}

ParserStatus ExpressionParser::Send_Operand() {
    ParserStatus status = PARSER_OK;
    switch (scan_state) {
    case SCAN_IDLE:
    case SCAN_CALL_BRACKET: break;
    case SCAN_NAME:
    case SCAN_DOTTED_NAME: status = Flush_Name(); break;
    case SCAN_NUMBER: status = Flush_Number(); break;
    case SCAN_MINUS: operand_seen = 1; break;
    case SCAN_MEMBER:
        status = parser->Expression_Member(operand.data(), Length());
        operand_seen = 1;
        break;
    case SCAN_CALL_DOT: status = parser->Report<Message::Internal_External_Function>(); break;
    case SCAN_CALL_NAME: status = parser->Expression_StartFunctionCall(operand.data(), Length(), 1); break;
    }
    return status;
}

ParserStatus ExpressionParser::Flush_Name() {
    if (!operand_is_plain && operand.find('\\') != operand.npos) {
        text = String(operand.data(), Length());
        text.gsub("\\", nullptr);
        operand = text.view();
    }
    const char* name;
    const char* alias = nullptr;
    int name_length;
    int alias_length = 0;
    const Variable_Scope scope =
        VariableHash::Scope(operand.data(), Length(), &name, &name_length, &alias, &alias_length);
    ParserStatus status =
        parser->Expression_Variable(name, name_length, scope, alias, alias_length, operand.data(), Length());
    if (status == PARSER_OK && scope == SCOPE_UNSCOPED)
        status = Check_Scope();
    operand_seen = 1;
    return status;
}

ParserStatus ExpressionParser::Check_Scope() {
    const Parser::Complaint complaint = parser->Complaint_Of_Scope(operand);
    return complaint.code ? parser->CompileError(complaint.code, complaint.text, -1, nullptr) : PARSER_OK;
}

// A float that begins with its point gets a digit in front of it.
ParserStatus ExpressionParser::Flush_Number() {
    operand_seen = 1;
    const auto dots = std::count(operand.begin(), operand.end(), '.');
    if (dots == 0)
        return parser->Expression_NumericLiteral(operand.data(), Length());
    const int sign_length = operand.front() == '-';
    if (operand.substr(static_cast<std::size_t>(sign_length)).starts_with('.')) {
        String whole(operand.data(), sign_length);
        whole.cat('0');
        whole.cat(operand.data() + sign_length, Length() - sign_length);
        text = whole;
        operand = text.view();
    }
    const ParserStatus status = parser->Expression_FloatLiteral(operand.data(), Length());
    return dots < 2 ? status : parser->Report<Message::Float_Invalid>(operand);
}
