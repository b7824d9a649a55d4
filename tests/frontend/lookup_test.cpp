#include "frontend/scanner/attribute_lookup.h"
#include "frontend/scanner/operator_lookup.h"
#include "frontend/scanner/tag_lookup.h"

#include <cctype>
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace {

std::string Upper(std::string text) {
    for (char& byte : text)
        byte = static_cast<char>(std::toupper(byte));
    return text;
}

using Ids = std::map<std::string, int>; // by keys in capitals

const Ids tags = {
#define TAG(name, id, key, required, optional) {Upper(key), id},
#define TAG_KEY(name, key, required, optional) {Upper(key), Tag::name},
#include "frontend/scanner/tags.def"
};
const Ids attributes = {
#define ATTRIBUTE(name, id, key) {Upper(key), id},
#define ATTRIBUTE_KEY(name, key) {Upper(key), Attribute::name},
#include "frontend/scanner/attributes.def"
};
const Ids operators = {
#define OPERATOR(name, id, key, priority, operands, type, opcode) {Upper(key), id},
#include "frontend/scanner/operators.def"
};

// Every key is found in any case, by length and by its NUL, and no key is found with a byte more or less or
// another byte unless that is a key too.
template <typename Lookup>
void Check_Keys(const Ids& ids) {
    const auto check = [&](const std::string& name) {
        const auto expected = ids.find(Upper(name));
        const auto* record = Lookup().Lookup(name.data(), static_cast<int>(name.size()));
        ASSERT_EQ(record ? record->id : -1, expected == ids.end() ? -1 : expected->second) << name;
    };
    for (const auto& [key, id] : ids) {
        const auto* const record = Lookup().Lookup(key.c_str(), -1);
        ASSERT_NE(record, nullptr) << key;
        EXPECT_EQ(Upper(std::string(record->key, record->length)), key);
        check(record->key);
        check(key + "s");
        check(key.substr(1));
        for (std::size_t i = 0; i < key.size(); ++i) {
            std::string other = key;
            other[i] ^= 1;
            check(other);
        }
    }
    for (const char* unknown : {"a", "tn", "td", "\x80\xff", "a name that is longer than any of the keys"})
        check(unknown);
}

TEST(Lookup, Finds_Its_Keys_And_Nothing_Else) {
    Check_Keys<TagLookup>(tags);
    Check_Keys<AttributeLookup>(attributes);
    Check_Keys<OperatorLookup>(operators);
    EXPECT_EQ(TagLookup().Lookup("TnIf", -1)->kind, 2);
    EXPECT_EQ(TagLookup().Lookup("TnExit", -1)->kind, 0);
    EXPECT_EQ(OperatorLookup().Lookup("CALL", 4)->kind, 3);
}

} // namespace
