// Status, headers and body of an HTTP response, in chunks or whole.

#include "network/http_response_stream.h"

#include "core/text_words.h"
#include "network/network_connection.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <memory>
#include <utility>

namespace {

constexpr int line_step = 512;
constexpr int unknown_length = -1;

// The number that a text begins with, 0 without one, and -1 for what doesn't fit.
int Read_Number(const String& text, int base) {
    const long number = std::strtol(text.text(), nullptr, base);
    return number < INT_MIN || number > INT_MAX ? -1 : static_cast<int>(number);
}

} // namespace

HTTPResponseStream_Header::HTTPResponseStream_Header(String text)
    : line(std::move(text)), name(line.before(":")), value(line.after(":")) {
    name.StripWhitespace();
    value.StripWhitespace();
}

HTTPResponseStream::HTTPResponseStream(NetworkConnection* connection, int timeout)
    : connection(connection), timeout(timeout) {
}

HTTPResponseStream::~HTTPResponseStream() = default;

int HTTPResponseStream::Fail(const String& text) {
    error_ = text;
    return 0;
}

void HTTPResponseStream::Reset() {
    headers_.Dump();
    status_ = -1;
    content_length_ = unknown_length;
    chunked = chunk_size = chunk_offset = total_read_ = 0;
}

bool HTTPResponseStream::Read_Line(String& line) {
    if (!connection)
        return Fail("Not connected");
    return connection->ReadLine(line, timeout, line_step) >= 0 || Fail(connection->error());
}

int HTTPResponseStream::Read_Headers() {
    Reset();
    String line;
    if (!Read_Line(line))
        return 0;
    line.StripWhitespace();
    status_ = Read_Number(line.after(" "), 10);
    headers_.Insert(new HTTPResponseStream_Header(std::move(line)), LIST_LAST);
    for (;;) {
        if (!Read_Line(line))
            return 0;
        if (line.view() == "\r\n" || line.view() == "\n")
            return chunked ? Read_ChunkStart() : 1;
        line.StripWhitespace();
        auto header = std::make_unique<HTTPResponseStream_Header>(std::move(line));
        Take_Header(*header);
        headers_.Insert(header.release(), LIST_LAST);
    }
}

// The last header that tells how the body ends counts, but for a length behind chunks.
void HTTPResponseStream::Take_Header(const HTTPResponseStream_Header& header) {
    if (Same_Word(header.name.view(), "Transfer-Encoding")) {
        chunked = Same_Word(header.value.view(), "chunked");
        content_length_ = unknown_length;
    } else if (!chunked && Same_Word(header.name.view(), "Content-Length")) {
        content_length_ = std::max(Read_Number(header.value, 10), unknown_length);
    }
}

int HTTPResponseStream::Read_ChunkStart() {
    String line;
    if (!Read_Line(line))
        return 0;
    const int size = Read_Number(line, 16);
    if (size < 0)
        return Fail("Invalid chunk size");
    chunk_size = size;
    chunk_offset = 0;
    return 1;
}

int HTTPResponseStream::Read_ChunkEnd() {
    char end[2];
    int count = connection->Read(end, 2, timeout);
    if (count == 1 && end[0] == '\r' && connection->Read(end + 1, 1, timeout) == 1)
        count = 2;
    return (count == 2 && end[0] == '\r' && end[1] == '\n') || Fail("Invalid chunk terminator");
}

int HTTPResponseStream::Read(char* buffer, int length) {
    if (!connection) {
        Fail("Not connected");
        return -1;
    }
    if (length < 1)
        return 0;
    return chunked ? Read_Chunk(buffer, length) : Read_Plain(buffer, length);
}

// Reads, and counts what came.
int HTTPResponseStream::Read_Counted(char* buffer, int length) {
    const int count = connection->Read(buffer, length, timeout);
    if (count < 0)
        Fail(connection->error());
    else
        total_read_ += std::min(count, INT_MAX - total_read_);
    return count;
}

int HTTPResponseStream::Read_Chunk(char* buffer, int length) {
    if (chunk_size == 0)
        return 0;
    const int left = chunk_size - chunk_offset;
    if (left == 0)
        return -1; // what follows the chunk was broken
    const int count = Read_Counted(buffer, std::min(length, left));
    if (count < 0)
        return count;
    chunk_offset += count;
    if (chunk_offset < chunk_size)
        return count;
    if (!Read_ChunkEnd() || !Read_ChunkStart())
        return -1;
    return chunk_size > 0 || Read_ChunkEnd() ? count : -1;
}

int HTTPResponseStream::Read_Plain(char* buffer, int length) {
    if (content_length_ == unknown_length)
        return Read_Counted(buffer, length);
    const int left = content_length_ - total_read_;
    return left == 0 ? 0 : Read_Counted(buffer, std::min(length, left));
}

void HTTPResponseStream::Close() {
    delete connection;
    connection = nullptr;
}
