#ifndef CORE_INDEX_HASH_H
#define CORE_INDEX_HASH_H

#include "core/string_hash.h"

#include <cstring>
#include <string_view>

// The hash by which a HashTable finds places in its index: sixteen bytes a step, by folded 128-bit products,
// several times as fast as the hashes in string_hash.h. Its values differ between machines and must not show
// outside.

// Letters of both cases as one. A few other bytes fall together too, which costs no more than a comparison.
struct Joining_Cases {
    template <class Word>
    static constexpr Word Fold(Word bytes) {
        return static_cast<Word>(bytes | static_cast<Word>(-1) / 0xff * 0x20);
    }
};

namespace index_hash_detail {

inline std::uint64_t Product(std::uint64_t a, std::uint64_t b) {
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

template <class Word, class Folding>
std::uint64_t Load(const char* p, Folding) {
    Word word;
    std::memcpy(&word, p, sizeof word);
    return Folding::Fold(word);
}

} // namespace index_hash_detail

template <class Folding>
std::uint32_t Hash_For_Index(std::string_view key, Folding folding) {
    using namespace index_hash_detail;
    constexpr std::uint64_t salt = 0xa0761d6478bd642f;
    const char* p = key.data();
    const char* const end = p + key.size();
    std::uint64_t h = key.size() * 0x9e3779b97f4a7c15;
    for (; end - p > 16; p += 16)
        h = Product(Load<std::uint64_t>(p, folding) ^ salt, Load<std::uint64_t>(p + 8, folding) ^ h);
    std::uint64_t a = 0, b = 0; // the last bytes, the two words overlapping
    if (end - p >= 8) {
        a = Load<std::uint64_t>(p, folding);
        b = Load<std::uint64_t>(end - 8, folding);
    } else if (end - p >= 4) {
        a = Load<std::uint32_t>(p, folding);
        b = Load<std::uint32_t>(end - 4, folding);
    } else if (p < end) {
        a = Load<std::uint8_t>(p, folding) << 8 | Load<std::uint8_t>(end - 1, folding);
        b = Load<std::uint8_t>(p + (end - p) / 2, folding);
    }
    h = Product(a ^ salt, b ^ h);
    return static_cast<std::uint32_t>(h ^ h >> 32);
}

#endif
