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

std::string Folded(std::string text, bool fold) {
    for (char& byte : text)
        byte = fold ? static_cast<char>(std::tolower(static_cast<unsigned char>(byte))) : byte;
    return text;
}

int Naive_Search(const Searcher& wanted, const std::string& pattern, const std::string& text) {
    int found = -1;
    for (std::size_t at = wanted.first_offset; at + pattern.size() <= text.size(); ++at)
        if ((found == -1 || wanted.takes_last) &&
            Folded(text.substr(at, pattern.size()), wanted.ignores_case) ==
                Folded(pattern, wanted.ignores_case))
            found = static_cast<int>(at);
    return found;
}

std::string Random_Text(std::mt19937& random, int longest, std::string_view alphabet) {
    std::string text(random() % (longest + 1), '\0');
    for (char& byte : text)
        byte = alphabet[random() % alphabet.size()];
    return text;
}

} // namespace

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
    EXPECT_EQ(rk_search("ab", 2, "abc", 2), -1);          // offset 0 doesn't
}

TEST(TextSearch, Compares_Without_Case) {
    const struct {
        std::string a, b;
        int lower, upper;
    } cases[] = {
        {"", "", 0, 0},    {"Name", "nAME", 0, 0}, {"abc", "abD", -1, -1}, {"B", "a", 1, 1},
        {"_", "a", -1, 1}, {"Z", "_", 1, -1},      {"\xE9", "z", 1, 1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(memcmpi(c.a.data(), c.b.data(), c.a.size()), c.lower) << c.a << c.b;
        EXPECT_EQ(memcmpi_upper(c.a.data(), c.b.data(), c.a.size()), c.upper) << c.a << c.b;
    }
    EXPECT_EQ(memcmpi("a\0b", "A\0C", 3), -1);
}
