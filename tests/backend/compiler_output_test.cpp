#include "backend/outputs/compiler_output.h"
#include "files/unix_file_manager.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace {

class File_Output_Test : public testing::Test {
  protected:
    std::unique_ptr<File> Open(const std::string& path) {
        return std::unique_ptr<File>(
            manager.Open(path.c_str(), FILE_MODE_WRITE | FILE_MODE_CREATE | FILE_MODE_TRUNCATE));
    }
    std::string Written() const {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }
    void TearDown() override { std::remove(path.c_str()); }

    const std::string path = testing::TempDir() + "compiler_output_test." + std::to_string(getpid());
    UNIXFileManager manager{nullptr};
};

TEST_F(File_Output_Test, Short_And_Long_Texts_Keep_Their_Order) {
    const std::string text(100, 'x');
    const auto file = Open(path);
    {
        FileOutput output(file.get(), 8);
        output.Write("abc", 3);
        EXPECT_EQ(Written(), "");
        EXPECT_EQ(output.Write(text.c_str(), -1), 100);
        char* const place = output.Reserve(8);
        output.Commit(std::copy_n("12345678", 8, place));
        output.Commit(std::copy_n("123456789", 9, output.Reserve(9)));
        output.Write("def", -1);
        EXPECT_FALSE(output.failed());
    }
    EXPECT_EQ(Written(), "abc" + text + "12345678123456789def");
}

TEST_F(File_Output_Test, Full_Device_Is_Told_In_The_Words_Of_The_System) {
    const auto file = Open("/dev/full");
    FileOutput output(file.get(), 8);
    output.Write("abc", 3);
    EXPECT_FALSE(output.failed());
    EXPECT_EQ(output.Flush(), -1);
    EXPECT_TRUE(output.failed());
    EXPECT_STREQ(output.error().text(), std::strerror(ENOSPC));
}

// The write that meets the limit of the file's size is cut short before the next one fails.
TEST_F(File_Output_Test, Write_Cut_Short_Goes_On_Until_It_Fails) {
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{10, limit.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const auto file = Open(path);
    FileOutput output(file.get(), 4);
    setrlimit(RLIMIT_FSIZE, &small);
    output.Write("0123456789abcdef", 16);
    output.Write("ghij", 4);
    setrlimit(RLIMIT_FSIZE, &limit);
    output.Flush();
    std::signal(SIGXFSZ, handler);
    EXPECT_STREQ(output.error().text(), std::strerror(EFBIG));
    EXPECT_EQ(Written(), "0123456789");
}

std::string Contents(StringOutput& output) {
    int length;
    const char* const text = output.Contents(&length);
    return std::string(text, length);
}

TEST(StringOutput, Moves_Flushed_Bytes_Ahead_Of_Pending_Ones) {
    const std::string text(fragment_capacity + 10, 'x');
    StringOutput fragment;
    StringOutput target;
    target.Write("<", 1);
    fragment.Write(text.c_str(), -1);
    fragment.Write("end", 3);
    EXPECT_EQ(fragment.Move_Contents(&target), static_cast<int>(text.size()) + 3);
    EXPECT_EQ(fragment.Move_Contents(&target), 0);
    EXPECT_EQ(Contents(target), "<" + text + "end");
    EXPECT_EQ(Contents(fragment), "");
}

TEST(StringOutput, Forgets_What_Is_Cleared) {
    StringOutput output;
    output.Write("flushed", -1);
    output.Flush();
    output.Write("pending", -1);
    output.Clear();
    output.Write("a", 1);
    EXPECT_EQ(Contents(output), "a");
}

TEST(CompilerOutput, Lower_Case_Leaves_Bytes_Above_127_Alone) {
    const std::string upper = std::string(300, 'A') + "Foo_\xc4[1]";
    StringOutput output;
    EXPECT_EQ(output.Write_Lower(upper.c_str(), -1), static_cast<int>(upper.size()));
    EXPECT_EQ(Contents(output), std::string(300, 'a') + "foo_\xc4[1]");
}

TEST(NullCompilerOutput, Swallows_Everything) {
    NullCompilerOutput output;
    EXPECT_EQ(output.Write("abc", 3), 3);
    EXPECT_EQ(output.Write("abcd", -1), 4);
    output.Commit(std::copy_n("abc", 3, output.Reserve(3)));
    EXPECT_EQ(output.Flush(), 0);
}

} // namespace
