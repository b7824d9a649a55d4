#include "core/text_search.h"

#include <gtest/gtest.h>

#include <cctype>
#include <random>
#include <string>

namespace {

const struct Searcher {
    const char* name;
    int (*search)(const char*, int, const char*, int);
    bool ignores_case, takes_last;
    std::size_t first_offset;
    int empty_pattern, empty_pattern_in_empty_text;

    int operator()(const std::string& pattern, const std::string& text) const {
        return search(pattern.data(), pattern.size(), text.data(), text.size());
    }
} searchers[] = {
    {"bf_search", bf_search, false, false, 0, 0, -1},
    {"bf_searchi", bf_searchi, true, false, 0, 0, -1},
    {"bf_search_reverse", bf_search_reverse, false, true, 0, -1, -1},
    {"bf_searchi_reverse", bf_searchi_reverse, true, true, 0, -1, -1},
    {"bm_search", bm_search, false, false, 0, 0, 0},
    {"bm_searchi", bm_searchi, true, false, 0, 0, 0},
    {"bm_search_reverse", bm_search_reverse, false, true, 0, -1, -1},
    {"bm_searchi_reverse", bm_searchi_reverse, true, true, 0, -1, -1},
    {"rk_search", rk_search, false, false, 1, -1, -1},
    {"rk_searchi", rk_searchi, true, false, 1, -1, -1},
};

int Naive_Search(const Searcher& wanted, const std::string& pattern, const std::string& text) {
    const auto matches = [&](std::size_t at) {
        for (const char byte : pattern) {
            const char other = text[at++];
            if (byte != other && !(wanted.ignores_case && std::isalpha(static_cast<unsigned char>(byte)) &&
                                   (byte ^ other) == 0x20))
                return false;
        }
        return true;
    };
    int found = -1;
    for (std::size_t at = wanted.first_offset; at + pattern.size() <= text.size(); ++at)
        if ((found == -1 || wanted.takes_last) && matches(at))
            found = static_cast<int>(at);
    return found;
}

std::string Random_Text(std::mt19937& random, int longest, std::string_view alphabet) {
    std::string text(random() % (longest + 1), '\0');
    for (char& byte : text)
        byte = alphabet[random() % alphabet.size()];
    return text;
}

TEST(TextSearch, Agrees_With_Naive_Search) {
    std::mt19937 random(6);
    for (int round = 0; round < 8000; ++round) {
        const bool lower_case = round % 4 == 0;
        const std::string pattern = Random_Text(random, 5, "aAbB\xE9") + "b";
        const std::string text =
            Random_Text(random, round % 50 == 0 ? 400 : 12, lower_case ? "ab\xE9" : "aAbB\xE9");
        for (const Searcher& searcher : searchers)
            if (lower_case || searcher.search != bm_searchi_reverse) {
                ASSERT_EQ(searcher(pattern, text), Naive_Search(searcher, pattern, text))
                    << searcher.name << " of " << pattern << " in " << text;
            }
    }
    for (const Searcher& searcher : searchers) {
        EXPECT_EQ(searcher("", "text"), searcher.empty_pattern) << searcher.name;
        EXPECT_EQ(searcher("", ""), searcher.empty_pattern_in_empty_text) << searcher.name;
    }
}

TEST(TextSearch, Oddities_That_Stay) {
    EXPECT_EQ(bm_searchi_reverse("ab", 2, "xxAB", 4), 2);
    EXPECT_EQ(bm_searchi_reverse("ab", 2, "ABx", 3), -1); // the raw B counts as absent from the pattern
    EXPECT_EQ(rk_search("bc", 2, "abc", 2), 1);           // the byte behind the text takes part
}

TEST(TextSearch, Compares_Without_Case) {
    for (const auto compare : {memcmpi, memcmpi_upper}) {
        EXPECT_EQ(compare("Name", "nAME", 4), 0);
        EXPECT_EQ(compare("a\0b", "A\0C", 3), -1);
        EXPECT_EQ(compare("\xE9", "z", 1), 1);
    }
    EXPECT_EQ(memcmpi("_", "a", 1), -1);
    EXPECT_EQ(memcmpi_upper("_", "a", 1), 1);
}

} // namespace
