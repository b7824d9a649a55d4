// Sinks of the assembly text.
#ifndef BACKEND_COMPILER_OUTPUT_H
#define BACKEND_COMPILER_OUTPUT_H

#include "backend/outputs/output.h"
#include "core/string.h"

#include <algorithm>
#include <cassert>

class File;

// The sink of assembly text. The writers compose their items in its buffer, between Reserve and Commit.
class CompilerOutput : public BufferedOutput {
  public:
    // Bytes that can be reserved of any output, one without a buffer included.
    static constexpr int item_limit = 96;

    // The capacity in bytes; item_limit more are there for what is composed in place.
    explicit CompilerOutput(int capacity);
    ~CompilerOutput() override;

    // The order of the virtual operations is part of the binary interface: add at the end.
    // Writes the text in lower case.
    virtual int Write_Lower(const char* text, int length);
    // About so many bytes come next: whoever keeps what is written may make room.
    virtual void Expect(std::size_t) {}

    // Whether more than item_limit can be reserved, up to that length.
    bool Can_Reserve(int length) const { return length <= capacity; }

    // Room for that many bytes, item_limit or what Can_Reserve grants, behind what is buffered, made by a
    // flush where needed. What is composed there counts once it is committed, and reaches DoWrite without
    // passing through Write. The place is valid up to the next operation on the output; a reservation that is
    // not committed leaves nothing.
    char* Reserve(int length) {
        assert(length <= item_limit || Can_Reserve(length));
        if (capacity - fill < length) [[unlikely]]
            Flush();
        return buffer.get() + fill;
    }

    // Takes over the bytes from the reserved place up to end.
    void Commit(const char* end) {
        assert(end >= buffer.get() + fill && end <= buffer.get() + capacity + item_limit);
        if (end == buffer.get() + fill)
            return;
        fill = static_cast<int>(end - buffer.get());
        last_was_space = Is_Space(end[-1]);
        if (fill > capacity) [[unlikely]]
            Flush();
    }

    // Write, without a call where there is room.
    void Put(const char* text, int length) {
        if (Can_Reserve(length))
            Commit(std::copy_n(text, length, Reserve(length)));
        else
            Write(text, length);
    }
};

// Assembly text that goes to a file. The destructor flushes.
class FileOutput : public CompilerOutput {
  public:
    // The file stays the caller's.
    FileOutput(File* file, int capacity);
    ~FileOutput() override;

    // Texts longer than the buffer go to the file from where they are.
    int Write(const char* text, int length) override;
    // After a failed write nothing more is written, so that the first failure is the one kept.
    int DoWrite(const char* text, int length) override;

    // Drops what is buffered and whatever is written from now on.
    void Abandon();

    // The system's text of the write that failed, empty while all went well. Flush first to know about all.
    const String& error() const { return error_; }
    bool failed() const { return failed_; }

  private:
    File* file;
    bool failed_ = false;
    String error_;
};

// Size of a fragment's buffer: an ordinary expression never outgrows it.
inline constexpr int fragment_capacity = 1024;

// The code of one attribute's expression, kept until the tag wants it.
class StringOutput : public CompilerOutput {
  public:
    StringOutput();
    ~StringOutput() override;

    int DoWrite(const char* text, int length) override;
    void Expect(std::size_t length) override;

    // All that was written. The bytes stay the object's, up to the next operation on it.
    const char* Contents(int* length);
    // Writes everything to the target and empties this output. Answers the bytes moved.
    int Move_Contents(CompilerOutput* target);
    // Forgets everything: an emptied fragment serves the next expression without a new buffer.
    void Clear();

  private:
    String flushed; // ahead of what is in the buffer
};

// Swallows the code of false conditional blocks.
class NullCompilerOutput : public CompilerOutput {
  public:
    NullCompilerOutput();
    ~NullCompilerOutput() override;

    int Write(const char* text, int length) override;
    int DoWrite(const char* text, int length) override;
};

#endif
