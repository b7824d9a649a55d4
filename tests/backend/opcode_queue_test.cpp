#include "backend/assembly_fixture.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

TEST(OpcodeQueue, Expression_Waits_And_Keeps_Its_Lines) {
    Assembly_Parser parser;
    parser.Queue_Expression();
    OpcodeQueue* const queue = parser.Opcode_Queue();
    char name[] = "F";
    parser.line = 1;
    queue->Queue_Variable_Instruction(0, 2, SCOPE_LOCAL, 0, 0);
    queue->Queue_Opcode(OPCODE_CALL, name, -1, 1);
    parser.line = 2;
    queue->Queue_Opcode(OPCODE_PUSHF, 5.07);
    queue->Queue_Opcode(OPCODE_SWAPN, 0, 2);
    queue->Queue_Generated_Label(LABEL_START, 1);
    parser.line = 5;
    queue->Queue_Opcode_With_Label(OPCODE_JMP, LABEL_END, 1);
    queue->Queue_Opcode_With_Label_and_Immediate(OPCODE_HTTPN, LABEL_END, 1, 8);
    std::strcpy(name, "x");
    parser.line = 7;
    EXPECT_EQ(parser.Written(), "");
    parser.Flush_Opcode_Queue();
    EXPECT_EQ(parser.Written(), "\n\tlineno\t1\n\tpushl\tl_2\n\tcall\tf"
                                "\n\tlineno\t2\n\tpushf\t5.07\n\tswapn\t0, 2\nL_start_1:"
                                "\n\tlineno\t5\n\tjmp\tL_end_1\n\thttpn\tL_end_1, 8");
    parser.Opcode_Queue()->Queue_Opcode(OPCODE_OUT, 0, 0);
    EXPECT_EQ(parser.Written(), "\n\tlineno\t7\n\tout");
}

TEST(OpcodeQueue, Long_Expression_Comes_Out_In_Order) {
    constexpr int count = 100000;
    Assembly_Parser parser;
    parser.Queue_Expression();
    std::string expected;
    for (int i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        parser.Opcode_Queue()->Queue_Opcode(OPCODE_PUSHI, number.c_str(), -1, 0);
        expected += "\n\tpushi\t" + number;
    }
    parser.Flush_Opcode_Queue();
    EXPECT_EQ(parser.Written(), expected);
}

} // namespace
