// TnCALL: an HTTP request. The number of operands follows the highest attribute given, in the steps that the
// engines know.

#include "backend/instructions/engine_version.h"
#include "backend/instructions/opcode.h"
#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"

namespace {

constexpr int certfile_element = element_of<Tag::Call, Attribute::Certfile>;
constexpr int certvalue_element = element_of<Tag::Call, Attribute::Certvalue>;
constexpr int flags_element = element_of<Tag::Call, Attribute::Flags>;
constexpr int pin_algorithm_element = element_of<Tag::Call, Attribute::Pin_Algorithm>;
constexpr int pin_digest_element = element_of<Tag::Call, Attribute::Pin_Digest>;

// Operands of the older instructions.
constexpr int plain_operands = certfile_element;
constexpr int certificate_operands = element_of<Tag::Call, Attribute::Timeout>;

} // namespace

// The block exists from the spush on, so that its closing tag matches also when a check ends the generation.
ParserStatus CompilerParser::Generate_Call(int tag) {
    if (attribute_values->Check_Complete(Required_Slots(tag)))
        return Report<Message::Call_Requires_Action>();
    const int count = Highest_Set_Element() + 1;
    const int label = Open_Block(&call_stack);
    Queue(OPCODE_SPUSH);
    const ParserStatus status = Engine_Version() >= counted_call_engine ? Output_Counted_Call(label, count)
                                                                        : Output_Old_Call(label, count);
    if (status == PARSER_OK)
        opcode_queue->Queue_Generated_Label(LABEL_START, label);
    return status;
}

int CompilerParser::Highest_Set_Element() {
    int element = elements_of<Tag::Call> - 1;
    while (element >= 0 && !attribute_values->Element(element)->Is_Set())
        --element;
    return element;
}

ParserStatus CompilerParser::Output_Counted_Call(int label, int count) {
    if (const ParserStatus status = Output_Version(file_version_major, FILE_VERSION_CALL_COUNTED))
        return status;
    if (count <= plain_operands)
        count = plain_operands;
    else if (count <= certificate_operands)
        count = certificate_operands;
    else if (const ParserStatus status = Check_Call_Attributes(count))
        return status;
    attribute_values->Output(count, 0);
    opcode_queue->Queue_Opcode_With_Label_and_Immediate(OPCODE_HTTPN, LABEL_END, label, count);
    return PARSER_OK;
}

ParserStatus CompilerParser::Check_Call_Attributes(int count) {
    auto given = [this](int element) { return attribute_values->Element(element)->Is_Set(); };
    const double engine = Engine_Version();
    if (count > certvalue_element) {
        if (given(certfile_element) && given(certvalue_element))
            return Report<Message::Call_Certificate_Twice>();
        if (given(certvalue_element) && engine < call_certvalue_engine)
            return Report<Message::Call_Certvalue_Version>(Engine_Version_Text());
    }
    if (count > flags_element && given(flags_element) && engine < call_flags_engine)
        return Report<Message::Call_Flags_Version>(Engine_Version_Text());
    if (count > pin_algorithm_element && (given(pin_algorithm_element) || given(pin_digest_element))) {
        if (engine < call_pin_engine)
            return Report<Message::Call_Pin_Version>(Engine_Version_Text());
        if (given(pin_algorithm_element) != given(pin_digest_element))
            return Report<Message::Call_Pin_Incomplete>();
    }
    return PARSER_OK;
}

// More operands than the old format holds: the version is demanded, and no opening instruction written. Old
// engines skip such a block, which sources that serve several engines rely on.
ParserStatus CompilerParser::Output_Old_Call(int label, int count) {
    if (count <= plain_operands) {
        attribute_values->Output(plain_operands, 0);
        opcode_queue->Queue_Opcode_With_Label(OPCODE_HTTP, LABEL_END, label);
        return PARSER_OK;
    }
    if (count > certificate_operands) {
        (void)Output_Version(file_version_major, FILE_VERSION_CALL_COUNTED); // has reported
        return PARSER_OK;
    }
    if (const ParserStatus status = Output_Version(file_version_major, FILE_VERSION_CALL_CERTIFICATE))
        return status;
    attribute_values->Output(certificate_operands, 0);
    opcode_queue->Queue_Opcode_With_Label(OPCODE_HTTP_CF, LABEL_END, label);
    return PARSER_OK;
}
