#ifndef TESTS_NETWORK_SCRIPTED_CONNECTION_H
#define TESTS_NETWORK_SCRIPTED_CONNECTION_H

#include "network/network_connection.h"

#include <algorithm>
#include <climits>
#include <string>
#include <string_view>

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
        script.open++;
    }
    ~Scripted_Connection() override { script.open--; }

    int EstablishTLSConnection(const char*, x509_st*, evp_pkey_st*, int, unsigned) override { return 0; }
    x509_st* Server_Certificate() override { return nullptr; }
    int Read(char* buffer, int length, int) override {
        if (length < 1)
            return Fail("read of nothing");
        const std::size_t count = std::string_view(script.incoming)
                                      .substr(script.position)
                                      .copy(buffer, static_cast<std::size_t>(std::min(length, script.step)));
        script.position += count;
        return static_cast<int>(count);
    }
    int ReadLine(String& line, int, int) override {
        const std::size_t end = script.incoming.find('\n', script.position);
        if (end == std::string::npos)
            return Fail("line broken off");
        line.assign(script.incoming.data() + script.position, static_cast<int>(end + 1 - script.position));
        script.position = end + 1;
        return line.length();
    }
    int Write(const char* buffer, int length, int) override {
        const int room = script.write_limit - static_cast<int>(script.written.size());
        if (room <= 0)
            return Fail("peer is gone");
        script.written.append(buffer, static_cast<std::size_t>(std::min(length, room)));
        if (length > room)
            Error("peer took a part");
        return std::min(length, room);
    }
    using NetworkConnection::Write;

  private:
    int Fail(const char* text) {
        Error(text);
        return -1;
    }

    Script& script;
};

#endif
