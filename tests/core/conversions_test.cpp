// Texts to texts and numbers, and numbers to texts.

#include "app/driver/unix_compiler_application.h"
#include "core/base64.h"
#include "core/crc32.h"
#include "core/link_buffer.h"
#include "core/md5.h"

#include <bit>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>

namespace {

using namespace std::string_literals;
using App = TarnApplication;

const unsigned char* Bytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

constexpr double infinity = std::numeric_limits<double>::infinity();

std::string Text(double number) {
    int len, size;
    return std::unique_ptr<char[]>(App::dtos(number, &len, &size)).get();
}

template <class Convert>
std::string Encoded(Convert* convert, const std::string& text, int cut_off = 0) {
    const int length = static_cast<int>(text.size()) - cut_off;
    int len, size;
    const std::unique_ptr<char[]> encoded(convert(text.data(), length, &len, &size));
    EXPECT_GT(size, len);
    EXPECT_EQ(encoded[len], '\0');
    return {encoded.get(), static_cast<std::size_t>(len)};
}
std::string Base64(int (*convert)(const unsigned char*, unsigned char*, int), const std::string& text) {
    std::string out(text.size() * 2 + 4, '?');
    out.resize(convert(Bytes(text), reinterpret_cast<unsigned char*>(out.data()), text.size()) + 1);
    EXPECT_EQ(out.back(), '?') << "wrote behind the result";
    return out.substr(0, out.size() - 1);
}

// As the body of a script's string literal, by either operation.
std::string Script(const std::string& text, const char* character_set = "UTF-8") {
    char name[] = "test";
    char* arguments[] = {name, nullptr};
    UNIXCompilerApplication application(1, arguments);
    application.SetCharacterSet(character_set, -1);
    int len, size;
    const std::unique_ptr<char[]> script(
        application.EncodeJavaScriptString(text.data(), text.size(), &len, &size));
    const std::unique_ptr<LinkBuffer> buffer(App::EncodeJavaScriptString(&application, "+", -1, nullptr));
    EXPECT_EQ(App::EncodeJavaScriptString(&application, text.data(), text.size(), buffer.get()),
              buffer.get());
    EXPECT_EQ(buffer->data(&len, nullptr), "+"s + script.get());
    return script.get();
}

std::string MD5(const std::string& text, const std::string& key = "") {
    static MD5Encoder encoder;
    unsigned char digest[16];
    if (key.empty())
        encoder.Encode(Bytes(text), text.size(), digest);
    else
        encoder.HMAC(Bytes(text), text.size(), Bytes(key), key.size(), digest);
    std::string printable(32, '?');
    MD5Encoder::Make_Printable(digest, printable.data());
    return printable;
}

TEST(Conversions, Table) {
    const std::string brackets(2000, '<'); // more than the first block holds
    const std::string long_text = "Test Using Larger Than Block-Size Key and Larger Than One Block-Size Data";
    using Encoder = char*(const char*, int, int*, int*);
    Encoder* const unescape = App::DecodeAttribute;
    Encoder* const decode = App::DecodeEntities;
    Encoder* const encode = App::EncodeEntities;
    const std::string cases[][2] = {
        // clang-format off
        {Text(-0.0), "-0"}, {Text(-infinity), "-Infinity"}, {Text(1e14), "100000000000000"},
        // Whole numbers of more than 15 digits stop at the last that isn't 0. Digits that lie just between two doubles don't count.
        {Text(1e23), "9999999999999999"}, {Text(3.132231570226741e16), "31322315702267408"},
        {Text(5.47362728754336e18), "5473627287543359"}, {Text(4333e24), "4333"}, // lies far from any

        {Encoded(unescape, "a+b%41%4a%4Ax"), "a bAJJx"}, {Encoded(unescape, "%4g%g4%%41%"), "%4g%g4%A%"},
        {Encoded(unescape, "%41", 1), "%4"},
        {Encoded(decode, "&quot;&QUOT;&aMp;&LT;&Gt;&#40;&#41;"), "\"\"&<>()"},
        {Encoded(encode, "\"a\" & <b> f(x) 'c'"), "&quot;a&quot; &amp; &lt;b&gt; f&#40;x&#41; 'c'"},
        {Encoded(decode, "&amp;lt;a&amp"), "&lt;a&"}, {Encoded(decode, "&lt &lt\v&gt;&lt"), "&lt &lt\v><"},
        {Encoded(decode, "&nbsp;&#42;&;&am;&ampx;&"), "&nbsp;&#42;&;&am;&ampx;&"},
        {Encoded(decode, "&x&lt;&lt;"), "&x&lt;<"}, // the first one is named x&lt
        {Encoded(decode, Encoded(encode, brackets)), brackets},
        {Encoded(App::StripNULLs, "\0a\0\0b\0"s), "ab"},
        {Encoded(App::StripNULLs, "a", 2), ""}, {Encoded(decode, "a", 3), ""},

        {Script("x\xC3\xA9y"), R"(x\u00E9y)"}, {Script("\xE2\x82\xAC!"), R"(\u20AC\u0021)"},
        {Script("\xF0\x9F\x98\x80"), R"(\uD83D\uDE00)"}, {Script("\xE2\x82"), R"(\u00E2\u0082)"},
        {Script("\xF0\xA0\x80\x80"), R"(\uD800\uDC00)"}, // beyond the first plane
        {Script("\xDF!"), R"(\u07E1)"}, // what follows a lead byte is not checked
        {Script("\xF0\x9F\x98"), R"(\u00F0\u009F\u0098)"}, {Script("\xC1\x80"), R"(\u00C1\u0080)"},
        {Script("\xF8\x80\x80\x80"), R"(\u00F8\u0080\u0080\u0080)"},
        {Script("\xC3\xA9", "iso"), R"(\u00C3\u00A9)"},

        // What is no digit counts like A: a third '=', a line break.
        {Base64(tn_base64_encode, ""), ""}, {Base64(tn_base64_encode, "f"), "Zg=="},
        {Base64(tn_base64_encode, "fo"), "Zm8="}, {Base64(tn_base64_encode, "foobar"), "Zm9vYmFy"},
        {Base64(tn_base64_encode, "\xFB\xEF\xFF"), "++//"},
        {Base64(tn_base64_decode, "++//"), "\xFB\xEF\xFF"}, {Base64(tn_base64_decode, "Zm8="), "fo"},
        {Base64(tn_base64_decode, "="), ""}, {Base64(tn_base64_decode, "==="), "\0"s},
        {Base64(tn_base64_decode, "Z"), "d"}, {Base64(tn_base64_decode, "Zm"), "f"},
        {Base64(tn_base64_decode, "Zm9"), "fo"},
        {Base64(tn_base64_decode, "\xFF-9v\nYmFy"), "\0\x0F\x6F\x01\x89\x85\xC8"s},

        // From the requests for comments that define them; those of repeated letters by md5sum.
        {MD5(""), "d41d8cd98f00b204e9800998ecf8427e"},
        {MD5(std::string(55, 'a')), "ef1772b6dff9a122358552954ad0df65"},
        {MD5(std::string(56, 'a')), "3b0c8ac703f828b04c6c197006d17218"},
        {MD5(std::string(64, 'a')), "014842d480b571495a4a0363793f7367"},
        {MD5("what do ya want for nothing?", "Jefe"), "750c783e6ab0b503eaa86e310a5db738"},
        {MD5(long_text, std::string(80, '\xaa')), "6f630fad67cda0ee1fb1f562db3aa53e"},
        // clang-format on
    };
    for (const auto& [converted, expected] : cases)
        EXPECT_EQ(converted, expected) << &converted - cases[0];
}

TEST(Conversions, Encoded_Forms_Of_Every_Byte) {
    for (int byte = 0; byte < 256; ++byte) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02X", byte);
        const std::string text(1, static_cast<char>(byte));
        const auto stays = [&](std::string_view others) {
            return (byte < 128 && std::isalnum(byte)) || others.find(text) != std::string_view::npos;
        };
        const std::string attribute = stays("*-.@_") ? text : byte == ' ' ? "+" : "%"s + digits;
        EXPECT_EQ(Encoded(App::EncodeAttribute, text), attribute);
        EXPECT_EQ(Encoded(App::DecodeAttribute, attribute), text);
        const auto escape = "\b\t\n\f\r\"/\\"s.find(text);
        EXPECT_EQ(Script(text), stays(" $+,-.:@_")            ? text
                                : escape != std::string::npos ? "\\"s + "btnfr\"/\\"[escape]
                                                              : "\\u00"s + digits);
    }
}

TEST(Conversions, Crc32_Has_The_Catalogue_Value_In_Pieces) {
    const unsigned begun = crc32_data(crc32_init(), Bytes("1234"), 4);
    EXPECT_EQ(crc32_data(begun, nullptr, -1), begun);
    EXPECT_EQ(crc32_final(crc32_data(begun, Bytes("56789"), 5)), 0xFC891918u);
}

TEST(Conversions, Infinity_By_The_C_Library_Counts_As_Overflow_While_Errno_Says_So) {
    std::string errors;
    int error = errno = 0;
    for (const char* text : {"inf", "1e999", "inf"}) {
        EXPECT_EQ(App::stod(text, -1, 0, &error), infinity);
        errors += std::to_string(error);
    }
    EXPECT_EQ(App::stod("inf", 3, 4, &error), infinity); // a word doesn't mind
    EXPECT_EQ(errors + std::to_string(error), "0110");
    EXPECT_EQ(std::bit_cast<std::uint64_t>(App::stod("-nan", 4, 5, nullptr)), 0xfff8000000000000u);
}

} // namespace
