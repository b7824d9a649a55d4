#include "app/tarn_application.h"

#include <bit>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstring>
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

template <class Expected>
struct Case {
    std::string input;
    Expected expected;
    int error;
};

constexpr double infinity = std::numeric_limits<double>::infinity();

class NumberText : public testing::Test {
  protected:
    void SetUp() override { mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64); }

    // The text that a conversion hands out, once its length and size are as told.
    template <class Number>
    static std::string Text(char* (*convert)(Number, int*, int*), Number value, int spare) {
        int len = 0, size = 0;
        const std::unique_ptr<char[]> text(convert(value, &len, &size));
        EXPECT_EQ(size, len + 1 + spare);
        EXPECT_EQ(std::strlen(text.get()), len);
        return text.get();
    }
    static std::string Dtos(double value) { return Text(App::dtos, value, std::isfinite(value)); }
    static std::string Mpdtos(const Decimal& value) { return Text(App::mpdtos, value.get(), 0); }

    // With the bytes that may be read ending behind the text.
    static double Stod(const std::string& text, int* error) {
        const int len = static_cast<int>(text.size());
        return App::stod(std::vector<char>(text.begin(), text.end()).data(), len, len, error);
    }
    static Decimal Stompd(const std::string& text, int* error = nullptr) {
        const int len = static_cast<int>(text.size());
        return Decimal(App::stompd(nullptr, text.data(), len, len, error));
    }
};

TEST_F(NumberText, Integer_To_Text) {
    for (const int value : {0, 7, -7, 1000000, INT_MAX, INT_MIN})
        EXPECT_EQ(Text(App::itos, value, 0), std::to_string(value));
}

TEST_F(NumberText, Double_To_Text) {
    // Whole numbers of more than 15 digits stop at the last that isn't 0, and digits that lie just between
    // two doubles (from 1e23 on) don't count.
    const std::pair<double, const char*> cases[] = {
        // clang-format off
        {-1.5, "-1.5"}, {1e-7, "0.0000001"}, {-0.0, "-0"}, {100000000000000, "100000000000000"},
        {1000000000000000, "1"}, {1234567890123450, "123456789012345"}, {0x1p53, "9007199254740992"},
        {1e22, "1"}, {4503599627370495.5, "4503599627370495.5"}, {1e23, "9999999999999999"},
        {3.132231570226741e16, "31322315702267408"}, {5.47362728754336e18, "5473627287543359"},
        {infinity, "Infinity"}, {-infinity, "-Infinity"}, {std::nan(""), "NaN"}, {-std::nan(""), "NaN"}
        // clang-format on
    };
    for (const auto& [value, expected] : cases)
        EXPECT_EQ(Dtos(value), expected);
}

// Of any exponent up to 2^49, whose whole numbers have up to 15 digits.
TEST_F(NumberText, Doubles_Below_The_Gap_Come_Back_From_Their_Text) {
    std::mt19937_64 random(6);
    for (int i = 0; i < 20000; i++) {
        const uint64_t bits = (random() >> 63 << 63) | (random() % ((1023ull + 49) << 52));
        int error;
        ASSERT_EQ(std::bit_cast<uint64_t>(Stod(Dtos(std::bit_cast<double>(bits)), &error)), bits);
        ASSERT_EQ(error, 0);
    }
}

TEST_F(NumberText, Text_To_Integer) {
    const Case<int> cases[] = {
        // clang-format off
        {"-12", -12, 0}, {"007", 7, 0}, {"2147483648", INT_MIN, 0}, {"4294967297", 1, 0}, {"-", 0, 0},
        {"", 0, 1}, {"+1", 0, 1}, {" 1", 0, 1}, {"12a", 0, 1}, {"--1", 0, 1}, {"0x1F", 31, 0},
        {"0XFFffFFff", -1, 0}, {"0x", 0, 1}, {"0x1g", 0, 1}, {"-0x1F", 0, 1}, {"1x1", 0, 1}, {"1\0"s, 0, 1}
        // clang-format on
    };
    for (const auto& c : cases) {
        int error = -1;
        EXPECT_EQ(App::stoi(c.input.data(), static_cast<int>(c.input.size()), &error), c.expected) << c.input;
        EXPECT_EQ(error, c.error) << c.input;
    }
    EXPECT_EQ(App::stoi("42", -1, nullptr), 42);
}

TEST_F(NumberText, Text_To_Double) {
    const std::string long_number = std::string(200, '0') + "1.5";
    const Case<double> cases[] = {
        // clang-format off
        {"", 0, 0}, {" 1.5", 1.5, 0}, {"-1e3", -1000, 0}, {"1.5 ", 0, 1}, {"-", 0, 1}, {"0x1F", 31, 0},
        {"0x", 0, 1}, {"-Infinity", -infinity, 0}, {"infinit", 0, 1}, {"1\0"s, 0, 1},
        {long_number, 1.5, 0}, {long_number + "x", 0, 1}
        // clang-format on
    };
    errno = ERANGE; // the words for infinity don't mind
    int error;
    for (const auto& c : cases) {
        EXPECT_EQ(Stod(c.input, &error), c.expected) << c.input;
        EXPECT_EQ(error, c.error) << c.input;
    }
    EXPECT_EQ(std::bit_cast<uint64_t>(Stod("-nan", &error)), 0xfff8000000000000u);
    EXPECT_FALSE(std::signbit(Stod("NaN", &error)));
}

TEST_F(NumberText, Infinity_Counts_As_Overflow_While_Errno_Says_So) {
    errno = 0;
    const Case<double> cases[] = {{"inf", infinity, 0}, {"1e999", infinity, 1}, {"inf", infinity, 1}};
    for (const auto& c : cases) {
        int error;
        EXPECT_EQ(App::stod(c.input.c_str(), -1, 0, &error), c.expected);
        EXPECT_EQ(error, c.error);
    }
}

TEST_F(NumberText, Text_To_Decimal_And_Back) {
    const std::string zeros(200, '0');
    const Case<const char*> cases[] = {
        // clang-format off
        {"", "0", 0}, {"12.500", "12.5", 0}, {"-0", "-0", 0}, {"1e3", "1000", 0}, {"nan", "NaN", 0},
        {"12345678901234567", "12345678901234570", 0}, {zeros + "5", "5", 0}, {"-inf", "-Infinity", 0},
        {"0x1F", "31", 0}, {"0xffffffffffffffff", "9223372036854776000", 0}, {"0x", "0", 1},
        {"0x1g", "0", 1}, {"1 ", "0", 1}, {zeros + "x", "0", 1}, {"1\0"s, "0", 1}
        // clang-format on
    };
    for (const auto& c : cases) {
        int error = -1;
        EXPECT_EQ(Mpdtos(Stompd(c.input, &error)), c.expected) << c.input;
        EXPECT_EQ(error, c.error) << c.input;
    }
    const Decimal target(App::itompd(nullptr, INT_MIN)), copy(App::mpdtompd(nullptr, target.get()));
    EXPECT_EQ(App::stompd(target.get(), "7.25", -1, 0, nullptr), target.get());
    EXPECT_EQ(Mpdtos(target) + Mpdtos(copy), "7.25-2147483648");
}

// With the gap for large numbers.
TEST_F(NumberText, Doubles_Become_Decimals_By_Their_Text) {
    for (const double value : {1.5, -0.001, 1e22, std::nan(""), infinity, -infinity}) {
        const Decimal decimal(App::dtompd(nullptr, value));
        EXPECT_EQ(Mpdtos(decimal), Dtos(value));
        EXPECT_EQ(Dtos(App::mpdtod(decimal.get())), Dtos(value));
    }
}

TEST_F(NumberText, Decimal_To_Integer_And_Size) {
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
        const Decimal value = Stompd(c.text);
        int digits, fraction;
        App::mpdsize(value.get(), &digits, &fraction);
        EXPECT_EQ(App::mpdtoi(value.get()), c.integer) << c.text;
        EXPECT_EQ(std::pair(digits, fraction), std::pair(c.digits, c.fraction)) << c.text;
    }
}

} // namespace
