#include "app/services/tarn_application.h"

#include <bit>
#include <cerrno>
#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <mpdecimal.h>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace std::string_literals;
using App = TarnApplication;

struct Free_Decimal {
    void operator()(mpd_t* number) const { mpd_del(number); }
};
using Decimal = std::unique_ptr<mpd_t, Free_Decimal>;

constexpr double infinity = std::numeric_limits<double>::infinity();

[[maybe_unused]] const int context_set = (mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64), 0);

// What a conversion hands out, once its size is as told.
template <class Number>
std::string Text(char* (*convert)(Number, int*, int*), Number value, int spare = 0) {
    int len = 0, size = 0;
    const std::unique_ptr<char[]> text(convert(value, &len, &size));
    EXPECT_EQ(size, len + 1 + spare);
    EXPECT_EQ(text[len], '\0');
    return {text.get(), static_cast<std::size_t>(len)};
}
std::string Itos(int value) {
    return Text(App::itos, value);
}
std::string Dtos(double value) {
    return Text(App::dtos, value, std::isfinite(value));
}
std::string Mpdtos(const Decimal& value) {
    return Text(App::mpdtos, value.get());
}

// The number that a text stands for, written as text again, with an exclamation mark for an error. The bytes
// that may be read end with the text.
template <class Convert>
std::string Converted(const std::string& text, Convert convert) {
    int error = -1;
    const std::vector<char> bytes(text.begin(), text.end());
    const std::string number = convert(bytes.data(), static_cast<int>(bytes.size()), &error);
    return number + (error ? "!" : "");
}
std::string Stoi(const std::string& text) {
    return Converted(text, [](auto* s, int len, int* e) { return Itos(App::stoi(s, len, e)); });
}
std::string Stod(const std::string& text) {
    return Converted(text, [](auto* s, int len, int* e) { return Dtos(App::stod(s, len, len, e)); });
}
std::string Stompd(const std::string& text) {
    return Converted(
        text, [](auto* s, int len, int* e) { return Mpdtos(Decimal(App::stompd(nullptr, s, len, len, e))); });
}

TEST(NumberText, Table) {
    const std::string zeros(200, '0');
    const std::string cases[][2] = {
        // clang-format off
        {Itos(INT_MIN), "-2147483648"}, {Itos(0), "0"}, {Dtos(-1.5), "-1.5"}, {Dtos(1e-7), "0.0000001"},
        {Dtos(-0.0), "-0"}, {Dtos(infinity), "Infinity"}, {Dtos(-infinity), "-Infinity"}, {Dtos(-std::nan("")), "NaN"},
        // Whole numbers of more than 15 digits stop at the last that isn't 0.
        {Dtos(100000000000000), "100000000000000"}, {Dtos(1000000000000000), "1"}, {Dtos(1e22), "1"},
        {Dtos(1234567890123450), "123456789012345"}, {Dtos(0x1p53), "9007199254740992"},
        {Dtos(4503599627370495.5), "4503599627370495.5"},
        // Digits that lie just between two doubles don't count.
        {Dtos(1e23), "9999999999999999"}, {Dtos(3.132231570226741e16), "31322315702267408"},
        {Dtos(5.47362728754336e18), "5473627287543359"},

        {Stoi("-12"), "-12"}, {Stoi("007"), "7"}, {Stoi("2147483648"), "-2147483648"}, {Stoi("4294967297"), "1"},
        {Stoi("-"), "0"}, {Stoi(""), "0!"}, {Stoi("+1"), "0!"}, {Stoi(" 1"), "0!"}, {Stoi("12a"), "0!"},
        {Stoi("--1"), "0!"}, {Stoi("0x1F"), "31"}, {Stoi("0XFFffFFff"), "-1"}, {Stoi("0x"), "0!"},
        {Stoi("0x1g"), "0!"}, {Stoi("-0x1F"), "0!"}, {Stoi("1x1"), "0!"}, {Stoi("1\0"s), "0!"},

        {Stod(""), "0"}, {Stod(" 1.5"), "1.5"}, {Stod("-1e3"), "-1000"}, {Stod("1.5 "), "0!"}, {Stod("-"), "0!"},
        {Stod("0x1F"), "31"}, {Stod("0x"), "0!"}, {Stod("inf"), "Infinity"}, {Stod("-Infinity"), "-Infinity"},
        {Stod("infinit"), "0!"}, {Stod("1\0"s), "0!"}, {Stod(zeros + "1.5"), "1.5"}, {Stod(zeros + "x"), "0!"},
        {Stod(std::string(103, '0') + "1.5"), "1.5"}, {Stod(std::string(102, '0') + "1.5"), "1.5"},

        {Stompd(""), "0"}, {Stompd("12.500"), "12.5"}, {Stompd("-0"), "-0"}, {Stompd("1e3"), "1000"},
        {Stompd("nan"), "NaN"}, {Stompd("-inf"), "-Infinity"}, {Stompd("12345678901234567"), "12345678901234570"},
        {Stompd("0x1F"), "31"}, {Stompd("0xffffffffffffffff"), "9223372036854776000"}, {Stompd("0x"), "0!"},
        {Stompd("0x1g"), "0!"}, {Stompd("1 "), "0!"}, {Stompd("1\0"s), "0!"}, {Stompd(zeros + "5"), "5"},
        {Stompd(zeros + "x"), "0!"}
        // clang-format on
    };
    for (const auto& [converted, expected] : cases)
        EXPECT_EQ(converted, expected) << &converted - cases[0];
}

TEST(NumberText, Infinity_By_The_C_Library_Counts_As_Overflow_While_Errno_Says_So) {
    int error;
    errno = 0;
    EXPECT_EQ(App::stod("inf", -1, 0, &error), infinity);
    EXPECT_EQ(error, 0);
    EXPECT_EQ(App::stod("1e999", -1, 0, &error), infinity);
    EXPECT_EQ(error, 1);
    EXPECT_EQ(App::stod("inf", -1, 0, &error), infinity);
    EXPECT_EQ(error, 1);
    EXPECT_EQ(App::stod("inf", 3, 4, &error), infinity); // a word doesn't mind
    EXPECT_EQ(error, 0);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(App::stod("-nan", 4, 5, nullptr)), 0xfff8000000000000u);
}

// Of any exponent up to 2^49, whose whole numbers have up to 15 digits.
TEST(NumberText, Doubles_Below_The_Gap_Come_Back_From_Their_Text) {
    std::mt19937_64 random(6);
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = (random() >> 63 << 63) | (random() % ((1023ull + 49) << 52));
        const std::string text = Dtos(std::bit_cast<double>(bits));
        ASSERT_EQ(std::bit_cast<std::uint64_t>(App::stod(text.c_str(), -1, 0, nullptr)), bits);
    }
}

TEST(NumberText, Decimals_From_Numbers_And_Back) {
    for (const double value : {1.5, -0.001, 1e22, std::nan(""), infinity, -infinity}) { // the gap, too
        const Decimal decimal(App::dtompd(nullptr, value));
        EXPECT_EQ(Mpdtos(decimal), Dtos(value));
        EXPECT_EQ(Dtos(App::mpdtod(decimal.get())), Dtos(value));
    }
    const Decimal target(App::itompd(nullptr, INT_MIN)), copy(App::mpdtompd(nullptr, target.get()));
    EXPECT_EQ(App::stompd(target.get(), "7.25", -1, 0, nullptr), target.get());
    EXPECT_EQ(Mpdtos(target) + Mpdtos(copy), "7.25-2147483648");
    const struct {
        const char* text;
        int integer, digits, fraction;
    } cases[] = {
        // clang-format off
        {"-12.70", -12, 3, 1}, {"0.001", 0, 3, 3}, {"1e5", 100000, 6, 0}, {"0", 0, 1, 0}, {"NaN", 0, 0, 0},
        {"Inf", INT_MAX, 0, 0}, {"-Inf", -INT_MAX, 0, 0}, {"2147483647.9", INT_MAX, 11, 1}
        // clang-format on
    };
    for (const auto& c : cases) {
        App::stompd(target.get(), c.text, -1, 0, nullptr);
        int digits, fraction;
        App::mpdsize(target.get(), &digits, &fraction);
        EXPECT_EQ(App::mpdtoi(target.get()), c.integer) << c.text;
        EXPECT_EQ(std::pair(digits, fraction), std::pair(c.digits, c.fraction)) << c.text;
    }
}

} // namespace
