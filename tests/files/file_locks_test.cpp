#include "files/file_tree.h"

#include <climits>
#include <ctime>
#include <iostream>
#include <random>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/wait.h>

namespace {

class File_Locks : public File_Tree {
  protected:
    // A lock file that a process which is over, and waited for, has left.
    static std::string Left_Behind() {
        const pid_t child = fork();
        if (child == 0)
            _exit(0);
        waitpid(child, nullptr, 0);
        return std::to_string(child) + "!1:here";
    }

    int Lock_In(int passes, const char* path = "lock") {
        application.passes = passes;
        return manager->Lock(path);
    }

    // Files beside the three directories: no temporary name may stay.
    long Files() const { return Entries(base) - 3; }

    const std::string own = std::to_string(getpid()), held = own + "!1:here";
};

TEST_F(File_Locks, Are_Judged_By_Holder_Or_Age) {
    const struct {
        std::string content;
        int age, expiration, state;
    } cases[] = {
        // clang-format off
        {held, 100, 60, FILE_LOCK_OWN}, {own + "!0:here", 0, 60, FILE_LOCK_OWN},
        {own + ":here", 0, 60, FILE_LOCK_OWN}, {own + "!7:here", 100, 60, FILE_LOCK_VALID},
        {Left_Behind(), 0, 0, FILE_LOCK_STALE}, {"1!1:here", 100, 60, FILE_LOCK_VALID},
        {own + "!1:there", 30, 60, FILE_LOCK_VALID}, {own + "!1:there", 60, 60, FILE_LOCK_STALE},
        {own + "!1:there", 1000000, 0, FILE_LOCK_VALID}, {held + "\n", 60, 60, FILE_LOCK_STALE},
        {"0!0:here", 60, 60, FILE_LOCK_STALE}, {"-1!1:here", 0, 60, FILE_LOCK_VALID},
        {"4294967297!1:here", 0, 60, FILE_LOCK_VALID},
        {"99999999999999999999!1:here", 60, 60, FILE_LOCK_STALE}, {"", 0, 60, FILE_LOCK_VALID},
        {own, 60, 60, FILE_LOCK_STALE}, {std::string(5000, ':'), 60, 60, FILE_LOCK_STALE},
        // clang-format on
    };
    for (const auto& c : cases) {
        Put("lock", c.content);
        ASSERT_TRUE(manager->SetModifiedTime("lock", time(nullptr) - c.age));
        application.expiration = c.expiration;
        EXPECT_EQ(manager->Lock_Valid("lock"), c.state) << c.content;
        // Only a stale lock is broken, at the first pass, and taken at the second.
        const bool stale = c.state == FILE_LOCK_STALE, ours = c.state == FILE_LOCK_OWN;
        const int expected = ours ? FILE_LOCK_DEADLOCK : stale ? FILE_LOCK_HELD : FILE_LOCK_CANCELLED;
        EXPECT_EQ(Lock_In(2), expected) << c.content;
        EXPECT_TRUE(stale || Error() == (ours ? "Possible deadlock detected" : "Timed out waiting for lock"));
        EXPECT_EQ(Get("lock"), stale ? held : c.content);
        EXPECT_EQ(Files(), 1);
    }
    fs::remove("lock");
    EXPECT_EQ(Lock_In(0), FILE_LOCK_CANCELLED); // ahead of any attempt
    EXPECT_EQ(Files(), 0);
    application.thread = 7;
    EXPECT_EQ(Lock_In(1), FILE_LOCK_HELD);
    EXPECT_EQ(Get("lock"), own + "!7:here");
}

TEST_F(File_Locks, Fail_Where_No_Lock_File_Can_Be) {
    // The name of this very thread: if it is there already, it isn't ours.
    const std::string name = "lock.6c92285fa6d3e827b198d120ea3ac674." + own + ".1";
    Put(name, "kept");
    EXPECT_EQ(Lock_In(1), FILE_LOCK_FAILED);
    EXPECT_EQ(Error() + Get(name), System_Text(EEXIST) + "kept");
    EXPECT_EQ(Lock_In(1, "none/lock"), FILE_LOCK_FAILED);
    EXPECT_EQ(Error(), System_Text(ENOENT));
    EXPECT_EQ(Lock_In(3, "root"), FILE_LOCK_CANCELLED); // can't be read, so it is waited for
    EXPECT_EQ(manager->Lock_Valid("root"), FILE_LOCK_UNREADABLE);
    EXPECT_EQ(Error(), System_Text(EISDIR));

    ASSERT_TRUE(manager->InitializeDataDirectory(At("root").c_str()));
    EXPECT_EQ(manager->Lock(Tarn_PathType_Data, "../lock"), FILE_LOCK_FAILED);
    application.passes = 3;
    EXPECT_EQ(manager->Lock(Tarn_PathType_Data, "d/../lock"), FILE_LOCK_HELD);
    EXPECT_EQ(Get("root/lock"), held);
    // Below a root, a link is no lock of ours, whatever it leads to.
    Put("stale", Left_Behind());
    Link("../stale", "root/link");
    EXPECT_EQ(manager->Lock_Valid(Tarn_PathType_Data, "link"), FILE_LOCK_UNREADABLE);
    EXPECT_EQ(manager->Lock(Tarn_PathType_Data, "link"), FILE_LOCK_CANCELLED);
    EXPECT_EQ(manager->Lock_Valid(At("root/link").c_str()), FILE_LOCK_STALE);
}

TEST_F(File_Locks, Stale_Lock_Is_Broken_Once) {
    Put("lock", Left_Behind());
    application.while_judging = [&] { // another one breaks it and takes its place
        fs::remove("lock");
        Put("lock", "1!1:here");
    };
    EXPECT_EQ(Lock_In(3), FILE_LOCK_CANCELLED);
    EXPECT_EQ(Get("lock"), "1!1:here");

    // A lock is as old as its holding, not as the wait for it.
    application.while_waiting = [&] {
        for (const auto& entry : fs::directory_iterator(base))
            EXPECT_TRUE(manager->SetModifiedTime(entry.path().c_str(), 86400));
        fs::remove("lock");
    };
    EXPECT_EQ(Lock_In(3), FILE_LOCK_HELD);
    application.host = "there";
    EXPECT_EQ(manager->Lock_Valid("lock"), FILE_LOCK_VALID);
    application.host = "here";

    Put("lock", Left_Behind());
    const Descriptor breaker(Open_Path("lock", O_RDONLY));
    EXPECT_EQ(flock(breaker.get(), LOCK_EX), 0); // another one is about to remove it
    application.while_waiting = [&] {
        EXPECT_EQ(Entries("/proc/self/fd"), descriptors + 1) << "who waits keeps the breaker from it";
        flock(breaker.get(), LOCK_UN);
    };
    EXPECT_EQ(Lock_In(3), FILE_LOCK_HELD);
    EXPECT_FALSE(application.while_waiting) << "it was removed under the eyes of the other";
}

// LOCK_ACQUISITIONS in the environment makes it long. Now and then a process ends with the lock in its hands,
// and a successor takes its place; once a third machine does, so that all wait for the age of its lock.
TEST_F(File_Locks, Are_Never_Held_Together_By_Processes_Of_Two_Hosts) {
    enum End { DONE, OVERLAPPING, HOLDING };
    const char* const long_run = getenv("LOCK_ACQUISITIONS");
    const int each = (long_run ? atoi(long_run) : 800) / 8;
    Put("witness", "");
    application.expiration = 3;
    prctl(PR_SET_CHILD_SUBREAPER, 1); // of successors too
    for (unsigned process = 0; process < 8; ++process) {
        if (fork() != 0)
            continue;
        std::minstd_rand random(process + 1);
        for (int turn = 0; turn < each; ++turn) {
            const bool machine_goes = process == 0 && turn == each / 2;
            application.host = machine_goes ? "gone" : process % 2 ? "there" : "here";
            const bool held = Lock_In(INT_MAX) == FILE_LOCK_HELD;
            const int witness = Open_Path("witness", O_RDONLY);
            usleep(random() % 1000);
            if (!held || flock(witness, LOCK_EX | LOCK_NB) != 0)
                _exit(OVERLAPPING);
            usleep(random() % 1000);
            close(witness);
            if (!machine_goes && random() % 64 != 0)
                manager->Lock_Delete("lock");
            else if (fork() != 0)
                _exit(HOLDING);
        }
        _exit(DONE);
    }
    int ends[3] = {};
    for (int status; wait(&status) > 0;)
        ++ends[WIFEXITED(status) ? WEXITSTATUS(status) : OVERLAPPING];
    std::cout << each * 8 << " acquisitions, " << ends[HOLDING] << " processes gone with the lock, "
              << ends[OVERLAPPING] << " overlaps\n";
    EXPECT_TRUE(ends[DONE] == 8 && ends[HOLDING] > 0 && ends[OVERLAPPING] == 0);
}

} // namespace
