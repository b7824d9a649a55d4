// Conversions beside those of the C library, the C++ library and libmpdec.
#include "app/services/tarn_application.h"
#include "input.h"

#include <bit>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>
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

bool Same(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) || (a != a && b != b);
}

bool Same(mpd_t* a, mpd_t* b) {
    return std::strcmp(std::unique_ptr<char, Free>(mpd_to_sci(a, 1)).get(),
                       std::unique_ptr<char, Free>(mpd_to_sci(b, 1)).get()) == 0;
}

// What a conversion hands out, with so many bytes to spare.
template <class Number>
std::string Text(char* (*convert)(Number, int*, int*), Number number, int spare) {
    int len, size;
    const std::unique_ptr<char[]> text(convert(number, &len, &size));
    CHECK(size == len + 1 + spare && text[len] == '\0');
    return {text.get(), static_cast<std::size_t>(len)};
}

// Hexadecimal digits behind 0x, or digits behind a minus or nothing, modulo 2^32.
int Integer(const std::string& text, bool& error) {
    const bool negative = text[0] == '-';
    const bool hexadecimal =
        text[0] == '0' && (text[1] | 0x20) == 'x' && std::isxdigit(text.c_str()[2] & 0xff);
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

// As libmpdec reads it, or as an integer of 64 bits behind 0x.
Decimal Read_Decimal(const std::string& text, bool& error) {
    Decimal decimal(mpd_qnew());
    std::uint32_t status = 0;
    mpd_qset_string(decimal.get(), text.empty() ? "0" : text.c_str(), &Tarn_MPD_Context, &status);
    error = (status & MPD_Conversion_syntax) || text.find('\0') != text.npos;
    if (!error)
        return decimal;
    char* end;
    const long long value = std::strtoll(text.c_str(), &end, 16);
    const bool behind_0x = text[0] == '0' && (text[1] | 0x20) == 'x' && std::isxdigit(text.c_str()[2] & 0xff);
    error = !behind_0x || end != text.data() + text.size();
    mpd_qset_i64(decimal.get(), error ? 0 : value, &Tarn_MPD_Context, &status);
    return decimal;
}

void Try_Decimal(mpd_t* decimal) {
    const std::string text = Text(App::mpdtos, decimal, 0);
    int digits, fraction;
    App::mpdsize(decimal, &digits, &fraction);
    CHECK(Same(Decimal(App::mpdtompd(nullptr, decimal)).get(), decimal));
    if (mpd_isspecial(decimal)) {
        CHECK(digits == 0 && fraction == 0);
        const int sign = mpd_isnan(decimal) ? 0 : mpd_isnegative(decimal) ? -1 : 1;
        CHECK(App::mpdtoi(decimal) == sign * INT_MAX &&
              Same(App::mpdtod(decimal), sign ? sign * HUGE_VAL : NAN));
        return;
    }
    CHECK(Same(App::mpdtod(decimal), App::stod(text.c_str(), -1, 0, nullptr)));
    // Plain digits without a needless zero, that mean the same.
    const std::size_t point = std::min(text.find('.'), text.size()), first = text.find_first_of("123456789");
    CHECK(text.find_first_not_of("-.0123456789") == text.npos &&
          (point == text.size() || text.back() != '0'));
    const Decimal back(mpd_qnew());
    std::uint32_t status = 0;
    mpd_qset_string(back.get(), text.c_str(), &Tarn_MPD_Context, &status);
    CHECK(mpd_qcmp(back.get(), decimal, &status) == 0);
    const long long whole = std::strtoll(text.c_str(), nullptr, 10);
    if (std::abs(whole) <= INT_MAX)
        CHECK(App::mpdtoi(decimal) == whole);
    CHECK(fraction == static_cast<int>(text.size() - std::min(text.size(), point + 1)));
    CHECK(digits == std::max<int>(fraction, first > text.size() ? 1
                                            : first < point     ? text.size() - first - (fraction > 0)
                                                                : 0));
}

// Read from bytes with nothing behind them, with a NUL behind them, and by the NUL alone.
void Try_Text(const std::string& text) {
    const std::vector<char> bytes(text.begin(), text.end());
    const int len = static_cast<int>(text.size());
    int wrong;
    bool error;
    const int integer = Integer(text, error);
    CHECK(App::stoi(bytes.data(), len, &wrong) == integer && wrong == error);
    char* end;
    errno = 0;
    double real = std::strtod(text.c_str(), &end);
    error = end != text.data() + len || (std::isinf(real) && errno == ERANGE);
    if (end != text.data() + len)
        real = 0;
    bool no_decimal;
    const Decimal decimal = Read_Decimal(text, no_decimal);
    for (const int size : {len, len + 1}) {
        const char* const from = size > len ? text.c_str() : bytes.data();
        errno = 0;
        CHECK(Same(App::stod(from, len, size, &wrong), real) && wrong == error);
        const Decimal read(App::stompd(nullptr, from, len, size, &wrong));
        CHECK(Same(read.get(), decimal.get()) && wrong == no_decimal);
    }
    if (text.find('\0') == text.npos) {
        errno = 0;
        CHECK(Same(App::stod(text.c_str(), -1, 0, &wrong), real) && wrong == error);
        CHECK(App::stoi(text.c_str(), -1, &wrong) == integer);
    }
    Try_Decimal(decimal.get());
}

// The shortest digits that come back, without an exponent. Whole numbers of more than 15 digits stop at the
// last that isn't 0, and above 2^53 not each text that comes back is taken.
void Try_Double(double value) {
    const std::string text = Text(App::dtos, value, std::isfinite(value) ? 1 : 0);
    const Decimal decimal(App::dtompd(nullptr, value)),
        read(App::stompd(nullptr, text.c_str(), -1, 0, nullptr));
    CHECK(Same(decimal.get(), read.get()));
    if (!std::isfinite(value)) {
        CHECK(text == (value != value ? "NaN" : value < 0 ? "-Infinity" : "Infinity"));
        return;
    }
    char shortest[400];
    const auto made = std::to_chars(shortest, std::end(shortest), value, std::chars_format::fixed);
    std::string expected(shortest, made.ptr);
    if (std::abs(value) >= 1e15 && expected.find('.') == expected.npos) {
        std::string padded = text;
        padded.resize(expected.size(), '0');
        CHECK(text.back() != '0' && Same(std::strtod(padded.c_str(), nullptr), value));
        expected.resize(expected.find_last_not_of('0') + 1);
    }
    CHECK(text == expected || std::abs(value) > 0x1p53);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);
    Input input(data, size);
    while (input.More())
        switch (input.Below(4)) {
        case 0: Try_Text(input.Text(200)); break;
        case 1: Try_Text(input.Text(20, "0123456789.-+eExXaAfFnNiIty ")); break;
        case 2: {
            std::uint64_t bits = 0;
            for (int i = 0; i < 4; ++i)
                bits = bits << 16 | input.Below(1 << 16);
            Try_Double(std::bit_cast<double>(bits));
            break;
        }
        default: {
            const int number = static_cast<int>(input.Below(1 << 16) << 16 | input.Below(1 << 16));
            CHECK(Text(App::itos, number, 0) == std::to_string(number));
            Try_Decimal(Decimal(App::itompd(nullptr, number)).get());
        }
        }
    return 0;
}
