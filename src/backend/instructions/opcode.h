// The instruction set of the execution engine, as the assembler spells it.
#ifndef BACKEND_OPCODE_H
#define BACKEND_OPCODE_H

#include <array>
#include <cstddef>
#include <string_view>

enum Opcode {
#define OPCODE(name, number, mnemonic, operands, listing) OPCODE_##name = number,
#include "backend/instructions/opcodes.def"
};

// What stands behind the mnemonic in the assembly text.
enum class Operand_Form : unsigned char {
    NONE,
    READ_ONLY,       // nothing; older engines get the writable instruction
    STRING,          // s_N, a string constant
    INTEGER,         // N
    VARIABLE,        // l_N
    SYSTEM,          // sys_N, a system variable
    FIELD,           // s_A, s_B: database alias and field
    PAIR,            // A, B
    LABEL,           // a generated label
    LABEL_IMMEDIATE, // a generated label, then N
    TEXT,            // the name of a function
    REAL,            // a decimal number
    ENGINE           // never written: for the reader of compiled code alone
};

// Kind of one operand in the compiled image, from the two high bits or the two below them.
enum class Operand_Kind { NONE = 0, INTEGER = 1, DOUBLE = 2 };

constexpr Operand_Kind First_Operand(int opcode) {
    return static_cast<Operand_Kind>((opcode >> 14) & 3);
}
constexpr Operand_Kind Second_Operand(int opcode) {
    return static_cast<Operand_Kind>((opcode >> 12) & 3);
}

// The instruction that does the same for an element or member that is to be changed; all others are
// themselves.
constexpr int Writable_Access(int opcode) {
    switch (opcode) {
    case OPCODE_ELEM_RO: return OPCODE_ELEM;
    case OPCODE_MEMB_RO: return OPCODE_MEMB;
    default: return opcode;
    }
}

// One instruction. The head is all its text up to the first operand's number, from the line feed on; it is
// padded so that it can be copied whole.
struct alignas(64) Opcode_Info {
    static constexpr std::size_t head_size = 24;

    int number;
    Operand_Form operands;
    unsigned char head_length;
    bool plain; // the head, and a number behind it unless the form is NONE, are all its text
    char head[head_size];
    std::string_view mnemonic;
    std::string_view listing; // empty when a listing knows no name for it
};

inline constexpr int opcode_count = 0
#define OPCODE(name, number, mnemonic, operands, listing) +1
#include "backend/instructions/opcodes.def"
    ;

// All instructions, and where the one with a given key stands. The key is family and number, with the kind of
// the first operand, since the engine has a number twice.
extern const Opcode_Info opcode_rows[opcode_count];
extern const std::array<unsigned char, 4096> opcode_index;
inline constexpr unsigned char opcode_no_row = 0xff;

constexpr int Opcode_Key(int opcode) {
    return (opcode >> 14 & 3) << 10 | (opcode & 0x3ff);
}

// The row of any number, null when there is none.
constexpr const Opcode_Info* Find_Opcode(int opcode) {
    const unsigned char row = opcode_index[Opcode_Key(opcode)];
    return row != opcode_no_row && opcode_rows[row].number == opcode ? &opcode_rows[row] : nullptr;
}

// The row of a plain instruction, null for all others.
constexpr const Opcode_Info* Find_Plain_Opcode(int opcode) {
    const Opcode_Info* row = Find_Opcode(opcode);
    return row && row->plain ? row : nullptr;
}

// The row of an instruction that there is.
constexpr const Opcode_Info& Opcode_Row(int opcode) {
    return opcode_rows[opcode_index[Opcode_Key(opcode)]];
}

#endif
