#ifndef NETWORK_NETWORK_SERVICE_H
#define NETWORK_NETWORK_SERVICE_H

#include "core/string.h"

#include <memory>

class NetworkConnection;
class TarnApplication;

// One connection to one host and port, for a protocol that a derived class speaks.
class NetworkService {
  public:
    // The host is taken over, as an array of `host_size` bytes, where *host_owned is set, which is then
    // cleared; else, and with a null flag, it is copied. A length of -1 means up to NUL.
    NetworkService(TarnApplication* application, char* host, int host_length, int host_size, int* host_owned,
                   int port, int timeout);
    NetworkService(const NetworkService&) = delete;
    NetworkService& operator=(const NetworkService&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~NetworkService();
    // Null before Connect. It belongs to the service.
    virtual NetworkConnection* Connection();
    // What the protocol exchanges when the connection is new; 1, or 0 with the text in error().
    [[nodiscard]] virtual int Open_Exchange() = 0;
    // Connects anew. Answers what Open_Exchange does, or 0.
    [[nodiscard]] virtual int Connect();
    virtual const String& error();
    // An unassigned text leaves the last one in place.
    virtual void Error(const String& text);

  protected:
    TarnApplication* application;
    std::unique_ptr<NetworkConnection> connection;
    String host;
    int port;
    int timeout; // in seconds
    String error_;
};

#endif
