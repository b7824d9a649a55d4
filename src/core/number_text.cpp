// Numbers to text and text to numbers, the static operations of TarnApplication. Texts handed out are arrays
// that String::assign_nocopy takes. Decimals are set in the one context of the process, whose status word
// stays untouched.

#include "app/services/tarn_application.h"
#include "core/integer_text.h"
#include "core/shortest_double.h"
#include "core/text_length.h"
#include "core/text_words.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <mpdecimal.h>
#include <new>
#include <string>
#include <string_view>

namespace {

struct Delete_Decimal {
    void operator()(mpd_t* number) const { mpd_del(number); }
};
using Decimal = std::unique_ptr<mpd_t, Delete_Decimal>;

struct Free_Decimal_Text {
    void operator()(char* text) const { mpd_free(text); }
};

// The status that operations of the decimal library leave. Of what it can hold only the lack of memory
// matters to all.
struct Decimal_Status {
    std::uint32_t bits = 0;

    void Check_Memory() const {
        if (bits & MPD_Malloc_error)
            throw std::bad_alloc();
    }
};

mpd_t* New_Decimal() {
    mpd_t* number = mpd_qnew();
    if (!number)
        throw std::bad_alloc();
    return number;
}

mpd_t* Target_Or_New(mpd_t* target) {
    return target ? target : New_Decimal();
}

Decimal Reduced(const mpd_t* value) {
    Decimal reduced(New_Decimal());
    Decimal_Status status;
    mpd_qreduce(reduced.get(), value, &Tarn_MPD_Context, &status.bits);
    status.Check_Memory();
    return reduced;
}

mpd_t* Set_Integer(mpd_t* target, std::int64_t value) {
    Decimal_Status status;
    mpd_qset_i64(target, value, &Tarn_MPD_Context, &status.bits);
    status.Check_Memory();
    return target;
}

// A new array with the text, a NUL and further spare bytes.
char* New_Text(std::string_view text, int spare, int* len, int* size) {
    const int text_length = Length_Of(text);
    const int text_size = text_length + 1 + spare;
    char* copy = new char[static_cast<std::size_t>(text_size)];
    std::memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    if (len)
        *len = text_length;
    if (size)
        *size = text_size;
    return copy;
}

// The text with a NUL behind its len bytes: itself where one stands there already, otherwise a copy. `size`
// bytes may be read at `text`.
class Terminated_Text {
  public:
    Terminated_Text(const char* text, int len, int size) : text(text) {
        if (len >= size || text[len] != '\0')
            this->text = (copy = Slice(text, len)).c_str();
    }
    Terminated_Text(const Terminated_Text&) = delete;

    const char* get() const { return text; }

  private:
    const char* text;
    std::string copy;
};

void Set_Error(int* error, int value) {
    if (error)
        *error = value;
}

bool Is_Digit_Of(char c, int base) {
    return base == 16 ? std::isxdigit(static_cast<unsigned char>(c)) : Is_Digit(c);
}

bool Begins_Hexadecimal(std::string_view text) {
    return text.size() > 2 && text[0] == '0' && (text[1] | 0x20) == 'x' && Is_Digit_Of(text[2], 16);
}

struct Number_Word {
    std::string_view word;
    double value;
};

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();
constexpr Number_Word number_words[] = {
    {"NAN", not_a_number},   {"INF", infinity},   {"INFINITY", infinity},
    {"-NAN", -not_a_number}, {"-INF", -infinity}, {"-INFINITY", -infinity},
};

const Number_Word* Find_Number_Word(std::string_view text) {
    for (const Number_Word& entry : number_words) {
        if (Same_Word(entry.word, text))
            return &entry;
    }
    return nullptr;
}

// The word that stands for a decimal or double without digits.
std::string_view Special_Word(bool is_nan, bool negative) {
    if (is_nan)
        return "NaN";
    return negative ? "-Infinity" : "Infinity";
}

std::string_view Special_Word(const mpd_t* value) {
    return Special_Word(mpd_isnan(value), mpd_isnegative(value));
}

} // namespace

char* TarnApplication::itos(int value, int* len, int* size) {
    return New_Text(Integer_Text(value).view(), 0, len, size);
}

char* TarnApplication::dtos(double value, int* len, int* size) {
    if (!std::isfinite(value))
        return New_Text(Special_Word(std::isnan(value), value < 0), 0, len, size);
    char text[shortest_double_size];
    const int text_length = Write_Shortest_Double(value, text);
    return New_Text(View(text, text_length), 1, len, size);
}

char* TarnApplication::mpdtos(mpd_t* value, int* len, int* size) {
    const Decimal reduced = Reduced(value);
    Decimal_Status status;
    const std::unique_ptr<char, Free_Decimal_Text> text(
        mpd_qformat(reduced.get(), "f", &Tarn_MPD_Context, &status.bits));
    if (!text)
        throw std::bad_alloc();
    return New_Text(text.get(), 0, len, size);
}

// Wraps at 32 bits.
int TarnApplication::stoi(const char* text, int len, int* error) {
    std::string_view digits = View(text, len);
    Set_Error(error, 0);
    const bool negative = digits.starts_with('-');
    int base = 10;
    if (negative)
        digits.remove_prefix(1);
    else if (Begins_Hexadecimal(digits)) {
        base = 16;
        digits.remove_prefix(2);
    }
    std::uint32_t value = 0;
    for (const char c : digits) {
        if (!Is_Digit_Of(c, base)) {
            Set_Error(error, 1);
            return 0;
        }
        const int digit = Is_Digit(c) ? c - '0' : (c | 0x20) - 'a' + 10;
        value = value * static_cast<std::uint32_t>(base) + static_cast<std::uint32_t>(digit);
    }
    if (digits.empty() && !negative)
        Set_Error(error, 1);
    return static_cast<int>(negative ? 0 - value : value);
}

double TarnApplication::stod(const char* text, int len, int size, int* error) {
    const int text_length = Text_Length(text, len);
    Set_Error(error, 0);
    if (text_length == 0)
        return 0;
    if (len != -1) {
        if (const Number_Word* found = Find_Number_Word(View(text, text_length)))
            return found->value;
    }
    const Terminated_Text terminated(text, text_length, len == -1 ? text_length + 1 : size);
    char* end;
    const double value = std::strtod(terminated.get(), &end); // reads hexadecimal too
    if (end != terminated.get() + text_length) {
        Set_Error(error, 1);
        return 0;
    }
    // errno isn't cleared ahead of this: an infinity that is spelled out counts as overflow too when an
    // earlier call left ERANGE behind, and callers have come to see it so.
    if (std::isinf(value) && errno == ERANGE)
        Set_Error(error, 1);
    return value;
}

mpd_t* TarnApplication::stompd(mpd_t* target, const char* text, int len, int size, int* error) {
    const int text_length = Text_Length(text, len);
    Set_Error(error, 0);
    target = Target_Or_New(target);
    if (text_length == 0)
        return Set_Integer(target, 0);
    if (std::memchr(text, '\0', static_cast<std::size_t>(text_length))) {
        Set_Error(error, 1);
        return Set_Integer(target, 0);
    }
    const Terminated_Text terminated(text, text_length, len == -1 ? text_length + 1 : size);
    Decimal_Status status;
    mpd_qset_string(target, terminated.get(), &Tarn_MPD_Context, &status.bits);
    status.Check_Memory();
    if (!(status.bits & MPD_Conversion_syntax))
        return target;
    if (Begins_Hexadecimal(View(text, text_length))) {
        char* end;
        const std::int64_t value = std::strtoll(terminated.get(), &end, 16);
        if (end == terminated.get() + text_length)
            return Set_Integer(target, value);
    }
    Set_Error(error, 1);
    return Set_Integer(target, 0);
}

mpd_t* TarnApplication::itompd(mpd_t* target, int value) {
    return Set_Integer(Target_Or_New(target), value);
}

mpd_t* TarnApplication::dtompd(mpd_t* target, double value) {
    int len, size;
    const std::unique_ptr<char[]> text(dtos(value, &len, &size));
    return stompd(target, text.get(), len, size, nullptr);
}

mpd_t* TarnApplication::mpdtompd(mpd_t* target, mpd_t* source) {
    target = Target_Or_New(target);
    Decimal_Status status;
    mpd_qcopy(target, source, &status.bits);
    status.Check_Memory();
    return target;
}

int TarnApplication::mpdtoi(mpd_t* value) {
    if (mpd_isnan(value))
        return 0;
    if (mpd_isinfinite(value))
        return mpd_isnegative(value) ? -INT_MAX : INT_MAX;
    Decimal_Status status;
    const int whole = mpd_qget_i32(value, &status.bits);
    if (!status.bits)
        return whole;
    const Decimal truncated(New_Decimal());
    mpd_qtrunc(truncated.get(), value, &Tarn_MPD_Context, &status.bits);
    status.Check_Memory();
    return mpd_qget_i32(truncated.get(), &status.bits);
}

double TarnApplication::mpdtod(mpd_t* value) {
    if (mpd_isspecial(value)) {
        const std::string_view word = Special_Word(value);
        return stod(word.data(), Length_Of(word), Length_Of(word) + 1, nullptr);
    }
    int len, size;
    const std::unique_ptr<char[]> text(mpdtos(value, &len, &size));
    return stod(text.get(), len, size, nullptr);
}

void TarnApplication::mpdsize(mpd_t* value, int* digits, int* fraction) {
    *digits = *fraction = 0;
    if (mpd_isspecial(value))
        return;
    const Decimal reduced = Reduced(value);
    const int exponent = static_cast<int>(reduced->exp);
    const int count = static_cast<int>(reduced->digits);
    *digits = exponent < 0 ? std::max(-exponent, count) : exponent + count;
    *fraction = exponent < 0 ? -exponent : 0;
}
