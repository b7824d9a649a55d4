#ifndef NETWORK_UNIX_NETWORK_MANAGER_H
#define NETWORK_UNIX_NETWORK_MANAGER_H

#include "network/network_manager.h"

// Addresses and connections by the system's resolver and sockets.
class UNIXNetworkManager : public NetworkManager {
  public:
    using NetworkManager::NetworkManager;

    bool IsIPAddress(const char* address) override;
    bool IsIPv4Address(const char* address) override;
    bool IsIPv6Address(const char* address) override;
    int NormalizeIPAddress(const char* address, String& result) override;
    int GetHostAddress(const char* host, String& result) override;
    int GetSOCKS4Address(const char* host, String& address) override;
    int GetSOCKS5Address(const char* host, String& address) override;
    // Tries the addresses of the host in the resolver's order.
    NetworkConnection* TCP_Connect(const char* host, int port, int timeout) override;
    bool CompareIPv6Addresses(const char* left, const char* right) override;
    int ConvertIPv4ToString(void* address, char* buffer, int size) override;
    int ConvertIPv6ToString(void* address, char* buffer, int size) override;

  private:
    int Convert_To_String(int family, const void* address, char* buffer, int size);
};

#endif
