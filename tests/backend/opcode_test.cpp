#include "backend/instructions/opcode.h"

#include <gtest/gtest.h>
#include <string>

namespace {

TEST(Opcode, Numbers_Lead_To_Their_Rows) {
    const struct {
        int number;
        const char* mnemonic; // null for a number without a row
        const char* listing;
    } cases[] = {
        {9, "pushn", "pushn"},
        {37, "roundf", "roundf"},
        {0x4025, "jmp", "jmp"}, // the same number within the family as roundf
        {60, "retn", "retn"},
        {63, "elem_ro", ""},
        {69, "do_file", "op_do_file"},
        {264, "pop3_delete", "pop3delete"},
        {533, "dbrevealagg", "dbrevealstructureagg"},
        {538, "dbcommand", ""},
        {16385, "pushc", "pushc"},
        {16445, "call", "call"},
        {16460, "erroutput", "erroutput"},
        {16646, "pop3", "pop3"},
        {16657, "commerce_stop", "op_commerce_stop"},
        {16661, "async", ""},
        {20488, "pushdc", "pushdc"},
        {20759, "asyncn", ""},
        {21253, "storegi", "storegi"},
        {32771, "pushf", "pushf"},
        {1, nullptr, nullptr},
        {527, nullptr, nullptr},
        {16645, nullptr, nullptr},
        {16660, nullptr, nullptr},
        {0x14001, nullptr, nullptr},
        {-1, nullptr, nullptr},
    };
    for (const auto& c : cases) {
        const Opcode_Info* const row = Find_Opcode(c.number);
        ASSERT_EQ(row != nullptr, c.mnemonic != nullptr) << c.number;
        if (!row)
            continue;
        EXPECT_EQ(row->mnemonic, c.mnemonic);
        EXPECT_EQ(row->listing, c.listing);
    }
}

} // namespace
