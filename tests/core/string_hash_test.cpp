#include "core/string_hash.h"

#include <cctype>
#include <gtest/gtest.h>
#include <string>

namespace {

uint32_t Hash(const std::string& key, uint32_t seed = 0) {
    return hash(key.data(), static_cast<uint32_t>(key.size()), seed);
}

uint32_t Hash_Ignoring_Case(const std::string& key, uint32_t seed = 0) {
    return hashi(key.data(), static_cast<uint32_t>(key.size()), seed);
}

// Of no bytes: the mix of 0x9e3779b9, 0x9e3779b9 and the seed.
static_assert(hash("", 0, 0) == 0xbd49d10d);

// Values of the published lookup2, as other libraries that offer it have them.
TEST(StringHash, Published_Results) {
    const struct {
        const char* key;
        uint32_t expected;
    } cases[] = {
        {"a", 0x29eec818},
        {"abcd", 0x5ae61fa5},
        {"abcdefgh", 0x053f775e},
        {"abcdefghi", 0x3a7b0a5f},
        {"abcdefghijk", 0xe52b8e4c},
        {"abcdefghijkl", 0x0b1b3ea5},
        {"abcdefghijklm", 0x3122b031},
        {"This is the time for all good men to come to the aid of their country...", 0xc9291ecd},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Hash(c.key), c.expected) << c.key;
}

TEST(StringHash, Bytes_Count_Unsigned) {
    std::string bytes;
    for (int byte = 0x80; byte < 0xa8; byte++)
        bytes += static_cast<char>(byte);
    EXPECT_EQ(Hash(bytes), 0xd8bfcb63u);
}

TEST(StringHash, Seed_Takes_Part) {
    EXPECT_EQ(Hash("", 1), 0x6ddfb8c9u);
    EXPECT_EQ(Hash("abcdefghijklm", 1), 0x9cf6da4eu);
}

// Every byte at every offset of the blocks and of the rest: what tolower leaves alone is left alone.
TEST(StringHash, Ignoring_Case_Is_Hash_Of_The_Lower_Case_Text) {
    for (int byte = 0; byte < 256; byte++) {
        for (size_t at = 0; at < 23; at++) {
            std::string key(23, 'Q');
            key[at] = static_cast<char>(byte);
            std::string lower = key;
            for (char& c : lower)
                c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            ASSERT_EQ(Hash_Ignoring_Case(key, 7), Hash(lower, 7)) << byte << " at " << at;
        }
    }
    EXPECT_NE(Hash("Name"), Hash("name"));
}

} // namespace
