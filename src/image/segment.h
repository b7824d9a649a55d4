#ifndef IMAGE_SEGMENT_H
#define IMAGE_SEGMENT_H

#include <cstdint>
#include <memory>

class TaggedFile;

// Compiled code: numbers in a byte array that grows as they are written.
class Segment {
  public:
    // An empty segment with room for 8192 bytes.
    explicit Segment(int id);
    // Takes data over, an array of capacity bytes of which size are code.
    Segment(int id, char* data, int capacity, int size);
    Segment(const Segment& source);
    Segment& operator=(const Segment&) = delete;
    virtual ~Segment();

    // Answer the offset behind the number, -1 if it doesn't stand wholly within size.
    int Read_Byte(int offset, std::uint8_t* value) const;
    int Read_Word(int offset, std::uint16_t* value) const;
    int Read_Dword(int offset, std::int32_t* value) const;
    int Read_Double(int offset, double* value) const;

    // Answer the offset behind the number, -1 if that is no offset. Bytes that are passed over are zero.
    int Write_Byte(int offset, std::uint8_t value);
    int Write_Word(int offset, std::uint16_t value);
    int Write_Dword(int offset, std::int32_t value);
    int Write_Double(int offset, double value);

    // Makes room for size bytes, rounded up to a multiple of 8192. Never shrinks.
    void Grow(int size);
    // Appends the code to the open section. True if all was written.
    bool Write(TaggedFile* file) const;

    // Writes the code to a file as a readable listing, under the text of the expression that it was compiled
    // from, of which a length of -1 means all. Does nothing if the file can't be opened.
    void Dump(const char* path, const char* expression, int length) const;

  private:
    friend class SegmentManager;

    template <class T>
    int Read_Number(int offset, T* value) const;
    template <class T>
    int Write_Number(int offset, T value);

    int id; // number within its manager
    std::unique_ptr<char[]> data;
    int capacity;
    int size;            // behind the last byte that was ever written
    int engine_word = 0; // the engine's own
};

#endif
