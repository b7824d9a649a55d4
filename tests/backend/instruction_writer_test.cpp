#include "backend/assembly_fixture.h"

#include <gtest/gtest.h>

namespace {

TEST(Instruction_Writer, Odd_Forms_Have_Their_Text) {
    const struct {
        void (*write)(Assembly_Parser& parser);
        const char* expected;
    } cases[] = {
        {[](auto& p) { p.Output_Opcode(16462, 2147483647, 0); }, "\n\tlocalize\ts_2147483647"},
        {[](auto& p) { p.Output_Opcode(16386, "1234567890123456789012345678901234567890", 40, 0); },
         "\n\tpushi\t1234567890123456789012345678901234567890"},
        {[](auto& p) { p.Output_Opcode(22, "text alone", 10, 0); }, "text alone"},
        {[](auto& p) { p.Output_Opcode_With_Label(22, LABEL_START, 1); }, "L_start_1"},
    };
    Assembly_Parser parser;
    for (const auto& c : cases) {
        c.write(parser);
        EXPECT_EQ(parser.Written(), c.expected);
    }
    EXPECT_EQ(parser.Get_Last_Error().length(), 0);
}

TEST(Instruction_Writer, Unknown_Instructions_Are_Reported) {
    const struct {
        void (*write)(Assembly_Parser& parser);
        const char* expected;
        const char* report;
    } cases[] = {
        {[](auto& p) { p.Output_Opcode(527, 4, 5); }, "", "Internal error: Opcode not implemented"},
        {[](auto& p) { p.Output_Opcode(16421, 4, 5); }, "4", "Internal error: Opcode not implemented"},
        {[](auto& p) { p.Output_Opcode(22, 0.5); }, "0.5",
         "Internal error: Opcode not implemented in File output( int, double )"},
        {[](auto& p) { (void)p.Output_Version(1, 15); }, "",
         "Internal error: Minor file version 15 exceeds engine version array size"},
    };
    for (const auto& c : cases) {
        Assembly_Parser parser;
        c.write(parser);
        EXPECT_EQ(parser.Written(), c.expected);
        EXPECT_STREQ(parser.Get_Last_Error().text(), c.report);
    }
}

} // namespace
