#include "files/contained_operations.h"
#include "files/file_tree.h"
#include "files/lock_application.h"

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <iterator>
#include <thread>

namespace {

// Below the root, a file and a directory change places with a stranger's links out of it to own targets, and
// with each other, while every contained operation is tried. Nothing outside may be changed, and nothing of
// it may be seen. RACE_TRIES in the environment makes it long.
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
        std::filesystem::permissions(At("outside/x"), std::filesystem::perms(secret_mode & 0777));
        ASSERT_TRUE(manager->SetModifiedTime("outside/x", secret_time));
        for (const char* name : {"root/to_file", "root/to_directory"})
            if (geteuid() == 0)
                Own(name);
    }

    // The times of change of all that is outside, which tell of each touch.
    std::string Outside() const {
        std::string state;
        for (const char* name : {"outside", "outside/x", "outside/x_", "outside/secret of others"}) {
            struct stat s = {};
            EXPECT_EQ(lstat(At(name).c_str(), &s), 0);
            state += std::to_string(s.st_ctim.tv_sec) + '.' + std::to_string(s.st_ctim.tv_nsec) + ' ';
        }
        return state;
    }

    static void Exchange(const std::stop_token& end, int root, std::atomic<int>& swaps) {
        const char* const pairs[][2] = {{"f", "to_file"}, {"d", "to_directory"}, {"f", "d"}};
        for (unsigned i = 1; !end.stop_requested(); i = i * 1664525 + 1013904223) {
            const auto& [a, b] = pairs[(i >> 16) % std::size(pairs)];
            swaps += renameat2(root, a, root, b, RENAME_EXCHANGE) == 0;
        }
    }

    void Race(int options) {
        Lock_Application application;
        UNIXFileManager racer(&application);
        ASSERT_TRUE(racer.InitializeDataDirectory(At("root").c_str()));
        racer.SecurityOptions(options);
        const Descriptor root(Open_Path(".", O_RDONLY)), own(Open_Path("d", O_RDONLY));
        const std::string before = Outside();
        const char* const wanted = getenv("RACE_TRIES");
        const int least = wanted ? atoi(wanted) : 70000;
        std::atomic<int> swaps = 0;
        std::jthread other(Exchange, root.get(), std::ref(swaps));
        int done = 0, tries = 0;
        for (; swaps < least || tries < least; ++tries) {
            const Contained_Operation& operation =
                contained_operations[tries % std::size(contained_operations)];
            const bool on_file = operation.on_file && tries / std::size(contained_operations) % 2;
            close(openat(own.get(), "x", O_CREAT | O_WRONLY | O_CLOEXEC, 0600)); // which some take away
            observed = {};
            application.passes = 1;
            done += operation.run(racer, on_file ? "f" : (std::string("d") + operation.inside).c_str());
            ASSERT_FALSE(observed.Shows_Secret()) << operation.name;
        }
        other.request_stop();
        other.join();
        EXPECT_EQ(Outside(), before);
        std::cout << swaps << " swaps, " << tries << " operations, of which " << done << " done; "
                  << (HasFailure() ? "escapes" : "0 escapes") << '\n';
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
