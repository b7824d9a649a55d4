// Buffered writing, and the compression of white space on the way.

#include "backend/outputs/output.h"

#include "core/text_length.h"
#include "files/descriptor.h"

#include <algorithm>
#include <cstring>

Output::~Output() = default;

void Output::Write_Error(const char* text, int length) {
    Write(text, length);
    Flush();
}

void Output::Header(const char* name, const char* value) {
    Header(name, -1, 0, value, -1, 0);
}

void Output::Header(const char* name, int, int name_owned, const char* value, int, int value_owned) {
    if (name_owned)
        delete[] name;
    if (value_owned)
        delete[] value;
}

int Output::Write_Compressed(const char* text, int length) {
    if (flags_ & OUTPUT_COMPRESS_FAST)
        return Write_Compressed_Fast(text, length);
    if (flags_ & OUTPUT_COMPRESS_FULL)
        return Write_Compressed_Full(text, length);
    return Write(text, length);
}

int Output::flags() {
    return flags_;
}

void Output::SetFlags(int flags) {
    flags_ = flags;
}

int Output::Write_Compressed_Fast(const char* text, int length) {
    length = Text_Length(text, length);
    const int dropped = last_was_space && length != 0 && Is_Space(text[0]);
    if (length > dropped)
        Write(text + dropped, length - dropped);
    return length;
}

int Output::Write_Compressed_Full(const char* text, int length) {
    length = Text_Length(text, length);
    const char* end = text + length;
    const char* word = last_was_space ? std::find_if_not(text, end, Is_Space) : text;
    while (word != end) {
        const char* space = std::find_if(word, end, Is_Space);
        const char* behind = space == end ? end : space + 1;
        Write(word, static_cast<int>(behind - word));
        word = std::find_if_not(behind, end, Is_Space);
    }
    return length;
}

BufferedOutput::BufferedOutput(int capacity) : BufferedOutput(capacity, 0) {
}

BufferedOutput::BufferedOutput(int capacity, int reserve)
    : buffer(new char[capacity + reserve]), capacity(capacity) {
}

BufferedOutput::~BufferedOutput() = default;

int BufferedOutput::Write(const char* text, int length) {
    length = Text_Length(text, length);
    if (length <= 0)
        return 0;
    if (capacity == 0)
        DoWrite(text, length);
    else
        Store(text, length);
    last_was_space = Is_Space(text[length - 1]);
    return length;
}

void BufferedOutput::Store(const char* text, int length) {
    if (length <= capacity && capacity - fill < length)
        Flush();
    for (int written = 0; written < length;) {
        if (fill == capacity)
            Flush();
        const int piece = std::min(length - written, capacity - fill);
        std::memcpy(buffer.get() + fill, text + written, piece);
        fill += piece;
        written += piece;
    }
}

int BufferedOutput::Flush() {
    if (fill == 0)
        return 0;
    const int pending = fill;
    const int result = DoWrite(buffer.get(), pending);
    fill = 0;
    return result;
}

int BufferedOutput::Flush(int) {
    return 0;
}

int BufferedOutput::type() {
    return 0;
}

StandardOutput::StandardOutput(int buffered, int capacity) : BufferedOutput(capacity), buffered(buffered) {
}

StandardOutput::~StandardOutput() {
    Flush();
}

int StandardOutput::Write(const char* text, int length) {
    const int written = BufferedOutput::Write(text, length);
    if (!buffered)
        Flush();
    return written;
}

int StandardOutput::DoWrite(const char* text, int length) {
    return Write_All(STDOUT_FILENO, text, static_cast<std::size_t>(length)) ? length : -1;
}

NullOutput::NullOutput(int (*receiver)(const char* text, int length)) : receiver(receiver) {
}

NullOutput::~NullOutput() = default;

int NullOutput::Write(const char* text, int length) {
    return DoWrite(text, Text_Length(text, length));
}

int NullOutput::Flush() {
    return 1;
}

int NullOutput::Flush(int) {
    return 0;
}

int NullOutput::type() {
    return 2;
}

int NullOutput::DoWrite(const char* text, int length) {
    return receiver ? receiver(text, length) : length;
}
