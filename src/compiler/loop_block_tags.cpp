// The blocks whose body the engine runs in a loop: TnIMPORT, TnPOP, TnCOMMERCE and, with its opening in
// call_tag.cpp, TnCALL. Each opens with an instruction that carries the exit label and closes with its loop
// instruction.

#include "backend/opcode.h"
#include "backend/opcode_queue.h"
#include "compiler/compiler_parser.h"

namespace {

enum Import_Element { IMPORT_FILTER = 3, IMPORT_FILTER_TYPE = 4 };

} // namespace

struct CompilerParser::Loop_Block {
    int tag;
    const char* word;
    Stack<Resolution_Info> CompilerParser::*stack;
    int loop_opcode;
    bool has_frame; // of variables: spush at the start, spop behind the closing label
};

const CompilerParser::Loop_Block& CompilerParser::Loop_Block_Of(int tag) {
    static constexpr Loop_Block blocks[] = {
        {Tag::Import, "TnIMPORT", &CompilerParser::import_stack, OPCODE_IMPORT_LOOP, false},
        {Tag::Pop, "TnPOP", &CompilerParser::pop_stack, OPCODE_POP3_LOOP, false},
        {Tag::Commerce, "TnCOMMERCE", &CompilerParser::commerce_stack, OPCODE_COMMERCE_LOOP, true},
        {Tag::Call, "TnCALL", &CompilerParser::call_stack, OPCODE_HTTP_LOOP, true},
    };
    const Loop_Block* block = blocks;
    while (block->tag != tag)
        ++block;
    return *block;
}

ParserStatus CompilerParser::Close_Loop_Block(int tag) {
    const Loop_Block& block = Loop_Block_Of(tag);
    if (ParserStatus status = Generate_End_Block_Code(block.word, &(this->*block.stack), block.loop_opcode))
        return status;
    if (block.has_frame)
        Queue(OPCODE_SPOP);
    return PARSER_OK;
}

void CompilerParser::Output_Loop_Opening(int tag, int opcode) {
    const Loop_Block& block = Loop_Block_Of(tag);
    const int label = Open_Block(&(this->*block.stack));
    if (block.has_frame)
        Queue(OPCODE_SPUSH);
    opcode_queue->Queue_Opcode_With_Label(opcode, LABEL_END, label);
    opcode_queue->Queue_Generated_Label(LABEL_START, label);
}

ParserStatus CompilerParser::Generate_Pop3(int tag) {
    if (attribute_values->Check_Complete(4))
        return Report<Message::Pop_Requires_Mailhost>();
    attribute_values->Output(4, 0);
    Output_Loop_Opening(tag, OPCODE_POP3);
    return PARSER_OK;
}

ParserStatus CompilerParser::Generate_Commerce(int tag) {
    if (!attribute_values->Element(0)->Is_Set())
        return Report<Message::Commerce_Requires_Method>();
    attribute_values->Output(3, 0);
    Output_Loop_Opening(tag, OPCODE_COMMERCE);
    return PARSER_OK;
}

// The filter is looked at also when a required attribute is missing.
ParserStatus CompilerParser::Generate_Import(int tag) {
    ParserStatus status = PARSER_OK;
    if (attribute_values->Check_Complete(3))
        status = Report<Message::Import_Requires_File>();
    AttributeValue* filter = attribute_values->Element(IMPORT_FILTER);
    int length = 0;
    int had_braces = 0;
    (void)filter->Chomped_Filter_String(&length, &had_braces);
    if (length > 0) {
        if (ParserStatus filter_status =
                Compile_Filter(filter, attribute_values->Element(IMPORT_FILTER_TYPE), had_braces))
            status = filter_status;
    }
    if (status != PARSER_OK)
        return status;
    attribute_values->Output(length > 0 ? 4 : 3, 0);
    Output_Loop_Opening(tag, length > 0 ? OPCODE_IMPORTF : OPCODE_IMPORT);
    return PARSER_OK;
}
