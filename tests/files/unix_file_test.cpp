#include "files/file_tree.h"

#include <csignal>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>

// In place of the system's: there is no memory for the copy of this text.
extern "C" char* strdup(const char* text) noexcept {
    char* const copy = strcmp(text, "forgotten") ? static_cast<char*>(malloc(strlen(text) + 1)) : nullptr;
    return copy ? strcpy(copy, text) : nullptr;
}

namespace {

constexpr int both = FILE_MODE_READ | FILE_MODE_WRITE;

class Open_File : public File_Tree {
  protected:
    std::unique_ptr<File> Open(const char* path, int mode) {
        std::unique_ptr<File> file(manager->Open(path, mode));
        if (!file)
            throw std::runtime_error(manager->error().text());
        return file;
    }

    // What is left to read, or why it can't be read.
    static std::string Rest(File& file) {
        char buffer[64];
        const long length = file.Read(buffer, sizeof buffer);
        return length < 0 ? file.error().text() : std::string(buffer, length);
    }
};

TEST_F(Open_File, Modes_Decide_What_May_Be_Done) {
    const struct {
        int mode;
        bool reads, writes;
        const char* text; // of the file, after an attempt to write "xy"
    } cases[] = {
        // clang-format off
        {0, true, false, "abc"}, {FILE_MODE_READ, true, false, "abc"}, {FILE_MODE_WRITE, false, true, "xyc"},
        {both, true, true, "xyc"}, {FILE_MODE_WRITE | FILE_MODE_APPEND, false, true, "abcxy"},
        {FILE_MODE_WRITE | FILE_MODE_CREATE | FILE_MODE_TRUNCATE, false, true, "xy"},
        // clang-format on
    };
    for (const auto& [mode, reads, writes, text] : cases) {
        Put("f", "abc");
        const auto file = Open("f", mode);
        EXPECT_TRUE(file->Write(String("xy")) == (writes ? 2 : -1) && Get("f") == text) << mode;
        char byte;
        EXPECT_TRUE(file->Seek(1) == 1 && file->Read(&byte, 1) == (reads ? 1 : -1)) << mode;
        EXPECT_EQ(file->Tell(), reads ? 2 : 1) << mode;
        EXPECT_EQ(file->error().view(), reads && writes ? "" : System_Text(EBADF)) << mode;
    }
    EXPECT_EQ(Why(manager->Open("f", FILE_MODE_WRITE | FILE_MODE_CREATE | FILE_MODE_EXCLUSIVE) != nullptr),
              System_Text(EEXIST));
}

TEST_F(Open_File, Maps_What_Is_There) {
    Put("f", std::string(5000, 'x') + "end");
    const auto file = Open("f", FILE_MODE_READ);
    const char* text = file->Map(0, -1);
    String error;
    ASSERT_TRUE(text && file->Deactivate() && file->Deactivate()); // the mapping stays
    EXPECT_STREQ(text + 5000, "end");
    EXPECT_TRUE(file->Activate(error) && file->Activate(error));
    text = file->Map(4096, 907);
    ASSERT_TRUE(text);
    EXPECT_STREQ(text + 904, "end");
    EXPECT_TRUE(Get("/proc/self/maps").find(At("f")) != std::string::npos);
    file->Release();
    EXPECT_TRUE(Get("/proc/self/maps").find(At("f")) == std::string::npos);
    for (const auto& [offset, length] : {std::pair(0L, 0L), {0L, -2L}, {1L, 1L}})
        EXPECT_TRUE(!file->Map(offset, length) && file->error().view() == "Invalid argument");
    Put("f", "");
    EXPECT_EQ(file->Map(0, -1), nullptr);
}

// Two things that wait: for a lock, and for room in a pipe. The second of the signals that break off the wait
// lets it end.
TEST_F(Open_File, Waits_On_Behind_Signals_For_What_Others_Hold) {
    static int signals, holder, pipe_end;
    const std::string full(65536, 'x');
    Put("f", "abcdef");
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    const auto first = Open("f", both), second = Open("f", both), pipe = Open("pipe", both);
    EXPECT_TRUE(first->Lock(FILE_LOCK_EXCLUSIVE, 0, 2) && second->Lock(FILE_LOCK_EXCLUSIVE, 2, 2));
    EXPECT_TRUE(first->Lock(FILE_LOCK_SHARED, 4, 0) && second->Lock(FILE_LOCK_SHARED, 4, 0));
    EXPECT_FALSE(first->Lock(FILE_LOCK_SHARED, 0, ~0UL) || first->Lock(FILE_LOCK_SHARED, -1, 1));
    EXPECT_EQ(first->error().view(), "Invalid argument");
    const Descriptor probe(Open_Path("f", O_RDWR)), reader(Open_Path("pipe", O_RDWR));
    struct flock range = {F_WRLCK, SEEK_SET, 0, 2, 0};
    EXPECT_EQ(fcntl(probe.get(), F_OFD_SETLK, &range), -1);
    EXPECT_TRUE(first->Release(0, 2) && fcntl(probe.get(), F_OFD_SETLK, &range) == 0);
    EXPECT_TRUE(pipe->Length() == 0 && pipe->Write(full.data(), full.size()) == 65536);

    holder = probe.get(), pipe_end = reader.get();
    struct sigaction action = {}, before;
    action.sa_handler = [](int) {
        struct flock unlock = {F_UNLCK, SEEK_SET, 0, 0, 0};
        char page[4096];
        if (++signals == 2)
            fcntl(holder, F_OFD_SETLK, &unlock);
        if (signals == 4 && read(pipe_end, page, sizeof page) != sizeof page)
            abort();
    };
    sigaction(SIGALRM, &action, &before);
    const struct itimerval ticks = {{0, 20000}, {0, 20000}}, none = {};
    setitimer(ITIMER_REAL, &ticks, nullptr);
    EXPECT_TRUE(first->Lock(FILE_LOCK_EXCLUSIVE, 0, 2) && signals >= 2);
    EXPECT_TRUE(pipe->Write("y", 1) == 1 && signals >= 4);
    setitimer(ITIMER_REAL, &none, nullptr);
    sigaction(SIGALRM, &before, nullptr);
}

TEST_F(Open_File, Oldest_Is_Parked_And_Comes_Back_As_It_Was) {
    manager->MaxFiles(2);
    for (const char* name : {"a", "b", "c"})
        Put(name, std::string(name) + "12");
    const auto a = Open("a", FILE_MODE_READ);
    a->Seek(1);
    const auto b = Open("b", FILE_MODE_READ), c = Open("c", FILE_MODE_READ);
    fs::rename("a", "x"); // only a parked file misses its name
    EXPECT_TRUE(Rest(*a) == System_Text(ENOENT) && Error() == System_Text(ENOENT));
    fs::rename("x", "a");
    EXPECT_EQ(Rest(*a), "12"); // b went, c stays
    fs::remove("b");
    EXPECT_TRUE(Rest(*c) == "c12" && Rest(*b) == System_Text(ENOENT));

    // Coming back neither empties nor creates again.
    const auto file = Open("f", both | FILE_MODE_CREATE | FILE_MODE_TRUNCATE | FILE_MODE_EXCLUSIVE);
    EXPECT_EQ(file->Write("abc", 3), 3);
    manager->DeactivateFile(file.get());
    EXPECT_TRUE(file->Write("d", 1) == 1 && Get("f") == "abcd");
    manager->DeactivateFile(file.get());
    fs::remove("f");
    EXPECT_TRUE(file->Write("e", 1) == -1 && !fs::exists("f"));
    ASSERT_EQ(mkfifo("f", 0600), 0);
    EXPECT_EQ(file->Write("e", 1), -1);
    EXPECT_EQ(file->error().view(), "Unable to restore file position during activation");
}

TEST_F(Open_File, Limit_Counts_Managed_Files_Only) {
    Put("f", "abc");
    EXPECT_THROW(manager->Open("forgotten", FILE_MODE_WRITE | FILE_MODE_CREATE), std::bad_alloc);
    manager->MaxFiles(1);
    EXPECT_EQ(Why(manager->Copy("f", "g")), "Simultaneous request for 1 file handles exceeds the maximum "
                                            "number of simultaneous file handles.");
    const auto managed = Open("f", FILE_MODE_READ),
               unmanaged = Open("f", FILE_MODE_READ | FILE_MODE_UNMANAGED);
    fs::remove("f");
    EXPECT_TRUE(managed->Length() == -1 && Rest(*unmanaged) == "abc"); // the other's opening parked it
    UNIXFileManager other(nullptr);
    EXPECT_FALSE(other.ActivateFile(managed.get()));
    EXPECT_EQ(other.error().view(), "Activation request for invalid or non-active file");
    manager->MaxFiles(-1); // room for none
    EXPECT_TRUE(manager->Lock("l") == FILE_LOCK_FAILED && !manager->TouchFile("new"));
    EXPECT_TRUE(manager->Lock_Valid("f") == FILE_LOCK_UNREADABLE && Error().starts_with("Simultaneous"));
}

// The write that meets the limit of a file's size is cut short, and the next one fails.
TEST_F(Open_File, Copy_Goes_On_Behind_A_Short_Write) {
    Put("f", std::string(5000, 'x'));
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{4000, limit.rlim_max};
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_FALSE(manager->Copy("f", "g"));
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(Error(), System_Text(EFBIG));
}

} // namespace
