#ifndef TESTS_FILES_FILE_TREE_H
#define TESTS_FILES_FILE_TREE_H

#include "files/descriptor.h"
#include "files/unix_file_manager.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <string>
#include <unistd.h>

// A tree of its own for each test: root/, its neighbours root2/ and outside/, and a manager. The tree is the
// current directory at first. A descriptor left open is a failure.
class File_Tree : public testing::Test {
  protected:
    void SetUp() override {
        char name[] = "/tmp/tnc_files_XXXXXX";
        ASSERT_TRUE(mkdtemp(name));
        base = std::filesystem::canonical(name);
        for (const char* directory : {"root", "root2", "outside"})
            std::filesystem::create_directory(At(directory));
        std::filesystem::current_path(base);
    }

    void TearDown() override {
        manager.reset();
        std::filesystem::current_path("/");
        std::filesystem::remove_all(base);
        EXPECT_EQ(Entries("/proc/self/fd"), descriptors);
    }

    static long Entries(const std::string& path) {
        return std::distance(std::filesystem::directory_iterator(path), {});
    }

    std::string At(const std::string& path) const { return base + "/" + path; }
    void Put(const std::string& path, const std::string& text) const { std::ofstream(At(path)) << text; }
    void Link(const std::string& target, const std::string& path) const {
        std::filesystem::create_symlink(target, At(path));
    }
    void Own(const std::string& path) const { ASSERT_EQ(lchown(At(path).c_str(), stranger, stranger), 0); }

    std::string Get(const std::string& path) const {
        std::ifstream file(At(path));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::string Error() const { return manager->error().text(); }
    static std::string System_Text(int error) { return strerror(error); }

    static constexpr uid_t stranger = 12345;

    const long descriptors = Entries("/proc/self/fd");
    std::unique_ptr<UNIXFileManager> manager = std::make_unique<UNIXFileManager>(nullptr);
    std::string base;
};

#define SKIP_UNLESS_ROOT()                                                                                   \
    if (geteuid() != 0)                                                                                      \
    GTEST_SKIP() << "only root can give files away"

#endif
