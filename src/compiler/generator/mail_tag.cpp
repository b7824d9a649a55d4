// TnSMTP: a mail whose body is the block. It does not nest.

#include "backend/instructions/engine_version.h"
#include "backend/instructions/opcode.h"
#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"

namespace {

constexpr int port_element = element_of<Tag::Smtp, Attribute::Port>;
constexpr int plain_operands = port_element; // those ahead of it

// The target may be older than the counted form and the running engine newer: both are written, and the
// engine chooses.
void Output_Version_Test(CompilerParser* parser, AttributeValueArray* values, int label, int count) {
    OpcodeQueue* queue = parser->Opcode_Queue();
    const int version = parser->Find_Variable_Ident(engine_version_variable.data(),
                                                    engine_version_variable.size(), SCOPE_SYSTEM);
    values->Output(plain_operands, 0);
    queue->Queue_Opcode(OPCODE_PUSHS, version, 0);
    queue->Queue_Opcode(OPCODE_PUSHF, file_version_engines[FILE_VERSION_SMTP_COUNTED]);
    queue->Queue_Opcode(OPCODE_LT, 0, 0);
    queue->Queue_Opcode_With_Label(OPCODE_JMP_EQ, LABEL_VERSIONTEST_A_NEW, label);
    queue->Queue_Opcode_With_Label(OPCODE_SMTP, LABEL_END, label);
    queue->Queue_Opcode_With_Label(OPCODE_JMP, LABEL_START, label);
    queue->Queue_Generated_Label(LABEL_VERSIONTEST_A_NEW, label);
    values->Output(count, plain_operands);
    queue->Queue_Opcode_With_Label_and_Immediate(OPCODE_SMTPN, LABEL_END, label, count);
    queue->Queue_Generated_Label(LABEL_START, label);
}

} // namespace

ParserStatus CompilerParser::Generate_Smtp(int tag) {
    if (smtp_block)
        return Report<Message::Block_Nested>(Tag_Word(tag));
    if (attribute_values->Check_Complete(Required_Slots(tag)))
        return Report<Message::Smtp_Requires_From>();
    const int label = Take_Label();
    (void)attribute_values->Output_SMTP(label); // a version report stands by itself
    smtp_block = std::make_unique<Resolution_Info>(label, Linenumber(), Source_Name());
    return PARSER_OK;
}

ParserStatus CompilerParser::Close_Smtp(int) {
    if (!smtp_block)
        return Report<Message::Smtp_Unopened>();
    Queue(OPCODE_SMTP_END);
    opcode_queue->Queue_Generated_Label(LABEL_END, smtp_block->label);
    smtp_block.reset();
    return PARSER_OK;
}

ParserStatus AttributeValueArray::Output_SMTP(int label) {
    OpcodeQueue* queue = parser->Opcode_Queue();
    if (last_used < port_element) {
        Output(plain_operands, 0);
        queue->Queue_Opcode_With_Label(OPCODE_SMTP, LABEL_END, label);
        return PARSER_OK;
    }
    parser->Set_Default(Element(port_element), "25");
    const int count = last_used + 1;
    if (parser->Engine_Version() >= file_version_engines[FILE_VERSION_SMTP_COUNTED]) {
        const ParserStatus status = parser->Output_Version(file_version_major, FILE_VERSION_SMTP_COUNTED);
        Output(count, 0);
        queue->Queue_Opcode_With_Label_and_Immediate(OPCODE_SMTPN, LABEL_END, label, count);
        return status;
    }
    Output_Version_Test(parser, this, label, count);
    return PARSER_OK;
}
