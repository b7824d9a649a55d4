#ifndef CORE_TEXT_LENGTH_H
#define CORE_TEXT_LENGTH_H

#include <climits>
#include <cstring>
#include <new>

// The number of bytes of a text that is given by pointer and length, where -1 means up to the NUL: 0 for a
// null text, and never below 0. A text that doesn't fit 31 bits throws std::bad_alloc.
inline int Text_Length(const char* text, int length) {
    if (length >= 0 && text)
        return length;
    const std::size_t found = length == -1 && text ? std::strlen(text) : 0;
    if (found > INT_MAX)
        throw std::bad_alloc();
    return static_cast<int>(found);
}

#endif
