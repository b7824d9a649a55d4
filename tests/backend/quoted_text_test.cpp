#include "backend/outputs/compiler_output.h"
#include "backend/outputs/quoted_text.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {

std::string Quoted(const std::string& text, ExpressionState state) {
    // An exact copy on the heap, so that the address sanitizer sees every byte read beyond it.
    const std::unique_ptr<char[]> copy(new char[text.size()]);
    text.copy(copy.get(), text.size());
    StringOutput output;
    Write_Quoted_Text(&output, copy.get(), static_cast<int>(text.size()), state);
    int length;
    const char* const written = output.Contents(&length);
    return std::string(written, length);
}

TEST(Quoted_Text, Backslashes_Depend_On_The_State) {
    constexpr auto other = static_cast<ExpressionState>(3);
    const struct {
        ExpressionState state;
        const char* text;
        const char* expected;
    } cases[] = {
        {EXPRESSION_STATE_TEXT, "a\"b\"", R"(a\22b\22)"},
        {EXPRESSION_STATE_TEXT, "a\n\tb\xff", "a\n\tb\xff"},
        {EXPRESSION_STATE_FILTER, R"(\n"\)", R"(\5cn\22\5c)"},
        {EXPRESSION_STATE_ESCAPED, R"(a\b)", "ab"},
        {EXPRESSION_STATE_ESCAPED, R"(\\\)", R"(\5c)"},
        {EXPRESSION_STATE_ESCAPED, R"(\"")", R"(\22\22)"},
        {EXPRESSION_STATE_ESCAPED, R"(\)", ""},
        {other, R"(\\a\"\)", R"(a\22)"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Quoted(c.text, c.state), c.expected) << c.text << " in state " << c.state;
}

TEST(Quoted_Text, Escapes_Are_Found_At_Every_Place_Of_A_Long_Text) {
    for (const int length : {17, 1025, 1030})
        for (int place = 0; place + 2 <= length; ++place) {
            const auto filled = [=](const char* middle) {
                return std::string(place, 'x').append(middle).append(length - place - 2, 'y');
            };
            ASSERT_EQ(Quoted(filled(R"(\\)"), EXPRESSION_STATE_ESCAPED), filled(R"(\5c)")) << place;
        }
}

TEST(Quoted_Text, Text_Of_Quotes_Alone_Grows_Threefold) {
    const std::string quoted = Quoted(std::string(5000, '"'), EXPRESSION_STATE_ESCAPED);
    ASSERT_EQ(quoted.size(), 15000u);
    EXPECT_EQ(quoted.substr(14994), R"(\22\22)");
}

} // namespace
