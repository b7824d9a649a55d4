// The operator table.

#include "frontend/scanner/operator_lookup.h"

#include "frontend/scanner/perfect_hash.h"

#include <string_view>

namespace {

constexpr _OperatorLookup Row(int id, std::string_view key, int priority, int operands, Operand_Type type) {
    return {id, 3, priority, operands, type, static_cast<int>(key.size()), key.data()};
}

constexpr std::array rows{
#define OPERATOR(name, id, key, priority, operands, type, opcode)                                            \
    Row(id, key, priority, operands, OPERAND_##type),
#include "frontend/scanner/operators.def"
};

constexpr Perfect_Hash<_OperatorLookup, rows.size(), 6, 5> operators(rows);

} // namespace

const _OperatorLookup* OperatorLookup::Lookup(const char* name, int length) const {
    return operators.Find(name, length);
}
