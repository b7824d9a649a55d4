#ifndef CORE_LINK_BUFFER_H
#define CORE_LINK_BUFFER_H

#include <memory>

class Output;
class Variable;
struct mpd_t;

// One piece of a LinkBuffer's text. It owns its bytes and its successor: destroying it destroys the rest of
// the chain.
class LinkBuffer_Block {
  public:
    // Takes data, an array of capacity bytes of which the first used ones are text.
    LinkBuffer_Block(char* data, int used, int capacity);
    ~LinkBuffer_Block();
    LinkBuffer_Block(const LinkBuffer_Block&) = delete;
    LinkBuffer_Block& operator=(const LinkBuffer_Block&) = delete;

    // The order of the fields is part of the binary interface.
    std::unique_ptr<char[]> data;
    int used;
    int capacity;
    std::unique_ptr<LinkBuffer_Block> next;
    LinkBuffer_Block* previous = nullptr;
};

// Text that is built piece by piece, at either end, without moving what is there already: a chain of blocks.
// At the end it is written out, or made into one array with data or release.
//
// Blocks are made in multiples of first_size (the first one) and of block_size (all others), always with a
// spare byte at least; sizes below 1 count as 1. A result that is built by cat, and fits first_size less one
// byte, stands in the first block, from which data and release(…, 1) hand it out without a copy. So a result
// of about n bytes is built in LinkBuffer(n + 512, 512).
//
// Lengths are real counts: -1 is not taken for "up to the NUL". Arrays taken were allocated with new[], and
// are freed also when taking them fails. A text that no longer fits an int throws std::bad_alloc and leaves
// the buffer as it was.
class LinkBuffer {
  public:
    LinkBuffer(int first_size, int block_size);
    // The destructor's place is part of the binary interface: add other virtual operations behind it.
    virtual ~LinkBuffer();
    LinkBuffer(const LinkBuffer&) = delete;
    LinkBuffer& operator=(const LinkBuffer&) = delete;

    // At the end. Fills the room of the last block first.
    void cat(const char* text, int text_length);
    // Takes text as a block of its own, whose spare bytes the next cat may fill.
    void cat_nocopy(const char* text, int text_length, int capacity);
    // Two upper-case hexadecimal digits.
    void cat_hex(unsigned char byte);
    void cat(int number);
    void cat(double number);
    void cat(mpd_t* number);
    void cat(Variable* variable);
    // Copies other's text; other may be this buffer.
    void cat(LinkBuffer* other);
    // Takes over other's blocks, and deletes other.
    void cat_destroy(LinkBuffer* other);

    // Put in front what cat, cat_nocopy and cat_destroy put at the end. Each copied text gets a block of its
    // own, except that the first text of all goes by cat; of another buffer each block does.
    void prepend(const char* text, int text_length);
    void prepend_nocopy(const char* text, int text_length, int capacity);
    void prepend(int number);
    void prepend(double number);
    void prepend(mpd_t* number);
    void prepend(Variable* variable);
    void prepend(LinkBuffer* other);
    void prepend_destroy(LinkBuffer* other);

    // Copies the text to target, which has room for it. No terminator.
    void append_to(char* target) const;
    // One Write for each block, also for an empty one.
    void output(Output* out) const;

    // Makes one block of the chain, with room for extra more bytes behind the text. Without blocks nothing
    // happens.
    void coalesce(int extra);

    // The text in one piece, with a NUL behind it. The buffer owns it; it stays until the next operation.
    // capacity may be null.
    const char* data(int* text_length, int* capacity);

    // Hands the text over as one array with room for extra more bytes, to be freed with delete[], and leaves
    // the buffer empty. The array is not terminated. capacity may be null. Of a buffer without blocks it is
    // one byte long, whatever extra says.
    [[nodiscard]] char* release(int* text_length, int* capacity, int extra);

  private:
    void Check_Fits(int more) const;
    void Link_First(std::unique_ptr<LinkBuffer_Block> block);
    void Link_Last(std::unique_ptr<LinkBuffer_Block> block);

    // The order of the fields is part of the binary interface.
    std::unique_ptr<LinkBuffer_Block> head;
    LinkBuffer_Block* tail = nullptr;
    int length = 0; // of all blocks
    int first_size;
    int block_size;
};

#endif
