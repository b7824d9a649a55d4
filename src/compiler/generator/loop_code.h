// The instructions that the counted loops are made of.
#ifndef COMPILER_LOOP_CODE_H
#define COMPILER_LOOP_CODE_H

#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"
#include "core/text_length.h"

#include <string_view>

// Writes the code of one block, whose labels all bear its number, from the values of its tag. Variables are
// scratch variables.
class Loop_Code {
  public:
    Loop_Code(CompilerParser* parser, AttributeValueArray* values, int label)
        : parser(parser), queue(parser->Opcode_Queue()), values(values), number(label) {}

    bool Given(int element) const { return values->Element(element)->Is_Set(); }
    void Push_Value(int element) { values->Output(element + 1, element); }
    // The value cut to an integer.
    void Push_Integer_Value(int element) {
        Push_Value(element);
        Push_Integer(0);
        Queue(OPCODE_BITOR);
    }

    // Queue_Opcode, as CompilerParser::Queue is.
    void Queue(int opcode, int operand = 0) { queue->Queue_Opcode(opcode, operand, 0); }
    void Push(int variable) { Queue(OPCODE_PUSHL, variable); }
    void Pop(int variable) { Queue(OPCODE_POPL, variable); }
    void Push_Integer(int value) { Queue(OPCODE_PUSHI, value); }
    void Call(std::string_view function, int parameters) {
        parser->Output_Call(function.data(), Length_Of(function), parameters, 0);
    }

    void Label(ParserLabelType type) { queue->Queue_Generated_Label(type, number); }
    void Jump(int opcode, ParserLabelType type) { queue->Queue_Opcode_With_Label(opcode, type, number); }

    // Ties the variable that has been pushed and the scratch variable together.
    void Bind(int variable) { Queue(OPCODE_POPRL, variable); }
    void Increment(int variable) {
        Push(variable);
        Push_Integer(1);
        Queue(OPCODE_ADD);
        Pop(variable);
    }
    // Leaves the block when the first of the two values on the stack is above the second.
    void Leave_Above() {
        Queue(OPCODE_LE);
        Jump(OPCODE_JMP_EQ, LABEL_END);
    }
    void Leave_Above(int variable, int limit) {
        Push(variable);
        Push(limit);
        Leave_Above();
    }

    CompilerParser* parser;
    OpcodeQueue* queue;
    AttributeValueArray* values;
    int number;
};

#endif
