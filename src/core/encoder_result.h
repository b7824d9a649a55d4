// What the text encoders have in common: how they hand out what they built.
#ifndef CORE_ENCODER_RESULT_H
#define CORE_ENCODER_RESULT_H

#include "core/link_buffer.h"
#include "core/text_length.h"

#include <climits>

// A buffer in which a result not much longer than the input stands in one block.
inline constexpr int encoder_block_size = 512;

inline int Encoder_First_Size(int input_length) {
    return input_length > INT_MAX - encoder_block_size ? INT_MAX : input_length + encoder_block_size;
}

// The text as one array with a NUL behind it, the caller's. Both out pointers may be null.
inline char* Encoder_Result(LinkBuffer& built, int* result_length, int* result_size) {
    int length;
    char* const result = built.release(&length, result_size, 1);
    result[length] = '\0';
    if (result_length != nullptr)
        *result_length = length;
    return result;
}

#endif
