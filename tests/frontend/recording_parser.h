// A scanner whose events are written down instead of compiled.
#ifndef TESTS_FRONTEND_RECORDING_PARSER_H
#define TESTS_FRONTEND_RECORDING_PARSER_H

#include "frontend/scanner/parser.h"

#include <cstring>
#include <string>

struct Recorded_Source {
    std::string source;
};

class Recording_Parser : private Recorded_Source, public Parser {
  public:
    Recording_Parser(const std::string& text, ParserStartState start_state)
        : Recorded_Source{text},
          Parser(new Tokenizer(source.data(), static_cast<int>(source.size()), start_state), nullptr,
                 start_state) {}

    // Reports are written down as well, and warnings don't count.
    ParserStatus CompileError(ErrorCode code, const String& message, int line,
                              const String* filename) override {
        std::string at = line == -1 ? "" : "@" + std::to_string(line);
        Note((code > LAST_WARNING ? "CE_" : "CW_") + std::to_string(code) + at, message.text(),
             message.length());
        return code > LAST_WARNING ? Parser::CompileError(code, message, line, filename) : PARSER_OK;
    }
    void Reset_Expression() override { Note("reset"); }
    ParserStatus Start_Of_Expression() override { return Note("{"); }
    ParserStatus End_Of_Expression() override { return Note("}"); }
    void Reset_Output() override {}
    ParserStatus Start_Of_Tag(int tag, int closing, int, int, const char*) override {
        if (!closing && tag == capturing_tag)
            Capture_Expression_Text(1);
        return Note((closing ? "/" : "") + std::string("tag") + std::to_string(tag));
    }
    ParserStatus Attribute_Name(const char* text, int length) override { return Note("name", text, length); }
    ParserStatus Attribute_Value(const char* text, int length) override {
        return Note("value", text, length);
    }
    ParserStatus End_Of_Tag(int self_closing) override { return Note(self_closing ? "/>" : ">"); }
    ParserStatus Unknown(const char* text, int length) override { return Note("html", text, length); }
    ParserStatus Unknown_Compress(const char* text, int length) override {
        return Note("text", text, length);
    }
    ParserStatus Expression_Variable(const char* name, int length, Variable_Scope scope, const char* alias,
                                     int alias_length, const char*, int) override {
        std::string kind = "var" + std::to_string(scope);
        return Note(alias ? kind + "[" + std::string(alias, alias_length) + "]" : kind, name, length);
    }
    ParserStatus Expression_Operator(int id, int, int, int, int flags) override {
        return Note("op" + std::to_string(id) + (flags ? "/" + std::to_string(flags) : ""));
    }
    ParserStatus Expression_StartParen() override { return Note("paren"); }
    ParserStatus Expression_StartFunctionCall(const char* name, int length, int dynamic) override {
        return Note(dynamic ? "do" : "call", name, length);
    }
    ParserStatus Expression_CloseParen() override { return Note("close"); }
    ParserStatus Expression_StringLiteral(const char* text, int length) override {
        return Note("string", text, length);
    }
    ParserStatus Expression_NumericLiteral(const char* text, int length) override {
        return Note("int", text, length);
    }
    ParserStatus Expression_FloatLiteral(const char* text, int length) override {
        return Note("float", text, length);
    }
    ParserStatus Expression_Member(const char* name, int length) override {
        return Note("member", name, length);
    }
    ParserStatus Start_Of_File() override { return PARSER_OK; }
    ParserStatus End_Of_File(ParserStatus status) override {
        Note("end" + std::to_string(status));
        return status;
    }
    OpcodeQueue* Opcode_Queue() override { return nullptr; }
    int Find_Variable_Ident(const char*, int, Variable_Scope) override { return 0; }
    String ScratchVariable_Ident() override { return String("", 0); }
    void Output_Variable_Instruction(int, int, Variable_Scope, int, int) override {}
    void Decrement_Stackcount() override {}
    void Output_Comment(const char* text, int length) override { Note("comment", text, length); }
    void Output_Assembly(const char* text, int length) override { Note("assembly", text, length); }

    std::string events; // each behind a blank
    int capturing_tag = -1;

  private:
    ParserStatus Note(const std::string& event) {
        events += (events.empty() ? "" : " ") + event;
        return PARSER_OK;
    }
    ParserStatus Note(const std::string& event, const char* text, int length) {
        return Note(event + "(" + std::string(text, static_cast<std::size_t>(length)) + ")");
    }
};

#endif
