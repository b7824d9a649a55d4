#include "app/driver/unix_compiler_application.h"
#include "core/link_buffer.h"

#include <cctype>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace {

using App = TarnApplication;
using Encoder = char* (*)(const char*, int, int*, int*);

std::string Taken(char* text, int length, int size) {
    const std::unique_ptr<char[]> result(text);
    EXPECT_GT(size, length);
    EXPECT_EQ(result[length], '\0');
    return std::string(text, length);
}

std::string Convert(Encoder encoder, const std::string& text, int length) {
    int result_length, result_size;
    char* const result = encoder(text.data(), length, &result_length, &result_size);
    return Taken(result, result_length, result_size);
}

TEST(TextEncoders, Attribute_Form_Of_Every_Byte) {
    for (int byte = 0; byte < 256; ++byte) {
        char hexadecimal[4];
        std::snprintf(hexadecimal, sizeof hexadecimal, "%%%02X", byte);
        const std::string text(1, static_cast<char>(byte));
        const bool stays =
            byte < 128 && (std::isalnum(byte) || std::string("*-.@_").find(text) != std::string::npos);
        const std::string expected = stays ? text : byte == ' ' ? "+" : hexadecimal;
        EXPECT_EQ(Convert(App::EncodeAttribute, text, 1), expected);
        EXPECT_EQ(Convert(App::DecodeAttribute, expected, -1), text);
    }
}

TEST(TextEncoders, Table) {
    const std::string brackets(2000, '<'); // more than the first block holds
    const struct {
        Encoder encoder;
        std::string text, expected;
        int cut_off = 0;
    } cases[] = {
        {App::DecodeAttribute, "a+b%41%4a%4Ax", "a bAJJx"},
        {App::DecodeAttribute, "%4g%g4%%41%", "%4g%g4%A%"},
        {App::DecodeAttribute, "%41", "%4", 1},
        {App::EncodeEntities, "\"a\" & <b> f(x) 'c'", "&quot;a&quot; &amp; &lt;b&gt; f&#40;x&#41; 'c'"},
        {App::DecodeEntities, "&quot;&QUOT;&amp;&aMp;&lt;&LT;&gt;&Gt;&#40;&#41;", "\"\"&&<<>>()"},
        {App::DecodeEntities, "&amp;lt;a&amp", "&lt;a&"},
        {App::DecodeEntities, "&lt &lt\v&gt;&lt", "&lt &lt\v><"},
        {App::DecodeEntities, "&nbsp;&#42;&;&am;&ampx;&", "&nbsp;&#42;&;&am;&ampx;&"},
        {App::DecodeEntities, "&x&lt;&lt;", "&x&lt;<"}, // the first one is named x&lt
        {App::DecodeEntities, Convert(App::EncodeEntities, brackets, 2000), brackets},
        {App::StripNULLs, std::string("\0a\0\0b\0", 6), "ab"},
        {App::StripNULLs, "a", "", 2}, // -1 is no convention here
        {App::DecodeEntities, "a", "", 3},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Convert(c.encoder, c.text, static_cast<int>(c.text.size()) - c.cut_off), c.expected)
            << c.text;
    EXPECT_STREQ(App::EncodeEntities(String("a<b", 3)).text(), "a&lt;b");
}

TEST(TextEncoders, Script_Text_By_Character_Set) {
    const std::string cases[][3] = {
        // The text, in UTF-8, and in another character set.
        {"\b\t\n\f\r\"/\\", R"(\b\t\n\f\r\"\/\\)", R"(\b\t\n\f\r\"\/\\)"},
        {"azAZ09_ $+,-.:@", "azAZ09_ $+,-.:@", "azAZ09_ $+,-.:@"},
        {"!'\x7F\x01", R"(\u0021\u0027\u007F\u0001)", R"(\u0021\u0027\u007F\u0001)"},
        {"x\xC3\xA9y", R"(x\u00E9y)", R"(x\u00C3\u00A9y)"},
        {"\xE2\x82\xAC!", R"(\u20AC\u0021)", R"(\u00E2\u0082\u00AC\u0021)"},
        {"\xF0\x9F\x98\x80", R"(\uD83D\uDE00)", R"(\u00F0\u009F\u0098\u0080)"},
        {"\xF0\xA0\x80\x80", R"(\uD800\uDC00)", R"(\u00F0\u00A0\u0080\u0080)"}, // beyond the first plane
        {"\xDF!", R"(\u07E1)", R"(\u00DF\u0021)"}, // what follows a lead byte is not checked
        {"a\xC3", R"(a\u00C3)", R"(a\u00C3)"},
        {"\xF0\x9F\x98", R"(\u00F0\u009F\u0098)", R"(\u00F0\u009F\u0098)"},
        {"\x80\xC1\x80\xF8\xFF", R"(\u0080\u00C1\u0080\u00F8\u00FF)", R"(\u0080\u00C1\u0080\u00F8\u00FF)"},
    };
    char name[] = "test";
    char* arguments[] = {name, nullptr};
    UNIXCompilerApplication application(1, arguments);
    for (const int column : {1, 2}) {
        application.SetCharacterSet(column == 1 ? "UTF-8" : "iso-8859-1", -1);
        for (const auto& c : cases) {
            int length, size;
            char* const result = application.EncodeJavaScriptString(c[0].data(), c[0].size(), &length, &size);
            EXPECT_EQ(Taken(result, length, size), c[column]);
            const std::unique_ptr<LinkBuffer> made(
                App::EncodeJavaScriptString(&application, c[0].data(), -1, nullptr));
            EXPECT_EQ(App::EncodeJavaScriptString(&application, "+", 1, made.get()), made.get());
            EXPECT_EQ(made->data(&length, nullptr), c[column] + "+");
        }
    }
}

} // namespace
