// The socket: connecting, and reading and writing without TLS.

#include "network/unix_network_connection.h"

#include "core/text_length.h"
#include "network/descriptor_wait.h"
#include "network/settings.h"
#include "network/tls_library.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// A signal that comes in between is no failure either.
bool Would_Block() {
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}

int Open_Socket(int family) {
    const int descriptor = socket(family, SOCK_STREAM | SOCK_CLOEXEC, IPPROTO_TCP);
    if (descriptor >= 0 && fcntl(descriptor, F_SETFL, O_NONBLOCK) < 0) {
        const int reason = errno;
        close(descriptor);
        errno = reason;
        return -1;
    }
    return descriptor;
}

// A host's address with a port, and its number in figures.
struct Peer {
    union {
        sockaddr any;
        sockaddr_in v4;
        sockaddr_in6 v6;
    };
    socklen_t size = 0;
    char figures[INET6_ADDRSTRLEN] = "";

    // False for a family that isn't of the internet.
    bool Assign(const addrinfo& address, int port) {
        switch (address.ai_family) {
        case AF_INET:
            memcpy(&v4, address.ai_addr, size = sizeof v4);
            v4.sin_port = htons(static_cast<std::uint16_t>(port));
            return inet_ntop(AF_INET, &v4.sin_addr, figures, sizeof figures);
        case AF_INET6:
            memcpy(&v6, address.ai_addr, size = sizeof v6);
            v6.sin6_port = htons(static_cast<std::uint16_t>(port));
            return inet_ntop(AF_INET6, &v6.sin6_addr, figures, sizeof figures);
        }
        return false;
    }
};

String Connect_Failure(int reason) {
    switch (reason) {
    case ETIMEDOUT: return "Connection timed out";
    case ECONNREFUSED: return "Connection refused";
    case ENETUNREACH: return "Network unreachable";
    }
    return String("Unknown error ") + reason;
}

} // namespace

UNIXNetworkConnection::UNIXNetworkConnection(TarnApplication* application) : NetworkConnection(application) {
}

UNIXNetworkConnection::~UNIXNetworkConnection() {
    Close();
}

void UNIXNetworkConnection::Close() {
    Free_TLS();
    if (socket >= 0)
        close(socket);
    socket = -1;
}

int UNIXNetworkConnection::Fail(const String& text, int answer) {
    error_ = text;
    return answer;
}

int UNIXNetworkConnection::Fail_Connect(const String& text) {
    Close();
    return Fail(text, 0);
}

int UNIXNetworkConnection::EstablishTCPConnection(addrinfo* address, int port, int timeout) {
    Close();
    socket = Open_Socket(address->ai_family);
    if (socket < 0)
        return Fail(application->lasterror(), 0);
    Peer peer;
    if (!peer.Assign(*address, port))
        return Fail_Connect(String("Unsupported address family ") + address->ai_family);
    ipaddress_ = peer.figures;
    if (connect(socket, &peer.any, peer.size) == 0)
        return 1;
    if (errno != EINPROGRESS)
        return Fail_Connect(application->lasterror());
    return Finish_Connect(timeout);
}

int UNIXNetworkConnection::Finish_Connect(int timeout) {
    switch (Wait_For(socket, POLLOUT, Timeout(timeout))) {
    case Descriptor_Wait::READY: break;
    case Descriptor_Wait::TIMED_OUT: return Fail_Connect("Connection timed out");
    case Descriptor_Wait::FAILED: return Fail_Connect(application->lasterror());
    case Descriptor_Wait::NOT_READY: return Fail_Connect("Unknown error");
    }
    int reason = 0;
    socklen_t size = sizeof reason;
    if (getsockopt(socket, SOL_SOCKET, SO_ERROR, &reason, &size) < 0)
        reason = errno;
    return reason == 0 || Fail_Connect(Connect_Failure(reason));
}

int UNIXNetworkConnection::Timeout(int timeout) const {
    return timeout ? timeout : Integer_Setting(application, CONFIG_TIMEOUT);
}

bool UNIXNetworkConnection::Await(short event, int timeout, const Words& words) {
    switch (Wait_For(socket, event, Timeout(timeout))) {
    case Descriptor_Wait::READY: return true;
    case Descriptor_Wait::TIMED_OUT: return Fail(words.timeout, false);
    case Descriptor_Wait::FAILED: return Fail(String(words.failure) + ": " + application->lasterror(), false);
    case Descriptor_Wait::NOT_READY: break;
    }
    return Fail(words.failure, false);
}

int UNIXNetworkConnection::Read(char* buffer, int length, int timeout) {
    if (tls_handle)
        return SSL_Read(buffer, length, timeout);
    if (length < 1)
        return 0;
    return Receive(buffer, length, 0, timeout);
}

// As recv with these flags does, once there is something to answer; the length is at least 1.
int UNIXNetworkConnection::Receive(char* buffer, int length, int flags, int timeout) {
    for (;;) {
        const ssize_t count = recv(socket, buffer, static_cast<std::size_t>(length), flags);
        if (count >= 0)
            return static_cast<int>(count);
        if (!Would_Block())
            return Fail(String("Read Error: ") + application->lasterror(), -1);
        if (!Await(POLLIN, timeout, read_words))
            return -1;
    }
}

// What was read of a broken line is dropped.
int UNIXNetworkConnection::Fail_Line(String& line) {
    line.assign("", 0);
    return -1;
}

// Looks before it takes: what stands behind the line stays in the socket, for whoever reads next.
int UNIXNetworkConnection::ReadLine(String& line, int timeout, int size) {
    if (tls_handle)
        return SSL_ReadLine(line, timeout, size);
    size = std::max(size, 1);
    const std::unique_ptr<char[]> piece(new char[static_cast<std::size_t>(size)]);
    line.assign("", 0);
    for (;;) {
        const int seen = Receive(piece.get(), size, MSG_PEEK, timeout);
        if (seen == 0)
            Fail("Read Error: Connection closed by remote host", -1);
        if (seen <= 0)
            return Fail_Line(line);
        const char* end = std::find(piece.get(), piece.get() + seen, '\n');
        const int wanted = std::min(static_cast<int>(end - piece.get()) + 1, seen);
        const int taken = Receive(piece.get(), wanted, 0, timeout);
        if (taken <= 0)
            return Fail_Line(line);
        line.cat(piece.get(), taken);
        if (piece[static_cast<std::size_t>(taken) - 1] == '\n')
            return line.length();
    }
}

int UNIXNetworkConnection::Write(const char* buffer, int length, int timeout) {
    length = Text_Length(buffer, length);
    if (tls_handle)
        return SSL_Write(buffer, length, timeout);
    for (int written = 0; written < length;) {
        const ssize_t count =
            send(socket, buffer + written, static_cast<std::size_t>(length - written), MSG_NOSIGNAL);
        if (count > 0) {
            written += static_cast<int>(count);
            continue;
        }
        if (count < 0 && !Would_Block())
            return Fail(String("Write Error: ") + application->lasterror(), -1);
        if (!Await(POLLOUT, timeout, write_words))
            return -1;
    }
    return length;
}
