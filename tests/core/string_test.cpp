#include "core/string.h"

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <utility>

namespace {

using namespace std::string_literals;

String Text(std::string_view text) {
    return String(text.data(), static_cast<int>(text.size()));
}

String Edited(const std::string& text, void (String::*edit)()) {
    String s = Text(text);
    (s.*edit)();
    return s;
}

String Replaced(const std::string& text, const char* from, const char* to) {
    String s = Text(text);
    s.gsub(from, to);
    return s;
}

// The answer, and what stands in three Strings afterwards.
String Split(const char* text, const char* sep, int max) {
    String out[3] = {"-", "-", "-"};
    const int count = split(text, out, max, sep);
    return String("") + count + ':' + out[0] + '|' + out[1] + '|' + out[2];
}

TEST(String, Unassigned_Until_Something_Is_Stored) {
    String none, target("kept");
    EXPECT_EQ(String(none).capacity(), 24);
    target = none;
    target += none;
    target = std::move(none);
    EXPECT_STREQ(target.text(), "kept");
    EXPECT_EQ(none.capacity(), 0);
}

// Neither the text nor the capacity shows that long texts have spare room underneath.
TEST(String, Appending_Follows_The_Rule_At_Any_Length) {
    std::mt19937 random(5);
    std::string expected;
    String s("", 0);
    int capacity = 24;
    while (expected.size() < 40000) {
        if (random() % 2) {
            if (static_cast<int>(expected.size()) + 2 >= capacity)
                capacity += 24; // a byte more than needed stays free
            expected += '!';
            s.cat('!');
        } else {
            const std::string piece(random() % 60, static_cast<char>('a' + random() % 26));
            expected += piece;
            s.cat(piece.c_str(), -1);
            capacity = std::max(capacity, static_cast<int>((expected.size() + 24) / 24 * 24));
        }
        if (random() % 50 == 0) {
            expected.resize(expected.size() - std::min<std::size_t>(expected.size(), random() % 200));
            s.truncate(static_cast<unsigned>(expected.size()));
        }
        std::int32_t field; // that stands behind the pointer
        std::memcpy(&field, reinterpret_cast<const char*>(&s) + sizeof(char*), sizeof field);
        ASSERT_EQ(field, capacity);
        ASSERT_EQ(s.capacity(), capacity);
        ASSERT_EQ(s.view(), expected);
    }
    s += s;
    int len;
    const std::unique_ptr<char[]> released(s.release(&len, nullptr));
    EXPECT_EQ(std::string_view(released.get(), len), expected + expected);
    EXPECT_EQ(s.capacity(), 0);
}

TEST(String, Adopted_Arrays) {
    char* with_room = new char[7]{'a', 'b', 'c'};
    String s(with_room, -1, 7);
    s.cat("def", 3);
    EXPECT_EQ(s.text(), with_room);
    s.assign_nocopy(new char[3]{'x', 'y', 'z'}, 3, 3);
    EXPECT_STREQ(s.text(), "xyz");
    EXPECT_EQ(s.capacity(), 24);
    s.assign_nocopy(nullptr, 3, 10);
    EXPECT_STREQ(s.text(), "");
    s.assign_nocopy(new char[1], 0, 1);
    s.assign('c');
    EXPECT_STREQ(s.text(), "c");
    s.assign_nocopy(new char[30]{'c'}, 1, 30);
    s.prepend("ab", -1);
    s.prepend('\0');
    s.assign(s.text() + 1, 2);
    EXPECT_STREQ(s.text(), "bc");
    s.assign(nullptr, 5);
    EXPECT_EQ(s.capacity(), 30);
}

TEST(String, Chop_And_Truncate_Write_No_NUL) {
    String s("abcde");
    EXPECT_EQ(s.chop(10), -5);
    EXPECT_EQ(s.chop(2), 3);
    s.truncate(9);
    s.truncate(1);
    EXPECT_STREQ(s.text(), "abcde");
    EXPECT_STREQ(s.from(0).text(), "a");
    s.cat("x", -1);
    EXPECT_STREQ(s.text(), "ax");
    // A move stores the text anew, NUL included.
    String longer(std::string(30, 'y').c_str()), target("z");
    longer.truncate(26);
    target = std::move(longer);
    EXPECT_EQ(std::strlen(target.text()), 26u);
    target.truncate(20);
    EXPECT_EQ(std::strlen(String(std::move(target)).text()), 20u);
}

TEST(String, Length_Beyond_31_Bits_Throws_And_Changes_Nothing) {
    String s("abc");
    EXPECT_THROW(s.cat("x", INT_MAX), std::bad_alloc);
    EXPECT_THROW(s.prepend("x", INT_MAX - 1), std::bad_alloc);
    EXPECT_THROW(s.assign("x", INT_MAX), std::bad_alloc);
    EXPECT_STREQ(s.text(), "abc");
}

TEST(String, Pieces_Edits_And_Sums) {
    const auto strip = &String::StripWhitespace, trim = &String::ltrim,
               compress = &String::CompressWhitespace;
    const String abc("abc"), none, list("a,b,c"), with_nul = Text("ab\0cd"s);
    const std::pair<String, std::string> cases[] = {
        // clang-format off
        {abc.before(2), "ab"}, {abc.before(3), "abc"}, {abc.after(0), "bc"}, {abc.after(2), ""},
        {abc.after(INT_MAX), ""}, {abc.after(-9), "abc"}, {abc.from(3), ""}, {abc.from(-1), "abc"},
        {abc.at(1, 2), "b"}, {abc.at(1, 99), "bc"}, {abc.at(3, 9), ""}, {abc.at(2, 1), ""}, {abc.at(-5, 1), "a"},
        {none.at(0, 1), ""}, {with_nul.at(1, 4), "b\0c"s}, {with_nul.from(1), "b"}, {with_nul.after("a"), "b"},
        {list.before(","), "a"}, {list.before("x"), "a,b,c"}, {list.after(",", 2), "c"}, {list.after("x"), ""},
        {list.from(",b", -3), ",b,c"}, {list.from("a", 1), ""}, {abc.padr(5, '.'), "abc.."},
        {abc.padl(5, '.'), "..abc"}, {abc.padl(9, '\0'), "abc"}, {String("a\xe4[").upper(), "A\xe4["},
        {String("A\xc4[").lower(), "a\xc4["}, {abc.Base64_Encode(), "YWJj"}, {none.Base64_Encode(), ""},
        {String("QUI=").Base64_Decode(), "AB"}, {"'" + abc + '\'', "'abc'"}, {none + none + "x", "x"},
        {abc + INT_MIN, "abc-2147483648"}, {abc + 100.0, "abc100"}, {abc + 1e-7, "abc0"}, {abc + -0.25, "abc-0.25"},
        // White space is tab, line feed, return and space.
        {Edited("\t a  \n b\r\n", strip), "a  \n b"}, {Edited("\t a  \n b\r\n", trim), "a  \n b\r\n"},
        {Edited("\t a  \n b\r\n", compress), "\ta b\r"}, {Edited("\v a \f", strip), "\v a \f"},
        {Edited(" \t\r\n", strip), ""}, {Edited(" \t\r\n", compress), " "}, {Edited(" a \0 b "s, strip), "a"},
        {Edited(" a \0 b "s, trim), "a "}, {Edited(" a \0 b "s, compress), " a "},
        {Replaced("axbxc", "x", nullptr), "abc"}, {Replaced("aaa", "aa", "b"), "ba"}, {Replaced("x", "x", "xx"), "xx"},
        {Replaced("abc", "", "y"), "abc"}, {Replaced("a\0xb"s, "x", "y"), "a"}, {Replaced("a\0b"s, "x", "y"), "a\0b"s},
        {Split("a,b,", ",", 3), "2:a|b|"}, {Split("a,b,c", ",", 2), "2:a|b|-"}, {Split("a,b,c", ",", 3), "3:a|b|c"},
        {Split("", ",", 3), "0:|-|-"}, {Split("a--b", "--", 3), "2:a|b|-"}, {Split("abc", "", 3), "1:abc|-|-"},
        {Split("abc", "", 0), "0:-|-|-"}, {Split("abc", ",", 0), "0:-|-|-"}
        // clang-format on
    };
    for (const auto& [result, expected] : cases)
        EXPECT_EQ(result.view(), expected);
    EXPECT_EQ(abc.before(-1).capacity(), 0);
    EXPECT_EQ((abc + -1e300).length(), 3 + 127); // cut among the digits ahead of the point
}

TEST(String, Queries) {
    const String abcabc("abcabc"), xabc("xabc"), none;
    const int found[][2] = {
        // clang-format off
        {abcabc.search("abc", 1), 3}, {abcabc.search("abc", 4), -1}, {abcabc.search("abc", -7), 0},
        {abcabc.search("", 0), -1}, {abcabc.search(nullptr, 0), -1}, {abcabc.search("B", 0), -1},
        {none.index("a"), -1}, {Text("a\0bc"s).index("bc"), 2}, {String("aaa").freq("aa"), 2},
        {abcabc.contains('c', 5), true}, {abcabc.contains('\0', 6), false}, {xabc.matches('A', 1), false},
        {xabc.matches('\0', 4), true}, {xabc.matches('\0', 5), false}, {none.matches('\0', 0), true},
        {xabc.matches("ABC", 1), true}, {xabc.matches("AB", 1), false}, {xabc.matches("abcd", 1), false},
        {xabc.matches("", 4), true}, {xabc.matches("", 5), false}, {Text("ab\0"s).matches("ab", 0), false}
        // clang-format on
    };
    for (const auto& [answer, expected] : found)
        EXPECT_EQ(answer, expected) << "in pair from " << &answer - found[0];
}

} // namespace
