#include "files/unix_file_path.h"

#include <gtest/gtest.h>
#include <memory>
#include <string_view>

namespace {

TEST(UNIXFilePath, Collapses) {
    // clang-format off
    const struct {
        const char *path, *collapsed, *directory, *filename;
        int size; // of the array of the collapsed path
    } cases[] = {
        {nullptr, "", ".", "", 1}, {"a", "a", ".", "a", 2}, {"a//b///", "a/b", "a", "b", 8},
        {"a/./b/../c", "a/c", "a", "c", 11}, {"a/x/../b/./c", "a/b/c", "a/x/../b", "c", 13},
        {"./a/b", "a/b", "a", "b", 6}, {".", ".", ".", ".", 2}, {"a/..", ".", ".", ".", 2},
        {"..", "..", "..", ".", 3}, {"../..", "../..", "../..", ".", 6}, {"../x", "../x", "..", "x", 5},
        {"a/../../b", "../b", "..", "b", 10}, {"../../x/y", "../../x/y", "../../x", "y", 10},
        {".../..x", ".../..x", "...", "..x", 8}, {"/", "/", "/", ".", 2}, {"//", "/", "/", ".", 2},
        {"/a/..", "/", "/", ".", 2}, {"/..", "/", "/", ".", 2}, {"//x", "/x", "/", "x", 4},
        {"/a/b/c", "/a/b/c", "/a/b", "c", 7}, {"/a/../../b/", "/b", "/", "b", 12},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.collapsed);
        UNIXFilePath path(c.path);
        int length = -1, size = -1;
        const std::unique_ptr<char[]> collapsed(path.Collapsed_Path(&length, &size));
        EXPECT_STREQ(collapsed.get(), c.collapsed);
        EXPECT_EQ(length, static_cast<int>(std::string_view(c.collapsed).length()));
        EXPECT_EQ(size, c.size);
        EXPECT_STREQ(path.Collapsed_Directory(), c.directory);
        EXPECT_STREQ(path.Collapsed_Filename(), c.filename);
    }
}

TEST(UNIXFilePath, Span_Takes_Back_What_Element_Cut) {
    UNIXFilePath path("a//b/c/"), absolute("/x");
    for (const int last : {0, 1, 2})
        EXPECT_EQ(path.Element(last), std::string_view("abc").substr(last, 1));
    EXPECT_STREQ(path.Span(0, 1), "a//b");
    EXPECT_STREQ(path.Span(0, 2), "a//b/c");
    for (const auto& [first, last] : {std::pair(-1, 0), {0, 3}, {2, 1}, {3, 3}})
        EXPECT_EQ(path.Span(first, last), nullptr);
    EXPECT_STREQ(absolute.Span(0, 0), "/");
    EXPECT_STREQ(absolute.Span(0, 1), "/x");
}

TEST(UNIXFilePath, Is_Compared_By_Whole_Elements) {
    const struct {
        const char *path, *other;
        bool contains, matches; // but for the last element
    } cases[] = {
        // clang-format off
        {"/srv/data", "/srv/data", true, true}, {"/srv/data", "/srv/data/x", true, false},
        {"/srv/data", "/srv/data2", false, true}, {"/srv/data", "/srv/data2/x", false, false},
        {"/srv/data", "/srv", false, false}, {"/srv/data", "/srv/data/../x", false, true},
        {"/srv/data", "/srv/a/../data/x", true, false}, {"/", "/x", true, false}, {"/", "x", false, true},
        {".", "x", true, false}, {"a", "/a", false, false}, {"x/b", "y/b", false, false},
        // clang-format on
    };
    for (const auto& c : cases) {
        UNIXFilePath path(c.path), other(c.other);
        EXPECT_EQ(path.Contains(other), c.contains) << c.path << " " << c.other;
        EXPECT_EQ(path.Matches(other, 1), c.matches) << c.path << " " << c.other;
        EXPECT_EQ(path.Matches(other, 0), c.path == std::string_view(c.other));
    }
}

} // namespace
