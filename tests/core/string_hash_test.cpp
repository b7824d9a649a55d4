#include "core/string_hash.h"

#include <cctype>
#include <gtest/gtest.h>
#include <string>

namespace {

uint32_t Hash(const std::string& key, uint32_t seed = 0) {
    return hash(key.data(), static_cast<uint32_t>(key.size()), seed);
}

// Values of the published lookup2, as other libraries that offer it have them.
TEST(StringHash, Published_Results) {
    const std::pair<const char*, uint32_t> cases[] = {
        // clang-format off
        {"", 0xbd49d10d}, {"a", 0x29eec818}, {"abcd", 0x5ae61fa5}, {"abcdefgh", 0x053f775e},
        {"abcdefghi", 0x3a7b0a5f}, {"abcdefghijk", 0xe52b8e4c}, {"abcdefghijkl", 0x0b1b3ea5},
        {"This is the time for all good men to come to the aid of their country...", 0xc9291ecd}
        // clang-format on
    };
    for (const auto& [key, expected] : cases)
        EXPECT_EQ(Hash(key), expected) << key;
    EXPECT_EQ(Hash("abcdefghijklm", 1), 0x9cf6da4eu);
    std::string bytes;
    for (int byte = 0x80; byte < 0xa8; byte++)
        bytes += static_cast<char>(byte);
    EXPECT_EQ(Hash(bytes), 0xd8bfcb63u);
}

// Every byte at every offset of the blocks and of the rest: what tolower leaves alone is left alone.
TEST(StringHash, Ignoring_Case_Is_Hash_Of_The_Lower_Case_Text) {
    for (int i = 0; i < 256 * 23; i++) {
        std::string key(23, 'Q'), lower(23, 'q');
        key[i % 23] = static_cast<char>(i / 23);
        lower[i % 23] = static_cast<char>(std::tolower(i / 23));
        ASSERT_EQ(hashi(key.data(), 23, 7), Hash(lower, 7)) << i;
    }
}

} // namespace
