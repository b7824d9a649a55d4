#include "files/file_operations.h"
#include "files/file_tree.h"

#include <atomic>
#include <iostream>
#include <thread>

namespace {

// What no operation may see: the content of a file, and a name.
constexpr char secret[] = "secret of others";
constexpr long secret_time = 86400;
constexpr int secret_mode = S_IFREG | 0711;

struct Containment_Race : File_Tree, testing::WithParamInterface<int> {
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
};

// Below the root, a file and a directory change places with a stranger's links out of it to own targets, and
// with each other, while every contained operation is tried. Nothing outside may be changed, and nothing of
// it may be seen. RACE_TRIES in the environment makes it long.
TEST_P(Containment_Race, Leads_Nowhere_Outside) {
    if (GetParam() != 0)
        SKIP_UNLESS_ROOT();
    Put("outside/x", secret);
    Put(std::string("outside/") + secret, "");
    Put("root/f", "own");
    for (const char* directory : {"root/d", "outside/x_"})
        fs::create_directory(directory);
    fs::permissions("outside/x", fs::perms(secret_mode & 0777));
    ASSERT_TRUE(manager->SetModifiedTime("outside/x", secret_time));
    for (const auto& [target, link] :
         {std::pair("../outside/x", "to_file"), {"../outside", "to_directory"}}) {
        Link(target, std::string("root/") + link);
        if (geteuid() == 0)
            Own(std::string("root/") + link);
    }
    ASSERT_TRUE(manager->InitializeDataDirectory(At("root").c_str()));
    manager->SecurityOptions(GetParam());

    const Descriptor root(Open_Path(".", O_RDONLY)), own(Open_Path("d", O_RDONLY));
    ASSERT_TRUE(root && own);
    const std::string before = Outside();
    const char* const wanted = getenv("RACE_TRIES");
    const int least = wanted ? atoi(wanted) : 70000;
    std::atomic<int> swaps = 0;
    std::jthread other([&](const std::stop_token& end) {
        const char* const pairs[][2] = {{"f", "to_file"}, {"d", "to_directory"}, {"f", "d"}};
        for (unsigned i = 1; !end.stop_requested(); i = i * 1664525 + 1013904223) {
            const auto& [a, b] = pairs[(i >> 16) % std::size(pairs)];
            swaps += renameat2(root.get(), a, root.get(), b, RENAME_EXCHANGE) == 0;
        }
    });
    int done = 0, tries = 0;
    for (; swaps < least || tries < least; ++tries) {
        const File_Operation& operation = file_operations[tries % std::size(file_operations)];
        const bool on_file = operation.on_file && tries / std::size(file_operations) % 2;
        close(openat(own.get(), "x", O_CREAT | O_WRONLY | O_CLOEXEC, 0600)); // which some take away
        observed = {};
        application.passes = 1;
        done += operation.contained(*manager, on_file ? "f" : (std::string("d") + operation.inside).c_str(),
                                    data);
        ASSERT_FALSE(observed.exists || observed.text.find(secret) != std::string::npos ||
                     observed.length == sizeof secret - 1 || observed.time == secret_time ||
                     observed.mode == secret_mode)
            << operation.name;
    }
    other.request_stop();
    other.join();
    EXPECT_EQ(Outside(), before);
    std::cout << swaps << " swaps, " << tries << " operations, of which " << done << " done; "
              << (HasFailure() ? "escapes" : "0 escapes") << '\n';
    EXPECT_TRUE(done > tries / 100 && done < tries * 99 / 100) << "a race with but one side: " << done;
}

INSTANTIATE_TEST_SUITE_P(Without_And_With_Links, Containment_Race, testing::Values(0, SECURITY_DATA_LINKS));

} // namespace
