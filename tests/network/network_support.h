// What the tests of the network share: an application, and peers that follow a script or listen.
#ifndef TESTS_NETWORK_NETWORK_SUPPORT_H
#define TESTS_NETWORK_NETWORK_SUPPORT_H

#include "app/driver/unix_compiler_application.h"
#include "app/services/config.h"
#include "network/network_connection.h"
#include "network/unix_network_manager.h"

#include <algorithm>
#include <arpa/inet.h>
#include <climits>
#include <map>
#include <netinet/in.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

// Seconds that nothing here takes, however loaded the machine is.
constexpr int patience = 60;

// An application with settings that a test puts in place, and a network manager.
struct Network_Application : UNIXCompilerApplication, Config {
    Network_Application() : UNIXCompilerApplication(1, arguments) {}
    Config* config() override { return this; }
    NetworkManager* networkmanager() override { return manager; }
    int Integer(Config_Setting setting) const override { return integers[setting]; }
    const String& Text(Config_Setting setting) const override { return texts[setting]; }

    NetworkManager* manager = nullptr;
    mutable std::map<Config_Setting, int> integers;
    mutable std::map<Config_Setting, String> texts;
    static inline char program[] = "test";
    static inline char* arguments[] = {program, nullptr};
};

// What the two sides of a scripted connection say.
struct Script {
    std::string incoming = {}; // what the peer sends, and then ends
    int step = INT_MAX;        // how much of it a read gives at most
    int write_limit = INT_MAX; // how much is taken from us before writing fails
    std::string written = {};
    std::size_t position = 0;
    int open = 0; // connections on this script
};

// A peer that speaks by a script. It refuses reads of less than one byte.
class Scripted_Connection : public NetworkConnection {
  public:
    Scripted_Connection(TarnApplication* application, Script& script)
        : NetworkConnection(application), script(script) {
        ipaddress_ = "192.0.2.1";
        ++script.open;
    }
    ~Scripted_Connection() override { script.open--; }

    int EstablishTLSConnection(const char*, x509_st*, evp_pkey_st*, int, unsigned) override { return 0; }
    x509_st* Server_Certificate() override { return nullptr; }
    int Read(char* buffer, int length, int) override {
        if (length < 1)
            return Fail("read of nothing");
        length =
            static_cast<int>(script.incoming.copy(buffer, std::min(length, script.step), script.position));
        script.position += length;
        return length;
    }
    int ReadLine(String& line, int, int) override {
        const std::size_t end = script.incoming.find('\n', script.position) + 1;
        if (end == 0)
            return Fail("line broken off");
        line.assign(&script.incoming[script.position], static_cast<int>(end - script.position));
        script.position = end;
        return line.length();
    }
    int Write(const char* buffer, int length, int) override {
        const int room = script.write_limit - static_cast<int>(script.written.size());
        if (room <= 0)
            return Fail("peer is gone");
        script.written.append(buffer, std::min(length, room));
        return length > room ? Fail("peer took a part"), room : length;
    }
    using NetworkConnection::Write;

  private:
    int Fail(const char* text) {
        Error(text);
        return -1;
    }

    Script& script;
};

// Notes where it is asked to connect to, and gives the script's peer.
struct Scripted_Manager : UNIXNetworkManager {
    Scripted_Manager(TarnApplication* application, Script& script)
        : UNIXNetworkManager(application), script(script) {}
    NetworkConnection* TCP_Connect(const char* host, int port, int) override {
        target = std::string(host) + " " + std::to_string(port);
        return new Scripted_Connection(application, script);
    }
    int SSL_Connect(NetworkConnection*, const char* host, const char* file, const char* value,
                    const char* type, const char* password, const char* algorithm, const char* pin,
                    int timeout, unsigned flags) override {
        target += " TLS";
        for (const char* const text : {host, file, value, type, password, algorithm, pin})
            target += std::string(" ") + (text ? text : "-");
        target += " " + std::to_string(timeout) + " " + std::to_string(flags);
        return flags & CONNECTION_MUST_VERIFY ? Fail("unknown server") : 1;
    }

    Script& script;
    std::string target;
};

// A port of the loopback that nobody else gets while the object lives. Nobody listens on it but who binds it
// by its number, with SO_REUSEADDR as servers do.
struct Reserved_Port {
    Reserved_Port() {
        const int yes = 1;
        setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
        socklen_t size = sizeof address;
        bind(descriptor, reinterpret_cast<sockaddr*>(&address), size);
        getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
        number = ntohs(address.sin_port);
    }
    Reserved_Port(const Reserved_Port&) = delete;
    Reserved_Port& operator=(const Reserved_Port&) = delete;
    ~Reserved_Port() { close(descriptor); }

    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    int number;
};

struct Listener : Reserved_Port {
    Listener() { listen(descriptor, 5); }
    int Accept() const { return accept(descriptor, nullptr, nullptr); }
};

// A folder that a shell removes when this object or the process is gone, however that ends. The signals to
// the group of the process don't reach the shell.
struct Passing_Folder {
    Passing_Folder() : shell(popen(("setsid sh -c 'read end; rm -rf " + path + "'").c_str(), "we")) {}
    Passing_Folder(const Passing_Folder&) = delete;
    Passing_Folder& operator=(const Passing_Folder&) = delete;
    ~Passing_Folder() { pclose(shell); }

    const std::string path = mkdtemp(std::string("/tmp/tnc_network_XXXXXX").data());
    FILE* const shell;
};

inline void Send_All(int descriptor, const std::string& text) {
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t count = send(descriptor, &text[sent], text.size() - sent, MSG_NOSIGNAL);
        if (count < 0)
            throw std::runtime_error("nothing could be sent");
        sent += static_cast<std::size_t>(count);
    }
}

#endif
