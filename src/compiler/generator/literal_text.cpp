// The text between tags, and the string literals of expressions: whole, or in the pieces that -O asks for.

#include "app/driver/compiler_application.h"
#include "backend/instructions/opcode.h"
#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"

ParserStatus CompilerParser::Unknown(const char* text, int length) {
    return Unknown_Common(text, length, OPCODE_OUT);
}

ParserStatus CompilerParser::Unknown_Compress(const char* text, int length) {
    return Unknown_Common(text, length, OPCODE_OUT_COMP);
}

// A text run never moves the line number, whatever lines it spans.
ParserStatus CompilerParser::Unknown_Common(const char* text, int length, int opcode) {
    lineno_forced = 1;
    if (localized_text) {
        localized_text->cat(text, length);
    } else {
        if (const int piece = Literal_Piece_Length())
            for (; length > piece; text += piece, length -= piece)
                Output_Text_Piece(text, piece, opcode);
        Output_Text_Piece(text, length, opcode);
    }
    Unforce_LineNo();
    return PARSER_OK;
}

void CompilerParser::Output_Text_Piece(const char* text, int length, int opcode) {
    opcode_queue->Queue_Pushed_Constant(Generate_String_Directive(text, length, EXPRESSION_STATE_TEXT),
                                        opcode);
}

int CompilerParser::Literal_Piece_Length() const {
    return application ? application->obfuscate_bytes : 0;
}

ParserStatus CompilerParser::Expression_StringLiteral(const char* text, int length) {
    const int piece = Literal_Piece_Length();
    if (piece && length > piece)
        Push_Split_Literal(text, length, piece);
    else
        Push_Literal_Piece(text, length);
    Count_Value();
    return Check_Types(OPERAND_STRING);
}

void CompilerParser::Push_Literal_Piece(const char* text, int length) {
    Queue(OPCODE_PUSHC, Generate_String_Directive(text, length, EXPRESSION_STATE_ESCAPED));
}

// A piece that would end on a backslash takes the escaped byte with it. The flag stays set behind such a
// piece, so the first byte of the next one never counts as a backslash.
void CompilerParser::Push_Split_Literal(const char* text, int length, int piece_length) {
    int start = 0;
    bool escaped = false;
    for (int position = 0; position < length; ++position) {
        escaped = text[position] == '\\' && !escaped;
        if (position + 1 - start < piece_length)
            continue;
        if (escaped && position + 1 < length)
            ++position;
        Push_Joined_Piece(text + start, position + 1 - start, start == 0);
        start = position + 1;
    }
    if (start < length)
        Push_Joined_Piece(text + start, length - start, start == 0);
}

void CompilerParser::Push_Joined_Piece(const char* text, int length, bool first) {
    Push_Literal_Piece(text, length);
    if (!first)
        Queue(OPCODE_CAT);
}
