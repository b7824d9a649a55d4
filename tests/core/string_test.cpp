#include "core/string.h"

#include <climits>
#include <gtest/gtest.h>
#include <new>
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

TEST(String, Length_Beyond_31_Bits_Throws_And_Changes_Nothing) {
    String s("abc");
    EXPECT_THROW(s.cat("x", INT_MAX), std::bad_alloc);
    EXPECT_THROW(s.prepend("x", INT_MAX - 1), std::bad_alloc);
    EXPECT_THROW(s.assign("x", INT_MAX), std::bad_alloc);
    EXPECT_STREQ(s.text(), "abc");
}

TEST(String, Pieces_Edits_Sums_And_Queries) {
    const auto strip = &String::StripWhitespace, trim = &String::ltrim,
               compress = &String::CompressWhitespace;
    const String abc("abc"), none, list("a,b,c"), with_nul = Text("ab\0cd"s), twice("abcabc");
    const std::pair<String, std::string> cases[] = {
        // clang-format off
        {abc.before(2), "ab"}, {abc.before(3), "abc"}, {abc.after(0), "bc"}, {abc.after(2), ""},
        {abc.after(INT_MAX), ""}, {abc.after(-9), "abc"}, {abc.from(3), ""}, {abc.from(-1), "abc"},
        {abc.at(-5, 1), "a"}, {none.at(0, 1), ""}, {with_nul.at(1, 4), "b\0c"s}, {with_nul.from(1), "b"},
        {with_nul.after("a"), "b"}, {list.before(","), "a"}, {list.before("x"), "a,b,c"},
        {list.after(",", 2), "c"}, {list.after("x"), ""}, {list.from(",b", -3), ",b,c"},
        {list.from("a", 1), ""}, {abc.padr(5, '.'), "abc.."}, {abc.padl(5, '.'), "..abc"},
        {abc.padl(9, '\0'), "abc"}, {String("a\xe4[").upper(), "A\xe4["},
        {String("A\xc4[").lower(), "a\xc4["}, {abc.Base64_Encode(), "YWJj"}, {none.Base64_Encode(), ""},
        {String("QUI=").Base64_Decode(), "AB"}, {"'" + abc + '\'', "'abc'"}, {none + none + "x", "x"},
        {abc + INT_MIN, "abc-2147483648"}, {abc + 100.0, "abc100"}, {abc + 1e-7, "abc0"},
        {abc + -0.25, "abc-0.25"}, {none + abc.before(-1).capacity(), "0"},
        {none + String(none).capacity(), "24"},
        {none + (abc + -1e300).length(), "130"}, // cut among the digits ahead of the point
        // White space is tab, line feed, return and space.
        {Edited("\t a  \n b\r\n", strip), "a  \n b"}, {Edited("\t a  \n b\r\n", trim), "a  \n b\r\n"},
        {Edited("\t a  \n b\r\n", compress), "\ta b\r"}, {Edited("\v a \f", strip), "\v a \f"},
        {Edited(" \t\r\n", strip), ""}, {Edited(" \t\r\n", compress), " "}, {Edited(" a \0 b "s, strip), "a"},
        {Edited(" a \0 b "s, trim), "a "}, {Edited(" a \0 b "s, compress), " a "},
        {Replaced("axbxc", "x", nullptr), "abc"}, {Replaced("aaa", "aa", "b"), "ba"},
        {Replaced("x", "x", "xx"), "xx"}, {Replaced("abc", "", "y"), "abc"},
        {Replaced("a\0xb"s, "x", "y"), "a"}, {Replaced("a\0b"s, "x", "y"), "a\0b"s},
        {Split("a,b,", ",", 3), "2:a|b|"}, {Split("a,b,c", ",", 2), "2:a|b|-"},
        {Split("a,b,c", ",", 3), "3:a|b|c"}, {Split("", ",", 3), "0:|-|-"},
        {Split("a--b", "--", 3), "2:a|b|-"}, {Split("abc", "", 3), "1:abc|-|-"},
        {Split("abc", "", 0), "0:-|-|-"}, {Split("abc", ",", 0), "0:-|-|-"},
        {none + twice.search("abc", -7), "0"},
        {none + twice.search(nullptr, 0), "-1"}, {none + twice.search("B", 0), "-1"},
        {none + none.index("a"), "-1"}, {none + Text("a\0bc"s).index("bc"), "2"},
        {none + String("aaa").freq("aa"), "2"}, {none + twice.contains('c', 5), "1"},
        {none + twice.contains('\0', 6), "0"}, {none + abc.matches('B', 1), "0"},
        {none + abc.matches('\0', 3), "1"}, {none + abc.matches('\0', 4), "0"},
        {none + none.matches('\0', 0), "1"}, {none + abc.matches("BC", 1), "1"},
        {none + abc.matches("B", 1), "0"}, {none + abc.matches("bcd", 1), "0"},
        {none + abc.matches("", 3), "1"}, {none + abc.matches("", 4), "0"},
        {none + Text("ab\0"s).matches("ab", 0), "0"}, {none + abc.contains('a', 0), "1"}
        // clang-format on
    };
    for (const auto& [result, expected] : cases)
        EXPECT_EQ(result.view(), expected);
}

} // namespace
