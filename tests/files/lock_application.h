#ifndef TESTS_FILES_LOCK_APPLICATION_H
#define TESTS_FILES_LOCK_APPLICATION_H

#include "app/driver/unix_compiler_application.h"
#include "app/services/config.h"

#include <functional>
#include <unistd.h>
#include <utility>

// An application that may wait for locks, a millisecond between passes, and gives up after a number of
// passes. What happens meanwhile is called once each.
class Lock_Application : public UNIXCompilerApplication, Config {
  public:
    Lock_Application() : UNIXCompilerApplication(1, arguments) {}

    unsigned processid() override { return static_cast<unsigned>(getpid()); }
    unsigned threadid() override { return thread; }
    const char* lockhostname() override {
        if (waiting && while_judging)
            std::exchange(while_judging, nullptr)();
        return host;
    }
    int lockexpiration() override { return expiration; }
    bool cancelled() override {
        waiting = true;
        return passes-- <= 0;
    }
    Config* config() override {
        if (while_waiting)
            std::exchange(while_waiting, nullptr)();
        return this;
    }
    int Integer(Config_Setting setting) const override { return setting == CONFIG_LOCK_WAIT; }
    const String& Text(Config_Setting) const override { return nothing; }

    const char* host = "here";
    unsigned thread = 1;
    int expiration = 60, passes = 100;
    std::function<void()> while_judging, while_waiting; // judging: a lock that was found

  private:
    bool waiting = false;
    inline static char program[] = "test";
    inline static char* arguments[] = {program, nullptr};
    String nothing;
};

#endif
