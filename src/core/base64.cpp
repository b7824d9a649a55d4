// Base64 with the alphabet of RFC 4648, section 4.

#include "core/base64.h"

#include <array>
#include <string_view>

namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
static_assert(alphabet.size() == 64);

// The six bits that a byte stands for; 0 for all outside the alphabet.
constexpr std::array<unsigned char, 256> values = [] {
    std::array<unsigned char, 256> result{};
    for (unsigned i = 0; i < alphabet.size(); ++i)
        result[static_cast<unsigned char>(alphabet[i])] = static_cast<unsigned char>(i);
    return result;
}();

// The low six bits of group, moved down by shift, as a character.
unsigned char Character(unsigned group, int shift) {
    return alphabet[group >> shift & 63];
}

} // namespace

int tn_base64_encode(const unsigned char* in, unsigned char* out, int len) {
    const unsigned char* start = out;
    for (; len >= 3; in += 3, len -= 3) {
        const unsigned group = in[0] << 16 | in[1] << 8 | in[2];
        *out++ = Character(group, 18);
        *out++ = Character(group, 12);
        *out++ = Character(group, 6);
        *out++ = Character(group, 0);
    }
    if (len > 0) {
        const unsigned group = in[0] << 16 | (len == 2 ? in[1] << 8 : 0);
        *out++ = Character(group, 18);
        *out++ = Character(group, 12);
        *out++ = len == 2 ? Character(group, 6) : '=';
        *out++ = '=';
    }
    return static_cast<int>(out - start);
}

int tn_base64_decode(const unsigned char* in, unsigned char* out, int len) {
    const unsigned char* start = out;
    for (int dropped = 0; dropped < 2 && len > 0 && in[len - 1] == '='; ++dropped)
        --len;
    for (; len >= 4; in += 4, len -= 4) {
        const unsigned group = values[in[0]] << 18 | values[in[1]] << 12 | values[in[2]] << 6 | values[in[3]];
        *out++ = static_cast<unsigned char>(group >> 16);
        *out++ = static_cast<unsigned char>(group >> 8);
        *out++ = static_cast<unsigned char>(group);
    }
    if (len > 0) {
        unsigned group = values[in[0]] << 10;
        if (len > 1)
            group |= values[in[1]] << 4;
        if (len > 2)
            group |= values[in[2]] >> 2;
        *out++ = static_cast<unsigned char>(group >> 8);
        if (len > 2)
            *out++ = static_cast<unsigned char>(group);
    }
    return static_cast<int>(out - start);
}
