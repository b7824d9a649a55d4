#ifndef CORE_MD5_H
#define CORE_MD5_H

#include <cstdint>

// MD5 message digests (RFC 1321), and message authentication with them (RFC 2104). Digests are 16 bytes,
// written to the caller's array. A text in one piece goes through Encode; one in several through Reset, any
// number of Encode_Block, and Encode_Final. Texts are counted in 32 bits: from 4 GiB on the digest is no
// longer that of the RFC.
class MD5Encoder {
  public:
    MD5Encoder() { Reset(); }

    void Reset();

    // Hashes the complete 64-byte blocks of data. A remainder is counted but lost, so len should be a
    // multiple of 64.
    void Encode_Block(const unsigned char* data, unsigned len);

    // Hashes the last piece, of any length, and writes the digest. Reset comes before the next text.
    void Encode_Final(const unsigned char* data, unsigned len, unsigned char* digest);

    void Encode(const unsigned char* data, unsigned len, unsigned char* digest);
    void HMAC(const unsigned char* data, unsigned data_len, const unsigned char* key, unsigned key_len,
              unsigned char* digest);

    // Writes the digest as 32 lower-case hexadecimal digits, without a terminator.
    static void Make_Printable(const unsigned char* digest, char* text);

    // The transformation of one block, and the 16 little-endian words of a block's 64 bytes.
    void MD5_Hash(const unsigned int* block);
    static void Decode_Block(const unsigned char* bytes, unsigned int* words);

  private:
    // The order of the fields is part of the binary interface.
    std::uint32_t state[4];
    std::uint32_t count; // bytes so far
};

#endif
