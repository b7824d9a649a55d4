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
        {"a/x/../b/./c", "a/b/c", "a/x/../b", "c", 13}, {"./a/b", "a/b", "a", "b", 6},
        {".", ".", ".", ".", 2}, {"a/..", ".", ".", ".", 2}, {"../..", "../..", "../..", ".", 6},
        {"../x", "../x", "..", "x", 5}, {"a/../../b", "../b", "..", "b", 10},
        {".../..x", ".../..x", "...", "..x", 8}, {"//", "/", "/", ".", 2}, {"/a/..", "/", "/", ".", 2},
        {"/..", "/", "/", ".", 2}, {"//x", "/x", "/", "x", 4}, {"/a/../../b/", "/b", "/", "b", 12},
    };
    // clang-format on
    for (const auto& c : cases) {
        UNIXFilePath path(c.path);
        int length = -1, size = -1;
        const std::unique_ptr<char[]> collapsed(path.Collapsed_Path(&length, &size));
        EXPECT_STREQ(collapsed.get(), c.collapsed);
        EXPECT_EQ(length, static_cast<int>(std::string_view(c.collapsed).length())) << c.collapsed;
        EXPECT_EQ(size, c.size) << c.collapsed;
        EXPECT_STREQ(path.Collapsed_Directory(), c.directory);
        EXPECT_STREQ(path.Collapsed_Filename(), c.filename);
    }
    // A span takes back what an element has cut.
    UNIXFilePath path("a//b/c/"), absolute("/x");
    EXPECT_STREQ(path.Element(0), "a");
    EXPECT_STREQ(path.Span(0, 2), "a//b/c");
    for (const auto& [first, last] : {std::pair(-1, 0), {0, 3}, {2, 1}})
        EXPECT_EQ(path.Span(first, last), nullptr);
    EXPECT_STREQ(absolute.Span(0, 0), "/");
}

} // namespace
