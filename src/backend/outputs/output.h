// Byte sinks: what programs, pages and the assembly text are written to.
#ifndef BACKEND_OUTPUT_H
#define BACKEND_OUTPUT_H

#include "core/text_words.h"

#include <memory>

// Bits of Output::flags(): how Write_Compressed treats white space. The lower bit wins.
enum Output_Compression { OUTPUT_COMPRESS_FAST = 1, OUTPUT_COMPRESS_FULL = 2 };

// The sink of everything written out. Lengths and capacities count bytes; a length of -1 means that the text
// ends at its NUL.
class Output {
  public:
    Output() = default;
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~Output();

    // Writes and flushes at once.
    virtual void Write_Error(const char* text, int length);

    // A header line of a response; most sinks have none. The long form takes over the texts whose owned flag
    // is set, as arrays.
    virtual void Header(const char* name, const char* value);
    virtual void Header(const char* name, int name_length, int name_owned, const char* value,
                        int value_length, int value_owned);

    // Answers the number of bytes taken.
    virtual int Write(const char* text, int length) = 0;

    // Writes with as much white space as flags() lets through. Answers the length of the text.
    virtual int Write_Compressed(const char* text, int length);

    // Hands on what is buffered. Answers the result of the write below, 0 when nothing was buffered.
    virtual int Flush() = 0;
    // For sinks that can wait no longer than so many seconds. Those here can't: they do nothing and answer 0.
    virtual int Flush(int timeout) = 0;

    // 0 for sinks with a buffer, 2 for NullOutput.
    virtual int type() = 0;
    virtual int flags();
    virtual void SetFlags(int flags);

    // Drops the first byte if it and the byte written last are white space.
    virtual int Write_Compressed_Fast(const char* text, int length);

    // Leaves the first byte of each run of white space.
    virtual int Write_Compressed_Full(const char* text, int length);

  protected:
    // The order of the fields is part of the binary interface.
    int flags_ = 0;         // Output_Compression bits
    int last_was_space = 1; // the byte written last was white space, or nothing was written yet
};

// Gathers what is written in a buffer of fixed size, and hands it on through DoWrite when that is full; with
// a capacity of 0 each text is handed on as it comes. What DoWrite answers while a text is being written is
// dropped: the owner of the sink below asks it for failures.
//
// Derived classes flush in their destructors where that is wanted, since DoWrite is gone when this one runs.
class BufferedOutput : public Output {
  public:
    explicit BufferedOutput(int capacity);
    ~BufferedOutput() override;

    int Write(const char* text, int length) override;
    int Flush() override;
    int Flush(int timeout) override;
    int type() override;

    // The order of the virtual operations is part of the binary interface: add at the end.
    // Hands bytes to the sink below. Answers the bytes written, below 0 on failure.
    virtual int DoWrite(const char* text, int length) = 0;

  protected:
    // Puts that many bytes behind the capacity, which Write leaves free: for text that derived classes
    // compose in place.
    BufferedOutput(int capacity, int reserve);

    // The order of the fields is part of the binary interface.
    std::unique_ptr<char[]> buffer;
    int capacity; // bytes that Write fills before it hands them on
    int fill = 0; // bytes in the buffer

  private:
    void Store(const char* text, int length);
};

// Standard output. Writing goes on where a signal breaks it off; a write that takes nothing is a failure.
class StandardOutput : public BufferedOutput {
  public:
    // Unless buffered is set, each Write reaches the descriptor at once.
    StandardOutput(int buffered, int capacity);
    ~StandardOutput() override;

    int Write(const char* text, int length) override;
    int DoWrite(const char* text, int length) override;

  private:
    int buffered;
};

// Throws everything away, or hands it to a function.
class NullOutput : public Output {
  public:
    explicit NullOutput(int (*receiver)(const char* text, int length) = nullptr);
    ~NullOutput() override;

    int Write(const char* text, int length) override;
    int Flush() override;
    int Flush(int timeout) override;
    int type() override;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual int DoWrite(const char* text, int length);

  private:
    int (*receiver)(const char* text, int length);
};

#endif
