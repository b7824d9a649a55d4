#include "backend/outputs/compiler_output.h"
#include "files/unix_file_manager.h"

#include <cerrno>
#include <deque>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace {

// What write() does in place of writing, from the front.
enum Write_Result { Write_Interrupted, Write_Nothing, Write_One_Byte };
std::deque<Write_Result> write_results;

} // namespace

extern "C" ssize_t write(int descriptor, const void* bytes, std::size_t length) {
    if (!write_results.empty()) {
        const Write_Result result = write_results.front();
        write_results.pop_front();
        if (result == Write_Nothing)
            return 0;
        errno = EINTR;
        if (result == Write_Interrupted)
            return -1;
        length = 1;
    }
    return syscall(SYS_write, descriptor, bytes, length);
}

namespace {

// Keeps each piece that reaches the sink.
class Recording_Output : public BufferedOutput {
  public:
    explicit Recording_Output(int capacity) : BufferedOutput(capacity) {}

    int DoWrite(const char* text, int length) override {
        pieces.emplace_back(text, length);
        return length;
    }

    std::string All() {
        Flush();
        std::string all;
        for (const std::string& piece : pieces)
            all += piece;
        return all;
    }

    std::vector<std::string> pieces;
};

using Pieces = std::vector<std::string>;

TEST(BufferedOutput, Text_Of_Capacity_Behind_Others_Flushes_Once_And_Waits) {
    Recording_Output output(4);
    output.Write("a", 1);
    EXPECT_EQ(output.Write("bcde", 4), 4);
    EXPECT_EQ(output.pieces, Pieces({"a"}));
    EXPECT_EQ(output.Flush(), 4);
    EXPECT_EQ(output.pieces, Pieces({"a", "bcde"}));
    EXPECT_EQ(output.Flush(), 0);
}

TEST(BufferedOutput, Text_Beyond_Capacity_Fills_The_Buffer_Piece_By_Piece) {
    Recording_Output output(4);
    output.Write("a", 1);
    EXPECT_EQ(output.Write("bcdefghij", -1), 9);
    EXPECT_EQ(output.pieces, Pieces({"abcd", "efgh"}));
    EXPECT_EQ(output.All(), "abcdefghij");
}

TEST(BufferedOutput, Without_Buffer_Each_Text_Goes_On_At_Once) {
    Recording_Output output(0);
    output.Write("abc", 3);
    output.Write("", 0);
    EXPECT_EQ(output.pieces, Pieces({"abc"}));
}

TEST(BufferedOutput, Error_Text_Flushes_What_Waits) {
    Recording_Output output(16);
    output.Write("a", 1);
    output.Write_Error("b", -1);
    EXPECT_EQ(output.pieces, Pieces({"ab"}));
}

TEST(Output, Compression_Depends_On_What_Was_Written_Last) {
    const struct {
        int flags;
        const char* before; // null for a new output
        const char* text;
        const char* expected;
    } cases[] = {
        {0, nullptr, "  a  b ", "  a  b "},
        {OUTPUT_COMPRESS_FAST, nullptr, "  a  b ", " a  b "},
        {OUTPUT_COMPRESS_FAST, "x", "  a", "x  a"},
        {OUTPUT_COMPRESS_FAST, "x\n", "\ta", "x\na"},
        {OUTPUT_COMPRESS_FAST, "x ", " ", "x "},
        {OUTPUT_COMPRESS_FAST, "x ", "", "x "},
        {OUTPUT_COMPRESS_FULL, nullptr, " \t a \n b  ", "a b "},
        {OUTPUT_COMPRESS_FULL, nullptr, " \n ", ""},
        {OUTPUT_COMPRESS_FULL, "x", "a\t\n b\v", "xa\tb\v"},
        {OUTPUT_COMPRESS_FULL, "x", " \na", "x a"},
        {OUTPUT_COMPRESS_FULL, "x\r", "a", "x\ra"},
        {OUTPUT_COMPRESS_FAST | OUTPUT_COMPRESS_FULL, nullptr, " a  b", "a  b"},
    };
    for (const auto& c : cases) {
        Recording_Output output(64);
        if (c.before)
            output.Write(c.before, -1);
        output.SetFlags(c.flags);
        EXPECT_EQ(output.Write_Compressed(c.text, -1), static_cast<int>(std::string(c.text).size()));
        EXPECT_EQ(output.All(), c.expected) << '[' << c.text << ']';
    }
}

TEST(Output, Empty_Text_Leaves_The_Memory_Of_White_Space) {
    Recording_Output output(16);
    output.Write("x ", 2);
    output.Write("", 0);
    output.Write_Compressed_Fast(" a", 2);
    EXPECT_EQ(output.All(), "x a");
}

TEST(Output, Header_Frees_The_Texts_It_Is_Given) {
    Recording_Output output(16);
    output.Header("name", 4, 0, new char[6], 5, 1);
    output.Header(new char[5], 4, 1, "value", 5, 0);
    output.Header("name", "value");
    EXPECT_EQ(output.All(), "");
}

TEST(StandardOutput, Unbuffered_Text_Goes_Out_With_Each_Write) {
    StandardOutput output(0, 16);
    testing::internal::CaptureStdout();
    output.Write("abc", 3);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "abc");
}

TEST(StandardOutput, Buffered_Text_Goes_Out_When_The_Output_Goes) {
    testing::internal::CaptureStdout();
    {
        StandardOutput output(1, 16);
        output.Write("abc", 3);
        EXPECT_EQ(lseek(STDOUT_FILENO, 0, SEEK_CUR), 0);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "abc");
}

TEST(StandardOutput, Writing_Goes_On_After_Interruptions_And_Ends_At_Nothing_Written) {
    StandardOutput output(1, 16);
    testing::internal::CaptureStdout();
    write_results = {Write_Interrupted, Write_One_Byte, Write_Interrupted};
    EXPECT_EQ(output.DoWrite("abc", 3), 3);
    write_results = {Write_One_Byte, Write_Nothing};
    EXPECT_EQ(output.DoWrite("def", 3), -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "abcd");
}

TEST(FileOutput, Writing_Goes_On_After_Interruptions) {
    UNIXFileManager manager(nullptr);
    const std::unique_ptr<File> file(manager.Open("/dev/null", FILE_MODE_WRITE));
    FileOutput output(file.get(), 16);
    write_results = {Write_Interrupted, Write_One_Byte, Write_Interrupted};
    EXPECT_EQ(output.DoWrite("abc", 3), 3);
    EXPECT_FALSE(output.failed());
}

TEST(NullOutput, Hands_Text_To_Its_Function) {
    static std::string received;
    NullOutput listening([](const char* text, int length) {
        received.assign(text, length);
        return 7;
    });
    EXPECT_EQ(listening.Write("abc", -1), 7);
    EXPECT_EQ(received, "abc");
    NullOutput silent;
    EXPECT_EQ(silent.Write("abc", -1), 3);
    EXPECT_EQ(silent.Flush(), 1);
    EXPECT_EQ(silent.type(), 2);
}

} // namespace
