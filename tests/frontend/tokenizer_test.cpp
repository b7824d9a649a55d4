#include "frontend/scanner/tokenizer.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

using namespace std::string_literals;

namespace {

const char* const type_names[] = {"gt",  "lt",     "bang", "ident", "eq",     "dquote", "squote",
                                  "op",  "number", "",     "{",     "}",      "lparen", "rparen",
                                  "dot", "space",  "cut",  "eof",   "escape", "other"};

// The tokens up to the end of the text, each as type and text.
std::string Tokens_Of(Tokenizer& tokenizer) {
    std::string tokens;
    Tokenizer_TokenType type;
    do {
        const char* text;
        int length;
        type = tokenizer.Get_Next_Token(&text, length);
        tokens += (tokens.empty() ? ""s : " "s) + type_names[type];
        if (length > 0)
            tokens += ":" + std::string(text, static_cast<std::size_t>(length));
    } while (type != TOKEN_EOF);
    return tokens;
}

struct Token {
    Tokenizer_TokenType type;
    std::string text;
    bool operator==(const Token&) const = default;
};

// What an operation of the tokenizer gives, called with the place of the text.
template <typename Operation>
Token Taken(Operation operation) {
    const char* text = "";
    int length = 0;
    const Tokenizer_TokenType type = operation(&text, length);
    return {type, std::string(text, length)};
}

TEST(Tokenizer, Tokens_In_Tags_And_Expressions) {
    const struct {
        std::string text, in_tag;
        std::string in_expression = {}; // empty when it is the same
    } cases[] = {
        {"", "eof"},
        {"a-b:c", "ident:a-b:c eof", "ident:a op:- ident:b op:: ident:c eof"},
        {"_a1\\<b", "ident:_a1\\ lt:< ident:b eof", "ident:_a1\\<b eof"},
        {"a\\", "ident:a\\ eof"},
        {"\\a", "escape:\\ ident:a eof"},
        {"+++-- - +", "op:++ op:+ op:-- space:  op:- space:  op:+ eof"},
        {"$*,/:[]", "op:$ op:* op:, op:/ op:: op:[ op:] eof"},
        {"<>!=\"'{}().", "lt:< gt:> bang:! eq:= dquote:\" squote:' {:{ }:} lparen:( rparen:) dot:. eof"},
        {"12.5 7.", "number:12.5 space:  number:7. eof"},
        {"1.2.3", "number:1.2 dot:. number:3 eof"},
        {"0x 0xg 0x1F.a.b",
         "number:0 ident:x space:  number:0 ident:xg space:  number:0x1F.a dot:. ident:b eof"},
        {"0X9f", "number:0X9f eof"},
        {" \t\v\f\r\nx", "space: \t\v\f\r\n ident:x eof"},
        {"~\x80#\x01", "other:~ other:\x80 other:# other:\x01 eof"},
        {"a\0b"s, "ident:a eof"},
    };
    for (const auto& c : cases) {
        for (int in_expression : {0, 1}) {
            Tokenizer tokenizer(c.text.data(), static_cast<int>(c.text.size()), 0);
            tokenizer.in_expression = in_expression;
            bool differs = in_expression && !c.in_expression.empty();
            EXPECT_EQ(Tokens_Of(tokenizer), differs ? c.in_expression : c.in_tag) << c.text;
        }
    }
}

TEST(Tokenizer, Bare_Expression_Gets_Braces_And_A_Zero_Byte_Ends) {
    Tokenizer tokenizer("a\0b", 3, 0), bare("a", 1, 1), empty("", 0, 1);
    EXPECT_EQ(Tokens_Of(tokenizer), "ident:a eof");
    EXPECT_EQ(Tokens_Of(tokenizer), "ident:b eof");
    EXPECT_EQ(Tokens_Of(bare), "{ ident:a } eof");
    EXPECT_EQ(Tokens_Of(empty), "{ eof");
}

TEST(Tokenizer, Peeked_Token_Comes_Next) {
    Tokenizer tokenizer("a\nb", 3, 1);
    const auto peek = [&](const char** text, int& length) { return tokenizer.Peek(text, length); };
    const auto get = [&](const char** text, int& length) { return tokenizer.Get_Next_Token(text, length); };
    for (const char* next : {"", "a", "\n", "b", ""}) {
        const Token token = Taken(peek);
        EXPECT_EQ(token.text, next);
        EXPECT_TRUE(Taken(peek) == token && Taken(get) == token);
    }
    EXPECT_EQ(tokenizer.line, 1);
    EXPECT_EQ(Tokens_Of(tokenizer), "eof");
}

TEST(Tokenizer, Read_Until_Terminator) {
    const struct {
        std::string text;
        Token slice;
        int line;
    } cases[] = {
        {"a\nb\"c", {TOKEN_OTHER, "a\nb\""}, 1},
        {"\"c", {TOKEN_OTHER, "\""}, 0},
        {"a\\\"b\"c", {TOKEN_OTHER, "a\\\"b\""}, 0},
        {"a\\\\\"b\"", {TOKEN_OTHER, "a\\\\\""}, 0},
        {"\\\n\\\\x\n\"", {TOKEN_OTHER, "\\\n\\\\x\n\""}, 1},
        {"", {TOKEN_EOF, ""}, 0},
        {"abc\n", {TOKEN_UNTERMINATED, "abc\n"}, 1},
        {"abc\\", {TOKEN_UNTERMINATED, "abc\\"}, 0},
        {"abc\\\"", {TOKEN_OTHER, "abc\\\""}, 0}, // the last byte is one, if an escaped one
    };
    for (const auto& c : cases) {
        Tokenizer tokenizer(c.text.data(), static_cast<int>(c.text.size()), 0);
        const auto read = [&](const char** text, int& length) {
            return tokenizer.Read_Until(text, length, '"', '\\');
        };
        EXPECT_EQ(Taken(read), c.slice) << c.text;
        EXPECT_EQ(tokenizer.line, c.line) << c.text;
    }
}

TEST(Tokenizer, Read_Until_Pattern) {
    const auto until_close = [](Tokenizer& tokenizer) {
        return Taken([&](const char** text, int& length) {
            return tokenizer.Read_Until(text, length, "</TnCOMMENT>", 12);
        });
    };
    for (const int filling : {0, 10, 300, 5000})
        for (const bool closed : {true, false}) {
            const std::string body = std::string(filling, '\n') + (closed ? "</tNcOmment>" : "</TnCOMMENT"),
                              source = body + (closed ? "rest" : "");
            Tokenizer tokenizer(source.data(), static_cast<int>(source.size()), 0);
            EXPECT_EQ(until_close(tokenizer), (Token{closed ? TOKEN_OTHER : TOKEN_UNTERMINATED, body}));
            EXPECT_EQ(tokenizer.line, filling);
            EXPECT_EQ(Tokens_Of(tokenizer), closed ? "ident:rest eof" : "eof");
        }
    Tokenizer bare("ab", 2, 1); // whose braces stand where the pattern is looked for
    EXPECT_EQ(Taken([&](const char** text, int& length) { return bare.Get_Next_Token(text, length); }).type,
              TOKEN_LBRACE);
    EXPECT_EQ(until_close(bare).type, TOKEN_RBRACE);
    EXPECT_EQ(Tokens_Of(bare), "ident:ab eof");
}

TEST(Tokenizer, Text_Runs_To_The_Next_Tag) {
    for (int length = 0; length < 70; ++length)
        for (int stop = 0; stop <= length; ++stop)
            for (const char stop_byte : {'<', '\0'}) {
                std::string source;
                for (int i = 0; i < length; ++i)
                    source += i == stop ? stop_byte : i % 5 == stop % 3 ? '\n' : '\xbc';
                Tokenizer tokenizer(source.data(), length, 0);
                const auto next = [&](const char** text, int& size) {
                    return tokenizer.Get_Next_Text(text, size);
                };
                if (stop > 0) {
                    EXPECT_EQ(Taken(next), (Token{TOKEN_OTHER, source.substr(0, stop)}));
                    EXPECT_EQ(tokenizer.line, std::count(source.begin(), source.begin() + stop, '\n'));
                }
                EXPECT_EQ(Taken(next).type, stop < length && stop_byte == '<' ? TOKEN_LT : TOKEN_EOF);
            }
    Tokenizer hidden("a\\<b", 4, 0); // no tag, where an identifier takes it in
    hidden.in_expression = 1;
    EXPECT_EQ(Taken([&](const char** text, int& length) { return hidden.Get_Next_Text(text, length); }),
              (Token{TOKEN_IDENT, "a\\<b"}));
}

// Behind the text there is a page that can't be read.
TEST(Tokenizer, No_Byte_Outside_The_Text_Is_Read) {
    const int page = getpagesize();
    char* const start = static_cast<char*>(
        mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(start + page, page, PROT_NONE);
    for (const std::string last :
         {"a", "a\\", "1", "1.", "0x", "0x1", "+", "-", " ", "\n", "<", "\"", "\\", "\x80"})
        for (const int size : {static_cast<int>(last.size()), 17, 4096}) {
            const char* const source = start + page - size;
            last.copy(std::fill_n(start, page - last.size(), 'a'), last.size());
            for (const int in_expression : {0, 1}) {
                Tokenizer tokens(source, size, 0);
                tokens.in_expression = in_expression;
                EXPECT_NE(Tokens_Of(tokens), "");
            }
            Tokenizer run(source, size, 0), quoted(source, size, 0);
            const char* text;
            int length;
            run.Get_Next_Text(&text, length);
            quoted.Read_Until(&text, length, '\'', '\\');
            EXPECT_EQ(length, size);
        }
    munmap(start, 2 * page);
}

} // namespace
