// The 32-bit CRC, a byte a step.

#include "core/crc32.h"

namespace {

constexpr unsigned polynomial = 0x04C11DB7;
constexpr unsigned top_bit = 0x80000000;

} // namespace

unsigned crc32_init() {
    return 0xFFFFFFFF;
}

unsigned crc32_data(unsigned crc, const unsigned char* data, int len) {
    for (int i = 0; i < len; ++i) {
        crc ^= static_cast<unsigned>(data[i]) << 24;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc << 1) ^ ((crc & top_bit) != 0 ? polynomial : 0);
    }
    return crc;
}

unsigned crc32_final(unsigned crc) {
    return ~crc;
}
