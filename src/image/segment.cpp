// The bytes of one segment, and how it grows.

#include "image/segment.h"

#include "image/little_endian.h"
#include "image/tagged_file.h"

#include <algorithm>
#include <climits>

namespace {

constexpr int growth = 8192;

} // namespace

Segment::Segment(int id) : Segment(id, new char[growth](), growth, 0) {
}

Segment::Segment(int id, char* data, int capacity, int size)
    : id(id), data(data), capacity(capacity), size(size) {
}

Segment::Segment(const Segment& source)
    : id(source.id), data(new char[static_cast<std::size_t>(source.capacity)]), capacity(source.capacity),
      size(source.size), engine_word(source.engine_word) {
    std::copy_n(source.data.get(), capacity, data.get());
}

Segment::~Segment() = default;

int Segment::Read_Byte(int offset, std::uint8_t* value) const {
    return Read_Number(offset, value);
}

int Segment::Read_Word(int offset, std::uint16_t* value) const {
    return Read_Number(offset, value);
}

int Segment::Read_Dword(int offset, std::int32_t* value) const {
    return Read_Number(offset, value);
}

int Segment::Read_Double(int offset, double* value) const {
    return Read_Number(offset, value);
}

int Segment::Write_Byte(int offset, std::uint8_t value) {
    return Write_Number(offset, value);
}

int Segment::Write_Word(int offset, std::uint16_t value) {
    return Write_Number(offset, value);
}

int Segment::Write_Dword(int offset, std::int32_t value) {
    return Write_Number(offset, value);
}

int Segment::Write_Double(int offset, double value) {
    return Write_Number(offset, value);
}

void Segment::Grow(int wanted) {
    const std::int64_t rounded = (std::int64_t{wanted} + growth - 1) / growth * growth;
    const int grown_capacity = static_cast<int>(std::min<std::int64_t>(rounded, INT_MAX));
    if (wanted < capacity || grown_capacity == capacity)
        return;
    std::unique_ptr<char[]> grown(new char[static_cast<std::size_t>(grown_capacity)]());
    std::copy_n(data.get(), capacity, grown.get());
    data = std::move(grown);
    capacity = grown_capacity;
}

bool Segment::Write(TaggedFile* file) const {
    return file->Section_Write(data.get(), size) == size;
}

template <class T>
int Segment::Read_Number(int offset, T* value) const {
    constexpr int width = sizeof(T);
    if (offset < 0 || offset > size - width)
        return -1;
    *value = Get_Little_Endian<T>(data.get() + offset);
    return offset + width;
}

template <class T>
int Segment::Write_Number(int offset, T value) {
    constexpr int width = sizeof(T);
    if (offset < 0 || offset > INT_MAX - width)
        return -1;
    const int end = offset + width;
    if (end >= capacity)
        Grow(end);
    Put_Little_Endian(data.get() + offset, value);
    size = std::max(size, end);
    return end;
}
