#ifndef TESTS_FILES_FILE_TREE_H
#define TESTS_FILES_FILE_TREE_H

#include "app/driver/unix_compiler_application.h"
#include "app/services/config.h"
#include "files/descriptor.h"
#include "files/unix_file_manager.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <string>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;

// Waits for locks, a millisecond between passes, and gives up after a number of passes.
class Lock_Application : public UNIXCompilerApplication, Config {
  public:
    Lock_Application() : UNIXCompilerApplication(1, arguments) {}

    unsigned processid() override { return static_cast<unsigned>(getpid()); }
    unsigned threadid() override { return thread; }
    const char* lockhostname() override { return waiting ? Once(while_judging), host : host; }
    int lockexpiration() override { return expiration; }
    bool cancelled() override { return waiting = true, passes-- <= 0; }
    Config* config() override { return Once(while_waiting), this; }
    int Integer(Config_Setting setting) const override { return setting == CONFIG_LOCK_WAIT; }
    const String& Text(Config_Setting) const override { return nothing; }

    const char* host = "here";
    unsigned thread = 1;
    int expiration = 60, passes = 100;
    std::function<void()> while_judging, while_waiting; // called once; judging a lock that was found

  private:
    static void Once(std::function<void()>& call) {
        if (call)
            std::exchange(call, nullptr)();
    }

    bool waiting = false;
    inline static char program[] = "test";
    inline static char* arguments[] = {program, nullptr};
    String nothing;
};

// A tree of its own for each test: root/, its neighbours root2/ and outside/, and a manager. The tree is the
// current directory at first. A descriptor left open is a failure.
class File_Tree : public testing::Test {
  protected:
    void SetUp() override {
        char name[] = "/tmp/tnc_files_XXXXXX";
        ASSERT_TRUE(mkdtemp(name));
        base = fs::canonical(name);
        for (const char* directory : {"root", "root2", "outside"})
            fs::create_directory(At(directory));
        fs::current_path(base);
    }
    void TearDown() override {
        manager.reset();
        fs::current_path("/");
        fs::remove_all(base);
        EXPECT_EQ(Entries("/proc/self/fd"), descriptors);
    }

    static long Entries(const std::string& path) { return std::distance(fs::directory_iterator(path), {}); }

    std::string At(const std::string& path) const { return fs::path(base) / path; } // absolute ones stay
    void Put(const std::string& path, const std::string& text) const { std::ofstream(At(path)) << text; }
    void Link(const std::string& target, const std::string& path) const {
        fs::create_symlink(target, At(path));
    }
    void Own(const std::string& path, uid_t owner = 12345) const {
        ASSERT_EQ(lchown(At(path).c_str(), owner, owner), 0);
    }
    std::string Get(const std::string& path) const {
        std::ifstream file(At(path));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::string Error() const { return manager->error().text(); }
    static std::string System_Text(int error) { return strerror(error); }
    // Of an operation of the manager: why it failed.
    std::string Why(bool done) const { return done ? "" : Error(); }

    Lock_Application application;
    const long descriptors = Entries("/proc/self/fd");
    std::unique_ptr<UNIXFileManager> manager = std::make_unique<UNIXFileManager>(&application);
    std::string base;
};

#define SKIP_UNLESS_ROOT()                                                                                   \
    if (geteuid() != 0)                                                                                      \
    GTEST_SKIP() << "only root can give files away"

#endif
