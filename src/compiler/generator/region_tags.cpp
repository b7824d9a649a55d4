// Blocks around a stretch of the page: TnCAPTURE, TnLOCKFILE and TnASYNCHRONOUS.

#include "backend/instructions/engine_version.h"
#include "backend/instructions/opcode.h"
#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"

#include <memory>

ParserStatus CompilerParser::Open_Capture(int) {
    saved_capture_flags = -1;
    return PARSER_OK;
}

// The variable is pushed also when the report of a missing one was made.
ParserStatus CompilerParser::Generate_Capture(int) {
    AttributeValue* variable = Value<Tag::Capture, Attribute::Variable>();
    ParserStatus status = PARSER_OK;
    if (!variable->Is_Set())
        status = Report<Message::Capture_Requires_Variable>();
    if (variable->Parse_String_Variable(this))
        status = Report_Stored_Error(*variable);
    if (status != PARSER_OK)
        return status;
    Queue(OPCODE_CAPTURE);
    status = Output_Version(file_version_major, FILE_VERSION_CAPTURE);
    capture_stack.Push(
        new Capture_Resolution_Info(next_label, Linenumber(), Source_Name(), saved_capture_flags));
    return status;
}

ParserStatus CompilerParser::Close_Capture(int) {
    if (!capture_stack.Top())
        return Report<Message::Capture_Unopened>();
    std::unique_ptr<Capture_Resolution_Info> block(
        static_cast<Capture_Resolution_Info*>(capture_stack.Pop()));
    Queue(OPCODE_CAPTURE_END);
    if (block->saved_flags != -1) {
        Output_Compression_Level(block->saved_flags);
        Set_Output_Flags(block->saved_flags);
    }
    return PARSER_OK;
}

ParserStatus CompilerParser::Generate_Lockfile(int tag) {
    if (!Is_Given<Tag::Lockfile, Attribute::File>())
        return Report<Message::Lockfile_Requires_File>();
    attribute_values->Output(Slots(tag), 0);
    lockfile_stack.Push(new Resolution_Info(next_label, Linenumber(), Source_Name()));
    Queue(OPCODE_LOCKFILE);
    return PARSER_OK;
}

ParserStatus CompilerParser::Close_Lockfile(int) {
    if (!lockfile_stack.Top())
        return Report<Message::Lockfile_Unopened>();
    delete lockfile_stack.Pop();
    Queue(OPCODE_LOCKFILE_END);
    return PARSER_OK;
}

// A refused opening is counted too, so that its closing tag is taken without a word.
ParserStatus CompilerParser::Generate_Asynchronous(int tag) {
    ++async_depth;
    if (async_block)
        return Report<Message::Block_Nested>(Tag_Word(tag));
    const int label = Take_Label();
    async_block = std::make_unique<Resolution_Info>(label, Linenumber(), Source_Name());
    if (!Is_Given<Tag::Asynchronous, Attribute::Isolation>()) {
        const ParserStatus status = Output_Version(file_version_major, FILE_VERSION_ASYNCHRONOUS);
        opcode_queue->Queue_Opcode_With_Label(OPCODE_ASYNC, LABEL_END, label);
        return status;
    }
    const ParserStatus status = Output_Version(file_version_major, FILE_VERSION_ISOLATION);
    attribute_values->Output(Slots(tag), 0);
    opcode_queue->Queue_Opcode_With_Label_and_Immediate(OPCODE_ASYNCN, LABEL_END, label, Slots(tag));
    return status;
}

ParserStatus CompilerParser::Close_Asynchronous(int) {
    ParserStatus status = PARSER_ERROR;
    if (async_block) {
        Queue(OPCODE_ASYNC_END);
        opcode_queue->Queue_Generated_Label(LABEL_END, async_block->label);
        async_block.reset();
        status = PARSER_OK;
    } else if (async_depth == 0) {
        Note<Message::Asynchronous_Unopened>();
    }
    if (async_depth > 0)
        --async_depth;
    return status;
}
