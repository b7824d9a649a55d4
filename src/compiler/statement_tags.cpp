// Tags that push their values and write one instruction.
#include "backend/opcode_queue.h"
#include "compiler/compiler_parser.h"

namespace {

struct Statement {
    int tag;
    int operands; // all of them required
    int opcode;
    Message incomplete;
};

constexpr Statement statements[] = {
    {Tag::Eval, 1, OPCODE_OUT, Message::Eval_Requires_Expression},
    {Tag::Hide, 1, OPCODE_HIDE, Message::Hide_Requires_Fields},
    {Tag::Export, 3, OPCODE_EXPORT, Message::Export_Requires_File},
};

} // namespace

ParserStatus CompilerParser::Generate_Statement(int tag) {
    const Statement* statement = statements;
    while (statement->tag != tag)
        ++statement;
    if (attribute_values->Check_Complete(statement->operands))
        return Report_Message(statement->incomplete);
    attribute_values->Output(statement->operands, 0);
    opcode_queue->Queue_Opcode(statement->opcode, 0, 0);
    return PARSER_OK;
}

ParserStatus CompilerParser::Generate_Exit(int) {
    opcode_queue->Queue_Opcode(OPCODE_EXIT, 0, 0);
    return PARSER_OK;
}
