// The operator table.

#include "frontend/scanner/operator_lookup.h"

#include "core/text_length.h"
#include "frontend/scanner/perfect_hash.h"

#include <string_view>

namespace {

constexpr _OperatorLookup Row(int id, std::string_view key, int priority, int operands, Operand_Type type) {
    return {id, 3, priority, operands, type, Length_Of(key), key.data()};
}

constexpr std::array rows{
#define OPERATOR(name, id, key, priority, operands, type, opcode)                                            \
    Row(id, key, priority, operands, OPERAND_##type),
#include "frontend/scanner/operators.def"
};

constexpr Perfect_Hash<_OperatorLookup, rows.size(), 6, 5> operators(rows);

// The code generator finds instructions by the place of the operator's row.
static_assert([] {
    int next_id = 0;
    for (const _OperatorLookup& row : rows)
        if (row.id != next_id++)
            return false;
    return true;
}());

constexpr auto signs = [] {
    std::array<const _OperatorLookup*, 128> by_byte{};
    for (const _OperatorLookup& row : rows) {
        if (row.length == 1)
            by_byte[static_cast<unsigned char>(*row.key)] = &row;
    }
    return by_byte;
}();

} // namespace

const _OperatorLookup* OperatorLookup::Lookup(const char* name, int length) const {
    return operators.Find(name, length);
}

const _OperatorLookup* OperatorLookup::Lookup_Sign(char sign) const {
    const unsigned byte = static_cast<unsigned char>(sign);
    return byte < signs.size() ? signs[byte] : nullptr;
}
