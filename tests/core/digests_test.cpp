#include "core/base64.h"
#include "core/crc32.h"
#include "core/md5.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using namespace std::string_literals;

const unsigned char* Bytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

std::string Converted(int (*convert)(const unsigned char*, unsigned char*, int), const std::string& text) {
    std::string out(text.size() * 2 + 4, '?');
    auto* const target = reinterpret_cast<unsigned char*>(out.data());
    const int length = convert(Bytes(text), target, static_cast<int>(text.size()));
    EXPECT_EQ(out[length], '?') << "wrote behind the result";
    return out.substr(0, length);
}

TEST(Base64, Vectors_Of_RFC_4648_And_Malformed_Text) {
    const std::string vectors[][2] = {{"", ""},        {"f", "Zg=="},          {"fo", "Zm8="},
                                      {"foo", "Zm9v"}, {"foobar", "Zm9vYmFy"}, {"\xFB\xEF\xFF", "++//"}};
    for (const auto& [plain, encoded] : vectors) {
        EXPECT_EQ(Converted(tn_base64_encode, plain), encoded);
        EXPECT_EQ(Converted(tn_base64_decode, encoded), plain);
    }
    // What is no digit counts like A: a third '=', a line break.
    const std::string malformed[][2] = {
        // clang-format off
        {"=", ""}, {"===", "\0"s}, {"Z", "d"}, {"Zm", "f"}, {"Zm9", "fo"}, {"Z===", "d"},
        {"\xFF-9v", "\0\x0F\x6F"s}, {"Zm9v\nYmFy", "foo\x01\x89\x85\xC8"}
        // clang-format on
    };
    for (const auto& [encoded, plain] : malformed)
        EXPECT_EQ(Converted(tn_base64_decode, encoded), plain) << encoded;
}

TEST(Crc32, Catalogue_Value_In_Pieces) {
    const unsigned begun = crc32_data(crc32_init(), Bytes("1234"), 4);
    EXPECT_EQ(crc32_data(begun, nullptr, -1), begun);
    EXPECT_EQ(crc32_final(crc32_data(begun, Bytes("56789"), 5)), 0xFC891918u);
}

TEST(MD5, Vectors_Of_RFC_1321_And_RFC_2202_And_Ends_Of_Blocks) {
    const std::string long_text = "Test Using Larger Than Block-Size Key and Larger Than One Block-Size Data";
    const std::string cases[][3] = {
        // The text, the key of an HMAC, the digest; those of repeated letters by md5sum.
        {"", "", "d41d8cd98f00b204e9800998ecf8427e"},
        {"message digest", "", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"what do ya want for nothing?", "Jefe", "750c783e6ab0b503eaa86e310a5db738"},
        {long_text, std::string(80, '\xaa'), "6f630fad67cda0ee1fb1f562db3aa53e"},
        {std::string(55, 'a'), "", "ef1772b6dff9a122358552954ad0df65"},
        {std::string(56, 'a'), "", "3b0c8ac703f828b04c6c197006d17218"},
        {std::string(64, 'a'), "", "014842d480b571495a4a0363793f7367"},
        {std::string(120, 'a'), "", "5f61c0ccad4cac44c75ff505e1f1e537"},
    };
    MD5Encoder encoder;
    for (const auto& [text, key, expected] : cases) {
        unsigned char digest[16];
        if (key.empty())
            encoder.Encode(Bytes(text), text.size(), digest);
        else
            encoder.HMAC(Bytes(text), text.size(), Bytes(key), key.size(), digest);
        std::string printable(32, '?');
        MD5Encoder::Make_Printable(digest, printable.data());
        EXPECT_EQ(printable, expected);
    }
}

} // namespace
