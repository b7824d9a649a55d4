// Sinks under generated operations, against a model of what reaches them, and their failures.

#include "backend/assembly_fixture.h"
#include "files/unix_file_manager.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <random>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// What the next calls of write() do: write at most so many bytes, or fail with the error of that negative.
std::deque<int> write_steps;

} // namespace

extern "C" ssize_t write(int descriptor, const void* bytes, std::size_t length) {
    if (!write_steps.empty()) {
        const int step = write_steps.front();
        write_steps.pop_front();
        errno = -step;
        if (step <= 0)
            return step == 0 ? 0 : -1;
        length = std::min<std::size_t>(length, step);
    }
    return syscall(SYS_write, descriptor, bytes, length);
}

namespace {

bool Is_Space(char byte) {
    return strchr(" \t\n\v\f\r", byte);
}

// What waits in a buffer, what went on, and whether the last byte was white space.
struct Model {
    void Flush() {
        if (!waiting.empty())
            pieces.push_back(std::exchange(waiting, ""));
    }
    // A text fits whole, behind a flush at most, or fills the buffer again and again.
    void Write(const std::string& text) {
        if (capacity - waiting.size() < text.size() && text.size() <= capacity)
            Flush();
        for (const char byte : text) {
            if (waiting.size() == capacity && capacity > 0)
                Flush();
            waiting += byte;
        }
        if (capacity == 0)
            Flush();
        after_space = text.empty() ? after_space : Is_Space(text.back());
    }
    // Of white space that meets, the first byte stays; the fast way looks at no more than where texts meet.
    void Write_Compressed(const std::string& text, bool fast) {
        std::string kept;
        bool space = after_space;
        for (const char& byte : text) {
            if (!space || !Is_Space(byte) || (fast && &byte != text.data()))
                kept += byte;
            space = Is_Space(byte);
        }
        Write(kept);
    }
    // What is composed in place needs room ahead, and may reach beyond the capacity.
    void Compose(const std::string& text, std::size_t reserved) {
        if (waiting.size() + reserved > capacity)
            Flush();
        waiting += text;
        after_space = text.empty() ? after_space : Is_Space(text.back());
        if (waiting.size() > capacity)
            Flush();
    }

    std::string Written() { return Flush(), Take_All(pieces); }

    std::size_t capacity;
    std::string waiting = "";
    std::vector<std::string> pieces = {};
    bool after_space = true;
};

std::string Some_Text(std::mt19937& random) {
    std::string text(random() % (random() % 8 == 0 ? 700 : 12), ' ');
    for (char& byte : text)
        byte = "abA\xc4 \t\n\v"[random() % 8];
    return text;
}

// Takes a step on both. The pieces of compressed text are left open.
void Step(CompilerOutput& output, Model& model, std::mt19937& random, bool compresses) {
    std::string text = Some_Text(random);
    const int size = static_cast<int>(text.size()), given = random() % 2 ? size : -1;
    const unsigned operation = random() % (compresses ? 8 : 6);
    if (operation == 0) {
        output.Flush();
        model.Flush();
    } else if (operation == 1) {
        output.Write_Error(text.c_str(), given);
        model.Write(text);
        model.Flush();
    } else if (operation == 2) {
        EXPECT_EQ(output.Write_Lower(text.c_str(), given), size);
        std::replace(text.begin(), text.end(), 'A', 'a');
        for (std::size_t at = 0; at < text.size(); at += CompilerOutput::item_limit) {
            const std::string piece = text.substr(at, CompilerOutput::item_limit);
            model.Compose(piece, piece.size());
        }
    } else if (operation == 3) {
        const int reserved = output.Can_Reserve(size) ? size : CompilerOutput::item_limit;
        text.resize(std::min(size, reserved));
        output.Commit(std::copy(text.begin(), text.end(), output.Reserve(reserved)));
        model.Compose(text, reserved);
    } else if (operation == 4 || operation == 5) {
        EXPECT_EQ(output.Write(text.c_str(), given), size);
        model.Write(text);
    } else {
        const int flags = 1 + random() % 3;
        output.SetFlags(flags);
        EXPECT_EQ(output.Write_Compressed(text.c_str(), given), size);
        model.Write_Compressed(text, flags & OUTPUT_COMPRESS_FAST);
    }
}

TEST(Outputs, Hand_On_What_They_Were_Given) {
    std::mt19937 random(1);
    for (unsigned run = 0; run < 400; ++run) {
        SCOPED_TRACE(run);
        Model model{run % 8 ? random() % (run % 3 ? 16 : 300) : 0};
        Recording_Output output(static_cast<int>(model.capacity));
        for (unsigned step = random() % 30; step-- > 0;)
            Step(output, model, random, run % 2);
        if (run % 2 == 0) {
            EXPECT_EQ(output.pieces, model.pieces);
        }
        EXPECT_EQ(output.Written(), model.Written());
        EXPECT_EQ(output.Flush(), 0);
    }
}

TEST(Outputs, Fragments_Move_And_Are_Forgotten) {
    StringOutput fragment, target;
    fragment.SetFlags(OUTPUT_COMPRESS_FULL);
    std::string expected;
    for (const int length : {0, 1, fragment_capacity, fragment_capacity + 1, 5000}) {
        const std::string text(length, 'a'), forgotten(fragment_capacity + 1, 'x');
        fragment.Write(forgotten.data(), -1);
        fragment.Write("y", 1);
        fragment.Clear();
        fragment.Write_Compressed((" " + text).data(), -1); // at the beginning of a text
        EXPECT_EQ(fragment.Move_Contents(&target), length);
        expected += text;
    }
    EXPECT_EQ(fragment.Move_Contents(&target), 0);
    int length;
    EXPECT_EQ(target.Contents(&length), expected);
}

TEST(FileOutput, Goes_On_After_Interruptions_And_Keeps_The_First_Failure) {
    const std::string path = testing::TempDir() + "outputs_test." + std::to_string(getpid());
    UNIXFileManager manager{nullptr};
    for (const int end : {-EFBIG, 0}) {
        const std::unique_ptr<File> file(
            manager.Open(path.c_str(), FILE_MODE_WRITE | FILE_MODE_CREATE | FILE_MODE_TRUNCATE));
        FileOutput output(file.get(), 4);
        output.SetFlags(OUTPUT_COMPRESS_FULL);
        write_steps = {-EINTR, 1, -EINTR, 1, 5, 9, end, -ENOSPC};
        output.Write("ab", 2);
        output.Write("long ", 5);
        output.Write_Compressed(" 0123456789", 11);
        output.Write("ghij", 4);
        EXPECT_EQ(output.Flush(), -1);
        EXPECT_STREQ(output.error().text(), end ? strerror(EFBIG) : "");
        EXPECT_TRUE(output.failed() && write_steps.size() == 1);
        std::ifstream written(path);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(written), {}), "ablong 012345678");
    }
    write_steps.clear();
    std::remove(path.c_str());
}

TEST(StandardOutput, Waits_When_Buffered_And_Goes_On_After_Interruptions) {
    testing::internal::CaptureStdout();
    {
        StandardOutput waiting(1, 16), direct(0, 16);
        waiting.Write("abc", 3);
        direct.Write("123", 3);
        write_steps = {-EINTR, 1, -EINTR};
        EXPECT_EQ(direct.DoWrite("456", 3), 3);
        write_steps = {1, 0};
        EXPECT_EQ(direct.DoWrite("789", 3), -1);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "1234567abc");
}

TEST(NullOutputs, Swallow_Text_Or_Hand_It_To_Their_Function) {
    NullCompilerOutput swallowing;
    EXPECT_EQ(swallowing.Write("abc", -1) + swallowing.Write_Lower("AB", 2), 5);
    NullOutput silent, listening([](const char*text, int length) { return text[0] + length; });
    EXPECT_EQ(silent.Write("abc", -1), 3);
    EXPECT_EQ(listening.Write("abc", -1), 'a' + 3);
    EXPECT_EQ(silent.Flush(), 1);
    silent.Header("name", 4, 0, new char[6], 5, 1); // which are the output's from now on
    silent.Header(new char[5], 4, 1, "value", 5, 0);
}

} // namespace
