#include "core/md5.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The digest as text; by HMAC where there is a key.
std::string Digest(const std::string& text, const std::string& key = "") {
    const auto bytes = [](const std::string& s) { return reinterpret_cast<const unsigned char*>(s.data()); };
    MD5Encoder encoder;
    unsigned char digest[16];
    if (key.empty())
        encoder.Encode(bytes(text), text.size(), digest);
    else
        encoder.HMAC(bytes(text), text.size(), bytes(key), key.size(), digest);
    std::string printable(32, '?');
    MD5Encoder::Make_Printable(digest, printable.data());
    return printable;
}

TEST(MD5, Known_Digests) {
    EXPECT_EQ(Digest(""), "d41d8cd98f00b204e9800998ecf8427e"); // of RFC 1321
    EXPECT_EQ(Digest("message digest"), "f96b697d7cb7938d525a2f31aaf161d0");
    EXPECT_EQ(Digest(std::string(55, 'a')), "ef1772b6dff9a122358552954ad0df65"); // by md5sum, at block ends
    EXPECT_EQ(Digest(std::string(56, 'a')), "3b0c8ac703f828b04c6c197006d17218");
    EXPECT_EQ(Digest(std::string(64, 'a')), "014842d480b571495a4a0363793f7367");
    EXPECT_EQ(Digest(std::string(120, 'a')), "5f61c0ccad4cac44c75ff505e1f1e537");
    EXPECT_EQ(Digest("what do ya want for nothing?", "Jefe"),
              "750c783e6ab0b503eaa86e310a5db738"); // of RFC 2202
    EXPECT_EQ(Digest("Test Using Larger Than Block-Size Key and Larger Than One Block-Size Data",
                     std::string(80, '\xaa')),
              "6f630fad67cda0ee1fb1f562db3aa53e");
}

} // namespace
