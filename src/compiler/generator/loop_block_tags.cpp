// The blocks whose body the engine runs in a loop: TnIMPORT, TnPOP, TnCOMMERCE and, with its opening in
// call_tag.cpp, TnCALL. Each opens with an instruction that carries the exit label and closes with its loop
// instruction.

#include "backend/instructions/opcode.h"
#include "backend/queue/opcode_queue.h"
#include "compiler/generator/block_tables.h"
#include "compiler/records/tag_rows.h"

namespace {

// The operands without a filter, and the filter.
constexpr int filter_element = element_of<Tag::Import, Attribute::Filter>;

} // namespace

ParserStatus CompilerParser::Close_Loop_Block(int tag) {
    const Loop_Block& block = Row_Of(loop_blocks, tag);
    if (const ParserStatus status =
            Generate_End_Block_Code(Tag_Word(tag), &Blocks_Of(tag), block.loop_opcode))
        return status;
    if (block.has_frame)
        Queue(OPCODE_SPOP);
    return PARSER_OK;
}

void CompilerParser::Output_Loop_Opening(int tag, int opcode) {
    const Loop_Block& block = Row_Of(loop_blocks, tag);
    const int label = Open_Block(&Blocks_Of(tag));
    if (block.has_frame)
        Queue(OPCODE_SPUSH);
    opcode_queue->Queue_Opcode_With_Label(opcode, LABEL_END, label);
    opcode_queue->Queue_Generated_Label(LABEL_START, label);
}

ParserStatus CompilerParser::Generate_Pop3(int tag) {
    if (attribute_values->Check_Complete(Slots(tag)))
        return Report<Message::Pop_Requires_Mailhost>();
    attribute_values->Output(Slots(tag), 0);
    Output_Loop_Opening(tag, OPCODE_POP3);
    return PARSER_OK;
}

ParserStatus CompilerParser::Generate_Commerce(int tag) {
    if (!Is_Given<Tag::Commerce, Attribute::Method>())
        return Report<Message::Commerce_Requires_Method>();
    attribute_values->Output(Slots(tag), 0);
    Output_Loop_Opening(tag, OPCODE_COMMERCE);
    return PARSER_OK;
}

// The filter is looked at also when a required attribute is missing.
ParserStatus CompilerParser::Generate_Import(int tag) {
    ParserStatus status = PARSER_OK;
    if (attribute_values->Check_Complete(Required_Slots(tag)))
        status = Report<Message::Import_Requires_File>();
    AttributeValue* filter = Value<Tag::Import, Attribute::Filter>();
    int length = 0;
    int had_braces = 0;
    (void)filter->Chomped_Filter_String(&length, &had_braces); // without a filter the length is 0
    if (length > 0) {
        if (const ParserStatus filter_status =
                Compile_Filter(filter, Value<Tag::Import, Attribute::Filter_Type>(), had_braces))
            status = filter_status;
    }
    if (status != PARSER_OK)
        return status;
    attribute_values->Output(length > 0 ? filter_element + 1 : filter_element, 0);
    Output_Loop_Opening(tag, length > 0 ? OPCODE_IMPORTF : OPCODE_IMPORT);
    return PARSER_OK;
}
