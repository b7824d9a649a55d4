#ifndef FRONTEND_TOKENIZER_H
#define FRONTEND_TOKENIZER_H

#include "core/string.h"
#include "core/text_words.h"
#include "files/file_status.h"
#include "frontend/scanner/parser_types.h"

#include <array>
#include <memory>

class File;
class FileManager;

// The token that a byte starts, with a bit for those that may have another length than 1.
extern const std::array<unsigned char, 256> token_first_bytes;
inline constexpr unsigned char VARYING_LENGTH = 0x80;

// Tokenizer turns a text that is held whole in memory into small tokens. A token is a slice of the text, so
// that the scanner can rebuild any stretch of the source by adding up lengths; nothing is copied. It serves a
// source file, the file of an include, and a piece of text that is scanned as an expression.
//
// Source files are mapped, never read into memory. No byte outside the text is looked at: behind a file whose
// size is a multiple of the page size there is nothing. A zero byte ends the text like its end does.
//
// The owner of the tokenizer keeps a text that was given alive; the file is the tokenizer's own.
class Tokenizer {
  public:
    explicit Tokenizer(FileManager* filemanager);
    // With bare_expression the text is an expression without braces, and the tokenizer adds a pair, as tokens
    // of length 0; an empty text gets the opening one only.
    Tokenizer(const char* text, int length, int bare_expression);
    virtual ~Tokenizer();
    Tokenizer(const Tokenizer&) = delete;
    Tokenizer& operator=(const Tokenizer&) = delete;

    // Lets the text that was given end early. An identifier that starts ahead of that runs on to its own end.
    void End_Early(int new_length) { length = new_length; }

    // Brings the file in. On failure lasterror has the reason and the text is empty.
    [[nodiscard]] bool Open(const String& path);

    // The token's first byte and its length. At the end of the text, and for a brace that was added, the
    // length is 0.
    inline Tokenizer_TokenType Get_Next_Token(const char** text, int& token_length);
    // The same with all bytes up to the next '<' as one token, of type TOKEN_OTHER: outside of tags nothing
    // else is told apart. Answers an ordinary token where the identifiers of expressions could hide a '<'.
    Tokenizer_TokenType Get_Next_Text(const char** text, int& token_length);
    // The token that the next Get_Next_Token will return. The line counter moves now.
    Tokenizer_TokenType Peek(const char** text, int& token_length);
    bool Is_Next(char byte) const { return !peek_text && position < length && buffer[position] == byte; }
    // Passes the byte, one that is a token by itself, if it comes next.
    bool Take(char byte) {
        const bool taken = Is_Next(byte);
        position += taken;
        return taken;
    }
    // Passes white space, and tells whether there was any. A token that is held back is left alone.
    bool Skip_Space() {
        if (peek_text || position >= length || !Is_Space(buffer[position]))
            return false;
        if (buffer[position] == ' ' && length - position > 1 && !Is_Space(buffer[position + 1])) [[likely]] {
            ++position;
            return true;
        }
        position = static_cast<int>(End_Of_Space(buffer + position) - buffer);
        return true;
    }
    // Extends an identifier that was just read over what continues a dotted name: any number of dots that are
    // directly followed by an identifier.
    void Read_Dotted_Name(int& token_length);

    // A dotted name of an expression, and the length of the identifier that it begins with.
    struct Dotted_Name {
        const char* text;
        int first_length;
        int length;
    };
    // Looks at the dotted name that comes next. Answers a length of 0 when there is none, and also for one
    // that is long, holds a backslash or stands close to the end of the text: the tokens tell of these.
    Dotted_Name Next_Name() const {
        if (peek_text || bare_expression || length - position < name_window || !Starts_Name(buffer[position]))
            return {};
        return Short_Name(buffer + position);
    }
    // Passes bytes of what Next_Name has looked at.
    void Pass(int count) { position += count; }
    // Reads to the first terminator, which belongs to the slice, over pairs of the escape and another byte.
    // The answer is TOKEN_OTHER, TOKEN_UNTERMINATED when the text ended first, or that of
    // Check_Buffer_Fullness when nothing was left at all.
    Tokenizer_TokenType Read_Until(const char** text, int& token_length, char terminator, char escape);
    // Reads to the end of a pattern, in any case, with the same answers. A bare expression that lacks it
    // answers TOKEN_RBRACE, once, and stays where it is.
    Tokenizer_TokenType Read_Until(const char** text, int& token_length, const char* pattern,
                                   int pattern_length);

    // Takes the file and its text back; position and line have stayed. On failure lasterror has the reason
    // and the text is empty.
    [[nodiscard]] bool File_Activate();
    // Gives the file and its mapping up while an included file is read.
    void File_Deactivate();
    // What the path led to when it was opened.
    const File_Stamp& Opened() const { return opened; }
    // Whether the file is no longer the one that was opened; what has been read may be of both.
    bool File_Changed() const { return file && opened.Is_Changed(filename.text()); }

    // True when no text is left, with the type of the token that says so.
    inline bool Check_Buffer_Fullness(Tokenizer_TokenType& type);

    // The order of the fields is part of the binary interface.
  private:
    FileManager* filemanager = nullptr;
    const char* buffer = nullptr;
    int length = 0;
    int position = 0; // of the next unread byte
    int bare_expression = 0;
    int open_pending = 1; // the opening brace of a bare expression is still to come
    int close_sent = 0;   // its closing brace has gone out
    std::unique_ptr<File> file;

  public:
    String filename;
    int in_expression = 0; // chooses the rule for identifiers; the scanner sets it
    String lasterror;
    int line = 0; // line feeds passed so far

  private:
    const char* line_start = nullptr; // behind the last line feed that was passed
    const char* peek_text = nullptr;  // null when no token is held back
    int peek_length = 0;
    Tokenizer_TokenType peek_type = TOKEN_EOF;
    int identifier_limit = 0; // length, or what it was before the text was made to end early
    File_Stamp opened;

    static constexpr int name_window = 16;

    static bool Starts_Name(char byte) {
        return token_first_bytes[static_cast<unsigned char>(byte)] == (TOKEN_IDENT | VARYING_LENGTH);
    }
    static Dotted_Name Short_Name(const char* text);
    bool Map_File();
    void Use_No_Text();
    void Note_Line_Feed(const char* behind);
    Tokenizer_TokenType Get_Rare_Token(const char** text, int& token_length);
    inline Tokenizer_TokenType Scan_Token(const char** text, int& token_length);
    int Token_Length(Tokenizer_TokenType type, const char* start);
    const char* End_Of_Space(const char* at);
    const char* End_Of_Number(const char* at) const;
    const char* End_Of_Identifier(const char* at) const;
};

inline bool Tokenizer::Check_Buffer_Fullness(Tokenizer_TokenType& type) {
    if (position < length)
        return false;
    const bool close = bare_expression && length != 0 && !close_sent;
    if (close)
        close_sent = 1;
    type = close ? TOKEN_RBRACE : TOKEN_EOF;
    return true;
}

inline Tokenizer_TokenType Tokenizer::Get_Next_Token(const char** text, int& token_length) {
    if (peek_text || bare_expression || position >= length) [[unlikely]]
        return Get_Rare_Token(text, token_length);
    return Scan_Token(text, token_length);
}

// Of the text, which has not ended.
inline Tokenizer_TokenType Tokenizer::Scan_Token(const char** text, int& token_length) {
    const char* start = buffer + position;
    *text = start;
    const unsigned first = token_first_bytes[static_cast<unsigned char>(*start)];
    const auto type = static_cast<Tokenizer_TokenType>(first & ~VARYING_LENGTH);
    token_length = first & VARYING_LENGTH ? Token_Length(type, start) : 1;
    position += token_length;
    return type;
}

#endif
