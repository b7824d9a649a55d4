#ifndef IMAGE_DICTIONARY_H
#define IMAGE_DICTIONARY_H

#include "core/string.h"

#include <cstdint>
#include <memory>
#include <vector>

class TaggedFile;

// Bytes of a dictionary: texts one behind the other, without separators. The bytes never move.
class DictionaryDataBlock {
  public:
    explicit DictionaryDataBlock(int capacity);
    DictionaryDataBlock(const DictionaryDataBlock&) = delete;
    DictionaryDataBlock& operator=(const DictionaryDataBlock&) = delete;
    virtual ~DictionaryDataBlock();

    // The offset of the text, which is put behind the others unless it occurs in the block already, perhaps
    // within a longer text; -1 if there is no room.
    int Add(const char* text, int length);

  private:
    friend class Dictionary;

    int Append(const char* text, int length);

    std::unique_ptr<char[]> data;
    int capacity;
    int used = 0;
    int base = 0; // where the bytes start in the section, set at writing
};

// The names of a compiled image. A name is known by its index, which it keeps for good; equal names have
// indices of their own and share their bytes.
class Dictionary {
  public:
    Dictionary();
    // The same texts under the same indices.
    Dictionary(const Dictionary& source);
    Dictionary& operator=(const Dictionary&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~Dictionary();
    virtual const String& error();
    virtual bool Error(const String& text); // answers false

    // The new index. A length of -1 means up to the NUL.
    int Entry_Add(const char* text, int length);
    // The bytes, which aren't terminated; null and a size of 0 for an index that isn't there. They stay where
    // they are until Compress, Read or the end of the dictionary.
    const char* Entry(int index, int* size);
    // Packs all texts anew into one block, where those of different blocks share bytes, too.
    void Compress();
    // The section "dict". False with the text in error() on failure, which leaves the dictionary as it was.
    bool Read(TaggedFile* file);
    bool Write(TaggedFile* file);

  private:
    struct Entry_Record {
        DictionaryDataBlock* block;
        int offset;
        int size;
    };

    DictionaryDataBlock* Add_Block(int capacity);
    Entry_Record Place(const char* text, int length);
    std::int64_t Set_Bases();
    void Swap_Texts(Dictionary& other);
    bool Read_Section(TaggedFile* file);
    const char* Add_Records(const std::vector<char>& table);

    String error_;
    std::vector<Entry_Record> entries;
    std::vector<std::unique_ptr<DictionaryDataBlock>> blocks; // the last one is being filled
    int header_word = 0;                                      // of the section; kept and written back
};

#endif
