// The lookup that the tables of tags, attributes and operators share.
#ifndef FRONTEND_PERFECT_HASH_H
#define FRONTEND_PERFECT_HASH_H

#include "core/string_hash.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

// A minimal perfect hash over a fixed set of keys, worked out at compile time. The high bits of a key's hash
// choose a byte of a table, and that byte, mixed with the low bits, is the index of the key's record: one
// hash and one comparison a name, whatever the name.
//
// Records have the fields key, in lower case, and length. bucket_bits and low_bits say how much of the hash
// is taken from its two ends; construction fails to compile where no table of that size fits the keys.
template <typename Record, std::size_t count, int bucket_bits, int low_bits>
class Perfect_Hash {
  public:
    constexpr explicit Perfect_Hash(const std::array<Record, count>& rows) {
        std::array<Bucket, bucket_count> buckets{};
        for (const Record& row : rows) {
            for (const char* byte = row.key; *byte; ++byte)
                if (*byte >= 'A' && *byte <= 'Z')
                    throw "keys are in lower case";
            Bucket& bucket = buckets[Key_Hash(row.key, row.length) >> bucket_shift];
            bucket.rows[bucket.size++] = &row;
            lengths[First(row.key)] |= 1U << row.length;
        }
        // The fullest buckets first, while there are most places to choose from.
        for (std::size_t size = bucket_capacity; size > 0; --size) {
            for (std::size_t bucket = 0; bucket < bucket_count; ++bucket) {
                if (buckets[bucket].size == size)
                    Place(bucket, buckets[bucket]);
            }
        }
    }

    // The record of a name in any case, or null. A length of -1 means up to the NUL.
    const Record* Find(const char* name, int length) const {
        if (length < 0)
            length = static_cast<int>(std::strlen(name));
        if (length > longest_possible || !(lengths[First(name)] >> length & 1))
            return nullptr;
        const unsigned hash = Key_Hash(name, length);
        const std::size_t index = displacements[hash >> bucket_shift] ^ (hash & low_mask);
        if (index >= count || records[index].length != length)
            return nullptr;
        const Record& record = records[index];
        return Is_Key(record.key, name, static_cast<unsigned>(length)) ? &record : nullptr;
    }

  private:
    static constexpr std::size_t bucket_count = std::size_t{1} << bucket_bits;
    static constexpr int bucket_shift = 32 - bucket_bits;
    static constexpr unsigned low_mask = (1U << low_bits) - 1;
    static constexpr std::size_t bucket_capacity = 8;
    static constexpr int longest_possible = 31;
    static constexpr std::uint64_t factor = 0x9e3779b97f4a7c17; // one that works for all key sets

    struct Bucket {
        std::array<const Record*, bucket_capacity> rows{};
        std::size_t size = 0;
    };

    // The same for both cases of a letter.
    static constexpr unsigned First(const char* name) { return static_cast<unsigned char>(*name) % 32; }

    // Whether the name, in any case, is the key.
    static bool Is_Key(const char* key, const char* name, unsigned length) {
        using namespace string_hash_detail;
        for (; length >= 4; key += 4, name += 4, length -= 4) {
            if (Word(key) != Ignoring_Case::Fold(Word(name)))
                return false;
        }
        return Partial_Word(key, length) == Ignoring_Case::Fold(Partial_Word(name, length));
    }

    // By the first and last four bytes and the length, in which no two keys agree. Some bytes that are no
    // letters fall together like the cases of a letter do.
    static constexpr unsigned Key_Hash(const char* key, int length) {
        using namespace string_hash_detail;
        const auto size = static_cast<unsigned>(length);
        const std::uint64_t ends = size < 4
                                       ? Byte(key) | Byte(key + size / 2) << 8 | Byte(key + size - 1) << 16
                                       : Word(key) | std::uint64_t{Word(key + size - 4)} << 32;
        const std::uint64_t product = ((ends | 0x2020202020202020) + size) * factor;
        return static_cast<unsigned>(product >> 32);
    }

    // Finds the byte that sends all keys of the bucket to places of their own.
    constexpr void Place(std::size_t bucket, const Bucket& content) {
        for (unsigned displacement = 0; displacement < 256; ++displacement) {
            std::array<bool, count> taken{};
            std::size_t placed = 0;
            for (; placed < content.size; ++placed) {
                const std::size_t index = displacement ^ Low(*content.rows[placed]);
                if (index >= count || records[index].key != nullptr || taken[index])
                    break;
                taken[index] = true;
            }
            if (placed < content.size)
                continue;
            displacements[bucket] = static_cast<unsigned char>(displacement);
            for (std::size_t i = 0; i < content.size; ++i)
                records[displacement ^ Low(*content.rows[i])] = *content.rows[i];
            return;
        }
        throw "no displacement fits the keys of this bucket";
    }

    static constexpr unsigned Low(const Record& row) { return Key_Hash(row.key, row.length) & low_mask; }

    std::array<Record, count> records{};
    std::array<unsigned char, bucket_count> displacements{};
    std::array<unsigned, 32> lengths{}; // of the keys, a bit each, by First: most other names need no hash
};

#endif
