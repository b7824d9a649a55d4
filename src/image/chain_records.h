#ifndef IMAGE_CHAIN_RECORDS_H
#define IMAGE_CHAIN_RECORDS_H

#include "core/string.h"

#include <cstdint>
#include <vector>

class ChainHeads;
class TaggedFile;

// The part that persisted hash tables have in common, little-endian:
//   header   bucket_entries (2 bytes, signed), bucket_bits (1), entries (4)
//   buckets  for each bucket in use, ascending: index (2, signed), first entry (4)
// A table's own words name what is wrong in its reports.
class Chain_Records {
  public:
    struct Form {
        const char* header;
        const char* bucket;
        const char* count;          // of the entries, in the header
        std::uint32_t most_entries; // more are out of range
    };

    explicit Chain_Records(const Form& form) : form(form) {}

    // Each answers false with the reason in fault. The header of what is read comes first.
    bool Read_Header(TaggedFile* file);
    bool Read_Buckets(TaggedFile* file);
    // Takes the heads of a table with so many entries. Indices of buckets and their number have their limits.
    bool Take(const ChainHeads& heads, int bits, int count);

    // What was read: a head that leads to no entry is that of an empty chain.
    void Set_Heads(ChainHeads& heads) const;
    // Header and buckets as they are written.
    std::vector<char> Bytes() const;

    int bucket_entries = 0;
    int bucket_bits = 0;
    std::uint32_t entries = 0;
    String fault;

  private:
    bool Fail(const char* record, const char* field);
    std::uint32_t Bucket_Count() const { return std::uint32_t{1} << (bucket_bits & 31); }

    const Form& form;
    std::vector<char> buckets;
};

#endif
