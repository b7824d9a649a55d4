#ifndef FRONTEND_OPERATOR_LOOKUP_H
#define FRONTEND_OPERATOR_LOOKUP_H

enum Operator_Id : int {
#define OPERATOR(name, id, key, priority, operands, type, opcode) OPERATOR_##name = id,
#include "frontend/scanner/operators.def"
};

// The class of constants that an operator works on, and that a subexpression has met.
enum Operand_Type : int {
    OPERAND_NONE = 0,
    OPERAND_NUMERIC = 1,
    OPERAND_STRING = 2,
    OPERAND_BOOLEAN = 3, // of operators only: takes the class of a subexpression back to OPERAND_NONE
    OPERAND_MIXED = 4,   // of subexpressions only
};

// Flags of Expression_Operator.
enum Operator_Flag : int {
    OPERATOR_BEFORE_DOT = 1, // a ] behind which an inline call follows
    OPERATOR_PREFIX = 2,     // no operand stands to the left
};

// An operator. The order of the fields is part of the binary interface.
struct _OperatorLookup {
    int id;
    int kind; // 3
    int priority;
    int operands;
    int type;   // Operand_Type
    int length; // of the key
    const char* key;
};

class OperatorLookup {
  public:
    // The record of a sign or of a word in any case, or null. A length of -1 means up to the NUL.
    const _OperatorLookup* Lookup(const char* name, int length) const;
    // The record of a sign of one byte, or null.
    const _OperatorLookup* Lookup_Sign(char sign) const;
};

#endif
