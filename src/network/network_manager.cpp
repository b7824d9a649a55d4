// What all network managers share.

#include "network/network_manager.h"

#include "core/text_length.h"
#include "network/network_connection.h"
#include "network/settings.h"

#include <cstring>
#include <memory>

NetworkManager::NetworkManager(TarnApplication* application) : application(application) {
}

NetworkManager::~NetworkManager() = default;

bool NetworkManager::IsIPAddress(const char* address) {
    return address && address[strspn(address, "0123456789.")] == '\0';
}

NetworkConnection* NetworkManager::Connect(const char* host, int port, int timeout) {
    const std::string_view proxy = Text_Setting(application, CONFIG_SOCKS_HOST);
    if (proxy.empty())
        return TCP_Connect(host, port, timeout);
    const String proxy_host(proxy.data(), Length_Of(proxy));
    const int proxy_port = Integer_Setting(application, CONFIG_SOCKS_PORT);
    std::unique_ptr<NetworkConnection> connection(TCP_Connect(proxy_host.text(), proxy_port, timeout));
    if (!connection)
        return nullptr;
    int connected = 0;
    switch (Integer_Setting(application, CONFIG_SOCKS_VERSION)) {
    case 4: connected = SOCKS4_Connect(connection.get(), host, port, timeout); break;
    case 5: connected = SOCKS5_Connect(connection.get(), host, port, timeout); break;
    default: Error("Unsupported SOCKS version");
    }
    return connected ? connection.release() : nullptr;
}

const String& NetworkManager::error() {
    return error_;
}

void NetworkManager::Error(const String& text) {
    error_ = text;
}

int NetworkManager::Fail(const String& text) {
    Error(text);
    return 0;
}
