// TnIF, TnELSE and TnELSEIF. A false condition jumps to the start label of its record, which stands where the
// else part starts. Each TnELSEIF is the else of the record before and opens one more, of the same chain; the
// closing tag closes the whole chain.

#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"

#include <memory>

namespace {

constexpr int no_chain = -1; // of the record that starts a chain

If_Resolution_Info* As_If(Resolution_Info* block) {
    return static_cast<If_Resolution_Info*>(block);
}

} // namespace

ParserStatus CompilerParser::Generate_If(int tag) {
    if (attribute_values->Check_Complete(Slots(tag)))
        return Report<Message::If_Requires_Expression>();
    attribute_values->Output(Slots(tag), 0);
    Check_Conditional();
    int chain = no_chain;
    if (tag == Tag::Elseif) {
        const If_Resolution_Info* before = As_If(if_stack.Top());
        if (!before)
            return Report<Message::Elseif_Without_If>();
        chain = before->chain == no_chain ? before->label : before->chain;
    }
    const int label = Take_Label();
    if_stack.Push(new If_Resolution_Info(label, Linenumber(), Source_Name(), chain));
    opcode_queue->Queue_Opcode_With_Label(OPCODE_JMP_EQ, LABEL_START, label);
    return PARSER_OK;
}

// The code is written ahead of the check for a repeated else.
ParserStatus CompilerParser::Generate_Else(int) {
    If_Resolution_Info* block = As_If(if_stack.Top());
    if (!block)
        return Report<Message::Else_Without_If>();
    opcode_queue->Queue_Opcode_With_Label(OPCODE_JMP, LABEL_END, block->label);
    opcode_queue->Queue_Generated_Label(LABEL_START, block->label);
    return block->Set_Else_Used() ? Report<Message::Else_Repeated>() : PARSER_OK;
}

ParserStatus CompilerParser::Generate_Elseif(int tag) {
    const ParserStatus status = Generate_Else(tag);
    return status == PARSER_OK ? Generate_If(tag) : status;
}

ParserStatus CompilerParser::Generate_End_If(int) {
    if (!if_stack.Top())
        return Report<Message::If_Unopened>();
    int chain;
    do {
        const std::unique_ptr<If_Resolution_Info> block(As_If(if_stack.Pop()));
        if (!block->else_used)
            opcode_queue->Queue_Generated_Label(LABEL_START, block->label);
        opcode_queue->Queue_Generated_Label(LABEL_END, block->label);
        chain = block->chain;
    } while (chain != no_chain && if_stack.Top());
    return PARSER_OK;
}

void CompilerParser::Check_Conditional() {
    if (conditional_operators == 0) {
        Queue(OPCODE_PUSHI, 0);
        Queue(OPCODE_NE);
    }
}
