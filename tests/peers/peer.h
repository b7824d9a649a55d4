#ifndef TESTS_PEERS_PEER_H
#define TESTS_PEERS_PEER_H

#include "network/loopback.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// Ends the test with a word where a server isn't installed.
#define NEED_PROGRAM(name, package)                                                                          \
    if (std::system("PATH=$PATH:/usr/sbin:/sbin command -v " name " >/dev/null") != 0)                       \
    GTEST_SKIP() << "no " name " here: install the package " package

// A directory for what servers read and write, gone with the object.
struct Peer_Directory {
    Peer_Directory() {
        char name[] = "/tmp/tnc_peer_XXXXXX";
        path = mkdtemp(name);
        std::filesystem::permissions(path, std::filesystem::perms(0755));
    }
    ~Peer_Directory() { std::filesystem::remove_all(path); }
    std::string Put(const std::string& name, const std::string& text) const {
        std::ofstream(path + "/" + name) << text;
        return path + "/" + name;
    }
    std::string Get(const std::string& name) const {
        std::ifstream file(path + "/" + name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    // Runs a command of the shell in the directory.
    bool Run(const std::string& command) const {
        return std::system(("cd " + path + " && { " + command + "; } >log 2>&1").c_str()) == 0;
    }

    std::string path;
};

// A server of the machine, with all processes that it starts, from its start to the end of the object.
class Peer {
  public:
    // The command is run by the shell; it listens on the port of the loopback.
    Peer(const std::string& command, int port) : group(fork()) {
        if (group == 0) {
            setpgid(0, 0);
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            const int nowhere = open("/dev/null", O_RDWR);
            for (const int descriptor : {0, 1, 2})
                dup2(nowhere, descriptor);
            execl("/bin/sh", "sh", "-c", ("PATH=$PATH:/usr/sbin:/sbin; exec " + command).c_str(), nullptr);
            _exit(127);
        }
        setpgid(group, group);
        while (!Listens(port) && tries-- > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer() {
        kill(-group, SIGKILL);
        waitpid(group, nullptr, 0);
    }
    // Whether it came to listen in time.
    bool started() const { return tries > 0; }

  private:
    // Looks without a connection, which some servers count.
    static bool Listens(int port) {
        char wanted[32];
        snprintf(wanted, sizeof wanted, "0100007F:%04X 00000000:0000 0A", static_cast<unsigned>(port));
        std::ifstream table("/proc/net/tcp");
        return std::string(std::istreambuf_iterator<char>(table), {}).find(wanted) != std::string::npos;
    }

    pid_t group;
    int tries = 500;
};

#endif
