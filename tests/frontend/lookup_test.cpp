#include "frontend/scanner/attribute_lookup.h"
#include "frontend/scanner/operator_lookup.h"
#include "frontend/scanner/tag_lookup.h"

#include <cctype>
#include <cstring>
#include <gtest/gtest.h>
#include <string>

namespace {

struct Tag_Row {
    const char* key;
    int id, required, optional;
};
const Tag_Row tag_rows[] = {
#define TAG(name, id, key, required, optional) {key, id, required, optional},
#define TAG_KEY(name, key, required, optional) {key, Tag::name, required, optional},
#include "frontend/scanner/tags.def"
};

struct Key_Row {
    const char* key;
    int id;
};
const Key_Row attribute_rows[] = {
#define ATTRIBUTE(name, id, key) {key, id},
#define ATTRIBUTE_KEY(name, key) {key, Attribute::name},
#include "frontend/scanner/attributes.def"
};
const Key_Row operator_rows[] = {
#define OPERATOR(name, id, key, priority, operands, type, opcode) {key, id},
#include "frontend/scanner/operators.def"
};

std::string Upper(std::string text) {
    for (char& byte : text)
        byte = static_cast<char>(std::toupper(byte));
    return text;
}

// Every key is found in any case, by length and by its NUL, and no key is found with a byte more or less or
// another byte unless that is a key too.
template <typename Lookup, typename Row, std::size_t count>
void Check_Keys(const Row (&rows)[count]) {
    Lookup lookup;
    auto id_of = [&](const std::string& name) {
        for (const Row& row : rows) {
            if (Upper(row.key) == Upper(name))
                return row.id;
        }
        return -1;
    };
    auto found_id = [&](const std::string& name) {
        auto* record = lookup.Lookup(name.data(), static_cast<int>(name.size()));
        return record ? record->id : -1;
    };
    for (const Row& row : rows) {
        std::string key = row.key;
        ASSERT_EQ(found_id(key), row.id) << key;
        EXPECT_EQ(found_id(Upper(key)), row.id);
        EXPECT_EQ(lookup.Lookup(row.key, -1)->id, row.id);
        EXPECT_EQ(lookup.Lookup(row.key, -1)->length, static_cast<int>(key.size()));
        EXPECT_EQ(found_id(key + "s"), id_of(key + "s")) << key;
        EXPECT_EQ(found_id(key.substr(1)), id_of(key.substr(1))) << key;
        for (std::size_t i = 0; i < key.size(); ++i) {
            std::string other = key;
            other[i] ^= 1;
            EXPECT_EQ(found_id(other), id_of(other)) << other;
        }
    }
    for (const char* unknown :
         {"", "a", "tn", "td", "\x80\xff", "a name that is longer than any of the keys"})
        EXPECT_EQ(found_id(unknown), -1) << unknown;
}

} // namespace

TEST(Lookup, Tags) {
    Check_Keys<TagLookup>(tag_rows);
    for (const Tag_Row& row : tag_rows) {
        const _TagLookup* record = TagLookup().Lookup(row.key, -1);
        EXPECT_EQ(record->required, row.required);
        EXPECT_EQ(record->optional, row.optional);
        EXPECT_EQ(record->kind, row.required == NO_SLOTS ? 0 : 2) << row.key;
    }
}

TEST(Lookup, Attributes_And_Operators) {
    Check_Keys<AttributeLookup>(attribute_rows);
    Check_Keys<OperatorLookup>(operator_rows);
    const _OperatorLookup* call = OperatorLookup().Lookup("CALL", 4);
    EXPECT_EQ(call->priority, 0);
    EXPECT_EQ(call->kind, 3);
}
