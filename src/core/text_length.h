#ifndef CORE_TEXT_LENGTH_H
#define CORE_TEXT_LENGTH_H

#include <climits>
#include <cstring>
#include <new>
#include <string_view>

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

// The same text in one.
inline std::string_view View(const char* text, int length) {
    return {text ? text : "", static_cast<std::size_t>(Text_Length(text, length))};
}

// That many bytes, which the caller has counted, in one; and back, for a text that is known to fit 31 bits.
constexpr std::string_view Slice(const char* text, int length) {
    return {text, static_cast<std::size_t>(length)};
}

constexpr int Length_Of(std::string_view text) {
    return static_cast<int>(text.size());
}

#endif
