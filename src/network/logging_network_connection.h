#ifndef NETWORK_LOGGING_NETWORK_CONNECTION_H
#define NETWORK_LOGGING_NETWORK_CONNECTION_H

#include "network/network_connection.h"

#include <memory>

// Stands in front of another connection, and reports to a derived class what passes. The name and the value
// are the derived class's to use.
class LoggingNetworkConnection : public NetworkConnection {
  public:
    // The inner connection is taken over. A length of -1 means up to NUL.
    LoggingNetworkConnection(TarnApplication* application, const char* name, int length, int value,
                             NetworkConnection* inner);

    // The order of the virtual operations is part of the binary interface: add at the end.
    ~LoggingNetworkConnection() override;
    int EstablishTLSConnection(const char* server_name, x509_st* certificate, evp_pkey_st* key, int timeout,
                               unsigned flags) override;
    x509_st* Server_Certificate() override;
    int Read(char* buffer, int length, int timeout) override;
    int ReadLine(String& line, int timeout, int size) override;
    int Write(const char* buffer, int length, int timeout) override;
    using NetworkConnection::Write;
    const String& error() override;
    void Error(const String& text) override;
    const String& ipaddress() override;
    // What was read or written, never nothing; and that an operation failed, for the reason in error().
    virtual void Log_Read(const char* text, int length) = 0;
    virtual void Log_Read_Failure() = 0;
    virtual void Log_Write(const char* text, int length) = 0;
    virtual void Log_Write_Failure() = 0;

  protected:
    String name;
    int value;
    std::unique_ptr<NetworkConnection> inner;

  private:
    int Logged_Read(const char* text, int count);
};

#endif
