#include "frontend/scanner/tokenizer.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
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

// A page of text behind which there is nothing: a read of one byte more is a fault.
class Guarded_Page {
  public:
    explicit Guarded_Page(std::string_view end) : size(sysconf(_SC_PAGESIZE)) {
        page = static_cast<char*>(
            mmap(nullptr, 2 * size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        std::fill(page, page + size - end.size(), 'a');
        std::copy(end.begin(), end.end(), page + size - end.size());
        mprotect(page + size, size, PROT_NONE);
    }
    ~Guarded_Page() { munmap(page, 2 * size); }
    std::string_view Last(std::size_t length) const { return {page + size - length, length}; }

  private:
    std::size_t size;
    char* page;
};

} // namespace

TEST(Tokenizer, Tokens_In_Tags_And_Expressions) {
    struct Case {
        std::string text;
        std::string in_tag;
        std::string in_expression; // empty when it is the same
    };
    const Case cases[] = {
        {"", "eof", ""},
        {"a-b:c", "ident:a-b:c eof", "ident:a op:- ident:b op:: ident:c eof"},
        {"_a1\\<b", "ident:_a1\\ lt:< ident:b eof", "ident:_a1\\<b eof"},
        {"a\\", "ident:a\\ eof", ""},
        {"\\a", "escape:\\ ident:a eof", ""},
        {"+++-- - +", "op:++ op:+ op:-- space:  op:- space:  op:+ eof", ""},
        {"$*,/:[]", "op:$ op:* op:, op:/ op:: op:[ op:] eof", ""},
        {"<>!=\"'{}().", "lt:< gt:> bang:! eq:= dquote:\" squote:' {:{ }:} lparen:( rparen:) dot:. eof", ""},
        {"12.5 7.", "number:12.5 space:  number:7. eof", ""},
        {"1.2.3", "number:1.2 dot:. number:3 eof", ""},
        {"0x 0xg 0x1F.a.b",
         "number:0 ident:x space:  number:0 ident:xg space:  number:0x1F.a dot:. ident:b eof", ""},
        {"0X9f", "number:0X9f eof", ""},
        {" \t\v\f\r\nx", "space: \t\v\f\r\n ident:x eof", ""},
        {"~\x80#\x01", "other:~ other:\x80 other:# other:\x01 eof", ""},
        {"a\0b"s, "ident:a eof", ""},
    };
    for (const Case& c : cases) {
        for (int in_expression : {0, 1}) {
            Tokenizer tokenizer(c.text.data(), static_cast<int>(c.text.size()), 0);
            tokenizer.in_expression = in_expression;
            bool differs = in_expression && !c.in_expression.empty();
            EXPECT_EQ(Tokens_Of(tokenizer), differs ? c.in_expression : c.in_tag) << c.text;
        }
    }
}

TEST(Tokenizer, Scan_Goes_On_Behind_A_Zero_Byte) {
    Tokenizer tokenizer("a\0b", 3, 0);
    EXPECT_EQ(Tokens_Of(tokenizer), "ident:a eof");
    EXPECT_EQ(Tokens_Of(tokenizer), "ident:b eof");
}

TEST(Tokenizer, Bare_Expression_Gets_Braces) {
    Tokenizer tokenizer("a", 1, 1);
    EXPECT_EQ(Tokens_Of(tokenizer), "{ ident:a } eof");
    Tokenizer empty("", 0, 1);
    EXPECT_EQ(Tokens_Of(empty), "{ eof");
}

TEST(Tokenizer, Peeked_Token_Comes_Next) {
    Tokenizer tokenizer("a\nb", 3, 1);
    const char* text;
    int length;
    for (const char* next : {"", "a", "\n", "b", ""}) {
        for (int look = 0; look < 2; ++look) {
            tokenizer.Peek(&text, length);
            EXPECT_EQ(std::string(text, static_cast<std::size_t>(length)), next);
        }
        tokenizer.Get_Next_Token(&text, length);
        EXPECT_EQ(std::string(text, static_cast<std::size_t>(length)), next);
    }
    EXPECT_EQ(tokenizer.line, 1);
    EXPECT_EQ(Tokens_Of(tokenizer), "eof");
}

TEST(Tokenizer, Read_Until_Terminator) {
    struct Case {
        std::string text;
        std::string slice;
        Tokenizer_TokenType type;
        int line;
    };
    const Case cases[] = {
        {"a\nb\"c", "a\nb\"", TOKEN_OTHER, 1},
        {"\"c", "\"", TOKEN_OTHER, 0},
        {"a\\\"b\"c", "a\\\"b\"", TOKEN_OTHER, 0},
        {"a\\\\\"b\"", "a\\\\\"", TOKEN_OTHER, 0},
        {"\\\n\\\\x\n\"", "\\\n\\\\x\n\"", TOKEN_OTHER, 1},
        {"abc\n", "abc\n", TOKEN_UNTERMINATED, 1},
        {"abc\\", "abc\\", TOKEN_UNTERMINATED, 0},
        {"abc\\\"", "abc\\\"", TOKEN_OTHER, 0}, // the last byte is one, if an escaped one
        {"", "", TOKEN_EOF, 0},
    };
    for (const Case& c : cases) {
        Tokenizer tokenizer(c.text.data(), static_cast<int>(c.text.size()), 0);
        const char* text;
        int length;
        EXPECT_EQ(tokenizer.Read_Until(&text, length, '"', '\\'), c.type) << c.text;
        EXPECT_EQ(std::string(text, static_cast<std::size_t>(length)), c.slice);
        EXPECT_EQ(tokenizer.line, c.line) << c.text;
    }
}

TEST(Tokenizer, Read_Until_Pattern) {
    for (int filling : {0, 10, 300, 5000}) {
        std::string body(static_cast<std::size_t>(filling), '\n');
        for (bool closed : {true, false}) {
            std::string source = body + (closed ? "</tNcOmment>rest" : "</TnCOMMENT");
            Tokenizer tokenizer(source.data(), static_cast<int>(source.size()), 0);
            const char* text;
            int length = 0;
            EXPECT_EQ(tokenizer.Read_Until(&text, length, "</TnCOMMENT>", 12),
                      closed ? TOKEN_OTHER : TOKEN_UNTERMINATED);
            EXPECT_EQ(length, closed ? filling + 12 : static_cast<int>(source.size()));
            EXPECT_EQ(tokenizer.line, filling);
            EXPECT_EQ(Tokens_Of(tokenizer), closed ? "ident:rest eof" : "eof");
        }
    }
}

TEST(Tokenizer, Bare_Expression_Without_The_Pattern_Ends_Once) {
    Tokenizer tokenizer("ab", 2, 1);
    const char* text;
    int length = 0;
    tokenizer.Get_Next_Token(&text, length);
    EXPECT_EQ(tokenizer.Read_Until(&text, length, "-->", 3), TOKEN_RBRACE);
    EXPECT_EQ(Tokens_Of(tokenizer), "ident:ab eof");
}

TEST(Tokenizer, Text_Runs_To_The_Next_Tag) {
    for (int length = 0; length < 70; ++length) {
        for (int stop = 0; stop <= length; ++stop) {
            for (char stop_byte : {'<', '\0'}) {
                std::string source;
                for (int i = 0; i < length; ++i)
                    source += i == stop ? stop_byte : i % 5 == stop % 3 ? '\n' : '\xbc';
                Tokenizer tokenizer(source.data(), length, 0);
                const char* text = nullptr;
                int run = 0;
                Tokenizer_TokenType type = tokenizer.Get_Next_Text(&text, run);
                if (stop > 0) {
                    EXPECT_EQ(type, TOKEN_OTHER);
                    EXPECT_EQ(run, stop);
                    EXPECT_EQ(tokenizer.line, std::count(source.begin(), source.begin() + stop, '\n'));
                    type = tokenizer.Get_Next_Text(&text, run);
                }
                EXPECT_EQ(type, stop < length && stop_byte == '<' ? TOKEN_LT : TOKEN_EOF);
            }
        }
    }
}

TEST(Tokenizer, Text_Gives_Tokens_Where_An_Identifier_May_Hide_A_Tag) {
    Tokenizer tokenizer("a\\<b", 4, 0);
    tokenizer.in_expression = 1;
    const char* text;
    int length;
    EXPECT_EQ(tokenizer.Get_Next_Text(&text, length), TOKEN_IDENT);
    EXPECT_EQ(length, 4);
}

TEST(Tokenizer, No_Byte_Outside_The_Text_Is_Read) {
    for (const char* last :
         {"a", "a\\", "1", "1.", "0x", "0x1", "+", "-", " ", "\n", "<", "\"", "\\", "\x80"}) {
        Guarded_Page page(last);
        for (std::size_t length : {std::size_t{1}, std::size_t{17}, std::size_t{4096}}) {
            std::string_view source = page.Last(std::max(length, std::strlen(last)));
            for (int in_expression : {0, 1}) {
                Tokenizer tokens(source.data(), static_cast<int>(source.size()), 0);
                tokens.in_expression = in_expression;
                EXPECT_NE(Tokens_Of(tokens), "");
            }
            const char* text;
            int rest;
            Tokenizer run(source.data(), static_cast<int>(source.size()), 0);
            run.Get_Next_Text(&text, rest);
            Tokenizer quoted(source.data(), static_cast<int>(source.size()), 0);
            quoted.Read_Until(&text, rest, '\'', '\\');
            EXPECT_EQ(rest, static_cast<int>(source.size()));
        }
    }
}
