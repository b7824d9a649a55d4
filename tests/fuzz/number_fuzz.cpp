// Conversions beside those of the C library, the C++ library and libmpdec.
#include "app/services/tarn_application.h"
#include "input.h"

#include <bit>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cmath>
#include <memory>
#include <mpdecimal.h>
#include <vector>

namespace {

using App = TarnApplication;

struct Free {
    void operator()(mpd_t* number) const { mpd_del(number); }
    void operator()(char* text) const { mpd_free(text); }
};
using Decimal = std::unique_ptr<mpd_t, Free>;

std::string Exactly(const mpd_t* decimal) {
    return std::unique_ptr<char, Free>(mpd_to_sci(decimal, 1)).get();
}

bool Same(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) || (a != a && b != b);
}

// What a conversion hands out, with so many bytes to spare.
template <class Number>
std::string Text(char* (*convert)(Number, int*, int*), Number number, int spare) {
    int len, size;
    const std::unique_ptr<char[]> text(convert(number, &len, &size));
    CHECK(size == len + 1 + spare && text[len] == '\0');
    return {text.get(), static_cast<std::size_t>(len)};
}

bool Is_Hexadecimal(const std::string& text) {
    return text[0] == '0' && (text[1] | 0x20) == 'x' && std::isxdigit(text.c_str()[2] & 0xff);
}

// Digits behind 0x, a minus or nothing, modulo 2^32.
int Read_Integer(const std::string& text, bool& error) {
    const bool negative = text[0] == '-', hexadecimal = Is_Hexadecimal(text);
    unsigned value = 0, base = hexadecimal ? 16 : 10;
    error = text.empty();
    for (std::size_t i = hexadecimal ? 2 : negative; i < text.size(); ++i) {
        unsigned digit = 99;
        std::from_chars(&text[i], &text[i] + 1, digit, static_cast<int>(base));
        error |= digit == 99;
        value = value * base + digit;
    }
    return error ? 0 : static_cast<int>(negative ? 0 - value : value);
}

double Read_Double(const std::string& text, bool& error) {
    char* end;
    errno = 0;
    const double real = std::strtod(text.c_str(), &end);
    const bool whole = end == text.data() + text.size();
    error = !whole || (std::isinf(real) && errno == ERANGE);
    errno = 0;
    return whole ? real : 0;
}

// As libmpdec reads it, or as an integer of 64 bits behind 0x.
Decimal Read_Decimal(const std::string& text, bool& error) {
    Decimal decimal(mpd_qnew());
    std::uint32_t status = 0;
    mpd_qset_string(decimal.get(), text.empty() ? "0" : text.c_str(), &Tarn_MPD_Context, &status);
    error = (status & MPD_Conversion_syntax) || text.find('\0') != text.npos;
    if (error) {
        char* end;
        const long long value = std::strtoll(text.c_str(), &end, 16);
        error = !Is_Hexadecimal(text) || end != text.data() + text.size();
        mpd_qset_i64(decimal.get(), error ? 0 : value, &Tarn_MPD_Context, &status);
    }
    return decimal;
}

// Plain digits without a needless zero, that mean the same.
void Try_Decimal(mpd_t* decimal) {
    const std::string text = Text(App::mpdtos, decimal, 0);
    int digits, fraction;
    App::mpdsize(decimal, &digits, &fraction);
    CHECK(Exactly(Decimal(App::mpdtompd(nullptr, decimal)).get()) == Exactly(decimal));
    if (mpd_isspecial(decimal)) {
        const int sign = mpd_isnan(decimal) ? 0 : mpd_isnegative(decimal) ? -1 : 1;
        CHECK(digits == 0 && fraction == 0 && App::mpdtoi(decimal) == sign * INT_MAX);
        CHECK(Same(App::mpdtod(decimal), sign ? sign * HUGE_VAL : NAN));
        return;
    }
    const std::size_t point = std::min(text.find('.'), text.size()), first = text.find_first_of("123456789");
    CHECK(text.find_first_not_of("-.0123456789") == text.npos &&
          (point == text.size() || text.back() != '0'));
    bool error;
    std::uint32_t status = 0;
    CHECK(mpd_qcmp(Read_Decimal(text, error).get(), decimal, &status) == 0);
    CHECK(Same(App::mpdtod(decimal), Read_Double(text, error)));
    const long long whole = std::strtoll(text.c_str(), nullptr, 10);
    CHECK(whole < -INT_MAX || whole > INT_MAX || App::mpdtoi(decimal) == whole);
    const auto behind = static_cast<int>(text.size() - std::min(text.size(), point + 1));
    const int ahead = first == text.npos ? 1 : first < point ? static_cast<int>(point - first) : 0;
    CHECK(fraction == behind && digits == ahead + behind);
}

// From bytes with nothing behind them, with more, with a NUL, and by the NUL alone.
void Try_Text(const std::string& text) {
    const std::vector<char> bytes(text.begin(), text.end());
    const std::string more = text + "1";
    const int len = static_cast<int>(text.size());
    bool no_integer, no_double, no_decimal;
    const int integer = Read_Integer(text, no_integer);
    const double real = Read_Double(text, no_double);
    const Decimal decimal = Read_Decimal(text, no_decimal);
    for (const int size : {len, len + 2, len + 1, -1}) {
        if (size < 0 && text.find('\0') != text.npos)
            continue;
        const char* const from = size == len ? bytes.data() : size == len + 2 ? more.c_str() : text.c_str();
        const int length = size < 0 ? size : len;
        int wrong;
        CHECK(App::stoi(from, length, &wrong) == integer && wrong == no_integer);
        CHECK(Same(App::stod(from, length, size, &wrong), real) && wrong == no_double);
        const Decimal given(App::itompd(nullptr, len)),
            made(App::stompd(nullptr, from, length, size, &wrong));
        CHECK(App::stompd(given.get(), from, length, size, &wrong) == given.get() && wrong == no_decimal);
        CHECK(Exactly(made.get()) == Exactly(decimal.get()) &&
              Exactly(given.get()) == Exactly(decimal.get()));
        errno = 0;
    }
    Try_Decimal(decimal.get());
}

// The shortest digits that come back, without an exponent. Whole numbers of more than 15 digits stop at the
// last that isn't 0, and above 2^53 not each text that comes back is taken.
void Try_Double(double value) {
    const std::string text = Text(App::dtos, value, std::isfinite(value) ? 1 : 0);
    bool error;
    CHECK(Exactly(Decimal(App::dtompd(nullptr, value)).get()) == Exactly(Read_Decimal(text, error).get()));
    if (!std::isfinite(value)) {
        CHECK(text == (value != value ? "NaN" : value < 0 ? "-Infinity" : "Infinity"));
        return;
    }
    char shortest[400];
    const auto made = std::to_chars(shortest, std::end(shortest), value, std::chars_format::fixed);
    std::string expected(shortest, made.ptr);
    if (std::abs(value) >= 1e15 && expected.find('.') == expected.npos) {
        const std::string padded = text + std::string(expected.size() - text.size(), '0');
        CHECK(text.back() != '0' && Same(Read_Double(padded, error), value));
        expected.resize(expected.find_last_not_of('0') + 1);
    }
    CHECK(text == expected || std::abs(value) > 0x1p53);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);
    Input input(data, size);
    while (input.More()) {
        const unsigned choice = input.Below(4);
        std::uint64_t bits = 0;
        for (int i = 0; i < 4 && choice < 2; ++i)
            bits = bits << 16 | input.Below(1 << 16);
        if (choice == 0)
            Try_Double(std::bit_cast<double>(bits));
        if (choice == 1) {
            const int number = static_cast<int>(bits);
            CHECK(Text(App::itos, number, 0) == std::to_string(number));
            Try_Decimal(Decimal(App::itompd(nullptr, number)).get());
        }
        if (choice == 2)
            Try_Text(input.Pieces(20, "0x|0X|-|+|inf|NaN|Infinity|e|E-|.|0|1|9|f|A| |2147483648|4294967295|"
                                      "0000000000|0000000000000000000000000000000000000000000000000000"));
        if (choice == 3)
            Try_Text(input.Text(5));
    }
    return 0;
}
