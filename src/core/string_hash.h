#ifndef CORE_STRING_HASH_H
#define CORE_STRING_HASH_H

#include <cstdint>

// 32-bit string hashes: Bob Jenkins' lookup2 ("Hash functions", Dr. Dobb's Journal, September 1997), read
// little-endian on every machine. `hash` takes the bytes as they are, `hashi` folds A to Z to lower case
// first, so that texts which differ only in case have one hash. Both can be evaluated at compile time.

namespace string_hash_detail {

struct As_Written {
    template <class Word>
    static constexpr Word Fold(Word bytes) {
        return bytes;
    }
};

// Folds all bytes of a word at once: bit 7 of each byte of `upper` is set where the byte is within A to Z.
struct Ignoring_Case {
    template <class Word>
    static constexpr Word Fold(Word bytes) {
        constexpr Word each = static_cast<Word>(-1) / 0xff;
        const Word low_bits = bytes & each * 0x7f;
        const Word from_a = low_bits + each * (0x80 - 'A');
        const Word beyond_z = low_bits + each * (0x7f - 'Z');
        const Word upper = (from_a ^ beyond_z) & ~bytes & each * 0x80;
        return bytes | upper >> 2;
    }
};

constexpr std::uint32_t Byte(const char* p) {
    return static_cast<unsigned char>(*p);
}

constexpr std::uint32_t Word(const char* p) {
    return Byte(p) | Byte(p + 1) << 8 | Byte(p + 2) << 16 | Byte(p + 3) << 24;
}

// The first `count` bytes (0 to 4) at p as the low bytes of a word.
constexpr std::uint32_t Partial_Word(const char* p, unsigned count) {
    std::uint32_t word = 0;
    for (unsigned i = 0; i < count; ++i)
        word |= Byte(p + i) << (8 * i);
    return word;
}

constexpr void Mix(std::uint32_t& a, std::uint32_t& b, std::uint32_t& c) {
    a -= b, a -= c, a ^= c >> 13;
    b -= c, b -= a, b ^= a << 8;
    c -= a, c -= b, c ^= b >> 13;
    a -= b, a -= c, a ^= c >> 12;
    b -= c, b -= a, b ^= a << 16;
    c -= a, c -= b, c ^= b >> 5;
    a -= b, a -= c, a ^= c >> 3;
    b -= c, b -= a, b ^= a << 10;
    c -= a, c -= b, c ^= b >> 15;
}

template <class Folding>
constexpr std::uint32_t Hash(const char* key, std::uint32_t len, std::uint32_t seed) {
    std::uint32_t a = 0x9e3779b9u;
    std::uint32_t b = 0x9e3779b9u;
    std::uint32_t c = seed;
    std::uint32_t left = len;
    for (; left >= 12; left -= 12, key += 12) {
        a += Folding::Fold(Word(key));
        b += Folding::Fold(Word(key + 4));
        c += Folding::Fold(Word(key + 8));
        Mix(a, b, c);
    }
    c += len;
    if (left > 8) // the low byte of c is the length's
        c += Folding::Fold(Partial_Word(key + 8, left - 8)) << 8;
    if (left > 4)
        b += Folding::Fold(left >= 8 ? Word(key + 4) : Partial_Word(key + 4, left - 4));
    a += Folding::Fold(left >= 4 ? Word(key) : Partial_Word(key, left));
    Mix(a, b, c);
    return c;
}

} // namespace string_hash_detail

// `key` need not be terminated and may hold any bytes. Hashes are chained by handing one on as the next seed.
constexpr std::uint32_t hash(const char* key, std::uint32_t len, std::uint32_t seed) {
    return string_hash_detail::Hash<string_hash_detail::As_Written>(key, len, seed);
}

constexpr std::uint32_t hashi(const char* key, std::uint32_t len, std::uint32_t seed) {
    return string_hash_detail::Hash<string_hash_detail::Ignoring_Case>(key, len, seed);
}

#endif
