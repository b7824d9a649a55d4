// What the writers say where no page can show it: texts of all kinds at all places, and misuse.

#include "backend/assembly_fixture.h"

#include <gtest/gtest.h>

namespace {

TEST(Writers, Say_What_No_Page_Shows) {
    const struct {
        void (*write)(Assembly_Parser& parser);
        const char* expected;
        const char* report;
    } cases[] = {
        {[](auto& p) { p.Output_Variable_Directive(nullptr, "a\\\\b\"\\.c\\", -1, 2, SCOPE_GLOBAL); },
         "\n.global\tl_2\t\"a\\b\".c\"", ""},
        {[](auto& p) { p.Output_Variable_Directive(nullptr, "x", 1, 2, SCOPE_DATABASE); }, "", ""},
        {[](auto& p) { p.Output_Localized_Directive("e\\n", 3, "i\\d", 3, "a\\b", 3); },
         "\n.localized\t\"en\"\t\"id\"\t\"a\\5cb\"", ""},
        {[](auto& p) { p.Output_Function_Directive("F", 1, 0, 3, 1, -1); },
         "\n\n.function f\terroroutputlevelon", ""},
        {[](auto& p) { p.Output_Function_Directive("F", 1, 3, 4, 0, 2); },
         "\n\n.function f\texternal\tunresolved\terroroutputleveloff\tcompresswhitespace\tprivate"
         "\n.version\t1.12",
         ""},
        {[](auto& p) { p.Output_Opcode(22, "text alone", 10, 0); }, "text alone", ""},
        {[](auto& p) { p.Output_Opcode_With_Label(22, LABEL_START, 1); }, "L_start_1", ""},
        {[](auto& p) { p.Output_Opcode(527, 4, 5); }, "", "Internal error: Opcode not implemented"},
        {[](auto& p) { p.Output_Opcode(16421, 4, 5); }, "4", "Internal error: Opcode not implemented"},
        {[](auto& p) { p.Output_Opcode(OPCODE_PUSHI, -2147483647 - 1, 0); }, "\n\tpushi\t-2147483648", ""},
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

TEST(OpcodeQueue, Expression_Waits_With_Its_Own_Lines_And_Texts) {
    Assembly_Parser parser;
    parser.Queue_Expression();
    OpcodeQueue* const queue = parser.Opcode_Queue();
    char name[] = "F";
    parser.Go_To_Line(1);
    queue->Queue_Opcode(OPCODE_CALL, name, -1, 1);
    queue->Queue_Opcode(OPCODE_ELEM_RO, 0, 0);
    parser.Go_To_Line(5);
    queue->Queue_Opcode_With_Label_and_Immediate(OPCODE_HTTPN, LABEL_END, 1, 8);
    queue->Clear_RHS();
    name[0] = 'x';
    parser.Go_To_Line(7);
    EXPECT_EQ(parser.Written(), "");
    parser.Flush_Opcode_Queue();
    parser.Queue_Expression(); // which changes nothing by itself
    parser.Opcode_Queue()->Queue_Opcode(OPCODE_ELEM_RO, 0, 0);
    parser.Flush_Opcode_Queue();
    EXPECT_EQ(parser.Written(), "\n\tlineno\t1\n\tcall\tf\n\telem\n\tlineno\t5\n\thttpn\tL_end_1, 8"
                                "\n\tlineno\t7\n\telem_ro\n.version\t1.3");
}

} // namespace
