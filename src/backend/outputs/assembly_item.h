// Composing the short items of assembly text in place.
#ifndef BACKEND_ASSEMBLY_ITEM_H
#define BACKEND_ASSEMBLY_ITEM_H

#include "backend/instructions/opcode.h"
#include "backend/outputs/compiler_output.h"

#include <array>
#include <cassert>
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
        assert(row.head_length <= Opcode_Info::head_size);
        std::memcpy(position, row.head, Opcode_Info::head_size);
        position += row.head_length;
        return *this;
    }
    Assembly_Item& Text(std::string_view text) {
        assert(text.size() <
               CompilerOutput::item_limit); // a word of the language, never a text of the source
        std::memcpy(position, text.data(), text.size());
        position += text.size();
        return *this;
    }
    // Inlined, so that the position stays in a register.
    [[gnu::always_inline]] Assembly_Item& Number(int number) {
        if (number < 0)
            *position++ = '-';
        position = Write_Digits(position, number < 0 ? 0u - static_cast<unsigned>(number)
                                                     : static_cast<unsigned>(number));
        return *this;
    }

  private:
    // The numbers from 00 to 99, one behind the other.
    static constexpr auto digit_pairs = [] {
        std::array<char, 200> pairs{};
        for (int number = 0; number < 100; ++number) {
            pairs[2 * number] = static_cast<char>('0' + number / 10);
            pairs[2 * number + 1] = static_cast<char>('0' + number % 10);
        }
        return pairs;
    }();

    static char* Write_Pair(char* target, unsigned number) {
        std::memcpy(target, &digit_pairs[2 * number], 2);
        return target + 2;
    }
    // Numbers of one to four digits are nearly all there are.
    static char* Write_Digits(char* target, unsigned number) {
        if (number >= 10000) [[unlikely]]
            return Write_Long_Digits(target, number);
        if (number >= 1000)
            target = Write_Pair(target, number / 100);
        else if (number >= 100)
            *target++ = static_cast<char>('0' + number / 100);
        else if (number < 10)
            return *target = static_cast<char>('0' + number), target + 1;
        return Write_Pair(target, number % 100);
    }
    [[gnu::noinline]] static char* Write_Long_Digits(char* target, unsigned number) {
        target = Write_Digits(target, number / 10000);
        return Write_Pair(Write_Pair(target, number % 10000 / 100), number % 100);
    }

    CompilerOutput* output;
    char* position;
};

#endif
