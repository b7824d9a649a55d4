// The attribute table.

#include "frontend/scanner/attribute_lookup.h"

#include "core/text_length.h"
#include "frontend/scanner/perfect_hash.h"

#include <string_view>
#include <utility>

namespace {

constexpr _AttributeLookup Row(int id, std::string_view key) {
    return {id, 0, -1, -1, Length_Of(key), key.data()};
}

constexpr std::array rows{
#define ATTRIBUTE(name, id, key) Row(id, key),
#define ATTRIBUTE_KEY(name, key) Row(Attribute::name, key),
#include "frontend/scanner/attributes.def"
};

constexpr Perfect_Hash<_AttributeLookup, rows.size(), 7, 6> attributes(rows);

static_assert(
    [] {
        int last = -1;
        for (const int id : {
#define ATTRIBUTE(name, id, key) id,
#include "frontend/scanner/attributes.def"
             })
            if (id <= std::exchange(last, id))
                return false;
        return true;
    }(),
    "ids ascend, so that none stands twice");

} // namespace

const _AttributeLookup* AttributeLookup::Lookup(const char* name, int length) const {
    return attributes.Find(name, length);
}
