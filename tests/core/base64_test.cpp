#include "core/base64.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string Convert(int (*convert)(const unsigned char*, unsigned char*, int), const std::string& text) {
    std::string out(text.size() * 2 + 4, '?');
    const int length = convert(reinterpret_cast<const unsigned char*>(text.data()),
                               reinterpret_cast<unsigned char*>(out.data()), static_cast<int>(text.size()));
    EXPECT_EQ(out[length], '?') << "wrote behind the result";
    return out.substr(0, length);
}

} // namespace

TEST(Base64, Vectors_Of_RFC_4648) {
    const struct {
        std::string plain, encoded;
    } cases[] = {{"", ""},        {"f", "Zg=="},          {"fo", "Zm8="},
                 {"foo", "Zm9v"}, {"foobar", "Zm9vYmFy"}, {"\xFB\xEF\xFF", "++//"}};
    for (const auto& c : cases) {
        EXPECT_EQ(Convert(tn_base64_encode, c.plain), c.encoded);
        EXPECT_EQ(Convert(tn_base64_decode, c.encoded), c.plain);
    }
}

TEST(Base64, Malformed_Text_Decodes_To_Something) {
    const struct {
        std::string encoded, plain;
    } cases[] = {{"=", ""},
                 {"==", ""},
                 {"===", std::string(1, '\0')}, // two dropped, the third counts like A
                 {"Z", "d"},
                 {"Zm", "f"},
                 {"Zm9", "fo"},
                 {"Z===", "d"},
                 {"\xFF-9v", std::string("\0\x0F\x6F", 3)},
                 {"Zm9v\nYmFy", "foo\x01\x89\x85\xC8"}};
    for (const auto& c : cases)
        EXPECT_EQ(Convert(tn_base64_decode, c.encoded), c.plain) << c.encoded;
}
