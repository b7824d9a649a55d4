#include "core/text_search.h"

#include <cctype>
#include <gtest/gtest.h>
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

std::string Folded(std::string text) {
    for (char& byte : text)
        byte = static_cast<char>(std::tolower(static_cast<unsigned char>(byte)));
    return text;
}

int Expected(const Searcher& wanted, const std::string& pattern, const std::string& text) {
    if (wanted.ignores_case)
        return Expected({"", nullptr, false, wanted.takes_last, wanted.first_offset, 0, 0}, Folded(pattern),
                        Folded(text));
    return static_cast<int>(wanted.takes_last ? text.rfind(pattern)
                                              : text.find(pattern, wanted.first_offset));
}

std::string Random_Text(std::mt19937& random, int longest, std::string_view alphabet) {
    std::string text(random() % (longest + 1), '\0');
    for (char& byte : text)
        byte = alphabet[random() % alphabet.size()];
    return text;
}

TEST(TextSearch, Agrees_With_The_Standard_Library) {
    std::mt19937 random(6);
    for (int round = 0; round < 8000; ++round) {
        const bool lower_case = round % 4 == 0;
        const std::string pattern = Random_Text(random, 5, "aAbB\xE9") + "b";
        const std::string text =
            Random_Text(random, round % 50 ? 12 : 400, lower_case ? "ab\xE9" : "aAbB\xE9");
        for (const Searcher& searcher : searchers)
            if (lower_case || searcher.search != bm_searchi_reverse) {
                ASSERT_EQ(searcher(pattern, text), Expected(searcher, pattern, text))
                    << searcher.name << " of " << pattern << " in " << text;
            }
    }
    for (const Searcher& searcher : searchers) {
        EXPECT_EQ(searcher("", "text"), searcher.empty_pattern) << searcher.name;
        EXPECT_EQ(searcher("", ""), searcher.empty_pattern_in_empty_text) << searcher.name;
    }
    // Oddities that stay: the raw B counts as absent from the pattern, the byte behind the text takes part.
    EXPECT_EQ(bm_searchi_reverse("ab", 2, "xxAB", 4), 2);
    EXPECT_EQ(bm_searchi_reverse("ab", 2, "ABx", 3), -1);
    EXPECT_EQ(rk_search("bc", 2, "abc", 2), 1);
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
