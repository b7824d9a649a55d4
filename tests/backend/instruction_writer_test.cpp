#include "backend/assembly_fixture.h"

#include <gtest/gtest.h>

namespace {

TEST(Instruction_Writer, Each_Form_Has_Its_Text) {
    const struct {
        void (*write)(Assembly_Parser& parser);
        const char* expected;
    } cases[] = {
        {[](auto& p) { p.Output_Opcode(22, 5, 6); }, "\n\tadd"},
        {[](auto& p) { p.Output_Opcode(538, 0, 0); }, "\n\tdbcommand"},
        {[](auto& p) { p.Output_Opcode(62, 0, 0); }, "\n\telem"},
        {[](auto& p) { p.Output_Opcode(63, 0, 0); }, "\n\telem_ro\n.version\t1.3"},
        {[](auto& p) { p.Output_Opcode(65, 0, 0); }, "\n\tmemb_ro\n.version\t1.3"},
        {[](auto& p) { p.Output_Opcode(16385, 7, 6); }, "\n\tpushc\ts_7"},
        {[](auto& p) { p.Output_Opcode(16386, -12, 0); }, "\n\tpushi\t-12"},
        {[](auto& p) { p.Output_Opcode(16388, 3, 0); }, "\n\tpushs\tsys_3"},
        {[](auto& p) { p.Output_Opcode(16389, 0, 0); }, "\n\tpushg\tl_0"},
        {[](auto& p) { p.Output_Opcode(16462, 2147483647, 0); }, "\n\tlocalize\ts_2147483647"},
        {[](auto& p) { p.Output_Opcode(20488, 4, 5); }, "\n\tpushdc\ts_4, s_5"},
        {[](auto& p) { p.Output_Opcode(20555, 1, 72); }, "\n\ttagerror\t1, 72"},
        {[](auto& p) { p.Output_Opcode(20572, 0, 2); }, "\n\tswapn\t0, 2"},
        {[](auto& p) { p.Output_Opcode(16386, "1234567890123456789012345678901234567890", 40, 0); },
         "\n\tpushi\t1234567890123456789012345678901234567890"},
        {[](auto& p) { p.Output_Opcode(32771, "1.50", 4, 0); }, "\n\tpushf\t1.50"},
        {[](auto& p) { p.Output_Opcode(32771, 5.07); }, "\n\tpushf\t5.07"},
        {[](auto& p) { p.Output_Opcode(16445, "Foo", 3, 1); }, "\n\tcall\tfoo"},
        {[](auto& p) { p.Output_Opcode(16445, "Foo", 3, 0); }, "\n\tcall\tFoo"},
        {[](auto& p) { p.Output_Opcode(22, "text alone", 10, 0); }, "text alone"},
        {[](auto& p) { p.Output_Opcode_With_Label(16421, LABEL_LOOP, 12); }, "\n\tjmp\tL_loop_12"},
        {[](auto& p) { p.Output_Opcode_With_Label(16658, LABEL_END, 1); }, "\n\thttp_cf\tL_end_1"},
        {[](auto& p) { p.Output_Opcode_With_Label(22, LABEL_START, 1); }, "L_start_1"},
        {[](auto& p) { p.Output_Opcode_With_Label_and_Immediate(20755, LABEL_END, 1, 8); },
         "\n\thttpn\tL_end_1, 8"},
        {[](auto& p) { p.Output_Generated_Label(LABEL_VERSIONTEST_A_NEW, 2); }, "\nL_versiontest_a_new_2:"},
        {[](auto& p) { p.Output_Generated_Label(LABEL_VERSIONTEST_B_LOOP, 3); }, "\nL_versiontest_b_loop_3:"},
    };
    Assembly_Parser parser;
    for (const auto& c : cases) {
        c.write(parser);
        EXPECT_EQ(parser.Written(), c.expected);
    }
    EXPECT_EQ(parser.Get_Last_Error().length(), 0);
}

TEST(Instruction_Writer, Variables_Are_Spelled_By_Direction_And_Scope) {
    const struct {
        Variable_Scope scope;
        const char* push;
        const char* pop;
        const char* pop_reference;
    } cases[] = {
        {SCOPE_LOCAL, "\n\tpushl\tl_5", "\n\tpopl\tl_5", "\n\tpoprl\tl_5"},
        {SCOPE_GLOBAL, "\n\tpushg\tl_5", "\n\tpopg\tl_5", "\n\tpoprg\tl_5"},
        {SCOPE_SYSTEM, "\n\tpushs\tsys_5", "\n\tpops\tsys_5", "\n\tpoprs\tsys_5"},
        {SCOPE_DATABASE, "\n\tpushdc\ts_9, s_5", "\n\tpopdc\ts_9, s_5", "\n\tpoprdc\ts_9, s_5"},
        {SCOPE_LOCAL_BY_NAME, "\n\tpushlvnc\ts_5", "\n\tpoplvnc\ts_5", "\n\tpoprlvnc\ts_5"},
        {SCOPE_UNSCOPED, "\n\tpushnc\ts_5", "\n\tpopnc\ts_5", "\n\tpoprnc\ts_5"},
    };
    Assembly_Parser parser;
    parser.line = 3; // the queue asks for the line, not this operation
    for (const auto& c : cases) {
        parser.Output_Variable_Instruction(0, 5, c.scope, 9, 1);
        EXPECT_EQ(parser.Written(), c.push);
        parser.Output_Variable_Instruction(1, 5, c.scope, 9, 0);
        EXPECT_EQ(parser.Written(), c.pop);
        parser.Output_Variable_Instruction(1, 5, c.scope, 9, 1);
        EXPECT_EQ(parser.Written(), c.pop_reference);
    }
}

TEST(Instruction_Writer, New_Line_Stands_Ahead_Of_All_But_Line_And_File) {
    Assembly_Parser parser;
    parser.line = 3;
    parser.Output_Opcode(OPCODE_SOURCEFILE, 0, 0);
    parser.Output_Opcode(OPCODE_ADD, 0, 0);
    parser.Output_Opcode(OPCODE_SUB, 0, 0);
    parser.line = 4;
    parser.Output_Opcode(OPCODE_CALL, "f", 1, 0);
    EXPECT_EQ(parser.Written(), "\n\tsourcefile\ts_0\n\tlineno\t3\n\tadd\n\tsub\n\tlineno\t4\n\tcall\tf");
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
