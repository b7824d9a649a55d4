#include "files/file_tree.h"
#include "files/lock_application.h"

#include <atomic>
#include <climits>
#include <csignal>
#include <ctime>
#include <random>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <vector>

namespace {

// A process that is over, and waited for.
pid_t dead_process() {
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    waitpid(child, nullptr, 0);
    return child;
}

class File_Locks : public File_Tree {
  protected:
    void SetUp() override {
        File_Tree::SetUp();
        manager = std::make_unique<UNIXFileManager>(&application);
    }

    // Files beside the three directories: no temporary name may stay.
    long Files() const { return Entries(base) - 3; }

    Lock_Application application;
};

TEST_F(File_Locks, Lock_File_Tells_Its_Holder) {
    EXPECT_EQ(manager->Lock("lock"), FILE_LOCK_HELD);
    EXPECT_EQ(Get("lock"), std::to_string(getpid()) + "!1:here");
    EXPECT_EQ(Files(), 1);
    EXPECT_EQ(manager->Lock("lock"), FILE_LOCK_DEADLOCK);
    EXPECT_EQ(Error(), "Possible deadlock detected");
    application.thread = 2;
    EXPECT_EQ(manager->Lock("lock"), FILE_LOCK_CANCELLED);
    EXPECT_EQ(Error(), "Timed out waiting for lock");
    EXPECT_EQ(Files(), 1);
    EXPECT_TRUE(manager->Lock_Delete("lock") && manager->Lock_Delete("lock"));
    EXPECT_EQ(manager->Lock("lock"), FILE_LOCK_CANCELLED); // ahead of any attempt
    EXPECT_EQ(Files(), 0);
}

TEST_F(File_Locks, Are_Judged_By_Holder_Or_Age) {
    const std::string own = std::to_string(getpid()), dead = std::to_string(dead_process());
    const struct {
        std::string content;
        int age, expiration, state;
    } cases[] = {
        {own + "!1:here", 100, 60, FILE_LOCK_OWN},
        {own + "!0:here", 0, 60, FILE_LOCK_OWN},
        {own + ":here", 0, 60, FILE_LOCK_OWN},
        {own + "!7:here", 100, 60, FILE_LOCK_VALID},
        {dead + "!1:here", 0, 60, FILE_LOCK_STALE},
        {dead + ":here", 0, 0, FILE_LOCK_STALE},
        {"1!1:here", 100, 60, FILE_LOCK_VALID},
        {own + "!1:there", 30, 60, FILE_LOCK_VALID},
        {own + "!1:there", 60, 60, FILE_LOCK_STALE},
        {own + "!1:there", 1000000, 0, FILE_LOCK_VALID},
        {own + "!1:here\n", 60, 60, FILE_LOCK_STALE},
        {"0!0:here", 60, 60, FILE_LOCK_STALE},
        {"-1!1:here", 0, 60, FILE_LOCK_VALID},
        {"4294967297!1:here", 0, 60, FILE_LOCK_VALID},
        {"99999999999999999999!1:here", 60, 60, FILE_LOCK_STALE},
        {"", 0, 60, FILE_LOCK_VALID},
        {own, 60, 60, FILE_LOCK_STALE},
        {std::string(5000, ':'), 60, 60, FILE_LOCK_STALE},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.content);
        Put("lock", c.content);
        ASSERT_TRUE(manager->SetModifiedTime("lock", time(nullptr) - c.age));
        application.expiration = c.expiration;
        EXPECT_EQ(manager->Lock_Valid("lock"), c.state);
        // Only a stale lock is broken, at the first pass, and taken at the second.
        application.passes = 2;
        const int expected = c.state == FILE_LOCK_OWN     ? FILE_LOCK_DEADLOCK
                             : c.state == FILE_LOCK_STALE ? FILE_LOCK_HELD
                                                          : FILE_LOCK_CANCELLED;
        EXPECT_EQ(manager->Lock("lock"), expected);
        EXPECT_EQ(Get("lock"), expected == FILE_LOCK_HELD ? own + "!1:here" : c.content);
        EXPECT_EQ(Files(), 1);
    }
}

TEST_F(File_Locks, Fail_Where_No_Lock_File_Can_Be) {
    EXPECT_EQ(manager->Lock("none/lock"), FILE_LOCK_FAILED);
    EXPECT_EQ(Error(), System_Text(ENOENT));
    application.passes = 3;
    EXPECT_EQ(manager->Lock("root"), FILE_LOCK_CANCELLED); // can't be read, so it is waited for
    EXPECT_EQ(manager->Lock_Valid("root"), FILE_LOCK_UNREADABLE);
    EXPECT_EQ(Error(), System_Text(EISDIR));
    // The name of this very thread: if it is there already, it isn't ours.
    const std::string name = "lock.6c92285fa6d3e827b198d120ea3ac674." + std::to_string(getpid()) + ".1";
    Put(name, "kept");
    EXPECT_EQ(manager->Lock("lock"), FILE_LOCK_FAILED);
    EXPECT_EQ(Error(), System_Text(EEXIST));
    EXPECT_EQ(Get(name), "kept");
}

TEST_F(File_Locks, Stale_Lock_Is_Broken_Once) {
    const std::string stale = std::to_string(dead_process()) + "!1:here";
    Put("lock", stale);
    application.while_judging = [&] { // another one breaks it and takes its place
        std::filesystem::remove(At("lock"));
        Put("lock", "1!1:here");
    };
    application.passes = 3;
    EXPECT_EQ(manager->Lock("lock"), FILE_LOCK_CANCELLED);
    EXPECT_EQ(Get("lock"), "1!1:here");

    Put("lock", stale);
    const int breaker = open("lock", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(flock(breaker, LOCK_EX), 0); // another one is about to remove it
    application.passes = 3;
    EXPECT_EQ(manager->Lock("lock"), FILE_LOCK_CANCELLED);
    close(breaker);
    application.passes = 2;
    EXPECT_EQ(manager->Lock("lock"), FILE_LOCK_HELD);
}

TEST_F(File_Locks, Of_A_Root_Stay_Below_It) {
    ASSERT_TRUE(manager->InitializeDataDirectory(At("root").c_str()));
    EXPECT_EQ(manager->Lock(Tarn_PathType_Data, "../lock"), FILE_LOCK_FAILED);
    EXPECT_EQ(manager->Lock(Tarn_PathType_Data, "d/../lock"), FILE_LOCK_HELD);
    EXPECT_TRUE(std::filesystem::exists(At("root/lock")));
    // A link is no lock of ours, whatever it leads to.
    Put("stale", std::to_string(dead_process()) + "!1:here");
    Link("../stale", "root/link");
    EXPECT_EQ(manager->Lock_Valid(Tarn_PathType_Data, "link"), FILE_LOCK_UNREADABLE);
    EXPECT_EQ(manager->Lock_Valid(At("root/link").c_str()), FILE_LOCK_STALE);
}

// What the processes below share.
struct Shared_State {
    std::atomic<int> taken, violations;
};

class Lock_Processes : public File_Locks {
  protected:
    void SetUp() override {
        File_Locks::SetUp();
        void* const memory =
            mmap(nullptr, sizeof(Shared_State), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        ASSERT_NE(memory, MAP_FAILED);
        state = new (memory) Shared_State();
        Put("witness", "");
    }

    void TearDown() override {
        munmap(state, sizeof(Shared_State));
        File_Locks::TearDown();
    }

    // The witness is locked by the system, which lets go when the holder dies. Every eighth holder does.
    void Hold() {
        const int witness = open("witness", O_RDONLY | O_CLOEXEC);
        state->violations += flock(witness, LOCK_EX | LOCK_NB) != 0;
        if (++state->taken % 8 == 0)
            raise(SIGKILL);
        sched_yield();
        close(witness);
    }

    [[noreturn]] void Take_And_Release() {
        application.passes = INT_MAX;
        for (;;) {
            if (manager->Lock("lock") != FILE_LOCK_HELD)
                state->violations++;
            Hold();
            manager->Lock_Delete("lock");
        }
    }

    pid_t Start() {
        const pid_t child = fork();
        if (child == 0)
            Take_And_Release();
        return child;
    }

    static void Kill(pid_t process) {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
    }

    // Starts anew who has died while holding the lock, until it was taken again.
    void Revive(std::vector<pid_t>& processes) {
        const int before = state->taken;
        for (int i = 0; i < 20000 && state->taken < before + 10; i++) {
            for (pid_t& process : processes)
                if (waitpid(process, nullptr, WNOHANG) == process)
                    process = Start();
            usleep(200);
        }
        EXPECT_GE(state->taken, before + 10);
    }

    Shared_State* state;
};

TEST_F(Lock_Processes, Never_Hold_One_Lock_Together_And_Outlive_The_Dead) {
    std::vector<pid_t> processes(8);
    for (pid_t& process : processes)
        process = Start();
    std::minstd_rand random(1);
    for (int kills = 0; kills < 60; kills++) {
        pid_t& victim = processes[random() % processes.size()];
        Kill(victim);
        victim = Start();
        Revive(processes);
    }
    for (const pid_t process : processes)
        Kill(process);
    EXPECT_EQ(state->violations, 0);
    application.passes = 2; // whoever held it last, it can be had
    EXPECT_EQ(manager->Lock("lock"), FILE_LOCK_HELD);
}

} // namespace
