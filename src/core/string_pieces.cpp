// Pieces, queries, operators and what else makes new texts. Storing and editing are in string.cpp.

#include "core/base64.h"
#include "core/integer_text.h"
#include "core/string.h"
#include "core/text_length.h"
#include "core/text_search.h"

#include <algorithm>
#include <cstdio>
#include <new>

namespace {

using Base64_Conversion = int(const unsigned char* in, unsigned char* out, int len);

String Converted(const String& s, Base64_Conversion* convert, std::int64_t size) {
    if (!s.length())
        return String("", 0);
    if (size > INT_MAX)
        throw std::bad_alloc();
    char* out = new char[static_cast<std::size_t>(size)];
    const int length = convert(reinterpret_cast<const unsigned char*>(s.text()),
                               reinterpret_cast<unsigned char*>(out), s.length());
    return String(out, length, static_cast<int>(size));
}

String Sum(const String& left, std::string_view right) {
    String sum(left);
    sum.cat(right.data(), Length_Of(right));
    return sum;
}

} // namespace

std::string_view String::C_Text() const {
    return view().substr(0, view().find('\0'));
}

// The C string at a position, which may lie behind the text.
String String::C_Tail(std::int64_t position) const {
    if (position >= length_)
        return String("", 0);
    std::string_view tail = view().substr(static_cast<std::size_t>(std::max<std::int64_t>(position, 0)));
    tail = tail.substr(0, tail.find('\0'));
    return String(tail.data(), Length_Of(tail));
}

String String::before(int n) const {
    if (length_ <= n)
        return *this;
    return n < 0 ? String() : String(buffer, n);
}

String String::after(int n) const {
    return C_Tail(std::int64_t{n} + 1);
}

String String::from(int n) const {
    return C_Tail(n);
}

String String::at(int start, int end) const {
    start = std::max(start, 0);
    end = std::min(end, length_);
    return start < end ? String(buffer + start, end - start) : String("", 0);
}

String String::upper() const {
    String copy(*this);
    copy.upcase();
    return copy;
}

String String::lower() const {
    String copy(*this);
    copy.lowcase();
    return copy;
}

String String::padr(int width, char c) const {
    String padded(*this);
    while (padded.length_ < width)
        padded.cat(c);
    return padded;
}

String String::padl(int width, char c) const {
    if (width <= length_ || !c)
        return *this;
    const int capacity = Capacity_For(width);
    char* p = new char[static_cast<std::size_t>(capacity)];
    std::fill_n(p, width - length_, c);
    std::copy_n(buffer, length_, p + (width - length_));
    return String(p, width, capacity);
}

String String::before(const char* s) const {
    const int hit = index(s);
    return hit < 0 ? *this : String(buffer, hit);
}

String String::after(const char* s, int from) const {
    const int hit = search(s, from);
    return hit < 0 ? String("", 0) : C_Tail(std::int64_t{hit} + Text_Length(s, -1));
}

String String::from(const char* s, int from) const {
    const int hit = search(s, from);
    return hit < 0 ? String("", 0) : C_Tail(hit);
}

String String::Base64_Encode() const {
    return Converted(*this, tn_base64_encode, std::int64_t{length_} / 3 * 4 + 5);
}

String String::Base64_Decode() const {
    return Converted(*this, tn_base64_decode, std::int64_t{length_} + 1);
}

int String::search(const char* s, int from) const {
    if (!s || !*s || length_ <= from)
        return -1;
    const std::size_t start = static_cast<std::size_t>(std::max(from, 0));
    const void* hit = memmem(text() + start, static_cast<std::size_t>(length_) - start, s, std::strlen(s));
    return hit ? static_cast<int>(static_cast<const char*>(hit) - buffer) : -1;
}

bool String::contains(char c, int from) const {
    return view().find(c, static_cast<std::size_t>(std::max(from, 0))) != std::string_view::npos;
}

int String::freq(const char* s) const {
    int count = 0;
    for (int hit = index(s); hit >= 0; hit = search(s, hit + 1))
        ++count;
    return count;
}

bool String::matches(const char* s, int pos) const {
    pos = std::max(pos, 0);
    if (!s || pos > length_)
        return false;
    const std::size_t rest = static_cast<std::size_t>(length_ - pos);
    return rest == std::strlen(s) && memcmpi_upper(text() + pos, s, rest) == 0;
}

String operator+(const String& left, const String& right) {
    return Sum(left, right.view());
}

String operator+(const String& left, const char* right) {
    return Sum(left, View(right, -1));
}

String operator+(const char* left, const String& right) {
    return Sum(left, right.view());
}

String operator+(const String& left, char right) {
    String sum(left);
    sum.cat(right);
    return sum;
}

String operator+(const String& left, int right) {
    return Sum(left, Integer_Text(right).view());
}

String operator+(const String& left, double right) {
    char digits[128];
    std::snprintf(digits, sizeof digits, "%f", right);
    std::string_view number(digits);
    if (number.find('.') != std::string_view::npos) {
        number = number.substr(0, number.find_last_not_of('0') + 1);
        if (number.back() == '.')
            number.remove_suffix(1);
    }
    return Sum(left, number);
}

char* tarn_strdup(const char* s) {
    if (!s)
        return nullptr;
    const std::size_t size = std::strlen(s) + 1;
    return static_cast<char*>(std::memcpy(new char[size], s, size));
}

int split(const String& s, String* out, int max, const char* sep) {
    if (max < 1)
        return 0;
    if (!sep || !*sep) {
        out[0] = s;
        return 1;
    }
    const int sep_length = static_cast<int>(std::strlen(sep));
    int count = 0;
    int done = 0;
    for (int hit = s.index(sep); hit >= 0; hit = s.search(sep, done)) {
        out[count++].assign(s.text() + done, hit - done);
        if (count == max)
            return count;
        done = hit + sep_length;
    }
    out[count].assign(s.text() + done, s.length() - done);
    return done < s.length() ? count + 1 : count;
}
