// The MD5 digest of RFC 1321.

#include "core/md5.h"

#include <algorithm>
#include <bit>

namespace {

constexpr unsigned block_size = 64;
constexpr unsigned digest_size = 16;
constexpr unsigned length_size = 8; // of the count of bits that ends the padding

// floor(2^32 * |sin(i + 1)|), i in radians.
constexpr std::uint32_t sines[4][16] = {
    {0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501, //
     0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821},
    {0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8, //
     0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a},
    {0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70, //
     0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665},
    {0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1, //
     0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391},
};

using State = std::uint32_t[4];

// Which of the block's words a round takes: the first one, and how far apart the next ones are.
struct Word_Order {
    int first;
    int stride;
};

template <typename Mix>
void Round(State& s, const unsigned int* block, const std::uint32_t (&sine)[16], Word_Order order,
           const int (&shifts)[4], Mix mix) {
    const auto step = [&](int i, int a, int b, int c, int d) {
        const std::uint32_t word = block[(order.first + i * order.stride) % 16];
        s[a] = s[b] + std::rotl(s[a] + mix(s[b], s[c], s[d]) + word + sine[i], shifts[i % 4]);
    };
    for (int i = 0; i < 16; i += 4) {
        step(i, 0, 1, 2, 3);
        step(i + 1, 3, 0, 1, 2);
        step(i + 2, 2, 3, 0, 1);
        step(i + 3, 1, 2, 3, 0);
    }
}

void Write_Little_Endian(std::uint64_t value, unsigned size, unsigned char* bytes) {
    for (unsigned i = 0; i < size; ++i)
        bytes[i] = static_cast<unsigned char>(value >> (8 * i));
}

} // namespace

void MD5Encoder::Reset() {
    state[0] = 0x67452301;
    state[1] = 0xefcdab89;
    state[2] = 0x98badcfe;
    state[3] = 0x10325476;
    count = 0;
}

void MD5Encoder::Encode_Block(const unsigned char* data, unsigned len) {
    count += len;
    for (; len >= block_size; data += block_size, len -= block_size) {
        unsigned int words[16];
        Decode_Block(data, words);
        MD5_Hash(words);
    }
}

void MD5Encoder::Encode_Final(const unsigned char* data, unsigned len, unsigned char* digest) {
    Encode_Block(data, len);
    const std::uint64_t bits = static_cast<std::uint64_t>(count) * 8;
    const unsigned rest = len % block_size;
    unsigned char padded[2 * block_size] = {};
    std::copy_n(data + (len - rest), rest, padded);
    padded[rest] = 0x80;
    const unsigned size = rest + 1 + length_size <= block_size ? block_size : 2 * block_size;
    Write_Little_Endian(bits, length_size, padded + size - length_size);
    Encode_Block(padded, size);
    for (int i = 0; i < 4; ++i)
        Write_Little_Endian(state[i], 4, digest + 4 * i);
}

void MD5Encoder::Encode(const unsigned char* data, unsigned len, unsigned char* digest) {
    Reset();
    Encode_Final(data, len, digest);
}

void MD5Encoder::HMAC(const unsigned char* data, unsigned data_len, const unsigned char* key,
                      unsigned key_len, unsigned char* digest) {
    unsigned char key_block[block_size] = {};
    if (key_len > block_size)
        Encode(key, key_len, key_block);
    else
        std::copy_n(key, key_len, key_block);

    const auto pass = [&](unsigned char pad, const unsigned char* text, unsigned len, unsigned char* result) {
        unsigned char padded_key[block_size];
        std::transform(key_block, key_block + block_size, padded_key,
                       [pad](unsigned char byte) { return static_cast<unsigned char>(byte ^ pad); });
        Reset();
        Encode_Block(padded_key, block_size);
        Encode_Final(text, len, result);
    };
    unsigned char inner[digest_size];
    pass(0x36, data, data_len, inner);
    pass(0x5C, inner, digest_size, digest);
}

void MD5Encoder::Make_Printable(const unsigned char* digest, char* text) {
    for (unsigned i = 0; i < digest_size; ++i) {
        *text++ = "0123456789abcdef"[digest[i] >> 4];
        *text++ = "0123456789abcdef"[digest[i] & 15];
    }
}

void MD5Encoder::MD5_Hash(const unsigned int* block) {
    using Word = std::uint32_t;
    State s = {state[0], state[1], state[2], state[3]};
    Round(s, block, sines[0], {0, 1}, {7, 12, 17, 22},
          [](Word x, Word y, Word z) { return z ^ (x & (y ^ z)); });
    Round(s, block, sines[1], {1, 5}, {5, 9, 14, 20},
          [](Word x, Word y, Word z) { return y ^ (z & (x ^ y)); });
    Round(s, block, sines[2], {5, 3}, {4, 11, 16, 23}, [](Word x, Word y, Word z) { return x ^ y ^ z; });
    Round(s, block, sines[3], {0, 7}, {6, 10, 15, 21}, [](Word x, Word y, Word z) { return y ^ (x | ~z); });
    for (int i = 0; i < 4; ++i)
        state[i] += s[i];
}

void MD5Encoder::Decode_Block(const unsigned char* bytes, unsigned int* words) {
    for (unsigned i = 0; i < block_size / 4; ++i, bytes += 4)
        words[i] = bytes[0] | bytes[1] << 8 | bytes[2] << 16 | static_cast<unsigned int>(bytes[3]) << 24;
}
