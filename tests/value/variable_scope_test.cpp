#include "value/variable_hash.h"

#include <gtest/gtest.h>

#include <string>

TEST(VariableScope, Comes_From_The_Prefix) {
    const struct {
        const char* text;
        Variable_Scope scope;
        const char* name;
        const char* alias; // null: left alone
    } cases[] = {
        {"", SCOPE_UNSCOPED, "", nullptr},
        {"l.", SCOPE_LOCAL, "", nullptr},
        {"l.x", SCOPE_LOCAL, "x", nullptr},
        {"S.x.y", SCOPE_SYSTEM, "x.y", nullptr},
        {"d.x", SCOPE_DATABASE, "x", ""},
        {"D.d.x", SCOPE_DATABASE, "x", "D"},
        {"x.y", SCOPE_UNSCOPED, "x.y", nullptr},
        {"a.D.x", SCOPE_DATABASE, "x", "a"},
        {"l.d.", SCOPE_LOCAL, "d.", nullptr},
        {"l.d.x", SCOPE_DATABASE, "x", "l"},
        {"a.database.x", SCOPE_DATABASE, "x", "a"},
        {"g.database.", SCOPE_GLOBAL, "database.", nullptr},
        {"name", SCOPE_UNSCOPED, "name", nullptr},
        {"local.x", SCOPE_LOCAL, "x", nullptr},
        {"LOCAL.d.x", SCOPE_LOCAL, "d.x", nullptr},
        {"Global.", SCOPE_GLOBAL, "", nullptr},
        {"system.x", SCOPE_SYSTEM, "x", nullptr},
        {"xy.d.z", SCOPE_DATABASE, "z", "xy"},
        {"xy.d.", SCOPE_DATABASE, "", "xy"},
        {".d.z", SCOPE_DATABASE, "z", ""},
        {"xy.DataBase.z", SCOPE_DATABASE, "z", "xy"},
        {"xy.database.", SCOPE_DATABASE, "", "xy"},
        {"database.xy", SCOPE_DATABASE, "xy", ""},
        {"database.x", SCOPE_UNSCOPED, "database.x", nullptr},
        {"database.d.x", SCOPE_DATABASE, "x", "database"},
    };
    for (const auto& c : cases) {
        const char* name = nullptr;
        const char* alias = "untouched";
        int name_length = 0;
        int alias_length = -2;
        EXPECT_EQ(VariableHash::Scope(c.text, -1, &name, &name_length, &alias, &alias_length), c.scope)
            << c.text;
        EXPECT_EQ(std::string(name, name_length), c.name) << c.text;
        if (c.alias)
            EXPECT_EQ(std::string(alias, alias_length), c.alias) << c.text;
        else
            EXPECT_EQ(alias_length, -2) << c.text;
    }
}
