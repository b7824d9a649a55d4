#ifndef CORE_STRING_H
#define CORE_STRING_H

#include "core/text_length.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <string_view>

// The byte string of the whole system: counted, followed by a NUL, mutable, with a buffer of its own.
//
// A String that was never assigned has no buffer; so has one that gave it up (release, destroy). Every
// operation that stores text leaves a buffer of at least 24 bytes, and capacities are multiples of 24 unless
// a buffer was adopted. Buffers are arrays: what assign_nocopy takes was made with new[], what release gives
// is freed with delete[].
//
// Throughout, a length of -1 means up to the NUL. A null text stores as "", appends nothing and is found
// nowhere. Positions count from 0, and a position below 0 counts as 0 where nothing else is said. Text may
// hold NUL bytes; the operations marked (C) read it up to the first of them. Lengths that don't fit 31 bits
// throw std::bad_alloc and leave the String as it was.
class String {
  public:
    String() = default;
    // Always gets a buffer, for an empty text and for an unassigned String too.
    String(const char* s, int len = -1) : String() { assign(s, len); }
    String(const String& other) : String() { assign(other.buffer, other.length_); }
    // Takes the buffer and leaves the other String unassigned. A NUL stands behind the text again.
    String(String&& other) noexcept : String() { Take(other); }
    // Adopts p as assign_nocopy does.
    String(char* p, int len, int cap) : String() { assign_nocopy(p, len, cap); }
    ~String() { delete[] buffer; }

    // An unassigned String on the right leaves the text in place.
    String& operator=(const String& other);
    String& operator=(String&& other);
    String& operator=(const char* s) { return assign(s, -1), *this; }
    String& operator+=(const String& other);
    String& operator+=(const char* s) { return cat(s, -1), *this; }
    String& operator+=(char c) { return cat(c), *this; }

    // Never null: "" when unassigned. After chop and truncate no NUL stands behind the text.
    const char* text() const { return buffer ? buffer : ""; }
    int length() const { return length_; }
    // Bytes of the buffer, 0 without one.
    int capacity() const { return capacity_; }
    std::string_view view() const { return Slice(text(), length_); }

    void assign(char c);
    // s may be part of this String.
    void assign(const char* s, int len);
    // Takes p, an array of cap bytes of which len are text. One without room for the NUL is copied and freed.
    void assign_nocopy(char* p, int len, int cap);
    // Hands over the buffer, null when unassigned, and leaves the String unassigned. Either pointer may be
    // null.
    [[nodiscard]] char* release(int* len, int* cap);
    void destroy();

    // Keeps one byte more than it needs: grows when length + 2 reaches the capacity.
    void cat(char c) {
        if (length_ + 2 < capacity_)
            Append_In_Place(&c, 1);
        else
            Cat_Slowly(c);
    }
    void cat(const char* s, int len) {
        if (len > 0 && s && capacity_ - length_ > len)
            Append_In_Place(s, len);
        else
            Cat_Slowly(s, len);
    }
    // Always into a new buffer, except that prepending NUL does nothing.
    void prepend(const char* s, int len);
    void prepend(char c);

    // Pieces.
    String before(int n) const; // the first n bytes; unassigned when n is below 0 and there is text
    String after(int n) const;  // (C) from n + 1 on
    String from(int n) const;   // (C) from n on
    String at(int start, int end) const;
    String upper() const;
    String lower() const;
    String padr(int width, char c) const;            // at least width bytes long, filled up behind the text
    String padl(int width, char c) const;            // in front of the text; NUL fills nothing
    String before(const char* s) const;              // the whole text where s doesn't occur
    String after(const char* s, int from = 0) const; // (C) "" where s doesn't occur at or behind from
    String from(const char* s, int from = 0) const;  // (C) the same with s itself
    String Base64_Encode() const;
    String Base64_Decode() const;

    // Editing. White space is tab, line feed, carriage return and space here, and nothing else.
    void upcase();
    void lowcase();
    // Cheap rewinds: they write no NUL. chop answers what n leaves of the length, and does nothing when that
    // is below 0.
    int chop(int n);
    void truncate(unsigned n) {
        if (n < static_cast<unsigned>(length_))
            length_ = static_cast<int>(n);
    }
    void StripWhitespace();    // (C) at both ends
    void ltrim();              // (C) at the beginning
    void CompressWhitespace(); // (C) every run to its first character
    // (C) Replaces every occurrence of `from`, left to right; a null `to` removes them.
    void gsub(const char* from, const char* to);

    // Queries. An empty s is found nowhere.
    int search(const char* s, int from) const; // -1 when there is none
    int index(const char* s) const { return search(s, 0); }
    bool contains(const char* s, int from = 0) const { return search(s, from) >= 0; }
    bool contains(char c, int from = 0) const;
    int freq(const char* s) const; // occurrences, overlapping ones too
    // The byte at pos; at the very end it is what stands behind the text, the NUL as a rule.
    bool matches(char c, int pos) const { return length_ >= pos && text()[pos < 0 ? 0 : pos] == c; }
    // The whole rest of the text from pos on, ignoring case.
    bool matches(const char* s, int pos) const;

  private:
    // Capacity for a text of `length` bytes and its NUL. Throws when that is beyond 31 bits.
    static int Capacity_For(std::int64_t length) { return Rounded_Capacity(length + 1); }
    static int Rounded_Capacity(std::int64_t needed);

    void Take(String& other) noexcept;
    void Forget_Buffer();
    void End_At(int length) {
        length_ = length;
        buffer[length] = '\0';
    }
    void Append_In_Place(const char* s, int len) {
        std::memcpy(buffer + length_, s, static_cast<std::size_t>(len));
        End_At(length_ + len);
    }
    void Cat_Slowly(char c);
    void Cat_Slowly(const char* s, int len);
    void Grow_To(int new_capacity, const char* s, int len);
    void Replace_Buffer(char* p, int len, int cap);
    std::string_view C_Text() const;
    String C_Tail(std::int64_t position) const;

    // The order of the fields is part of the binary interface.
    char* buffer = nullptr;
    std::int32_t capacity_ = 0; // what the rule says, see Grow_To; the array may be longer
    std::int32_t length_ = 0;
};

String operator+(const String& left, const String& right);
String operator+(const String& left, const char* right);
String operator+(const char* left, const String& right);
String operator+(const String& left, char right);
String operator+(const String& left, int right);
// As with the format "%f", cut at 127 characters, without zeros at the end of the fraction.
String operator+(const String& left, double right);

// A copy made with new[], as a String can adopt it; null for null.
[[nodiscard]] char* tarn_strdup(const char* s);

// Fills `out`, an array of max Strings, with the pieces of s between occurrences of sep, and answers their
// number. Pieces behind the last that has room are dropped. An empty rest is stored but not counted, and an
// empty sep splits nothing.
int split(const String& s, String* out, int max, const char* sep);

// The key of a String in a HashTable is its text.
inline std::string_view Hash_Key(const String& s) {
    return s.view();
}

#endif
