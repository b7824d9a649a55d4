#include "files/file_tree.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>

namespace {

constexpr int both = FILE_MODE_READ | FILE_MODE_WRITE;

class Open_File : public File_Tree {
  protected:
    std::unique_ptr<File> Open(const char* path, int mode) {
        return std::unique_ptr<File>(manager->Open(path, mode));
    }

    // What this process has mapped.
    static std::string Maps() {
        std::ifstream maps("/proc/self/maps");
        return {std::istreambuf_iterator<char>(maps), {}};
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
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mode);
        Put("f", "abc");
        const auto file = Open("f", c.mode);
        EXPECT_EQ(file->Write(String("xy")), c.writes ? 2 : -1);
        EXPECT_EQ(Get("f"), c.text);
        EXPECT_EQ(file->Seek(1), 1);
        char byte;
        EXPECT_EQ(file->Read(&byte, 1), c.reads ? 1 : -1);
        EXPECT_EQ(file->Tell(), c.reads ? 2 : 1);
        EXPECT_EQ(file->error().view(), c.reads && c.writes ? "" : System_Text(EBADF));
    }
    EXPECT_FALSE(Open("f", FILE_MODE_WRITE | FILE_MODE_CREATE | FILE_MODE_EXCLUSIVE));
    EXPECT_EQ(Error(), System_Text(EEXIST));
}

TEST_F(Open_File, Maps_What_Is_There) {
    Put("f", std::string(5000, 'x') + "end");
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    EXPECT_EQ(Open("pipe", both)->Length(), 0);
    const auto file = Open("f", FILE_MODE_READ);
    const char* text = file->Map(0, -1);
    ASSERT_TRUE(text && file->Deactivate()); // the mapping stays
    EXPECT_EQ(std::string(text + 5000, 3), "end");
    String error;
    EXPECT_TRUE(file->Deactivate() && file->Activate(error) && file->Activate(error));
    text = file->Map(4096, 907);
    ASSERT_TRUE(text);
    EXPECT_EQ(std::string(text + 904, 3), "end");
    for (const auto& [offset, length] : {std::pair(0L, 0L), {0L, -2L}, {1L, 1L}})
        EXPECT_EQ(file->Map(offset, length), nullptr);
    EXPECT_EQ(file->error().view(), "Invalid argument");
    ASSERT_TRUE(file->Map(0, -1));
    EXPECT_NE(Maps().find(At("f")), std::string::npos);
    file->Release();
    EXPECT_EQ(Maps().find(At("f")), std::string::npos);
    Put("f", "");
    EXPECT_EQ(file->Map(0, -1), nullptr);
}

TEST_F(Open_File, Range_Locks_Hold_Against_Other_Files) {
    Put("f", "abcdef");
    const auto first = Open("f", both), second = Open("f", both);
    EXPECT_TRUE(first->Lock(FILE_LOCK_EXCLUSIVE, 0, 2) && second->Lock(FILE_LOCK_EXCLUSIVE, 2, 2));
    EXPECT_TRUE(first->Lock(FILE_LOCK_SHARED, 4, 0) && second->Lock(FILE_LOCK_SHARED, 4, 0));
    const Descriptor probe(Open_Path("f", O_RDWR));
    struct flock range = {F_WRLCK, SEEK_SET, 0, 2, 0};
    EXPECT_EQ(fcntl(probe.get(), F_OFD_SETLK, &range), -1);
    EXPECT_TRUE(first->Release(0, 2));
    EXPECT_EQ(fcntl(probe.get(), F_OFD_SETLK, &range), 0);

    // The second of two signals that break off the wait lets it end.
    static int holder, signals;
    holder = probe.get();
    struct sigaction action = {}, before;
    action.sa_handler = [](int) {
        struct flock unlock = {F_UNLCK, SEEK_SET, 0, 0, 0};
        if (++signals == 2)
            fcntl(holder, F_OFD_SETLK, &unlock);
    };
    sigaction(SIGALRM, &action, &before);
    const struct itimerval ticks = {{0, 20000}, {0, 20000}}, none = {};
    setitimer(ITIMER_REAL, &ticks, nullptr);
    EXPECT_TRUE(first->Lock(FILE_LOCK_EXCLUSIVE, 0, 2));
    EXPECT_GE(signals, 2);
    setitimer(ITIMER_REAL, &none, nullptr);
    sigaction(SIGALRM, &before, nullptr);
    EXPECT_FALSE(first->Lock(FILE_LOCK_SHARED, 0, ~0UL) || first->Lock(FILE_LOCK_SHARED, -1, 1));
    EXPECT_EQ(first->error().view(), "Invalid argument");
}

TEST_F(Open_File, Oldest_Is_Parked_And_Comes_Back_Where_It_Was) {
    manager->MaxFiles(2);
    for (const char* name : {"a", "b", "c"})
        Put(name, std::string(name) + "12");
    const auto a = Open("a", FILE_MODE_READ);
    a->Seek(1);
    const auto b = Open("b", FILE_MODE_READ), c = Open("c", FILE_MODE_READ);
    // Only a parked file misses its name.
    std::filesystem::rename(At("a"), At("x"));
    EXPECT_EQ(Rest(*a), System_Text(ENOENT));
    EXPECT_EQ(Error(), System_Text(ENOENT));
    std::filesystem::rename(At("x"), At("a"));
    EXPECT_EQ(Rest(*a), "12"); // b went, c stays
    std::filesystem::remove(At("b"));
    EXPECT_EQ(Rest(*c), "c12");
    EXPECT_EQ(Rest(*b), System_Text(ENOENT));
}

TEST_F(Open_File, Parking_Neither_Empties_Nor_Creates_Again) {
    const auto file = Open("f", both | FILE_MODE_CREATE | FILE_MODE_TRUNCATE | FILE_MODE_EXCLUSIVE);
    EXPECT_EQ(file->Write("abc", 3), 3);
    manager->DeactivateFile(file.get());
    EXPECT_EQ(file->Write("d", 1), 1);
    EXPECT_EQ(Get("f"), "abcd");
    manager->DeactivateFile(file.get());
    std::filesystem::remove(At("f"));
    EXPECT_EQ(file->Write("e", 1), -1);
    EXPECT_FALSE(std::filesystem::exists(At("f")));
    ASSERT_EQ(mkfifo("f", 0600), 0);
    EXPECT_EQ(file->Write("e", 1), -1);
    EXPECT_EQ(file->error().view(), "Unable to restore file position during activation");
}

TEST_F(Open_File, Limit_Counts_Managed_Files_Only) {
    Put("f", "abc");
    manager->MaxFiles(1);
    EXPECT_FALSE(manager->Copy("f", "g"));
    EXPECT_EQ(Error(), "Simultaneous request for 1 file handles exceeds the maximum number of simultaneous "
                       "file handles.");
    const auto managed = Open("f", FILE_MODE_READ),
               unmanaged = Open("f", FILE_MODE_READ | FILE_MODE_UNMANAGED);
    std::filesystem::remove(At("f"));
    EXPECT_EQ(managed->Length(), -1); // parked when the other was opened
    EXPECT_EQ(Rest(*unmanaged), "abc");
    UNIXFileManager other(nullptr);
    EXPECT_FALSE(other.ActivateFile(managed.get()));
    EXPECT_EQ(other.error().view(), "Activation request for invalid or non-active file");
}

// The write that meets the limit of a file's size is cut short, and the next one fails.
TEST_F(Open_File, Copy_Goes_On_Behind_A_Short_Write) {
    Put("f", std::string(5000, 'x'));
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{4000, limit.rlim_max};
    const auto handler = signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_FALSE(manager->Copy("f", "g"));
    setrlimit(RLIMIT_FSIZE, &limit);
    signal(SIGXFSZ, handler);
    EXPECT_EQ(Error(), System_Text(EFBIG));
}

} // namespace
