// The exchanges with SOCKS proxies.

#include "core/text_length.h"
#include "network/network_connection.h"
#include "network/network_manager.h"
#include "network/settings.h"

#include <string_view>

namespace {

enum SOCKS4_Code { SOCKS4_VERSION = 4, SOCKS4_CONNECT = 1, SOCKS4_GRANTED = 90 };

enum SOCKS5_Code {
    SOCKS5_VERSION = 5,
    SOCKS5_CONNECT = 1,
    SOCKS5_NO_AUTHENTICATION = 0,
    SOCKS5_PASSWORD = 2,
    SOCKS5_PASSWORD_VERSION = 1,
    SOCKS5_NOT_ALLOWED = 2,
    SOCKS5_HOST_UNREACHABLE = 4
};

constexpr std::size_t longest_credential = 255;

void Append_Byte(String& request, int value) {
    const char byte = static_cast<char>(value);
    request.cat(&byte, 1);
}

void Append_Text(String& request, std::string_view text) {
    request.cat(text.data(), Length_Of(text));
}

void Append_Credential(String& request, std::string_view text) {
    Append_Byte(request, Length_Of(text));
    Append_Text(request, text);
}

void Append_Port(String& request, int port) {
    Append_Byte(request, port >> 8);
    Append_Byte(request, port);
}

// Reads until all of the answer is there or the connection fails.
template <std::size_t size>
bool Read_All(NetworkConnection* connection, unsigned char (&answer)[size], int timeout) {
    for (std::size_t done = 0; done < size;) {
        const int count =
            connection->Read(reinterpret_cast<char*>(answer) + done, static_cast<int>(size - done), timeout);
        if (count <= 0)
            return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

int NetworkManager::SOCKS4_Connect(NetworkConnection* connection, const char* host, int port, int timeout) {
    String address;
    if (!GetSOCKS4Address(host, address))
        return 0;
    String request;
    Append_Byte(request, SOCKS4_VERSION);
    Append_Byte(request, SOCKS4_CONNECT);
    Append_Port(request, port);
    request += address;
    Append_Text(request, Text_Setting(application, CONFIG_SOCKS_USER));
    Append_Byte(request, 0);
    if (connection->Write(request, timeout) < 0)
        return Fail("SOCKS4: Connect error: " + connection->error());
    unsigned char answer[8];
    if (!Read_All(connection, answer, timeout))
        return Fail("SOCKS4: Connect read error: " + connection->error());
    if (answer[0] != 0)
        return Fail("SOCKS4: Unexpected version");
    if (answer[1] != SOCKS4_GRANTED)
        return Fail(String("SOCKS4: Failed to connect to host (") + answer[1] + ")");
    return 1;
}

int NetworkManager::SOCKS5_Connect(NetworkConnection* connection, const char* host, int port, int timeout) {
    if (Text_Setting(application, CONFIG_SOCKS_USER).size() > longest_credential ||
        Text_Setting(application, CONFIG_SOCKS_PASSWORD).size() > longest_credential)
        return Fail("SOCKS5: Username / password must be 255 characters or less");
    String address;
    if (!GetSOCKS5Address(host, address) || !Negotiate_SOCKS5(connection, timeout))
        return 0;
    String request;
    Append_Byte(request, SOCKS5_VERSION);
    Append_Byte(request, SOCKS5_CONNECT);
    Append_Byte(request, 0);
    request += address;
    Append_Port(request, port);
    if (connection->Write(request, timeout) < 0)
        return Fail("SOCKS5: Client connection request error: " + connection->error());
    return Read_SOCKS5_Response(connection, timeout);
}

// Greets the proxy, and does what it wants to know us by.
bool NetworkManager::Negotiate_SOCKS5(NetworkConnection* connection, int timeout) {
    const bool has_password = !Text_Setting(application, CONFIG_SOCKS_USER).empty() &&
                              !Text_Setting(application, CONFIG_SOCKS_PASSWORD).empty();
    String greeting;
    Append_Byte(greeting, SOCKS5_VERSION);
    Append_Byte(greeting, has_password ? 2 : 1);
    Append_Byte(greeting, SOCKS5_NO_AUTHENTICATION);
    if (has_password)
        Append_Byte(greeting, SOCKS5_PASSWORD);
    if (connection->Write(greeting, timeout) < 0)
        return Fail("SOCKS5: Greeting write error: " + connection->error());
    unsigned char answer[2];
    if (!Read_All(connection, answer, timeout))
        return Fail("SOCKS5: Greeting read error: " + connection->error());
    if (answer[0] != SOCKS5_VERSION)
        return Fail("SOCKS5: Unexpected version");
    switch (answer[1]) {
    case SOCKS5_NO_AUTHENTICATION: return true;
    case SOCKS5_PASSWORD: return Authenticate_SOCKS5(connection, timeout);
    }
    return Fail("SOCKS5: No acceptable authentication methods");
}

bool NetworkManager::Authenticate_SOCKS5(NetworkConnection* connection, int timeout) {
    String request;
    Append_Byte(request, SOCKS5_PASSWORD_VERSION);
    Append_Credential(request, Text_Setting(application, CONFIG_SOCKS_USER));
    Append_Credential(request, Text_Setting(application, CONFIG_SOCKS_PASSWORD));
    if (connection->Write(request, timeout) < 0)
        return Fail("SOCKS5: Client authentication write error: " + connection->error());
    unsigned char answer[2];
    if (!Read_All(connection, answer, timeout))
        return Fail("SOCKS5: Client authentication read error: " + connection->error());
    if (answer[0] != SOCKS5_PASSWORD_VERSION)
        return Fail("SOCKS5: Unexpected version");
    if (answer[1] != 0)
        return Fail("SOCKS5: Authentication failed");
    return true;
}

bool NetworkManager::Read_SOCKS5_Response(NetworkConnection* connection, int timeout) {
    unsigned char answer[4];
    if (!Read_All(connection, answer, timeout))
        return Fail("SOCKS5: Client connection response error: " + connection->error());
    if (answer[0] != SOCKS5_VERSION)
        return Fail("SOCKS5: Unexpected version");
    switch (answer[1]) {
    case 0: break;
    case SOCKS5_NOT_ALLOWED: return Fail("SOCKS5: Connection not allowed by ruleset");
    case SOCKS5_HOST_UNREACHABLE: return Fail("SOCKS5: Host unreachable");
    default: return Fail(String("SOCKS5: Failed to connect to host (") + answer[1] + ")");
    }
    if (answer[2] != 0)
        return Fail("SOCKS5: Unexpected response packet");
    // The proxy's own address and port, which nobody needs.
    unsigned char v4[4], v6[16], port[2];
    if (answer[3] != SOCKS5_IPV4 && answer[3] != SOCKS5_IPV6)
        return Fail("SOCKS5: Unexpected address type");
    if (!(answer[3] == SOCKS5_IPV4 ? Read_All(connection, v4, timeout) : Read_All(connection, v6, timeout)) ||
        !Read_All(connection, port, timeout))
        return Fail("SOCKS5: Client connection response error");
    return true;
}
