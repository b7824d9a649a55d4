#ifndef CORE_INTEGER_TEXT_H
#define CORE_INTEGER_TEXT_H

#include "core/text_length.h"

#include <charconv>
#include <iterator>
#include <string_view>

// The decimal text of an int: "-" in front of negative ones, no zeros in front, no NUL behind.
class Integer_Text {
  public:
    explicit Integer_Text(int number)
        : length(std::to_chars(std::begin(digits), std::end(digits), number).ptr - digits) {}

    std::string_view view() const { return Slice(digits, length); }

  private:
    char digits[sizeof "-2147483648" - 1];
    std::ptrdiff_t length;
};

#endif
