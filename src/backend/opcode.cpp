#include "backend/opcode.h"

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

constexpr Opcode_Info Make_Row(int number, std::string_view mnemonic, Operand_Form form,
                               std::string_view listing) {
    Opcode_Info row{number, form, 0, {}, mnemonic, listing};
    for (const std::string_view part : {std::string_view("\n\t"), mnemonic, Operand_Prefix(form)})
        for (const char byte : part)
            row.head[row.head_length++] = byte;
    return row;
}

constexpr Opcode_Info opcodes[] = {
#define OPCODE(name, number, mnemonic, operands, listing)                                                    \
    Make_Row(number, mnemonic, Operand_Form::operands, listing),
#include "backend/opcodes.def"
};

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
static_assert(std::all_of(std::begin(opcodes), std::end(opcodes), Bits_Agree));

// An instruction's place in the index: its family and number, and the kind of its first operand, since the
// engine has a number twice.
constexpr int Index_Key(int opcode) {
    return (opcode >> 14 & 3) << 10 | (opcode & 0x3ff);
}

constexpr unsigned char no_row = 0xff;
static_assert(std::size(opcodes) < no_row);

constexpr auto opcode_index = [] {
    std::array<unsigned char, 4096> index{};
    index.fill(no_row);
    for (unsigned char row = 0; row < std::size(opcodes); ++row)
        index[Index_Key(opcodes[row].number)] = row;
    return index;
}();
static_assert(
    [] {
        for (unsigned char row = 0; row < std::size(opcodes); ++row)
            if (opcode_index[Index_Key(opcodes[row].number)] != row)
                return false;
        return true;
    }(),
    "two instructions with one key");

} // namespace

const Opcode_Info* Find_Opcode(int opcode) {
    const unsigned char row = opcode_index[Index_Key(opcode)];
    return row != no_row && opcodes[row].number == opcode ? &opcodes[row] : nullptr;
}
