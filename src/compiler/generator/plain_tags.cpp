// What the plain tags have in common, and TnEXIT, which has no values.

#include "compiler/generator/plain_tags.h"

#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"
#include "compiler/records/tag_rows.h"

ParserStatus CompilerParser::Generate_Plain_Tag(int tag) {
    const Plain_Tag& row = Row_Of(plain_tags, tag);
    if (row.incomplete && attribute_values->Check_Complete(Slots(tag)))
        return Report_Message(*row.incomplete);
    attribute_values->Output(Slots(tag), 0);
    Queue(row.opcode);
    if (row.version == FILE_VERSION_FIRST)
        return PARSER_OK;
    return Output_Version(file_version_major, row.version);
}

ParserStatus CompilerParser::Generate_Exit(int) {
    Queue(OPCODE_EXIT);
    return PARSER_OK;
}
