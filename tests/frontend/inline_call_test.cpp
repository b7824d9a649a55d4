#include "backend/outputs/compiler_output.h"
#include "backend/writers/file_compiler_parser.h"

#include <gtest/gtest.h>
#include <string>

namespace {

// The code of an expression.
std::string Compile(const std::string& source, int expected_result) {
    StringOutput text;
    FileCompilerParser parser(new Tokenizer(source.data(), static_cast<int>(source.size()), 1), &text,
                              nullptr, nullptr, -1, -1, START_EXPRESSION, nullptr, nullptr, nullptr);
    EXPECT_EQ(parser.Start(), expected_result);
    int length;
    const char* code = text.Contents(&length);
    return std::string(code, static_cast<std::size_t>(length));
}

std::size_t Count(const std::string& text, const char* word) {
    std::size_t count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
        ++count;
    return count;
}

std::string Repeat(const char* piece, int times) {
    std::string text;
    for (int i = 0; i < times; ++i)
        text += piece;
    return text;
}

} // namespace

TEST(InlineCall, Nested_Call_Is_Compiled_First) {
    const std::string digest = "d41d8cd98f00b204e9800998ecf8427e"; // of the empty file name
    const std::string scratch = "__scratch_funcdo_0_" + digest;
    EXPECT_EQ(Compile("[ l.f ].g( [ l.h ].i() )", 0), "\n.local\tl_0\t\"f\"\n\tlineno\t1\n\tpushl\tl_0"
                                                      "\n.local\tl_1\t\"h\"\n\tpushl\tl_1"
                                                      "\n.string\ts_0\t\"i()\"\n\tpushc\ts_0\n\tdo_function"
                                                      "\n.local\tl_2\t\"" +
                                                          scratch +
                                                          "\"\n\tpopl\tl_2"
                                                          "\n.string\ts_1\t\"g( l." +
                                                          scratch + " )\"\n\tpushc\ts_1\n\tdo_function");
}

TEST(InlineCall, Scratch_Variables_Count_By_Depth) {
    std::string code = Compile("['f'].a(['f'].b(['f'].c()), ['f'].d())", 0);
    EXPECT_EQ(Count(code, ".local"), 2u); // d uses the variable of c
    EXPECT_EQ(Count(code, "do_function"), 4u);
}

// The text of a bracket is short by its parentheses: that cuts numbers, but no name.
TEST(InlineCall, Parentheses_In_A_Bracket) {
    EXPECT_EQ(Count(Compile("['q'].f([ (l.dir) $ l.name ].g())", 0), "\tl_1\t\"name\"\n"), 1u);
    EXPECT_EQ(Count(Compile("['q'].f([ (1) + 1234 ].g())", 0), "\tpushi\t123\n"), 1u);
}

TEST(InlineCall, Depth_Is_Not_Bounded_By_The_Stack) {
    const int depth = 50000;
    std::string code = Compile(Repeat("['f'].a(", depth) + "1" + Repeat(")", depth), 0);
    EXPECT_EQ(Count(code, "\tdo_function"), static_cast<std::size_t>(depth));
    EXPECT_EQ(Count(Compile(Repeat("['f'].a([", depth), 1), "\tdo_function"), 0u);
}
