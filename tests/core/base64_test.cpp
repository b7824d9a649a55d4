#include "core/base64.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::string_literals;

std::string Convert(int (*convert)(const unsigned char*, unsigned char*, int), const std::string& text) {
    std::string out(text.size() * 2 + 4, '?');
    const int length = convert(reinterpret_cast<const unsigned char*>(text.data()),
                               reinterpret_cast<unsigned char*>(out.data()), static_cast<int>(text.size()));
    EXPECT_EQ(out[length], '?') << "wrote behind the result";
    return out.substr(0, length);
}

TEST(Base64, Vectors_Of_RFC_4648) {
    const std::string cases[][2] = {{"", ""},        {"f", "Zg=="},          {"fo", "Zm8="},
                                    {"foo", "Zm9v"}, {"foobar", "Zm9vYmFy"}, {"\xFB\xEF\xFF", "++//"}};
    for (const auto& [plain, encoded] : cases) {
        EXPECT_EQ(Convert(tn_base64_encode, plain), encoded);
        EXPECT_EQ(Convert(tn_base64_decode, encoded), plain);
    }
}

TEST(Base64, Malformed_Text_Decodes_To_Something) {
    // What is no digit counts like A: a third '=', a line break.
    const std::string cases[][2] = {{"=", ""},
                                    {"===", "\0"s},
                                    {"Z", "d"},
                                    {"Zm", "f"},
                                    {"Zm9", "fo"},
                                    {"Z===", "d"},
                                    {"\xFF-9v", "\0\x0F\x6F"s},
                                    {"Zm9v\nYmFy", "foo\x01\x89\x85\xC8"}};
    for (const auto& [encoded, plain] : cases)
        EXPECT_EQ(Convert(tn_base64_decode, encoded), plain) << encoded;
}

} // namespace
