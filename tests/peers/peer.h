// Servers of this machine, and pages that are got from them.
#ifndef TESTS_PEERS_PEER_H
#define TESTS_PEERS_PEER_H

#include "network/http_response_stream.h"
#include "network/network_support.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

// Ends the test with a word where a server isn't installed.
#define NEED_PROGRAM(name, package)                                                                          \
    if (std::system("PATH=$PATH:/usr/sbin:/sbin command -v " name " >/dev/null") != 0)                       \
    GTEST_SKIP() << "no " name " here: install the package " package

// A directory for what servers read and write, gone with the object.
struct Peer_Directory {
    Peer_Directory() {
        path = mkdtemp(std::string("/tmp/tnc_peer_XXXXXX").data());
        std::filesystem::permissions(path, std::filesystem::perms(0755));
    }
    ~Peer_Directory() { std::filesystem::remove_all(path); }
    void Put(const std::string& name, const std::string& text) const {
        std::ofstream(path + "/" + name) << text;
    }
    std::string Get(const std::string& name) const {
        std::ifstream file(path + "/" + name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::string path;
};

// A server, with all processes that it starts, from its start to the end of the object.
class Peer {
  public:
    // The command is run in the directory, and writes to its file "log". It is waited for until it listens on
    // the port, which is looked up without a connection: some servers count them.
    Peer(const std::string& command, const Peer_Directory& directory, const Reserved_Port& port)
        : group(fork()) {
        if (group == 0) {
            setpgid(0, 0);
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            const std::string line = "PATH=$PATH:/usr/sbin:/sbin; cd " + directory.path + "; exec " + command;
            execl("/bin/sh", "sh", "-c", (line + " >>log 2>&1 </dev/null").c_str(), nullptr);
            _exit(127);
        }
        setpgid(group, group);
        char entry[40];
        snprintf(entry, sizeof entry, "0100007F:%04X 00000000:0000 0A", static_cast<unsigned>(port.number));
        bool listens = false;
        for (int tries = 0; tries < patience * 50 && !listens && !waitpid(group, nullptr, WNOHANG); tries++) {
            usleep(20'000);
            std::ifstream table("/proc/net/tcp");
            listens = std::string(std::istreambuf_iterator<char>(table), {}).find(entry) != std::string::npos;
        }
        EXPECT_TRUE(listens) << directory.Get("log");
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer() {
        kill(-group, SIGKILL);
        waitpid(group, nullptr, 0);
    }

  private:
    pid_t group;
};

// What a page is asked for with. Null is what isn't given.
struct Page_Request {
    double version = 1.0;
    unsigned flags = 0;
    const char* cert_type = nullptr;
    const char* cert_value = nullptr;
    const char* cert_file = nullptr;
    const char* password = nullptr;
    const char* pin_algorithm = nullptr;
    const char* pin = nullptr;
};

// Status, length as the head tells it, and body; or the error.
inline std::string Get_Page(NetworkManager& manager, const std::string& url, const Page_Request& request) {
    HTTPResponseStream stream(manager.OpenURL("GET", url.c_str(), nullptr, nullptr, 0, request.cert_file,
                                              request.cert_value, request.cert_type, request.password,
                                              request.pin_algorithm, request.pin, nullptr, 0, request.version,
                                              patience, request.flags),
                              patience);
    const bool answered = stream.Read_Headers();
    std::string page = std::to_string(stream.status()) + " " + std::to_string(stream.content_length()) + " ";
    char buffer[1000];
    for (int count; (count = stream.Read(buffer, sizeof buffer)) > 0;)
        page.append(buffer, static_cast<size_t>(count));
    stream.Close();
    return answered ? page : manager.error().text();
}

#endif
