// What the block tags share: their stacks of open blocks, the code that closes a loop, and the jumps that
// leave a block or go on with its next round. The stacks are separate, so blocks of different tags may
// overlap.
#include "backend/opcode_queue.h"
#include "compiler/compiler_parser.h"

#include <memory>
#include <optional>

// A tag that acts on the innermost block of its family.
struct CompilerParser::Block_Jump {
    int tag;
    Stack<Resolution_Info> CompilerParser::*stack;
    int opcode;
    std::optional<ParserLabelType> target;
    Message outside;
    bool then_leaves = false; // the loops of the engine fall out of their loop instruction at the last round
};

constexpr CompilerParser::Block_Jump CompilerParser::block_jumps[] = {
    {Tag::While_Stop, &CompilerParser::while_stack, OPCODE_JMP, LABEL_END, Message::While_Stop_Outside},
    {Tag::While_Continue, &CompilerParser::while_stack, OPCODE_JMP, LABEL_START,
     Message::While_Continue_Outside},
    {Tag::For_Stop, &CompilerParser::for_stack, OPCODE_JMP, LABEL_END, Message::For_Stop_Outside},
    {Tag::For_Continue, &CompilerParser::for_stack, OPCODE_JMP, LABEL_LOOP, Message::For_Continue_Outside},
    {Tag::Foreach_Stop, &CompilerParser::foreach_stack, OPCODE_JMP, LABEL_END, Message::Foreach_Stop_Outside},
    {Tag::Foreach_Continue, &CompilerParser::foreach_stack, OPCODE_JMP, LABEL_LOOP,
     Message::Foreach_Continue_Outside},
    {Tag::Import_Stop, &CompilerParser::import_stack, OPCODE_IMPORT_STOP, LABEL_END,
     Message::Import_Stop_Outside},
    {Tag::Import_Continue, &CompilerParser::import_stack, OPCODE_IMPORT_LOOP, LABEL_START,
     Message::Import_Continue_Outside, true},
    {Tag::Pop_Stop, &CompilerParser::pop_stack, OPCODE_POP3_STOP, LABEL_END, Message::Pop_Stop_Outside},
    {Tag::Pop_Continue, &CompilerParser::pop_stack, OPCODE_POP3_LOOP, LABEL_START,
     Message::Pop_Continue_Outside, true},
    {Tag::Pop_Delete, &CompilerParser::pop_stack, OPCODE_POP3_DELETE, std::nullopt,
     Message::Pop_Delete_Outside},
    {Tag::Call_Stop, &CompilerParser::call_stack, OPCODE_HTTP_STOP, LABEL_END, Message::Call_Stop_Outside},
    {Tag::Call_Continue, &CompilerParser::call_stack, OPCODE_HTTP_LOOP, LABEL_START,
     Message::Call_Continue_Outside, true},
    {Tag::Commerce_Stop, &CompilerParser::commerce_stack, OPCODE_COMMERCE_STOP, LABEL_END,
     Message::Commerce_Stop_Outside},
    {Tag::Commerce_Continue, &CompilerParser::commerce_stack, OPCODE_COMMERCE_LOOP, LABEL_START,
     Message::Commerce_Continue_Outside, true},
};

ParserStatus CompilerParser::Jump_In_Block(int tag) {
    const Block_Jump* jump = block_jumps;
    while (jump->tag != tag)
        ++jump;
    const Resolution_Info* block = (this->*jump->stack).Top();
    if (!block)
        return Report_Message(jump->outside);
    if (!jump->target) {
        Queue(jump->opcode);
        return PARSER_OK;
    }
    opcode_queue->Queue_Opcode_With_Label(jump->opcode, *jump->target, block->label);
    if (jump->then_leaves)
        opcode_queue->Queue_Opcode_With_Label(OPCODE_JMP, LABEL_END, block->label);
    return PARSER_OK;
}

int CompilerParser::Open_Block(Stack<Resolution_Info>* stack) {
    const int label = Take_Label();
    stack->Push(new Resolution_Info(label, Linenumber(), Current_File()));
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
        (void)Report_At<Message::Block_Unclosed>(block->line, &block->file, tag_word, tag_word);
        status = PARSER_ERROR;
    }
    return status;
}

ParserStatus CompilerParser::Check_State_Empty(Stack<Ifdef_Resolution_Info>* stack, ParserStatus status) {
    while (stack->Top()) {
        const std::unique_ptr<Ifdef_Resolution_Info> block(stack->Pop());
        const char* tag_word = block->negated ? "TnIFNDEF" : "TnIFDEF";
        (void)Report_At<Message::Block_Unclosed>(block->line, &block->file, tag_word, tag_word);
        status = PARSER_ERROR;
    }
    return status;
}
