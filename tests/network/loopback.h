#ifndef TESTS_NETWORK_LOOPBACK_H
#define TESTS_NETWORK_LOOPBACK_H

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <thread>

// A listening socket on a free port of the loopback.
class Listener {
  public:
    explicit Listener(int backlog = 5) : descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address = Loopback(0);
        socklen_t size = sizeof address;
        bind(descriptor, reinterpret_cast<sockaddr*>(&address), size);
        listen(descriptor, backlog);
        getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
        port_ = ntohs(address.sin_port);
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener() { close(descriptor); }

    int port() const { return port_; }
    int Accept() { return accept(descriptor, nullptr, nullptr); }

    static sockaddr_in Loopback(int port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return address;
    }

  private:
    int descriptor;
    int port_ = 0;
};

// A port on which nobody listens.
inline int Free_Port() {
    return Listener().port();
}

// Plays the peer on a descriptor in a thread of its own, and closes it at the end.
inline std::thread Play(int descriptor, std::function<void(int)> part) {
    return std::thread([descriptor, part] {
        part(descriptor);
        close(descriptor);
    });
}

inline bool Send_All(int descriptor, const std::string& text) {
    for (size_t sent = 0; sent < text.size();) {
        const ssize_t count = send(descriptor, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            return false;
        sent += static_cast<size_t>(count);
    }
    return true;
}

#endif
