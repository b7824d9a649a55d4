// What the block tags share: their stacks of open blocks, the code that closes a loop, and the jumps that
// leave a block or go on with its next round. The stacks are separate, so blocks of different tags may
// overlap.

#include "backend/queue/opcode_queue.h"
#include "compiler/generator/block_tables.h"
#include "compiler/records/tag_rows.h"

#include <memory>

Stack<Resolution_Info>& CompilerParser::Blocks_Of(int family) {
    return this->*Row_Of(block_families, family).stack;
}

ParserStatus CompilerParser::Jump_In_Block(int tag) {
    const Block_Jump& jump = Row_Of(block_jumps, tag);
    const Resolution_Info* block = Blocks_Of(jump.family).Top();
    if (!block)
        return Report_Message(jump.outside);
    if (!jump.target) {
        Queue(jump.opcode);
        return PARSER_OK;
    }
    opcode_queue->Queue_Opcode_With_Label(jump.opcode, *jump.target, block->label);
    if (jump.then_leaves)
        opcode_queue->Queue_Opcode_With_Label(OPCODE_JMP, LABEL_END, block->label);
    return PARSER_OK;
}

int CompilerParser::Open_Block(Stack<Resolution_Info>* stack) {
    const int label = Take_Label();
    stack->Push(new Resolution_Info(label, Linenumber(), Source_Name()));
    return label;
}

ParserStatus CompilerParser::Generate_End_Block_Code(const char* tag_word, Stack<Resolution_Info>* stack,
                                                     int loop_opcode) {
    return Close_Loop(tag_word, stack, loop_opcode, LABEL_START);
}

ParserStatus CompilerParser::Close_Loop(const char* tag_word, Stack<Resolution_Info>* stack, int loop_opcode,
                                        ParserLabelType back_to) {
    if (!stack->Top())
        return Report<Message::Block_Unopened>(tag_word, tag_word);
    const std::unique_ptr<Resolution_Info> block(stack->Pop());
    opcode_queue->Queue_Opcode_With_Label(loop_opcode, back_to, block->label);
    opcode_queue->Queue_Generated_Label(LABEL_END, block->label);
    return PARSER_OK;
}

ParserStatus CompilerParser::Check_State_Empty(Stack<Resolution_Info>* stack, const char* tag_word,
                                               ParserStatus status) {
    while (stack->Top()) {
        const std::unique_ptr<Resolution_Info> block(stack->Pop());
        Note_At<Message::Block_Unclosed>(block->line, block->file, tag_word, tag_word);
        status = PARSER_ERROR;
    }
    return status;
}

ParserStatus CompilerParser::Check_State_Empty(Stack<Ifdef_Resolution_Info>* stack, ParserStatus status) {
    while (stack->Top()) {
        const std::unique_ptr<Ifdef_Resolution_Info> block(stack->Pop());
        const char* tag_word = Tag_Word(block->negated ? Tag::Ifndef : Tag::Ifdef);
        Note_At<Message::Block_Unclosed>(block->line, block->file, tag_word, tag_word);
        status = PARSER_ERROR;
    }
    return status;
}
