// The shortest digits that read back as the same double.

#include "core/shortest_double.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

constexpr int most_digits = 17;
constexpr int most_whole_digits = 15;

// A number without sign: its significant digits, and how many of them (or of the places behind them) stand
// before the point.
struct Decimal_Digits {
    char digits[most_digits];
    int count;
    int point;
};

// Reads "d.ddde+xx", which ends at `end`.
Decimal_Digits Parse_Scientific(const char* text, const char* end) {
    Decimal_Digits result{};
    for (; *text != 'e'; ++text) {
        if (*text != '.')
            result.digits[result.count++] = *text;
    }
    text += text[1] == '+' ? 2 : 1;
    std::from_chars(text, end, result.point);
    ++result.point;
    return result;
}

// Whether these digits, which stand for a double of 2^53 or more, lie exactly between two doubles: then their
// odd part takes one bit more than a double has.
bool Is_Midpoint(const Decimal_Digits& number) {
    constexpr std::uint64_t too_long = std::uint64_t{1} << 54;
    std::uint64_t odd_part = 0;
    std::from_chars(number.digits, number.digits + number.count, odd_part);
    odd_part >>= std::countr_zero(odd_part);
    for (int zeros = number.point - number.count; zeros > 0 && odd_part < too_long; --zeros)
        odd_part *= 5;
    return odd_part > too_long / 2 && odd_part < too_long;
}

// to_chars takes a text between two doubles for the one that reading it gives. With more digits, the nearest
// text is either that same one or lies nearer to the value than to its neighbours.
Decimal_Digits Shortest_Digits(double magnitude) {
    char text[32];
    char* limit = text + sizeof text;
    const auto scientific = std::chars_format::scientific;
    Decimal_Digits result = Parse_Scientific(text, std::to_chars(text, limit, magnitude, scientific).ptr);
    if (magnitude < 0x1p53)
        return result;
    for (int count = result.count; Is_Midpoint(result); ++count)
        result = Parse_Scientific(text, std::to_chars(text, limit, magnitude, scientific, count).ptr);
    return result;
}

char* Append(char* target, const char* text, int len) {
    std::memcpy(target, text, static_cast<std::size_t>(len));
    return target + len;
}

char* Append_Zeros(char* target, int count) {
    std::memset(target, '0', static_cast<std::size_t>(count));
    return target + count;
}

char* Append_Plain(char* target, const Decimal_Digits& number) {
    if (number.point <= 0) {
        target = Append_Zeros(Append(target, "0.", 2), -number.point);
        return Append(target, number.digits, number.count);
    }
    if (number.point < number.count) {
        target = Append(target, number.digits, number.point);
        *target++ = '.';
        return Append(target, number.digits + number.point, number.count - number.point);
    }
    target = Append(target, number.digits, number.count);
    return number.point <= most_whole_digits ? Append_Zeros(target, number.point - number.count) : target;
}

} // namespace

int Write_Shortest_Double(double value, char (&text)[shortest_double_size]) {
    char* end = text;
    if (std::signbit(value))
        *end++ = '-';
    end = value == 0 ? Append(end, "0", 1) : Append_Plain(end, Shortest_Digits(std::fabs(value)));
    *end = '\0';
    return static_cast<int>(end - text);
}
