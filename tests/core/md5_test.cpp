#include "core/md5.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const unsigned char* Bytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

std::string Printable(const unsigned char* digest) {
    std::string text(32, '?');
    MD5Encoder::Make_Printable(digest, text.data());
    return text;
}

} // namespace

TEST(MD5, Suite_Of_RFC_1321_And_Padding_At_Block_Ends) {
    const struct {
        std::string text;
        const char* digest;
    } cases[] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
         "d174ab98d277d9f5a5611c2c9f419d9f"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"},
        {std::string(55, 'a'), "ef1772b6dff9a122358552954ad0df65"}, // these by md5sum
        {std::string(56, 'a'), "3b0c8ac703f828b04c6c197006d17218"},
        {std::string(64, 'a'), "014842d480b571495a4a0363793f7367"},
        {std::string(120, 'a'), "5f61c0ccad4cac44c75ff505e1f1e537"},
    };
    MD5Encoder encoder;
    for (const auto& c : cases) {
        unsigned char digest[16];
        encoder.Encode(Bytes(c.text), c.text.size(), digest);
        EXPECT_EQ(Printable(digest), c.digest);
    }
}

TEST(MD5, HMAC_Cases_Of_RFC_2202) {
    const struct {
        std::string key, data;
        const char* digest;
    } cases[] = {
        {std::string(16, '\x0b'), "Hi There", "9294727a3638bb1c13f48ef8158bfc9d"},
        {"Jefe", "what do ya want for nothing?", "750c783e6ab0b503eaa86e310a5db738"},
        {std::string(16, '\xaa'), std::string(50, '\xdd'), "56be34521d144c88dbb8c733f0e8b3f6"},
        {std::string(80, '\xaa'), "Test Using Larger Than Block-Size Key - Hash Key First",
         "6b1ab7fe4bd7bf8f0b62e6ce61b9d0cd"},
        {std::string(80, '\xaa'), "Test Using Larger Than Block-Size Key and Larger Than One Block-Size Data",
         "6f630fad67cda0ee1fb1f562db3aa53e"},
    };
    for (const auto& c : cases) {
        unsigned char digest[16];
        MD5Encoder().HMAC(Bytes(c.data), c.data.size(), Bytes(c.key), c.key.size(), digest);
        EXPECT_EQ(Printable(digest), c.digest);
    }
}
