#ifndef FRONTEND_PARSER_H
#define FRONTEND_PARSER_H

#include "app/services/diagnostics.h"
#include "core/stack.h"
#include "core/string.h"
#include "core/text_length.h"
#include "frontend/scanner/parser_types.h"
#include "frontend/scanner/tag_lookup.h"
#include "frontend/scanner/tokenizer.h"
#include "value/variable_scope.h"

#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>

class CompilerApplication;
class ExpressionParser;
class OpcodeQueue;

// Parser drives a Tokenizer through the states of the source language and turns the text into events: tags,
// attributes, text, expressions. It knows the surface of the language and nothing of what tags mean; a code
// generator derives from it and answers the events. It also keeps the tokenizers of the files that an include
// has suspended, and does the first step of every diagnostic.
//
// The text of an event is a slice of the source, good until the event returns. Events answer a ParserStatus;
// what CompileError answered is handed on unchanged.
class Parser {
  public:
    // Takes the tokenizer over; it may be null until Start. The application is not owned, and may be null:
    // reports are then counted and kept, but not printed.
    Parser(Tokenizer* tokenizer, CompilerApplication* application, ParserStartState start_state);
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.

    // Takes the tokenizer over and hands the earlier one to the caller.
    virtual Tokenizer* Set_Tokenizer(Tokenizer* next);
    virtual int* In_Expression();
    virtual ~Parser();
    virtual int Linenumber();
    // Text of the last diagnostic, warnings too.
    virtual const String& Get_Last_Error();
    virtual CompilerApplication* app();
    // Reports a diagnostic. A line of -1 is the current line, a null file name the current file. The answer
    // is PARSER_OK for a warning that doesn't count, else PARSER_ERROR.
    virtual ParserStatus CompileError(ErrorCode code, const String& message, int line,
                                      const String* filename);

    // Drops the state of the expression that is being compiled.
    virtual void Reset_Expression() = 0;
    virtual ParserStatus Start_Of_Expression() = 0;
    virtual ParserStatus End_Of_Expression() = 0;
    // An event answered PARSER_ERROR.
    virtual void Reset_Output() = 0;
    // The name is the table's, null for a closing tag; required and optional count the slots of the table's
    // row.
    virtual ParserStatus Start_Of_Tag(int tag, int closing, int required, int optional, const char* name) = 0;
    virtual ParserStatus Attribute_Name(const char* text, int length) = 0;
    virtual ParserStatus Attribute_Value(const char* text, int length) = 0;
    // Comes twice for a self-closing tag, at its / and at its >, and once more than is needed for a closing
    // tag.
    virtual ParserStatus End_Of_Tag(int self_closing) = 0;
    // HTML: a tag that is not in the tag table, or a declaration.
    virtual ParserStatus Unknown(const char* text, int length) = 0;
    // Plain text.
    virtual ParserStatus Unknown_Compress(const char* text, int length) = 0;
    // A variable: its name without the scope's prefix, the alias of a database field or null, and its whole
    // spelling.
    virtual ParserStatus Expression_Variable(const char* name, int length, Variable_Scope scope,
                                             const char* alias, int alias_length, const char* full_text,
                                             int full_length) = 0;
    // The numbers of the operator table, and Operator_Flag bits.
    virtual ParserStatus Expression_Operator(int id, int priority, int operands, int type, int flags) = 0;
    virtual ParserStatus Expression_StartParen() = 0;
    // With dynamic the text is that of a whole call, arguments included, of a function in another file.
    virtual ParserStatus Expression_StartFunctionCall(const char* name, int length, int dynamic) = 0;
    virtual ParserStatus Expression_CloseParen() = 0;
    virtual ParserStatus Expression_StringLiteral(const char* text, int length) = 0;
    virtual ParserStatus Expression_NumericLiteral(const char* text, int length) = 0;
    virtual ParserStatus Expression_FloatLiteral(const char* text, int length) = 0;
    virtual ParserStatus Expression_Member(const char* name, int length) = 0;
    // The tokenizer's, with \ as escape.
    virtual Tokenizer_TokenType Read_Until(const char** text, int& length, char terminator);
    // The scanner starts on a file, or returns to it from an included one.
    virtual ParserStatus Start_Of_File() = 0;
    virtual ParserStatus End_Of_File(ParserStatus status) = 0;
    // The > of a tag; a null tag is one that is not in the tag table.
    virtual ParserStatus Process_GT_State(const _TagLookup* tag, const char* text, int length);
    virtual void Set_Output_Flags(int flags); // Output_Flag bits
    // The next expression is not compiled: its text, braces included, arrives as a plain value.
    virtual void Capture_Expression_Text(int capture);
    virtual OpcodeQueue* Opcode_Queue() = 0;
    virtual int Find_Variable_Ident(const char* name, int length, Variable_Scope scope) = 0;
    virtual String ScratchVariable_Ident() = 0;
    virtual void Output_Variable_Instruction(int is_pop, int ident, Variable_Scope scope, int alias,
                                             int by_reference) = 0;
    virtual void Decrement_Stackcount() = 0;
    virtual void Output_Comment(const char* text, int length);
    virtual void Output_Assembly(const char* text, int length) = 0;

    // Runs one source to its end, the files that it includes too. Answers 1 when anything was reported as an
    // error, else 0.
    int Start();

    // What the pedantic checks have to say of a name without scope prefix; a code of 0 for nothing.
    struct Complaint {
        ErrorCode code = 0;
        String text;
    };
    Complaint Complaint_Of_Scope(std::string_view name);

    // Linenumber, for what asks by the token.
    int Line() const { return tokenizer->line + 1; }

    // Reports a message: at the current line of the current file, or at a line of a file in the terms of
    // CompileError. The status has to be handed up. Never inlined, so that the callers, which report next to
    // never, needn't make room for the text.
    template <Message message, typename... Arguments>
    [[nodiscard]] ParserStatus Report(const Arguments&... arguments) {
        return Report_At<message>(-1, nullptr, arguments...);
    }
    template <Message message, typename... Arguments>
    [[nodiscard, gnu::cold, gnu::noinline]] ParserStatus Report_At(int line, const String* filename,
                                                                   const Arguments&... arguments) {
        return CompileError(Code_Of_Message(message), Text_Of_Message<message>(arguments...), line, filename);
    }

    // Reports a message and goes on, whatever the status: something behind it answers for the fault, or
    // nothing does.
    template <Message message, typename... Arguments>
    void Note(const Arguments&... arguments) {
        (void)Report<message>(arguments...);
    }
    template <Message message, typename... Arguments>
    void Note_At(int line, const String* filename, const Arguments&... arguments) {
        (void)Report_At<message>(line, filename, arguments...);
    }

    // Reports a message and ends the scan.
    template <Message message, typename... Arguments>
    [[nodiscard]] ParserStatus Fatal(const Arguments&... arguments) {
        return Fatal_At<message>(-1, nullptr, arguments...);
    }
    template <Message message, typename... Arguments>
    [[nodiscard]] ParserStatus Fatal_At(int line, const String* filename, const Arguments&... arguments) {
        Note_At<message>(line, filename, arguments...);
        return PARSER_FATAL;
    }

  private:
    // What Start knows from token to token.
    struct Scan {
        const _TagLookup* tag = nullptr; // of the last tag name; null when it was not in the table
        int tag_id = -1;                 // -1 when the tag is not known
        Tokenizer_TokenType type = TOKEN_EOF;
        const char* text = "";
        int length = 0;
        ParserStatus status = PARSER_OK;

        std::string_view token() const { return Slice(text, length); }
        bool Is_Operator(char sign) const { return type == TOKEN_OPERATOR && length == 1 && *text == sign; }
    };

    // The order of the fields is part of the binary interface.
    std::unique_ptr<ExpressionParser> expression_parser;

  protected:
    std::unique_ptr<Tokenizer> tokenizer;
    TagLookup tag_lookup;
    ParserStartState start_state;
    CompilerApplication* application;
    int error_count = 0; // of this run of Start

  private:
    ParserState state = STATE_TEXT;
    String last_error;
    int capture_expression = 0;
    // Text that waits to be handed on, a slice of the source; null for none.
    const char* pending_text = nullptr;
    int pending_length = 0;
    int pending_is_html = 0; // it belongs to a tag that is not in the tag table, or to a declaration
    int output_flags = OUTPUT_HTML | OUTPUT_TEXT; // Output_Flag bits
    int expression_opened_in_html = 0;
    // The value of an attribute of a known tag, a slice of the source; null for none.
    const char* value_text = nullptr;
    int value_length = 0;

  protected:
    Stack<Tokenizer> tokenizer_stack{1}; // of the files that an include has suspended

    // Goes on with the tokenizer's file, which becomes the parser's. The current one waits for its end.
    void Enter_Included_File(std::unique_ptr<Tokenizer> included);
    // Whether a file that waits has this very name.
    bool Is_Suspended(const String& name) const;

  private:
    std::unordered_multiset<std::string> suspended_names; // of tokenizer_stack

    // parser.cpp
    void Step(Scan& scan);
    void Check_Source();
    void End_Of_Text(Scan& scan);
    void Return_To_Including_File(Scan& scan);
    void Accumulate(int length) {
        if (pending_text)
            pending_length += length;
    }
    void Start_Or_Accumulate(const char* text, int length);
    ParserStatus Flush_Unknown();
    ParserStatus Flush_Compressed(const char* text, int length);
    ParserStatus Warn_Of_Lost_Text(const char* text, int length);
    void Drop_Pending();
    void Print_Include_Chain();

    // parser_states.cpp; where nothing was reported, states may draw the next token and go on with it
    void Draw(Scan& scan) { scan.type = tokenizer->Get_Next_Token(&scan.text, scan.length); }
    void State_Text(Scan& scan);
    void State_Tag_Open(Scan& scan);
    void State_Declaration(Scan& scan);
    void State_Attribute(Scan& scan);
    void State_Equals(Scan& scan);
    void State_Value(Scan& scan);
    void State_Dquote(Scan& scan);
    void State_Expression(Scan& scan);
    void State_Expression_End(Scan& scan);
    void State_Close_Name(Scan& scan);
    void State_Close_Gt(Scan& scan);
    void State_Bare_Value(Scan& scan);
    void Open_Tag(Scan& scan);
    void Open_Known_Tag(Scan& scan);
    void Read_Attributes(Scan& scan);
    void Read_Attribute(Scan& scan);
    void Open_Unknown_Tag(Scan& scan);
    void Read_Declaration(Scan& scan, int line, std::string_view terminator);
    void Start_Bare_Value(const Scan& scan);
    void Close_Tag(Scan& scan);
    void Open_Expression(Scan& scan);
    void Read_Expression(Scan& scan);
    void End_Expression(Scan& scan);
    void Close_Expression(Scan& scan);
    void End_Bare_Text(Scan& scan);
    void End_Bare_Value(Scan& scan);

    // passthrough_text.cpp
    ParserStatus Eat_TnCOMMENT();
    ParserStatus Eat_TnASSEMBLY();
    ParserStatus Process_Quoted_String(char quote, const char* text, int length);
    static bool Verify_Numeric(const char* text, int length);
};

#endif
