#ifndef NETWORK_HTTP_RESPONSE_STREAM_H
#define NETWORK_HTTP_RESPONSE_STREAM_H

#include "core/list.h"
#include "core/string.h"

class NetworkConnection;

// A line of a response's head, with what stands before and behind its first colon, without white space around
// them. In a line without a colon all of it is the name.
struct HTTPResponseStream_Header {
    explicit HTTPResponseStream_Header(String text);
    virtual ~HTTPResponseStream_Header() = default;

    String line;
    String name;
    String value;
};

// Reads the answer to an HTTP request (RFC 9112): the status line, the headers, and a body that ends by its
// length, by its last chunk or with the connection. The stream neither makes nor frees the connection, but
// for Close.
//
// A body that the peer breaks off ends like a whole one, with a read that answers 0. One whose length was
// told shows by total_read() below content_length(). One in chunks shows, by a failure, only where it broke
// off between two of them; one that lasts as long as the connection never does.
class HTTPResponseStream {
  public:
    // The timeout, in seconds, is that of each read.
    HTTPResponseStream(NetworkConnection* connection, int timeout);
    HTTPResponseStream(const HTTPResponseStream&) = delete;
    HTTPResponseStream& operator=(const HTTPResponseStream&) = delete;
    virtual ~HTTPResponseStream();

    // 1, or 0 on failure. May be called again, for the next response on the connection: that frees the
    // headers of the last one and forgets all of it but error().
    [[nodiscard]] int Read_Headers();
    // Reads from the body, and never across the end of a chunk. Answers the number of bytes; 0 at the end of
    // the body, where the connection ends early, where its TLS library fails, and for a length below 1; below
    // 0 on failure. A chunk whose end or whose successor is broken is a failure, though its bytes are in the
    // buffer and count as read.
    [[nodiscard]] int Read(char* buffer, int length);
    // Frees the connection. Reading fails from then on.
    void Close();

    // The status line first, then each header in order. They belong to the stream, up to the next
    // Read_Headers.
    List<HTTPResponseStream_Header>& headers() { return headers_; }
    // -1 before the status line was read.
    int status() const { return status_; }
    // -1 when it isn't known ahead.
    int content_length() const { return content_length_; }
    // Bytes of the body so far, at most INT_MAX.
    int total_read() const { return total_read_; }
    // The text of the last failure, which later successes leave in place.
    const String& error() const { return error_; }

  private:
    int Fail(const String& text);
    void Reset();
    bool Read_Line(String& line);
    void Take_Header(const HTTPResponseStream_Header& header);
    int Read_ChunkStart();
    int Read_ChunkEnd();
    int Read_Chunk(char* buffer, int length);
    int Read_Plain(char* buffer, int length);
    int Read_Counted(char* buffer, int length);

    // The order of the fields is part of the binary interface.
    List<HTTPResponseStream_Header> headers_{1};
    int status_ = -1;
    int content_length_ = -1;
    NetworkConnection* connection;
    int timeout;
    int chunked = 0;
    int chunk_size = 0;
    int chunk_offset = 0; // bytes read of the current chunk
    int total_read_ = 0;
    String error_;
};

#endif
