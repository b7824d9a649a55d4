#ifndef NETWORK_NETWORK_CONNECTION_H
#define NETWORK_NETWORK_CONNECTION_H

#include "core/string.h"

class TarnApplication;
struct evp_pkey_st;
struct x509_st;

// Bits of the flags that a TLS connection is asked for with.
enum Connection_Flag : unsigned {
    CONNECTION_MUST_BE_SECURE = 1, // a URL without TLS is refused
    CONNECTION_MUST_VERIFY = 2     // the server is verified whatever the settings say
};

// A stream to a peer. A NetworkManager makes it; whoever asked for it deletes it. One connection belongs to
// one thread.
//
// A timeout is in seconds and bounds each wait, not the whole operation; 0 takes the application's setting,
// and 0 there waits for ever. A negative one never waits: an operation that would have to has timed out.
// Operations that fail leave the text in error(); a success leaves the last text in place.
class NetworkConnection {
  public:
    explicit NetworkConnection(TarnApplication* application);
    NetworkConnection(const NetworkConnection&) = delete;
    NetworkConnection& operator=(const NetworkConnection&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~NetworkConnection();
    // Goes over to TLS; 1, or 0 on failure. The server name, null for none, is sent to the peer. The client
    // certificate and its key, both null or both given, belong to the connection in any case.
    [[nodiscard]] virtual int EstablishTLSConnection(const char* server_name, x509_st* certificate,
                                                     evp_pkey_st* key, int timeout, unsigned flags) = 0;
    // The certificate that the peer showed, null when there is none. It belongs to the connection.
    virtual x509_st* Server_Certificate() = 0;
    // The number of bytes read, as many as are there; 0 at the peer's end and for a length below 1, -1 on
    // failure. A failure of the TLS library answers 0, too.
    virtual int Read(char* buffer, int length, int timeout) = 0;
    // Reads through a line feed, and nothing behind it. Answers the length of the line, its line feed
    // included; -1 with an empty line on failure, for a line that the peer broke off too. The size bounds
    // one step of reading, not the line.
    virtual int ReadLine(String& line, int timeout, int size) = 0;
    // Writes all of the text: answers its length, or -1 on failure; a failure of the TLS library answers 0.
    // After a failure any part of the text may be out, and nothing tells how much. A length of -1 means up to
    // NUL. A peer that is gone is a failure, never a signal.
    virtual int Write(const char* buffer, int length, int timeout) = 0;
    virtual const String& error();
    // An unassigned text leaves the last one in place.
    virtual void Error(const String& text);
    // The peer's address as a number.
    virtual const String& ipaddress();

    int Write(const String& text, int timeout);
    // Whether all of the printed text was written; no more than 8,191 bytes are.
    [[gnu::format(printf, 3, 4)]] bool Write(int timeout, const char* format, ...);

  protected:
    TarnApplication* application;
    String error_;
    String ipaddress_;
};

#endif
