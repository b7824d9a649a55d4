// The loop of the scanner, the text that waits to be handed on, the change of files, and the first step of
// every report. What happens at a token is in parser_states.cpp.

#include "frontend/scanner/parser.h"

#include "app/driver/compiler_application.h"
#include "frontend/scanner/expression_parser.h"

#include <string>
#include <utility>

Parser::Parser(Tokenizer* tokenizer, CompilerApplication* application, ParserStartState start_state)
    : expression_parser(std::make_unique<ExpressionParser>(this)), tokenizer(tokenizer),
      start_state(start_state), application(application) {
}

Parser::~Parser() = default;

Tokenizer* Parser::Set_Tokenizer(Tokenizer* next) {
    return std::exchange(tokenizer, std::unique_ptr<Tokenizer>(next)).release();
}

int* Parser::In_Expression() {
    return &tokenizer->in_expression;
}

int Parser::Linenumber() {
    return Line();
}

const String& Parser::Get_Last_Error() {
    return last_error;
}

CompilerApplication* Parser::app() {
    return application;
}

ParserStatus Parser::CompileError(ErrorCode code, const String& message, int line, const String* filename) {
    last_error = message;
    if (!application) {
        ++error_count;
        return PARSER_ERROR;
    }
    if (application->Error_WillPrint(code))
        Print_Include_Chain();
    const String& file = filename ? *filename : tokenizer->filename;
    if (application->CompileError(code, file.text(), line == -1 ? Linenumber() : line, message))
        return PARSER_OK;
    ++error_count;
    return PARSER_ERROR;
}

// A scope for which both were asked is only warned of.
Parser::Complaint Parser::Complaint_Of_Scope(std::string_view name) {
    if (application && application->Pedantic_Warn() & PEDANTIC_SCOPE)
        return {Code_Of_Message(Message::Unscoped_Variable_Warning),
                Text_Of_Message<Message::Unscoped_Variable_Warning>(name)};
    if (application && application->Pedantic_Error() & PEDANTIC_SCOPE)
        return {Code_Of_Message(Message::Unscoped_Variable_Error),
                Text_Of_Message<Message::Unscoped_Variable_Error>(name)};
    return {};
}

void Parser::Print_Include_Chain() {
    for (const Tokenizer* suspended = tokenizer_stack.Top(); suspended; suspended = tokenizer_stack.Peek()) {
        const std::string line = std::to_string(suspended->line + 1);
        application->Error("In file included from " + suspended->filename + " at line " + line.c_str() +
                           "\n");
    }
}

Tokenizer_TokenType Parser::Read_Until(const char** text, int& length, char terminator) {
    return tokenizer->Read_Until(text, length, terminator, '\\');
}

ParserStatus Parser::Process_GT_State(const _TagLookup* tag, const char* text, int length) {
    ParserStatus status = tag ? End_Of_Tag(0) : PARSER_OK;
    if (!pending_is_html)
        return status;
    Start_Or_Accumulate(text, length);
    status = Flush_Unknown();
    pending_is_html = 0;
    return status;
}

void Parser::Set_Output_Flags(int flags) {
    output_flags = flags;
}

void Parser::Capture_Expression_Text(int capture) {
    capture_expression = capture;
}

void Parser::Output_Comment(const char*, int) {
}

int Parser::Start() {
    value_text = nullptr;
    value_length = 0;
    state = start_state == START_FILE ? STATE_TEXT : STATE_DQUOTE;
    pending_text = nullptr;
    expression_opened_in_html = 0;
    error_count = 0;
    Start_Of_File();
    Scan scan;
    while (state != STATE_DONE && scan.status != PARSER_FATAL) {
        scan.type = state == STATE_TEXT ? tokenizer->Get_Next_Text(&scan.text, scan.length)
                                        : tokenizer->Get_Next_Token(&scan.text, scan.length);
        Step(scan);
        if (scan.status == PARSER_ERROR) {
            Reset_Output();
            scan.status = PARSER_OK;
        }
    }
    if (scan.status == PARSER_FATAL)
        Check_Source();
    return error_count != 0;
}

void Parser::Step(Scan& scan) {
    switch (state) {
    case STATE_TEXT: return State_Text(scan);
    case STATE_DONE: return;
    case STATE_TAG_OPEN: return State_Tag_Open(scan);
    case STATE_DECLARATION: return State_Declaration(scan);
    case STATE_ATTRIBUTE: return State_Attribute(scan);
    case STATE_EQUALS: return State_Equals(scan);
    case STATE_VALUE: return State_Value(scan);
    case STATE_DQUOTE: return State_Dquote(scan);
    case STATE_EXPRESSION_END: return State_Expression_End(scan);
    case STATE_EXPRESSION: return State_Expression(scan);
    case STATE_CLOSE_NAME: return State_Close_Name(scan);
    case STATE_CLOSE_GT: return State_Close_Gt(scan);
    case STATE_BARE_VALUE: return State_Bare_Value(scan);
    }
}

// What was read of a file that changed meanwhile is neither the one nor the other.
void Parser::Check_Source() {
    if (!tokenizer->File_Changed())
        return;
    application->Source_Error(tokenizer->filename, file_changed);
    ++error_count;
}

// The end of a file that has any error is told as one.
void Parser::End_Of_Text(Scan& scan) {
    const ParserStatus flushed = Flush_Unknown();
    Check_Source();
    scan.status = End_Of_File(error_count ? PARSER_ERROR : flushed);
    if (tokenizer_stack.Top())
        Return_To_Including_File(scan);
    else
        state = STATE_DONE;
}

// What is pending is a slice of the file that is left, and goes with it: an error may have left the tag of
// the include open, so that another tag, whose text is pending, ended it.
void Parser::Drop_Pending() {
    pending_text = value_text = nullptr;
    pending_length = value_length = 0;
}

void Parser::Enter_Included_File(std::unique_ptr<Tokenizer> included) {
    Drop_Pending();
    suspended_names.emplace(tokenizer->filename.view());
    tokenizer_stack.Push(tokenizer.get());
    Tokenizer* const including = std::exchange(tokenizer, std::move(included)).release(); // the stack has it
    including->File_Deactivate();
}

bool Parser::Is_Suspended(const String& name) const {
    return suspended_names.contains(std::string(name.view()));
}

// Goes on behind the include. A file that can't be had back has no text, so that its end comes next.
void Parser::Return_To_Including_File(Scan& scan) {
    Drop_Pending();
    tokenizer.reset(tokenizer_stack.Pop());
    suspended_names.erase(suspended_names.find(std::string(tokenizer->filename.view())));
    if (tokenizer->File_Activate())
        Start_Of_File();
    else
        scan.status = Report<Message::File_Not_Reopened>(tokenizer->filename, tokenizer->lasterror);
}

void Parser::Start_Or_Accumulate(const char* text, int length) {
    if (!pending_text) {
        pending_text = text;
        pending_length = 0;
    }
    pending_length += length;
}

// Hands the pending text on.
ParserStatus Parser::Flush_Unknown() {
    const char* text = std::exchange(pending_text, nullptr);
    const int length = pending_length;
    if (!text || length < 1)
        return PARSER_OK;
    if (!(output_flags & (pending_is_html ? OUTPUT_HTML : OUTPUT_TEXT)))
        return Warn_Of_Lost_Text(text, length);
    if (pending_is_html)
        return Unknown(text, length);
    return output_flags & OUTPUT_COMPRESS ? Flush_Compressed(text, length) : Unknown_Compress(text, length);
}

ParserStatus Parser::Flush_Compressed(const char* text, int length) {
    String compressed(text, length);
    compressed.CompressWhitespace();
    return compressed.length() == 0 ? Unknown_Compress(" ", 1)
                                    : Unknown_Compress(compressed.text(), compressed.length());
}

ParserStatus Parser::Warn_Of_Lost_Text(const char* text, int length) {
    String lost(text, length);
    lost.StripWhitespace();
    if (lost.length() == 0)
        return PARSER_OK;
    return pending_is_html ? Report<Message::Html_Not_Output>() : Report<Message::Text_Not_Output>();
}
