// Names and addresses by the resolver of the system, and connections to them.

#include "network/unix_network_manager.h"

#include "app/services/tarn_application.h"
#include "network/unix_network_connection.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>

namespace {

// Room for the figures of any address that a resolver gives.
constexpr int longest_address = 512;

using Addresses = std::unique_ptr<addrinfo, void (*)(addrinfo*)>;

// The addresses of a host for TCP, null when there are none.
Addresses Look_Up(const char* host, int family, int flags) {
    addrinfo hints{};
    hints.ai_flags = flags;
    hints.ai_family = family;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    addrinfo* found = nullptr;
    if (getaddrinfo(host, nullptr, &hints, &found) != 0)
        found = nullptr;
    return {found, freeaddrinfo};
}

bool Is_Numeric(const char* address, int family) {
    return Look_Up(address, family, AI_NUMERICHOST) != nullptr;
}

// The binary address, null for a family that isn't of the internet.
const char* Binary_Address(const addrinfo& address) {
    switch (address.ai_family) {
    case AF_INET:
        return reinterpret_cast<const char*>(&reinterpret_cast<sockaddr_in*>(address.ai_addr)->sin_addr);
    case AF_INET6:
        return reinterpret_cast<const char*>(&reinterpret_cast<sockaddr_in6*>(address.ai_addr)->sin6_addr);
    }
    return nullptr;
}

// Takes the first address that can be printed.
bool Print_First(const addrinfo* address, String& result) {
    for (; address; address = address->ai_next) {
        char figures[longest_address];
        const char* bytes = Binary_Address(*address);
        if (bytes && inet_ntop(address->ai_family, bytes, figures, sizeof figures)) {
            result = figures;
            return true;
        }
    }
    return false;
}

String Lookup_Failure(const char* host) {
    return String("Error looking up '") + host + "'";
}

} // namespace

bool UNIXNetworkManager::IsIPAddress(const char* address) {
    return Is_Numeric(address, AF_UNSPEC);
}

bool UNIXNetworkManager::IsIPv4Address(const char* address) {
    return Is_Numeric(address, AF_INET);
}

bool UNIXNetworkManager::IsIPv6Address(const char* address) {
    return Is_Numeric(address, AF_INET6);
}

int UNIXNetworkManager::NormalizeIPAddress(const char* address, String& result) {
    return Print_First(Look_Up(address, AF_UNSPEC, AI_NUMERICHOST).get(), result) ||
           Fail(Lookup_Failure(address));
}

int UNIXNetworkManager::GetHostAddress(const char* host, String& result) {
    return Print_First(Look_Up(host, AF_UNSPEC, 0).get(), result) || Fail(Lookup_Failure(host));
}

int UNIXNetworkManager::GetSOCKS4Address(const char* host, String& address) {
    const Addresses found = Look_Up(host, AF_INET, 0);
    if (!found)
        return Fail("SOCKS4: " + Lookup_Failure(host));
    address.assign(Binary_Address(*found), sizeof(in_addr));
    return 1;
}

int UNIXNetworkManager::GetSOCKS5Address(const char* host, String& address) {
    const Addresses found = Look_Up(host, AF_UNSPEC, AI_NUMERICHOST);
    if (!found) {
        // The length wraps, the name goes out whole.
        const std::size_t length = host ? strlen(host) : 0;
        const char kind[] = {SOCKS5_NAME, static_cast<char>(length)};
        address.assign(kind, sizeof kind);
        address += host;
        return 1;
    }
    const bool is_v4 = found->ai_family == AF_INET;
    if (!is_v4 && found->ai_family != AF_INET6)
        return Fail(String("SOCKS5: Unsupported address family ") + found->ai_family);
    const char kind = is_v4 ? SOCKS5_IPV4 : SOCKS5_IPV6;
    address.assign(&kind, 1);
    address.cat(Binary_Address(*found), is_v4 ? sizeof(in_addr) : sizeof(in6_addr));
    return 1;
}

NetworkConnection* UNIXNetworkManager::TCP_Connect(const char* host, int port, int timeout) {
    const Addresses found = Look_Up(host, AF_UNSPEC, 0);
    if (!found) {
        Error(Lookup_Failure(host));
        return nullptr;
    }
    auto connection = std::make_unique<UNIXNetworkConnection>(application);
    for (addrinfo* address = found.get(); address; address = address->ai_next) {
        if (connection->EstablishTCPConnection(address, port, timeout))
            return connection.release();
    }
    Error(String("Error connecting to ") + host + " on port " + port + ": " + connection->error());
    return nullptr;
}

bool UNIXNetworkManager::CompareIPv6Addresses(const char* left, const char* right) {
    const Addresses one = Look_Up(left, AF_INET6, AI_NUMERICHOST);
    const Addresses other = Look_Up(right, AF_INET6, AI_NUMERICHOST);
    return one && other && memcmp(Binary_Address(*one), Binary_Address(*other), sizeof(in6_addr)) == 0;
}

int UNIXNetworkManager::ConvertIPv4ToString(void* address, char* buffer, int size) {
    return Convert_To_String(AF_INET, address, buffer, size);
}

int UNIXNetworkManager::ConvertIPv6ToString(void* address, char* buffer, int size) {
    return Convert_To_String(AF_INET6, address, buffer, size);
}

int UNIXNetworkManager::Convert_To_String(int family, const void* address, char* buffer, int size) {
    if (!inet_ntop(family, address, buffer, static_cast<socklen_t>(std::max(size, 0))))
        return Fail(application->lasterror());
    return 1;
}
