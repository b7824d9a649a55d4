#ifndef NETWORK_NETWORK_MANAGER_H
#define NETWORK_NETWORK_MANAGER_H

#include "core/string.h"

class NetworkConnection;
class TarnApplication;
struct evp_pkey_st;
struct x509_st;

// How a SOCKS 5 request and its answer name a host: by the address or by the name.
enum SOCKS5_Address_Kind { SOCKS5_IPV4 = 1, SOCKS5_NAME = 3, SOCKS5_IPV6 = 4 };

// The factory of connections: resolves names, goes through a SOCKS proxy where the settings name one, brings
// TLS up, splits URLs and sends HTTP requests. Questions answer bool, other operations 1 or 0, or a
// connection or null; failures leave the text in error(). A connection handed out is the caller's. Timeouts
// are those of NetworkConnection; they don't bound the look-up of a name, which takes what the system's
// resolver takes.
//
// A client certificate comes from a file or from a text, with a type: one that begins with "a" means DER, one
// that begins with "p" or is empty means PEM, which may be locked by the password. To pin a server is to
// demand a certificate whose digest, by the algorithm named, has just these bytes; a digest that holds a NUL
// never matches. Where one of these is null, or empty for all but the type, it isn't given.
class NetworkManager {
  public:
    explicit NetworkManager(TarnApplication* application);
    NetworkManager(const NetworkManager&) = delete;
    NetworkManager& operator=(const NetworkManager&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~NetworkManager();
    // Whether the text is an address in figures. The plain form looks only whether it consists of digits and
    // points; an empty text does.
    virtual bool IsIPAddress(const char* address);
    virtual bool IsIPv4Address(const char* address) = 0;
    virtual bool IsIPv6Address(const char* address) = 0;
    // The usual spelling of an address in figures.
    [[nodiscard]] virtual int NormalizeIPAddress(const char* address, String& result) = 0;
    // The first address of a host, in figures.
    [[nodiscard]] virtual int GetHostAddress(const char* host, String& result) = 0;
    // A host as a SOCKS request names it: four bytes; or a SOCKS5_Address_Kind and the address, or a byte of
    // length and the name.
    [[nodiscard]] virtual int GetSOCKS4Address(const char* host, String& address) = 0;
    [[nodiscard]] virtual int GetSOCKS5Address(const char* host, String& address) = 0;
    // Through the proxy of the settings, if there is one.
    [[nodiscard]] virtual NetworkConnection* Connect(const char* host, int port, int timeout);
    // Straight to the host.
    [[nodiscard]] virtual NetworkConnection* TCP_Connect(const char* host, int port, int timeout) = 0;
    // Brings TLS up on a connection to the host, and checks that the server's certificate is for that host,
    // as far as the Verify_ operations below go, and is the pinned one. Whether the certificate is genuine,
    // by the chain of who signed it, is checked only with CONNECTION_MUST_VERIFY, or where the application
    // has set its context so: without either, anyone can show a certificate for any host. A client
    // certificate in a file goes ahead of one in a text. On failure the connection stays open and the
    // caller's.
    [[nodiscard]] virtual int SSL_Connect(NetworkConnection* connection, const char* host,
                                          const char* cert_file, const char* cert_value,
                                          const char* cert_type, const char* cert_password,
                                          const char* pin_algorithm, const char* pin_digest, int timeout,
                                          unsigned flags);
    // Ask the proxy at the other end to connect to the host; afterwards the connection is one to the host. On
    // failure it stays open and the caller's. Version 5 is RFC 1928, with the passwords of RFC 1929.
    [[nodiscard]] virtual int SOCKS4_Connect(NetworkConnection* connection, const char* host, int port,
                                             int timeout);
    [[nodiscard]] virtual int SOCKS5_Connect(NetworkConnection* connection, const char* host, int port,
                                             int timeout);
    // Sends an HTTP request and hands over the connection, with the answer still to be read. The flags are
    // Connection_Flag bits. A body or header length of -1 means up to NUL. A version of HTTP above 9 becomes
    // 1.1, one below 0 becomes 1.0.
    //
    // The headers sent are Host, from version 1.0 on; Content-Type and Content-Length, where there is a body
    // of more than no bytes; the caller's, whole lines with their line ends; and from 1.1 on "Connection:
    // close". What the caller gives goes out as it is: nothing looks for line ends in a method, URL or type,
    // nor for a header that stands twice.
    [[nodiscard]] virtual NetworkConnection*
    OpenURL(const char* method, const char* url, const char* body, const char* content_type, int body_length,
            const char* cert_file, const char* cert_value, const char* cert_type, const char* cert_password,
            const char* pin_algorithm, const char* pin_digest, const char* headers, int headers_length,
            double http_version, int timeout, unsigned flags);
    // The two halves of it: the connection, with the number of the port; and the request.
    [[nodiscard]] virtual NetworkConnection*
    OpenURL_Connect(const char* protocol, int protocol_length, const char* host, int host_length,
                    const char* port, int port_length, const char* cert_file, const char* cert_value,
                    const char* cert_type, const char* cert_password, const char* pin_algorithm,
                    const char* pin_digest, int timeout, unsigned flags, int* port_value);
    [[nodiscard]] virtual int OpenURL_SendRequest(NetworkConnection* connection, const char* method,
                                                  const char* path, int path_length, const char* host,
                                                  int host_length, const char* port, int port_length,
                                                  int port_value, const char* body, const char* content_type,
                                                  int body_length, const char* headers, int headers_length,
                                                  double http_version, int timeout);
    // Read a client certificate and its key, which become the caller's; both stay untouched on failure.
    [[nodiscard]] virtual int Populate_Client_Certificate(const char* value, int length, const char* type,
                                                          const char* password, x509_st** certificate,
                                                          evp_pkey_st** key);
    [[nodiscard]] virtual int Load_Client_Certificate(const char* file, const char* type,
                                                      const char* password, x509_st** certificate,
                                                      evp_pkey_st** key);
    // Whether the server is the one asked for, as far as settings and flags want that checked; a null
    // certificate is nobody's.
    virtual bool Verify_Certificate_Hostname(x509_st* certificate, const char* host, unsigned flags);
    virtual bool Verify_Certificate_IP(x509_st* certificate, const char* address, unsigned flags);
    [[nodiscard]] virtual bool Verify_Certificate_Pinning(x509_st* certificate, const char* algorithm,
                                                          const char* expected);
    // Whether two spellings mean one address; false for what is none.
    virtual bool CompareIPv6Addresses(const char* left, const char* right) = 0;
    // Print a binary address (in_addr, in6_addr) into a buffer of `size` bytes.
    [[nodiscard]] virtual int ConvertIPv4ToString(void* address, char* buffer, int size) = 0;
    [[nodiscard]] virtual int ConvertIPv6ToString(void* address, char* buffer, int size) = 0;
    // Finds the parts of a URL, and puts all of them to null and 0 for what is none. Brackets stay with the
    // host, which ends at ':', '/' or '?'. The path lacks its leading '/', and has its '?'. What isn't there
    // is null, but for the path. A length of -1 means up to NUL.
    [[nodiscard]] virtual int SplitURL(const char* url, int length, const char** protocol,
                                       int* protocol_length, const char** host, int* host_length,
                                       const char** port, int* port_length, const char** path,
                                       int* path_length);
    virtual const String& error();
    // An unassigned text leaves the last one in place.
    virtual void Error(const String& text);

  protected:
    // Stores the text and answers 0.
    int Fail(const String& text);
    static bool Given(const char* text) { return text && *text; }

    TarnApplication* application;
    String error_;

  private:
    bool Negotiate_SOCKS5(NetworkConnection* connection, int timeout);
    bool Authenticate_SOCKS5(NetworkConnection* connection, int timeout);
    bool Read_SOCKS5_Response(NetworkConnection* connection, int timeout);
    bool Names_Server() const;
};

// Gives the TLS library the password of a key: copies as much of the NUL-terminated password as the buffer
// holds, and answers the count, 0 without a password.
int Load_Client_Certificate_Password_Callback(char* buffer, int size, int writing, void* password);

#endif
