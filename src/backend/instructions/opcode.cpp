// The instruction set by number.

#include "backend/instructions/opcode.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace {

// What follows the mnemonic, up to the number of the first operand.
constexpr std::string_view Operand_Prefix(Operand_Form form) {
    switch (form) {
    case Operand_Form::STRING:
    case Operand_Form::FIELD: return "\ts_";
    case Operand_Form::VARIABLE: return "\tl_";
    case Operand_Form::SYSTEM: return "\tsys_";
    case Operand_Form::INTEGER:
    case Operand_Form::PAIR:
    case Operand_Form::LABEL:
    case Operand_Form::LABEL_IMMEDIATE:
    case Operand_Form::TEXT:
    case Operand_Form::REAL: return "\t";
    case Operand_Form::NONE:
    case Operand_Form::READ_ONLY:
    case Operand_Form::ENGINE: break;
    }
    return "";
}

constexpr bool Is_Plain(Operand_Form form) {
    switch (form) {
    case Operand_Form::NONE:
    case Operand_Form::STRING:
    case Operand_Form::INTEGER:
    case Operand_Form::VARIABLE:
    case Operand_Form::SYSTEM: return true;
    default: return false;
    }
}

constexpr Opcode_Info Make_Row(int number, std::string_view mnemonic, Operand_Form form,
                               std::string_view listing) {
    Opcode_Info row{number, form, 0, Is_Plain(form), {}, mnemonic, listing};
    for (const std::string_view part : {std::string_view("\n\t"), mnemonic, Operand_Prefix(form)})
        for (const char byte : part)
            row.head[row.head_length++] = byte;
    return row;
}

constexpr bool Bits_Agree(const Opcode_Info& row) {
    const int bits = row.number >> 12;
    switch (row.operands) {
    case Operand_Form::NONE:
    case Operand_Form::READ_ONLY: return bits == 0;
    case Operand_Form::STRING:
    case Operand_Form::INTEGER:
    case Operand_Form::VARIABLE:
    case Operand_Form::SYSTEM:
    case Operand_Form::LABEL:
    case Operand_Form::TEXT: return bits == 4;
    case Operand_Form::FIELD:
    case Operand_Form::PAIR:
    case Operand_Form::LABEL_IMMEDIATE: return bits == 5;
    case Operand_Form::REAL: return bits == 8;
    case Operand_Form::ENGINE: return true;
    }
    return false;
}

} // namespace

constexpr Opcode_Info opcode_rows[opcode_count] = {
#define OPCODE(name, number, mnemonic, operands, listing)                                                    \
    Make_Row(number, mnemonic, Operand_Form::operands, listing),
#include "backend/instructions/opcodes.def"
};

static_assert(std::all_of(std::begin(opcode_rows), std::end(opcode_rows), Bits_Agree));
static_assert(opcode_count < opcode_no_row);

constexpr std::array<unsigned char, 4096> opcode_index = [] {
    std::array<unsigned char, 4096> index{};
    index.fill(opcode_no_row);
    for (unsigned char row = 0; row < opcode_count; ++row)
        index[Opcode_Key(opcode_rows[row].number)] = row;
    return index;
}();
static_assert(std::all_of(std::begin(opcode_rows), std::end(opcode_rows),
                          [](const Opcode_Info& row) { return Find_Opcode(row.number) == &row; }),
              "two instructions with one key");
