// The instruction set of the execution engine, as the assembler spells it.
#ifndef BACKEND_OPCODE_H
#define BACKEND_OPCODE_H

#include <cstddef>
#include <string_view>

enum Opcode {
#define OPCODE(name, number, mnemonic, operands, listing) OPCODE_##name = number,
#include "backend/opcodes.def"
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
struct Opcode_Info {
    static constexpr std::size_t head_size = 24;

    int number;
    Operand_Form operands;
    unsigned char head_length;
    char head[head_size];
    std::string_view mnemonic;
    std::string_view listing; // empty when a listing knows no name for it
};

// The row of an instruction, null when there is none with that number.
const Opcode_Info* Find_Opcode(int opcode);

#endif
