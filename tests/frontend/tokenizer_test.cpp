#include "frontend/scanner/tokenizer.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>

using namespace std::string_literals;

namespace {

const char* const type_names[] = {"gt",  "lt",     "bang", "ident", "eq",     "dquote", "squote",
                                  "op",  "number", "",     "{",     "}",      "lparen", "rparen",
                                  "dot", "space",  "cut",  "eof",   "escape", "other"};

// A tokenizer over a copy of the text behind which memory can't be read. The next one takes the place.
Tokenizer Tokens(const std::string& text, int bare_expression = 0) {
    static char* const edge = [] {
        char* const start = static_cast<char*>(
            mmap(nullptr, 3 * 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(start + 2 * 4096, 4096, PROT_NONE);
        return start + 2 * 4096;
    }();
    const int length = static_cast<int>(text.size());
    return {std::copy(text.begin(), text.end(), edge - length) - length, length, bare_expression};
}

// "type:text" of the next token.
std::string Next(Tokenizer& tokenizer,
                 Tokenizer_TokenType (Tokenizer::*get)(const char**, int&) = &Tokenizer::Get_Next_Token) {
    const char* text = "";
    int length = 0;
    const std::string type = type_names[(tokenizer.*get)(&text, length)];
    return length > 0 ? type + ":" + std::string(text, length) : type;
}

// The tokens up to the end of the text.
std::string Tokens_Of(Tokenizer&& tokenizer, int in_expression = 0) {
    tokenizer.in_expression = in_expression;
    std::string tokens, token;
    do
        tokens += (token = Next(tokenizer)) + " ";
    while (token != "eof");
    return tokens;
}

TEST(Tokenizer, Tokens_In_Tags_And_Expressions) {
    const struct {
        std::string text, in_tag;
        std::string in_expression = in_tag;
    } cases[] = {
        {"", "eof "},
        {"a-b:c", "ident:a-b:c eof ", "ident:a op:- ident:b op:: ident:c eof "},
        {"_a1\\<b", "ident:_a1\\ lt:< ident:b eof ", "ident:_a1\\<b eof "},
        {"\\a", "escape:\\ ident:a eof "},
        {"+++-- - +", "op:++ op:+ op:-- space:  op:- space:  op:+ eof "},
        {"$*,/:[]", "op:$ op:* op:, op:/ op:: op:[ op:] eof "},
        {"<>!=\"'{}().", "lt:< gt:> bang:! eq:= dquote:\" squote:' {:{ }:} lparen:( rparen:) dot:. eof "},
        {"12.5 7.", "number:12.5 space:  number:7. eof "},
        {"1.2.3", "number:1.2 dot:. number:3 eof "},
        {"0x 0xg 0x1F.a.b",
         "number:0 ident:x space:  number:0 ident:xg space:  number:0x1F.a dot:. ident:b eof "},
        {"0X9f", "number:0X9f eof "},
        {" \t\v\f\r\nx", "space: \t\v\f\r\n ident:x eof "},
        {"~\x80#\x01", "other:~ other:\x80 other:# other:\x01 eof "},
        {"a\0b"s, "ident:a eof "},
    };
    for (const auto& [text, in_tag, in_expression] : cases) {
        EXPECT_EQ(Tokens_Of(Tokens(text)), in_tag);
        EXPECT_EQ(Tokens_Of(Tokens(text), 1), in_expression);
        for (std::size_t length = 1; length < text.size(); ++length)
            for (const int as_expression : {0, 1})
                EXPECT_NE(Tokens_Of(Tokens(text.substr(0, length)), as_expression), "eof ");
    }
}

TEST(Tokenizer, Bare_Expression_Gets_Braces_And_A_Zero_Byte_Ends) {
    EXPECT_EQ(Tokens_Of(Tokens("a", 1)), "{ ident:a } eof ");
    EXPECT_EQ(Tokens_Of(Tokens("", 1)), "{ eof ");
    Tokenizer tokenizer = Tokens("a\0b"s);
    for (const char* next : {"ident:a", "eof", "ident:b", "eof", "eof"})
        EXPECT_EQ(Next(tokenizer), next);
}

// Sixteen bytes at a time, and the rest.
TEST(Tokenizer, Text_Runs_To_The_Next_Tag) {
    for (int length = 1; length < 70; ++length)
        for (const char stop : {'<', '\0'}) {
            std::string run(length, '\n');
            for (int i = length % 3; i < length; i += 3)
                run[i] = '\xbc';
            Tokenizer tokenizer = Tokens(run + stop + std::string(16, '\n'));
            EXPECT_EQ(Next(tokenizer, &Tokenizer::Get_Next_Text), "other:" + run);
            EXPECT_EQ(tokenizer.line, std::count(run.begin(), run.end(), '\n'));
        }
    Tokenizer hidden = Tokens("a\\<b"); // no tag, where an identifier takes it in
    hidden.in_expression = 1;
    EXPECT_EQ(Next(hidden, &Tokenizer::Get_Next_Text), "ident:a\\<b");
}

TEST(Tokenizer, Reads_Up_To_The_Last_Byte) {
    const char* text;
    int length;
    Tokenizer quoted = Tokens("abc\\\""); // which is a terminator, if an escaped one
    EXPECT_EQ(quoted.Read_Until(&text, length, '"', '\\'), TOKEN_OTHER);
    Tokenizer bare = Tokens("ab", 1); // whose braces stand where the pattern is looked for
    EXPECT_EQ(Next(bare), "{");
    EXPECT_EQ(bare.Read_Until(&text, length, "</TnCOMMENT>", 12), TOKEN_RBRACE);
    EXPECT_EQ(Next(bare), "ident:ab");
    EXPECT_EQ(Next(bare), "eof");
}

} // namespace
