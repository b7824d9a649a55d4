#ifndef CORE_CRC32_H
#define CORE_CRC32_H

// The checksum known as CRC-32/BZIP2: polynomial 0x04C11DB7, most significant bit first, complemented at both
// ends. crc32_final(crc32_data(crc32_init(), data, len)) is the checksum of one text; crc32_data may be
// called repeatedly for a text that comes in pieces, and answers crc unchanged when len is below 1.
[[nodiscard]] unsigned crc32_init();
[[nodiscard]] unsigned crc32_data(unsigned crc, const unsigned char* data, int len);
[[nodiscard]] unsigned crc32_final(unsigned crc);

#endif
