// Composing the short items of assembly text in place.
#ifndef BACKEND_ASSEMBLY_ITEM_H
#define BACKEND_ASSEMBLY_ITEM_H

#include "backend/instructions/opcode.h"
#include "backend/outputs/compiler_output.h"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstring>
#include <string_view>

// One item on its way out: a few words and numbers, put together in the output's own buffer and handed over
// by the destructor. All of them together are CompilerOutput::item_limit bytes at most; texts of the source
// are written separately.
class Assembly_Item {
  public:
    explicit Assembly_Item(CompilerOutput* output)
        : output(output), position(output->Reserve(CompilerOutput::item_limit)) {}
    ~Assembly_Item() { output->Commit(position); }
    Assembly_Item(const Assembly_Item&) = delete;
    Assembly_Item& operator=(const Assembly_Item&) = delete;

    Assembly_Item& Head(const Opcode_Info& row) {
        position = Put_Head(position, row);
        return *this;
    }
    Assembly_Item& Text(std::string_view text) {
        assert(text.size() < CompilerOutput::item_limit);
        std::memcpy(position, text.data(), text.size());
        position += text.size();
        return *this;
    }
    // Inlined, so that the position stays in a register.
    [[gnu::always_inline]] Assembly_Item& Number(int number) {
        position = Put_Number(position, number);
        return *this;
    }

    // The same for any place with plain_limit bytes: each puts its text there and answers the end of it.
    static char* Put_Head(char* target, const Opcode_Info& row) {
        assert(row.head_length <= Opcode_Info::head_size);
        std::memcpy(target, row.head, Opcode_Info::head_size);
        return target + row.head_length;
    }
    [[gnu::always_inline]] static char* Put_Number(char* target, int number) {
        if (static_cast<unsigned>(number) >= 1000) [[unlikely]]
            return Put_Long_Number(target, number);
        const char* row = &three_digits[4 * static_cast<unsigned>(number)];
        std::memcpy(target, row + row[3], 4);
        return target + 3 - row[3];
    }
    // What a head and a number take at most.
    static constexpr int plain_limit = Opcode_Info::head_size + 12;

  private:
    // Of each number below 1000 its three digits, and how many of them are leading zeros. One row more lets
    // four bytes be copied from any digit on.
    static constexpr auto three_digits = [] {
        std::array<char, 4 * 1001> rows{};
        for (int number = 0; number < 1000; ++number) {
            char* row = &rows[4 * static_cast<std::size_t>(number)];
            for (int place = 3, rest = number; place-- > 0; rest /= 10)
                row[place] = static_cast<char>('0' + rest % 10);
            row[3] = number < 10 ? 2 : number < 100 ? 1 : 0;
        }
        return rows;
    }();

    [[gnu::noinline]] static char* Put_Long_Number(char* target, int number) {
        if (number < 0)
            *target++ = '-';
        return Put_Groups(target,
                          number < 0 ? 0U - static_cast<unsigned>(number) : static_cast<unsigned>(number));
    }
    static char* Put_Groups(char* target, unsigned number) {
        if (number < 1000)
            return Put_Number(target, static_cast<int>(number));
        target = Put_Groups(target, number / 1000);
        std::memcpy(target, &three_digits[std::size_t{4} * (number % 1000)], 3);
        return target + 3;
    }

    CompilerOutput* output;
    char* position;
};

#endif
