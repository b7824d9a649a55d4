#ifndef IMAGE_LITTLE_ENDIAN_H
#define IMAGE_LITTLE_ENDIAN_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <vector>

// Numbers as the compiled image holds them: the lowest byte first, on any host, at any address. T is an
// integer type or double, and has its width in the file.

template <class T>
T Get_Little_Endian(const char* bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        value |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    if constexpr (std::is_floating_point_v<T>)
        return std::bit_cast<T>(value);
    else
        return static_cast<T>(value);
}

template <class T>
void Put_Little_Endian(char* bytes, T number) {
    std::uint64_t value;
    if constexpr (std::is_floating_point_v<T>)
        value = std::bit_cast<std::uint64_t>(number);
    else
        value = static_cast<std::uint64_t>(number);
    for (std::size_t i = 0; i < sizeof(T); ++i)
        bytes[i] = static_cast<char>(value >> (8 * i));
}

// Puts a field behind what a record has so far.
template <class T>
void Append_Little_Endian(std::vector<char>& record, T number) {
    record.resize(record.size() + sizeof(T));
    Put_Little_Endian(record.data() + record.size() - sizeof(T), number);
}

#endif
