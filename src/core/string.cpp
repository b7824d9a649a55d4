// Storing, appending and editing. Pieces and queries are in string_pieces.cpp.

#include "core/string.h"

#include "core/text_length.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <malloc.h>
#include <memory>
#include <new>

namespace {

constexpr int capacity_unit = 24;

// The size of the array when text was appended beyond its capacity: the next power of two, or the middle
// between two.
std::size_t Size_With_Spare(std::size_t capacity) {
    const std::size_t step = std::bit_floor(capacity) / 2;
    return (capacity + step - 1) / step * step;
}

char* Copy_To(char* target, const char* s, int len) {
    if (len > 0)
        std::memcpy(target, s, static_cast<std::size_t>(len));
    return target + len;
}

// Tab, line feed, carriage return and space. Vertical tab and form feed are ordinary bytes here, unlike to
// isspace.
bool Is_White(char c) {
    constexpr std::uint64_t white = 1ull << '\t' | 1ull << '\n' | 1ull << '\r' | 1ull << ' ';
    const auto byte = static_cast<unsigned char>(c);
    return byte <= ' ' && (white >> byte & 1);
}

} // namespace

int String::Rounded_Capacity(std::int64_t needed) {
    const std::int64_t rounded = (needed + capacity_unit - 1) / capacity_unit * capacity_unit;
    if (rounded > INT_MAX)
        throw std::bad_alloc();
    return static_cast<int>(rounded);
}

String& String::operator=(const String& other) {
    if (other.buffer)
        assign(other.buffer, other.length_);
    return *this;
}

// Takes the other's buffer only where a copy would have made just the same one.
String& String::operator=(String&& other) {
    if (other.buffer && capacity_ <= other.length_ && other.capacity_ == Capacity_For(other.length_)) {
        delete[] buffer;
        Take(other);
    } else
        *this = other;
    return *this;
}

String& String::operator+=(const String& other) {
    if (other.buffer)
        cat(other.buffer, other.length_);
    return *this;
}

void String::Take(String& other) noexcept {
    buffer = other.buffer;
    capacity_ = other.capacity_;
    length_ = other.length_;
    other.Forget_Buffer();
    if (buffer)
        End_At(length_);
}

void String::Forget_Buffer() {
    buffer = nullptr;
    capacity_ = length_ = 0;
}

void String::Replace_Buffer(char* p, int len, int cap) {
    delete[] buffer;
    buffer = p;
    capacity_ = cap;
    End_At(len);
}

void String::assign(char c) {
    assign(&c, 1);
}

void String::assign(const char* s, int len) {
    len = Text_Length(s, len);
    if (capacity_ <= len) {
        const int new_capacity = Capacity_For(len);
        char* p = new char[static_cast<std::size_t>(new_capacity)];
        Copy_To(p, s, len);
        Replace_Buffer(p, len, new_capacity);
        return;
    }
    if (len > 0)
        std::memmove(buffer, s, static_cast<std::size_t>(len));
    End_At(len);
}

void String::assign_nocopy(char* p, int len, int cap) {
    len = Text_Length(p, len);
    if (p && cap > len) {
        Replace_Buffer(p, len, cap);
        return;
    }
    const std::unique_ptr<char[]> without_room(p);
    destroy();
    assign(p, len);
}

char* String::release(int* len, int* cap) {
    if (len)
        *len = length_;
    if (cap)
        *cap = capacity_;
    char* p = buffer;
    Forget_Buffer();
    return p;
}

void String::destroy() {
    delete[] release(nullptr, nullptr);
}

void String::Cat_Slowly(char c) {
    if (!buffer)
        assign(c);
    else
        Grow_To(Rounded_Capacity(std::int64_t{capacity_} + 1), &c, 1);
}

void String::Cat_Slowly(const char* s, int len) {
    if (!buffer) {
        assign(s, len);
        return;
    }
    len = Text_Length(s, len);
    const std::int64_t new_length = std::int64_t{length_} + len;
    if (capacity_ <= new_length)
        Grow_To(Capacity_For(new_length), s, len);
    else if (len > 0)
        Append_In_Place(s, len);
    else
        End_At(length_);
}

// Appends s, which the new capacity holds, and goes over to that capacity. The array is made longer than
// that, so that a long text that grows by small pieces need not move each time. No field is left to tell how
// long it is; the allocator knows, also of an array that was released and adopted in between.
void String::Grow_To(int new_capacity, const char* s, int len) {
    const std::size_t size = Size_With_Spare(static_cast<std::size_t>(new_capacity));
    if (malloc_usable_size(buffer) >= size) {
        capacity_ = new_capacity;
        Append_In_Place(s, len);
        return;
    }
    char* grown = new char[size];
    Copy_To(Copy_To(grown, buffer, length_), s, len);
    Replace_Buffer(grown, length_ + len, new_capacity);
}

void String::prepend(const char* s, int len) {
    len = Text_Length(s, len);
    const std::int64_t new_length = std::int64_t{length_} + len;
    const int new_capacity = new_length < capacity_ ? capacity_ : Capacity_For(new_length);
    char* p = new char[static_cast<std::size_t>(new_capacity)];
    Copy_To(Copy_To(p, s, len), buffer, length_);
    Replace_Buffer(p, length_ + len, new_capacity);
}

void String::prepend(char c) {
    if (c)
        prepend(&c, 1);
}

void String::upcase() {
    std::transform(buffer, buffer + length_, buffer, [](unsigned char c) { return std::toupper(c); });
}

void String::lowcase() {
    std::transform(buffer, buffer + length_, buffer, [](unsigned char c) { return std::tolower(c); });
}

int String::chop(int n) {
    const std::int64_t left = std::int64_t{length_} - std::max(n, 0);
    if (left >= 0)
        length_ = static_cast<int>(left);
    return static_cast<int>(left);
}

void String::StripWhitespace() {
    ltrim();
    int kept = length_;
    while (kept > 0 && Is_White(buffer[kept - 1]))
        --kept;
    if (buffer)
        End_At(kept);
}

void String::ltrim() {
    if (!buffer)
        return;
    const std::string_view old = C_Text();
    const auto* first = std::find_if_not(old.begin(), old.end(), Is_White);
    assign(first, static_cast<int>(old.end() - first));
}

void String::CompressWhitespace() {
    if (!buffer)
        return;
    const auto both_white = [](char a, char b) { return Is_White(a) && Is_White(b); };
    End_At(static_cast<int>(std::unique(buffer, buffer + C_Text().size(), both_white) - buffer));
}

void String::gsub(const char* from, const char* to) {
    int hit = search(from, 0);
    if (hit < 0)
        return;
    const int from_length = Text_Length(from, -1);
    const int to_length = Text_Length(to, -1);
    String replaced;
    int done = 0;
    for (; hit >= 0; hit = search(from, done)) {
        replaced.cat(buffer + done, hit - done);
        replaced.cat(to, to_length);
        done = hit + from_length;
    }
    replaced.cat(buffer + done, length_ - done);
    assign(replaced.buffer, -1);
}
