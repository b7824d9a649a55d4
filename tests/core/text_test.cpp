// Texts of one piece, and of blocks.

#include "app/services/tarn_application.h"
#include "backend/outputs/output.h"
#include "core/link_buffer.h"
#include "core/string.h"
#include "value/variable.h"

#include <climits>
#include <gtest/gtest.h>
#include <memory>
#include <mpdecimal.h>
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

std::string written;

// The text with a bar behind each block.
std::string Blocks_Of(const LinkBuffer& buffer) {
    written.clear();
    NullOutput recorder([](const char* text, int length) {
        written.append(text, length).append("|");
        return length;
    });
    buffer.output(&recorder);
    return written;
}

TEST(LinkBuffer, Blocks_Are_Multiples_Of_Their_Size_Unless_Adopted) {
    LinkBuffer buffer(10, 5); // used anew after each release
    int length, capacity;
    EXPECT_STREQ(buffer.data(&length, nullptr), "");
    delete[] buffer.release(&length, &capacity, 9);
    EXPECT_EQ(capacity, 1); // whatever was asked for
    for (const auto& [wanted, size] : {std::pair(0, 10), {9, 10}, {10, 20}, {25, 30}}) {
        buffer.cat(std::string(wanted, 'x').data(), wanted);
        delete[] buffer.release(&length, &capacity, 0);
        EXPECT_EQ(length, wanted);
        EXPECT_EQ(capacity, size);
    }
    for (const std::string piece : {"abcde", "fghij", "klm", "nopqrstu"})
        buffer.cat(piece.data(), static_cast<int>(piece.size()));
    buffer.prepend("--", 2);
    buffer.prepend("", 0);
    EXPECT_EQ(Blocks_Of(buffer), "|--|abcdefghij|klmno|pqrstu|");
    delete[] buffer.release(&length, nullptr, 0);
    char* const array = new char[6]{'a', 'b'};
    buffer.prepend_nocopy(array, 2, 6);
    buffer.cat("cde", 3);
    EXPECT_EQ(buffer.data(&length, nullptr), array);
    EXPECT_EQ(buffer.release(&length, nullptr, 1), array);
    buffer.cat_nocopy(array, 5, 5);
    buffer.cat("f", 1);
    EXPECT_EQ(Blocks_Of(buffer), "abcde|f|");
}

TEST(LinkBuffer, Behaves_Like_A_String) {
    mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);
    Variable variable("name", 4, "text", 4);
    mpd_t* const decimal = TarnApplication::itompd(nullptr, 77);
    std::mt19937 random(64);
    for (int round = 0; round < 2000; ++round) {
        LinkBuffer buffer(static_cast<int>(random() % 8), static_cast<int>(random() % 8));
        std::string model;
        for (int step = 0; step < 12; ++step) {
            const std::string piece(random() % 6, static_cast<char>('a' + step));
            const int size = static_cast<int>(piece.size()), room = size + static_cast<int>(random() % 3);
            char* const array = static_cast<char*>(std::memcpy(new char[room], piece.data(), size));
            auto other = std::make_unique<LinkBuffer>(3, 2);
            if (size > 0) {
                other->cat(piece.data(), size - 1);
                other->prepend(piece.data(), 1);
            }
            int length;
            switch (random() % 16) {
            case 0: buffer.cat(piece.data(), size), model += piece; break;
            case 1: buffer.prepend(piece.data(), size), model.insert(0, piece); break;
            case 2: buffer.cat(other.get()), model += piece; break;
            case 3: buffer.prepend(other.get()), model.insert(0, piece); break;
            case 4: buffer.cat(&buffer), model += std::string(model); break;
            case 5: buffer.prepend(&buffer), model += std::string(model); break;
            case 6: buffer.cat(2.5), buffer.cat(8), model += "2.58"; break;
            case 7: buffer.prepend(2.5), buffer.prepend(-12), model.insert(0, "-122.5"); break;
            case 8: buffer.cat(decimal), buffer.cat(&variable), model += "77text"; break;
            case 9: buffer.prepend(decimal), buffer.prepend(&variable), model.insert(0, "text77"); break;
            case 10: buffer.cat_hex(0xA9), model += "A9"; break;
            case 11: EXPECT_EQ(buffer.data(&length, nullptr), model); break;
            case 12: buffer.cat_nocopy(array, size, room), model += piece; continue;
            case 13: buffer.prepend_nocopy(array, size, room), model.insert(0, piece); continue;
            case 14: buffer.cat_destroy(other.release()), model += piece; break;
            case 15: buffer.prepend_destroy(other.release()), model.insert(0, piece); break;
            }
            delete[] array;
            EXPECT_TRUE(!other || other->data(&length, nullptr) == piece);
        }
        std::string copy(model.size(), '?');
        buffer.append_to(copy.data());
        ASSERT_EQ(copy, model);
    }
    mpd_del(decimal);
}

TEST(LinkBuffer, Refuses_Lengths_Beyond_An_Int_And_Frees_Long_Chains_Without_Recursion) {
    LinkBuffer buffer(10, 5), other(10, 5), chain(1, 1);
    buffer.cat_nocopy(new char[1], INT_MAX, INT_MAX); // the text isn't looked at
    other.cat("x", 1);
    int length;
    EXPECT_THROW(buffer.cat("x", 1), std::bad_alloc);
    EXPECT_THROW(buffer.prepend_destroy(&other), std::bad_alloc);
    EXPECT_THROW(buffer.data(&length, nullptr), std::bad_alloc);
    EXPECT_STREQ(other.data(&length, nullptr), "x");
    for (int i = 0; i < 300000; ++i)
        chain.prepend("x", 1);
}

} // namespace
