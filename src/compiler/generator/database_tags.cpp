// The database tags: one instruction each, which reads its operands by position. An attribute that was not
// given is pushed as the empty constant.

#include "backend/instructions/engine_version.h"
#include "backend/instructions/opcode.h"
#include "compiler/generator/compiler_parser.h"
#include "frontend/values/text_pieces.h"

namespace {

constexpr int rows_element = element_of<Tag::Skip, Attribute::Rows>;
static_assert(element_of<Tag::Go, Attribute::Row> == rows_element);

} // namespace

void CompilerParser::Output_Database_Command(int operands, int opcode) {
    attribute_values->Output(operands, 0);
    Queue(opcode);
}

ParserStatus CompilerParser::Generate_Open(int tag) {
    if (attribute_values->Check_Complete(Required_Slots(tag)))
        return Report<Message::Open_Requires_Name>();
    if (!Is_Given<Tag::Open, Attribute::Flags>()) {
        Output_Database_Command(element_of<Tag::Open, Attribute::Flags>, OPCODE_DBOPEN);
        return PARSER_OK;
    }
    Output_Database_Command(Slots(tag), OPCODE_DBOPENF);
    return Output_Version(file_version_major, FILE_VERSION_OPEN_FLAGS);
}

ParserStatus CompilerParser::Generate_Move(int tag) {
    Set_Default(attribute_values->Element(rows_element), "1");
    Output_Database_Command(Slots(tag), tag == Tag::Skip ? OPCODE_DBSKIP : OPCODE_DBGO);
    return PARSER_OK;
}

ParserStatus CompilerParser::Generate_Primary(int tag) {
    bool any = false;
    for (int element = 0; element < Slots(tag); ++element)
        any = any || attribute_values->Element(element)->Is_Set();
    if (!any) {
        if (const ParserStatus status = Report<Message::Primary_Requires_Name>())
            return status;
    }
    Output_Database_Command(Slots(tag), OPCODE_DBPRIMARY);
    return PARSER_OK;
}

// All of the tag is looked at before it is given up.
ParserStatus CompilerParser::Generate_Makeindex(int) {
    AttributeValue* expression = Value<Tag::Makeindex, Attribute::Expression>();
    ParserStatus status = PARSER_OK;
    if (!Is_Given<Tag::Makeindex, Attribute::Indexfile>())
        status = Report<Message::Makeindex_Requires_Indexfile>();
    if (!expression->Is_Set())
        status = Report<Message::Makeindex_Requires_Expression>();
    int length = 0;
    int had_braces = 0;
    (void)expression->Chomped_Filter_String(&length, &had_braces); // a missing one was reported above
    ParserStatus filter_status =
        Compile_Filter(expression, Value<Tag::Makeindex, Attribute::Expression_Type>(), had_braces);
    if (length == 0)
        filter_status = Report<Message::Makeindex_Expression_Empty>();
    if (filter_status != PARSER_OK)
        status = filter_status;
    if (status != PARSER_OK)
        return status;
    Output_Database_Command(element_of<Tag::Makeindex, Attribute::Expression_Type>, OPCODE_DBMAKEINDEX);
    return PARSER_OK;
}

ParserStatus CompilerParser::Generate_Create(int tag) {
    ParserStatus status = PARSER_OK;
    if (attribute_values->Check_Complete(element_of<Tag::Create, Attribute::Type>))
        status = Report<Message::Create_Requires_Name>();
    if (!Is_Given<Tag::Create, Attribute::Fields>())
        status = Report<Message::Create_Requires_Fields>();
    if (status != PARSER_OK)
        return status;
    Output_Database_Command(Slots(tag), OPCODE_DBCREATE);
    return PARSER_OK;
}

ParserStatus CompilerParser::Generate_Revealstructure(int) {
    const bool into_database = Is_Given<Tag::Revealstructure, Attribute::Database>();
    const bool into_variable = Is_Given<Tag::Revealstructure, Attribute::Variable>();
    if (!into_database && !into_variable)
        return Report<Message::Reveal_Requires_Database>();
    if (into_database)
        Output_Reveal(Value<Tag::Revealstructure, Attribute::Database>(), OPCODE_DBREVEALDB);
    if (into_variable)
        Output_Reveal(Value<Tag::Revealstructure, Attribute::Variable>(), OPCODE_DBREVEALAGG);
    return PARSER_OK;
}

void CompilerParser::Output_Reveal(AttributeValue* target, int opcode) {
    Value<Tag::Revealstructure, Attribute::Name>()->Output(this, 0, 0, 0);
    Value<Tag::Revealstructure, Attribute::View>()->Output(this, 0, 0, 0);
    target->Output(this, 0, 0, 0);
    Queue(opcode);
}

ParserStatus CompilerParser::Generate_Openview(int tag) {
    if (!Is_Given<Tag::Openview, Attribute::View>())
        return Report<Message::Openview_Requires_View>();
    if (!Is_Given<Tag::Openview, Attribute::Query>())
        return Report<Message::Openview_Requires_Query>();
    Validate_SQL_Fields(*Value<Tag::Openview, Attribute::Fields>());
    Output_Database_Command(Slots(tag), OPCODE_DBOPENVIEW);
    return PARSER_OK;
}

ParserStatus CompilerParser::Generate_Query(int tag) {
    if (!Is_Given<Tag::Query, Attribute::Query>())
        return Report<Message::Query_Requires_Query>();
    Validate_SQL_Fields(*Value<Tag::Query, Attribute::Fields>());
    Output_Database_Command(Slots(tag), OPCODE_DBQUERY);
    return PARSER_OK;
}
