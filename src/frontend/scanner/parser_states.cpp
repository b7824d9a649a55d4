// One function per state of the scanner: what a token means there, and which state is next.

#include "core/text_length.h"
#include "frontend/scanner/expression_parser.h"
#include "frontend/scanner/parser.h"

#include <algorithm>

namespace {

// Whether an unknown tag looks like one that was meant to be known. The tags of another family share the
// prefix.
bool Looks_Misspelled(std::string_view name) {
    const bool prefixed = name.size() > 1 && (name[0] | 0x20) == 't' && (name[1] | 0x20) == 'n';
    return prefixed && name.substr(2, 2) != "t:";
}

} // namespace

void Parser::State_Text(Scan& scan) {
    switch (scan.type) {
    case TOKEN_LT: return Open_Tag(scan);
    case TOKEN_EOF: return End_Of_Text(scan);
    default: break;
    }
    Start_Or_Accumulate(scan.text, scan.length);
    if (tokenizer->Is_Next('<')) {
        Draw(scan);
        Open_Tag(scan);
    }
}

void Parser::Open_Tag(Scan& scan) {
    scan.status = Flush_Unknown();
    pending_text = scan.text;
    pending_length = 1;
    state = STATE_TAG_OPEN;
    if (scan.status != PARSER_OK)
        return;
    Draw(scan);
    State_Tag_Open(scan);
}

void Parser::State_Tag_Open(Scan& scan) {
    if (scan.type == TOKEN_IDENT) {
        scan.tag = tag_lookup.Lookup(scan.text, scan.length);
        return scan.tag ? Open_Known_Tag(scan) : Open_Unknown_Tag(scan);
    }
    if (scan.type == TOKEN_BANG) {
        state = STATE_DECLARATION;
        return;
    }
    Accumulate(scan.length);
    if (!scan.Is_Operator('/')) {
        state = STATE_TEXT;
        return;
    }
    state = STATE_CLOSE_NAME;
    Draw(scan);
    State_Close_Name(scan);
}

// The < of a known tag, the only text pending here, is dropped.
void Parser::Open_Known_Tag(Scan& scan) {
    pending_text = nullptr;
    pending_is_html = 0;
    switch (scan.tag->id) {
    case Tag::Comment: scan.status = Eat_TnCOMMENT(); break;
    case Tag::Assembly: scan.status = Eat_TnASSEMBLY(); break;
    default:
        scan.tag_id = scan.tag->id;
        state = STATE_ATTRIBUTE;
        scan.status = Start_Of_Tag(scan.tag_id, 0, scan.tag->required, scan.tag->optional, scan.tag->key);
        return Read_Attributes(scan);
    }
}

// Up to the end of the tag, or to what Start has to look at.
void Parser::Read_Attributes(Scan& scan) {
    while (scan.status == PARSER_OK && state == STATE_ATTRIBUTE && !pending_text) {
        tokenizer->Skip_Space();
        Draw(scan);
        State_Attribute(scan);
    }
}

// An unknown tag is HTML: it runs through the same states, adds up in the pending text, and goes out at its
// >.
void Parser::Open_Unknown_Tag(Scan& scan) {
    pending_is_html = 1;
    Accumulate(scan.length);
    scan.tag_id = -1;
    state = STATE_ATTRIBUTE;
    if (Looks_Misspelled(scan.token()))
        scan.status = Report<Message::Tag_Misspelled>(scan.token());
}

void Parser::State_Declaration(Scan& scan) {
    pending_is_html = 1;
    pending_length += scan.length + 1;
    state = STATE_TEXT;
    const int line = Linenumber();
    scan.status = Flush_Unknown();
    if (scan.type != TOKEN_OPERATOR)
        Read_Declaration(scan, line, ">");
    else if (scan.token() == "--")
        Read_Declaration(scan, line, "-->");
    // Behind any other operator the text up to the next tag is HTML.
}

void Parser::Read_Declaration(Scan& scan, int line, std::string_view terminator) {
    pending_length = 0;
    const Tokenizer_TokenType type =
        tokenizer->Read_Until(&pending_text, pending_length, terminator.data(), Length_Of(terminator));
    if (type == TOKEN_EOF) {
        scan.status = Fatal_At<Message::Pattern_Unterminated>(line, nullptr, terminator);
    } else
        scan.status = Flush_Unknown();
    pending_is_html = 0;
}

void Parser::State_Attribute(Scan& scan) {
    switch (scan.type) {
    case TOKEN_SPACE: return Accumulate(scan.length);
    case TOKEN_IDENT:
        state = STATE_EQUALS;
        if (pending_text)
            Accumulate(scan.length);
        else if (scan.tag_id != -1)
            Read_Attribute(scan);
        return;
    case TOKEN_GT: return Close_Tag(scan);
    default: break;
    }
    if (scan.Is_Operator('/')) {
        Accumulate(scan.length);
        state = STATE_CLOSE_GT;
        scan.status = End_Of_Tag(1);
    } else {
        state = STATE_TEXT;
        scan.status = Report<Message::Expected_Attribute_Name>(scan.token());
    }
}

// In the usual form, the name directly followed by an equal sign and a double quote, all of it at once.
void Parser::Read_Attribute(Scan& scan) {
    scan.status = Attribute_Name(scan.text, scan.length);
    if (scan.status != PARSER_OK || !tokenizer->Take('='))
        return;
    state = STATE_VALUE;
    if (!tokenizer->Take('"'))
        return;
    state = STATE_DQUOTE;
    Draw(scan);
    State_Dquote(scan);
}

void Parser::Close_Tag(Scan& scan) {
    state = STATE_TEXT;
    scan.status = Process_GT_State(scan.tag, scan.text, scan.length);
}

void Parser::State_Equals(Scan& scan) {
    switch (scan.type) {
    case TOKEN_EQUALS:
        Accumulate(scan.length);
        state = STATE_VALUE;
        return;
    case TOKEN_GT: return Close_Tag(scan);
    case TOKEN_IDENT: // the attribute before it has no value
        Accumulate(scan.length);
        if (scan.tag_id != -1)
            scan.status = Attribute_Name(scan.text, scan.length);
        return;
    case TOKEN_SPACE: return Accumulate(scan.length);
    default: break;
    }
    if (pending_text && scan.type != TOKEN_EOF)
        return Accumulate(scan.length);
    state = STATE_TEXT;
    scan.status = Report<Message::Expected_Equal_Sign>(scan.token());
}

// In an unknown tag nothing is an error: whatever stands here is its value.
void Parser::State_Value(Scan& scan) {
    Accumulate(scan.length);
    switch (scan.type) {
    case TOKEN_DQUOTE: state = STATE_DQUOTE; return;
    case TOKEN_SQUOTE: scan.status = Process_Quoted_String('\'', scan.text + scan.length, 0); return;
    case TOKEN_NUMBER:
    case TOKEN_DOT: return Start_Bare_Value(scan);
    case TOKEN_SPACE: return;
    default: break;
    }
    if (scan.Is_Operator('-'))
        return Start_Bare_Value(scan);
    if (pending_text) {
        state = STATE_BARE_VALUE;
    } else if (scan.type == TOKEN_OPERATOR) {
        scan.status = Report<Message::Operator_For_Value>(scan.token());
    } else {
        state = STATE_TEXT;
        scan.status = Report<Message::Expected_Value>(scan.token());
    }
}

void Parser::Start_Bare_Value(const Scan& scan) {
    value_text = scan.text;
    value_length = scan.length;
    state = STATE_BARE_VALUE;
}

void Parser::State_Dquote(Scan& scan) {
    switch (scan.type) {
    case TOKEN_DQUOTE:
        state = STATE_ATTRIBUTE;
        if (scan.tag_id != -1)
            scan.status = Attribute_Value(scan.text, 0);
        else
            Start_Or_Accumulate(scan.text, scan.length);
        return;
    case TOKEN_LBRACE: return Open_Expression(scan);
    default: scan.status = Process_Quoted_String('"', scan.text, scan.length); return;
    }
}

// In an unknown tag everything up to the quote goes out here, and the expression's code behind it. An
// expression whose text is wanted becomes an ordinary quoted value, brace included.
void Parser::Open_Expression(Scan& scan) {
    if (Flush_Unknown() == PARSER_OK) {
        expression_parser->Start_Of_Expression();
        scan.status = Start_Of_Expression();
        if (!capture_expression) {
            tokenizer->in_expression = 1;
            state = STATE_EXPRESSION;
            if (scan.status == PARSER_OK)
                Read_Expression(scan);
            return;
        }
        capture_expression = 0;
        Reset_Output(); // a call text that was cut short captures the wrong expression
        if (pending_is_html)
            expression_opened_in_html = 1;
    }
    scan.status = std::max(scan.status, Process_Quoted_String('"', scan.text, scan.length));
}

// Behind a report.
void Parser::State_Expression(Scan& scan) {
    if (scan.type == TOKEN_RBRACE || scan.type == TOKEN_EOF)
        return End_Expression(scan);
    scan.status = expression_parser->Process_Expression_Fragment(scan.type, scan.text, scan.length,
                                                                 tokenizer.get(), &state);
    if (scan.status == PARSER_OK && state == STATE_EXPRESSION)
        Read_Expression(scan);
}

void Parser::Read_Expression(Scan& scan) {
    scan.status = expression_parser->Process_Tokens(scan.type, tokenizer.get(), &state);
    if (scan.status == PARSER_OK && state == STATE_EXPRESSION)
        End_Expression(scan);
}

void Parser::End_Expression(Scan& scan) {
    if (scan.type == TOKEN_RBRACE) {
        if (start_state == START_FILE) {
            state = STATE_EXPRESSION_END;
            Draw(scan);
            return State_Expression_End(scan);
        }
        state = STATE_DONE;
        Close_Expression(scan);
    } else if (start_state == START_FILE) {
        scan.status = Fatal<Message::Expression_Unterminated>();
    } else {
        Reset_Expression();
        state = STATE_DONE;
    }
}

void Parser::State_Expression_End(Scan& scan) {
    if (scan.type == TOKEN_DQUOTE) {
        state = STATE_ATTRIBUTE;
        Close_Expression(scan);
        if (pending_is_html)
            Start_Or_Accumulate(scan.text, scan.length);
    } else if (scan.type == TOKEN_EOF) {
        scan.status = Fatal<Message::Quoted_Expression_Unterminated>();
    } else {
        state = STATE_TEXT;
        scan.status = Report<Message::Expected_Double_Quote>(scan.token());
    }
}

void Parser::Close_Expression(Scan& scan) {
    scan.status = expression_parser->Process_Expression_Fragment(END_OF_EXPRESSION, "", 0, nullptr, nullptr);
    if (scan.status == PARSER_OK)
        scan.status = End_Of_Expression();
    tokenizer->in_expression = 0;
}

void Parser::State_Close_Name(Scan& scan) {
    if (scan.type != TOKEN_IDENT) {
        state = STATE_TEXT;
        scan.status = Report<Message::Expected_Close_Tag_Name>(scan.token());
        return;
    }
    state = STATE_CLOSE_GT;
    scan.tag = tag_lookup.Lookup(scan.text, scan.length);
    if (!scan.tag) {
        pending_is_html = 1;
        Start_Or_Accumulate(scan.text, scan.length);
        scan.tag_id = -1;
        return;
    }
    pending_text = nullptr; // the </ of a known tag is dropped
    scan.tag_id = scan.tag->id;
    scan.status = Start_Of_Tag(scan.tag_id, 1, scan.tag->required, scan.tag->optional, nullptr);
    if (scan.status != PARSER_OK)
        return;
    Draw(scan);
    State_Close_Gt(scan);
}

void Parser::State_Close_Gt(Scan& scan) {
    if (scan.type == TOKEN_GT)
        return Close_Tag(scan);
    state = STATE_TEXT;
    scan.status = Report<Message::Expected_Close_Tag_End>(scan.token());
}

// The end of the text ends a value as white space does.
void Parser::State_Bare_Value(Scan& scan) {
    if (scan.type == TOKEN_GT || scan.type == TOKEN_SPACE || scan.type == TOKEN_EOF) {
        state = scan.type == TOKEN_GT ? STATE_TEXT : STATE_ATTRIBUTE;
        return pending_text ? End_Bare_Text(scan) : End_Bare_Value(scan);
    }
    if (pending_text)
        Accumulate(scan.length);
    else if (value_text)
        value_length += scan.length;
}

void Parser::End_Bare_Text(Scan& scan) {
    Accumulate(scan.length);
    if (scan.type != TOKEN_GT)
        return;
    scan.status = Flush_Unknown();
    pending_is_html = 0;
}

// Of a known tag: only numbers may go unquoted. The > ends the tag whatever came of its value.
void Parser::End_Bare_Value(Scan& scan) {
    scan.status = Verify_Numeric(value_text, value_length)
                      ? Attribute_Value(value_text, value_length)
                      : Report<Message::Unquoted_Value_Not_Numeric>(Slice(value_text, value_length));
    if (scan.type == TOKEN_GT)
        scan.status = std::max(scan.status, End_Of_Tag(0));
}
