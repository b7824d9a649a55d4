#ifndef NETWORK_UNIX_NETWORK_CONNECTION_H
#define NETWORK_UNIX_NETWORK_CONNECTION_H

#include "network/network_connection.h"

#include <memory>

struct TLS_Library;
struct addrinfo;
struct ssl_st;

// A connection on a non-blocking socket, with or without TLS.
class UNIXNetworkConnection : public NetworkConnection {
  public:
    explicit UNIXNetworkConnection(TarnApplication* application);

    // The order of the virtual operations is part of the binary interface: add at the end.
    ~UNIXNetworkConnection() override;
    int EstablishTLSConnection(const char* server_name, x509_st* certificate, evp_pkey_st* key, int timeout,
                               unsigned flags) override;
    x509_st* Server_Certificate() override;
    int Read(char* buffer, int length, int timeout) override;
    int ReadLine(String& line, int timeout, int size) override;
    int Write(const char* buffer, int length, int timeout) override;
    using NetworkConnection::Write;

    // Connects to one address of a host, at the low 16 bits of the port, and ends what was connected before.
    // 1, or 0 on failure.
    [[nodiscard]] virtual int EstablishTCPConnection(addrinfo* address, int port, int timeout);
    // What Read, ReadLine and Write do once the connection has gone over to TLS.
    virtual int SSL_Read(char* buffer, int length, int timeout);
    virtual int SSL_ReadLine(String& line, int timeout, int size);
    virtual int SSL_Write(const char* buffer, int length, int timeout);

  private:
    // How the failed waits of an operation read: `failure` stands alone, or ahead of the system's reason.
    struct Words {
        const char* failure;
        const char* timeout;
    };

    int Fail(const String& text, int answer);
    int Fail_Connect(const String& text);
    int Fail_Line(String& line);
    int Finish_Connect(int timeout);
    int Timeout(int timeout) const;
    bool Await(short event, int timeout, const Words& words);
    int Receive(char* buffer, int length, int flags, int timeout);
    bool Prepare_TLS(const char* server_name, unsigned flags);
    template <typename Operation>
    int Run_TLS(Operation operation, int most, int timeout, const char* failure, const Words& words);
    int Read_TLS(char* buffer, int length, int timeout);
    int Fail_TLS(int code, const char* failure);
    void Close();
    void Free_TLS();

    static constexpr Words read_words{"Read Error", "Read Timeout"};
    static constexpr Words write_words{"Write Error", "Write Timeout"};

  protected:
    // The order of the fields is part of the binary interface.
    int socket = -1;
    ssl_st* tls_handle = nullptr;
    x509_st* peer_certificate = nullptr;
    x509_st* client_certificate = nullptr;
    evp_pkey_st* client_key = nullptr;
    std::unique_ptr<const TLS_Library> tls; // there as soon as any of the four is
};

#endif
