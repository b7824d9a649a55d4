#include "app/tarn_application.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <memory>
#include <string>

namespace {

using Encoder = char* (*)(const char*, int, int*, int*);

std::string Convert(Encoder encoder, const std::string& text, int length) {
    int result_length, result_size;
    const std::unique_ptr<char[]> result(encoder(text.data(), length, &result_length, &result_size));
    EXPECT_GT(result_size, result_length);
    EXPECT_EQ(result[result_length], '\0');
    return std::string(result.get(), result_length);
}

TEST(TextEncoders, Attribute_Form_Of_Every_Byte) {
    for (int byte = 0; byte < 256; ++byte) {
        char hexadecimal[4];
        std::snprintf(hexadecimal, sizeof hexadecimal, "%%%02X", byte);
        const std::string text(1, static_cast<char>(byte));
        const bool stays =
            byte < 128 && (std::isalnum(byte) || std::string("*-.@_").find(text) != std::string::npos);
        const std::string expected = stays ? text : byte == ' ' ? "+" : hexadecimal;
        EXPECT_EQ(Convert(TarnApplication::EncodeAttribute, text, 1), expected);
        EXPECT_EQ(Convert(TarnApplication::DecodeAttribute, expected, -1), text);
    }
}

TEST(TextEncoders, Table) {
    const std::string brackets(2000, '<'); // more than the first block holds
    const struct {
        Encoder encoder;
        std::string text, expected;
        int cut_off = 0;
    } cases[] = {
        {TarnApplication::DecodeAttribute, "a+b%41%4a%4Ax", "a bAJJx"},
        {TarnApplication::DecodeAttribute, "%4g%g4%%41%", "%4g%g4%A%"},
        {TarnApplication::DecodeAttribute, "%41", "%4", 1},
        {TarnApplication::EncodeEntities, "\"a\" & <b> f(x) 'c'",
         "&quot;a&quot; &amp; &lt;b&gt; f&#40;x&#41; 'c'"},
        {TarnApplication::DecodeEntities, "&quot;&QUOT;&amp;&aMp;&lt;&LT;&gt;&Gt;&#40;&#41;", "\"\"&&<<>>()"},
        {TarnApplication::DecodeEntities, "&amp;lt;a&amp", "&lt;a&"},
        {TarnApplication::DecodeEntities, "&lt &lt\v&gt;&lt", "&lt &lt\v><"},
        {TarnApplication::DecodeEntities, "&nbsp;&#42;&;&am;&ampx;&", "&nbsp;&#42;&;&am;&ampx;&"},
        {TarnApplication::DecodeEntities, "&x&lt;&lt;", "&x&lt;<"}, // the first one is named x&lt
        {TarnApplication::DecodeEntities, Convert(TarnApplication::EncodeEntities, brackets, 2000), brackets},
        {TarnApplication::StripNULLs, std::string("\0a\0\0b\0", 6), "ab"},
        {TarnApplication::StripNULLs, "a", "", 2}, // -1 is no convention here
        {TarnApplication::DecodeEntities, "a", "", 3},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Convert(c.encoder, c.text, static_cast<int>(c.text.size()) - c.cut_off), c.expected)
            << c.text;
    EXPECT_STREQ(TarnApplication::EncodeEntities(String("a<b", 3)).text(), "a&lt;b");
}

} // namespace
