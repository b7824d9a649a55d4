#ifndef CORE_BASE64_H
#define CORE_BASE64_H

// Base64 with the standard alphabet (RFC 4648, section 4). Both answer the length written to the caller's
// array and add no terminator; a len below 1 writes nothing.

// Pads with '=' and breaks no lines: writes 4 bytes for each 3 bytes begun.
int tn_base64_encode(const unsigned char* in, unsigned char* out, int len);

// Drops up to two '=' at the very end, then writes 3 bytes for each 4, 2 for a remainder of 3, 1 for a
// remainder of 2 or 1. There are no errors: any byte outside the alphabet, white space included, counts like
// 'A' and takes its place. May work in place (out equal to in).
int tn_base64_decode(const unsigned char* in, unsigned char* out, int len);

#endif
