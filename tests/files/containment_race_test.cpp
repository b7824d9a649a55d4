#include "files/contained_operations.h"
#include "files/file_tree.h"
#include "files/lock_application.h"

#include <csignal>
#include <iterator>
#include <sys/wait.h>

namespace {

// A hundred thousand tries over both policies.
constexpr int tries = 50000;

// Below the root, a file and a directory change places with links out of it, and with each other, while every
// contained operation is tried. Nothing outside may be changed, and nothing of it may be seen.
class Containment_Race : public File_Tree {
  protected:
    void SetUp() override {
        File_Tree::SetUp();
        for (const char* directory : {"root/d", "outside/x_"})
            std::filesystem::create_directory(At(directory));
        Put("root/f", "own");
        Put("outside/x", secret);
        Put(std::string("outside/") + secret, "");
        Link("../outside/x", "root/to_file");
        Link("../outside", "root/to_directory");
        for (const char* name : {"outside/x", "outside/x_", "outside"}) {
            std::filesystem::permissions(At(name), std::filesystem::perms(secret_mode & 0777));
            if (geteuid() == 0)
                Own(name);
        }
        ASSERT_TRUE(manager->SetModifiedTime("outside/x", secret_time));
    }

    // The times of change of all that is outside, which tell of each touch.
    std::string Outside() const {
        std::string state;
        const auto add = [&](const std::filesystem::path& path) {
            struct stat s = {};
            EXPECT_EQ(lstat(path.c_str(), &s), 0);
            state += path.string() + std::to_string(s.st_ctim.tv_sec) + std::to_string(s.st_ctim.tv_nsec);
        };
        add(At("outside"));
        for (const auto& entry : std::filesystem::directory_iterator(At("outside")))
            add(entry);
        return state;
    }

    [[noreturn]] static void Exchange_For_Ever() {
        const char* const pairs[][2] = {
            {"root/f", "root/to_file"}, {"root/d", "root/to_directory"}, {"root/f", "root/d"}};
        for (unsigned i = 1;; i = i * 1664525 + 1013904223) {
            const auto& [a, b] = pairs[(i >> 16) % 3];
            renameat2(AT_FDCWD, a, AT_FDCWD, b, RENAME_EXCHANGE);
        }
    }

    void Race(int options) {
        Lock_Application application;
        UNIXFileManager racer(&application);
        ASSERT_TRUE(racer.InitializeDataDirectory(At("root").c_str()));
        racer.SecurityOptions(options);
        std::filesystem::current_path(base);
        const std::string before = Outside();
        const int own = open("root/d", O_RDONLY | O_CLOEXEC); // the directory, wherever it stands
        const pid_t other = fork();
        if (other == 0)
            Exchange_For_Ever();
        int done = 0;
        for (int i = 0; i < tries; i++) {
            const Contained_Operation& operation = contained_operations[i % std::size(contained_operations)];
            const bool on_file = operation.on_file && i / std::size(contained_operations) % 2;
            close(openat(own, "x", O_CREAT | O_WRONLY | O_CLOEXEC, 0600)); // which some take away
            observed = {};
            application.passes = 1;
            done += operation.run(racer, on_file ? "f" : (std::string("d") + operation.inside).c_str());
            EXPECT_FALSE(observed.Shows_Secret()) << operation.name;
        }
        kill(other, SIGKILL);
        waitpid(other, nullptr, 0);
        close(own);
        EXPECT_EQ(Outside(), before);
        EXPECT_TRUE(done > tries / 100 && done < tries * 99 / 100) << "a race with but one side: " << done;
    }
};

TEST_F(Containment_Race, Without_Links) {
    Race(0);
}

TEST_F(Containment_Race, With_Links_Of_One_Owner) {
    SKIP_UNLESS_ROOT();
    Race(SECURITY_DATA_LINKS);
}

} // namespace
