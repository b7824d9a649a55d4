// TnWHILE: the start label stands ahead of the condition, which is tested in every round.

#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"

ParserStatus CompilerParser::Open_While(int) {
    opcode_queue->Queue_Generated_Label(LABEL_START, Open_Block(&while_stack));
    return PARSER_OK;
}

// Without a condition nothing is reported: the loop runs until something leaves it.
ParserStatus CompilerParser::Generate_While(int tag) {
    if (attribute_values->Check_Complete(Slots(tag)))
        return PARSER_ERROR;
    attribute_values->Output(Slots(tag), 0);
    Check_Conditional();
    const Resolution_Info* block = while_stack.Top();
    if (!block)
        return Report<Message::While_Unopened>();
    opcode_queue->Queue_Opcode_With_Label(OPCODE_JMP_EQ, LABEL_END, block->label);
    return PARSER_OK;
}

ParserStatus CompilerParser::Close_While(int tag) {
    return Generate_End_Block_Code(Tag_Word(tag), &while_stack, OPCODE_JMP);
}
