#include "frontend/scanner/tokenizer.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <sys/mman.h>
#include <tuple>

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

// "type:text" of what an operation gives, called with the place of the text.
template <typename Operation>
std::string Taken(Operation operation) {
    const char* text = "";
    int length = 0;
    const std::string type = type_names[operation(&text, length)];
    return length > 0 ? type + ":" + std::string(text, length) : type;
}

std::string Next(Tokenizer& tokenizer) {
    return Taken([&](auto text, int& length) { return tokenizer.Get_Next_Token(text, length); });
}

std::string Next_Text(Tokenizer& tokenizer) {
    return Taken([&](auto text, int& length) { return tokenizer.Get_Next_Text(text, length); });
}

template <typename... Until>
std::string Read(Tokenizer& tokenizer, Until... until) {
    return Taken([&](auto text, int& length) { return tokenizer.Read_Until(text, length, until...); });
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

TEST(Tokenizer, Peeked_Token_Comes_Next) {
    Tokenizer tokenizer = Tokens("a\nb", 1);
    for (const char* next : {"{", "ident:a", "space:\n", "ident:b", "}", "eof"}) {
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(Taken([&](auto text, int& length) { return tokenizer.Peek(text, length); }), next);
        EXPECT_EQ(Next(tokenizer), next);
    }
    EXPECT_EQ(tokenizer.line, 1);
}

TEST(Tokenizer, Read_Until_Terminator) {
    const std::tuple<std::string, std::string, int> cases[] = {
        // The text, what is read of it, the line behind.
        {"a\nb\"c", "other:a\nb\"", 1},
        {"\"c", "other:\"", 0},
        {"a\\\"b\"c", "other:a\\\"b\"", 0},
        {"a\\\\\"b\"", "other:a\\\\\"", 0},
        {"\\\n\\\\x\n\"", "other:\\\n\\\\x\n\"", 1},
        {"", "eof", 0},
        {"abc\n", "cut:abc\n", 1},
        {"abc\\", "cut:abc\\", 0},
        {"abc\\\"", "other:abc\\\"", 0}, // the last byte is one, if an escaped one
    };
    for (const auto& [text, slice, line] : cases) {
        Tokenizer tokenizer = Tokens(text);
        EXPECT_EQ(Read(tokenizer, '"', '\\'), slice);
        EXPECT_EQ(tokenizer.line, line) << text;
    }
}

TEST(Tokenizer, Read_Until_Pattern) {
    for (const int filling : {0, 10, 300, 5000})
        for (const bool closed : {true, false}) {
            const std::string body = std::string(filling, '\n') + (closed ? "</tNcOmment>" : "</TnCOMMENT");
            Tokenizer tokenizer = Tokens(body + (closed ? "rest" : ""));
            EXPECT_EQ(Read(tokenizer, "</TnCOMMENT>", 12), (closed ? "other:" : "cut:") + body);
            EXPECT_EQ(tokenizer.line, filling);
            EXPECT_EQ(Next(tokenizer), closed ? "ident:rest" : "eof");
        }
    Tokenizer bare = Tokens("ab", 1); // whose braces stand where the pattern is looked for
    EXPECT_EQ(Next(bare), "{");
    EXPECT_EQ(Read(bare, "</TnCOMMENT>", 12), "}");
    EXPECT_EQ(Next(bare), "ident:ab");
    EXPECT_EQ(Next(bare), "eof");
}

TEST(Tokenizer, Text_Runs_To_The_Next_Tag) {
    for (int length = 0; length < 70; ++length)
        for (int stop = 0; stop <= length; ++stop)
            for (const char stop_byte : {'<', '\0'}) {
                std::string source;
                for (int i = 0; i < length; ++i)
                    source += i == stop ? stop_byte : i % 5 == stop % 3 ? '\n' : '\xbc';
                Tokenizer tokenizer = Tokens(source);
                if (stop > 0) {
                    EXPECT_EQ(Next_Text(tokenizer), "other:" + source.substr(0, stop));
                    EXPECT_EQ(tokenizer.line, std::count(source.begin(), source.begin() + stop, '\n'));
                }
                EXPECT_EQ(Next_Text(tokenizer), stop < length && stop_byte == '<' ? "lt:<" : "eof");
            }
    Tokenizer hidden = Tokens("a\\<b"); // no tag, where an identifier takes it in
    hidden.in_expression = 1;
    EXPECT_EQ(Next_Text(hidden), "ident:a\\<b");
}

} // namespace
