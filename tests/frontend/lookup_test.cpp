// What no page asks of the tables of names. That names are found, and others are not, is shown by the pages.

#include "frontend/scanner/attribute_lookup.h"
#include "frontend/scanner/operator_lookup.h"
#include "frontend/scanner/tag_lookup.h"

#include <gtest/gtest.h>

namespace {

TEST(Lookup, Takes_A_Length_Or_A_Text_And_Tells_The_Kind) {
    EXPECT_EQ(TagLookup().Lookup("TnIf", -1)->kind, 2);
    EXPECT_EQ(TagLookup().Lookup("TnExits", 6)->kind, 0);
    EXPECT_EQ(OperatorLookup().Lookup("CALL", -1)->kind, 3);
    EXPECT_EQ(AttributeLookup().Lookup("Expr", 3), nullptr);
    EXPECT_EQ(AttributeLookup().Lookup("a name that is longer than any of the keys", -1), nullptr);
}

} // namespace
