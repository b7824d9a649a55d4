// The database tags: one instruction each, which reads its operands by position. An attribute that was not
// given is pushed as the empty constant.

#include "backend/engine_version.h"
#include "backend/opcode.h"
#include "compiler/compiler_parser.h"
#include "compiler/text_pieces.h"

namespace {

// A tag without checks.
struct Database_Command {
    int tag;
    int operands;
    int opcode;
    int version; // File_Version that is demanded behind the instruction, FILE_VERSION_FIRST for none
};

constexpr Database_Command commands[] = {
    {Tag::Close, 1, OPCODE_DBCLOSE, FILE_VERSION_FIRST},
    {Tag::Find, 4, OPCODE_DBFIND, FILE_VERSION_FIRST},
    {Tag::Setindex, 3, OPCODE_DBSETINDEX, FILE_VERSION_FIRST},
    {Tag::Update, 2, OPCODE_DBUPDATE, FILE_VERSION_FIRST},
    {Tag::Delete, 2, OPCODE_DBDELETE, FILE_VERSION_FIRST},
    {Tag::Undelete, 2, OPCODE_DBUNDELETE, FILE_VERSION_FIRST},
    {Tag::Add, 2, OPCODE_DBADD, FILE_VERSION_FIRST},
    {Tag::Pack, 1, OPCODE_DBPACK, FILE_VERSION_FIRST},
    {Tag::Reindex, 1, OPCODE_DBREINDEX, FILE_VERSION_FIRST},
    {Tag::Closeview, 2, OPCODE_DBCLOSEVIEW, FILE_VERSION_FIRST},
    {Tag::Commit, 1, OPCODE_DBCOMMIT, FILE_VERSION_OPEN_FLAGS},
    {Tag::Rollback, 1, OPCODE_DBROLLBACK, FILE_VERSION_OPEN_FLAGS},
    {Tag::Transact, 1, OPCODE_DBTRANSACT, FILE_VERSION_REFERENCES},
    {Tag::Dbcommand, 3, OPCODE_DBCOMMAND, FILE_VERSION_REFERENCES},
};

const Database_Command& Command_Of(int tag) {
    const Database_Command* command = commands;
    while (command->tag != tag)
        ++command;
    return *command;
}

namespace Open {
enum Element { FLAGS = 6 };
}

// ROW in TnGO.
namespace Move {
enum Element { ROWS = 2 };
}

namespace Makeindex {
enum Element { INDEXFILE = 1, EXPRESSION = 2, EXPRESSION_TYPE = 4 };
}

namespace Create {
enum Element { FIELDS = 3 };
}

namespace Reveal {
enum Element { NAME = 0, VARIABLE = 1, VIEW = 2, DATABASE = 3 };
}

namespace Openview {
enum Element { VIEW = 1, QUERY = 2, FIELDS = 3 };
}

namespace Query {
enum Element { QUERY = 1, FIELDS = 2 };
}

} // namespace

void CompilerParser::Output_Database_Command(int operands, int opcode) {
    attribute_values->Output(operands, 0);
    Queue(opcode);
}

ParserStatus CompilerParser::Generate_Database_Command(int tag) {
    const Database_Command& command = Command_Of(tag);
    Output_Database_Command(command.operands, command.opcode);
    if (command.version == FILE_VERSION_FIRST)
        return PARSER_OK;
    return Output_Version(file_version_major, command.version);
}

ParserStatus CompilerParser::Generate_Open(int) {
    if (attribute_values->Check_Complete(2))
        return Report<Message::Open_Requires_Name>();
    if (!attribute_values->Element(Open::FLAGS)->Is_Set()) {
        Output_Database_Command(Open::FLAGS, OPCODE_DBOPEN);
        return PARSER_OK;
    }
    Output_Database_Command(Open::FLAGS + 1, OPCODE_DBOPENF);
    return Output_Version(file_version_major, FILE_VERSION_OPEN_FLAGS);
}

ParserStatus CompilerParser::Generate_Move(int tag) {
    Set_Default(attribute_values->Element(Move::ROWS), "1");
    Output_Database_Command(3, tag == Tag::Skip ? OPCODE_DBSKIP : OPCODE_DBGO);
    return PARSER_OK;
}

ParserStatus CompilerParser::Generate_Primary(int) {
    bool any = false;
    for (int element = 0; element < 3; ++element)
        any = any || attribute_values->Element(element)->Is_Set();
    if (!any) {
        if (ParserStatus status = Report<Message::Primary_Requires_Name>())
            return status;
    }
    Output_Database_Command(3, OPCODE_DBPRIMARY);
    return PARSER_OK;
}

// All of the tag is looked at before it is given up.
ParserStatus CompilerParser::Generate_Makeindex(int) {
    AttributeValue* expression = attribute_values->Element(Makeindex::EXPRESSION);
    ParserStatus status = PARSER_OK;
    if (!attribute_values->Element(Makeindex::INDEXFILE)->Is_Set())
        status = Report<Message::Makeindex_Requires_Indexfile>();
    if (!expression->Is_Set())
        status = Report<Message::Makeindex_Requires_Expression>();
    int length = 0;
    int had_braces = 0;
    (void)expression->Chomped_Filter_String(&length, &had_braces); // a missing one was reported above
    ParserStatus filter_status =
        Compile_Filter(expression, attribute_values->Element(Makeindex::EXPRESSION_TYPE), had_braces);
    if (length == 0)
        filter_status = Report<Message::Makeindex_Expression_Empty>();
    if (filter_status != PARSER_OK)
        status = filter_status;
    if (status != PARSER_OK)
        return status;
    Output_Database_Command(4, OPCODE_DBMAKEINDEX);
    return PARSER_OK;
}

ParserStatus CompilerParser::Generate_Create(int) {
    ParserStatus status = PARSER_OK;
    if (attribute_values->Check_Complete(2))
        status = Report<Message::Create_Requires_Name>();
    if (!attribute_values->Element(Create::FIELDS)->Is_Set())
        status = Report<Message::Create_Requires_Fields>();
    if (status != PARSER_OK)
        return status;
    Output_Database_Command(4, OPCODE_DBCREATE);
    return PARSER_OK;
}

ParserStatus CompilerParser::Generate_Revealstructure(int) {
    bool into_database = attribute_values->Element(Reveal::DATABASE)->Is_Set();
    bool into_variable = attribute_values->Element(Reveal::VARIABLE)->Is_Set();
    if (!into_database && !into_variable)
        return Report<Message::Reveal_Requires_Database>();
    if (into_database)
        Output_Reveal(Reveal::DATABASE, OPCODE_DBREVEALDB);
    if (into_variable)
        Output_Reveal(Reveal::VARIABLE, OPCODE_DBREVEALAGG);
    return PARSER_OK;
}

void CompilerParser::Output_Reveal(int target, int opcode) {
    for (int element : {static_cast<int>(Reveal::NAME), static_cast<int>(Reveal::VIEW), target})
        attribute_values->Element(element)->Output(this, 0, 0, 0);
    Queue(opcode);
}

ParserStatus CompilerParser::Generate_Openview(int) {
    if (!attribute_values->Element(Openview::VIEW)->Is_Set())
        return Report<Message::Openview_Requires_View>();
    if (!attribute_values->Element(Openview::QUERY)->Is_Set())
        return Report<Message::Openview_Requires_Query>();
    Validate_SQL_Fields(*attribute_values->Element(Openview::FIELDS));
    Output_Database_Command(4, OPCODE_DBOPENVIEW);
    return PARSER_OK;
}

ParserStatus CompilerParser::Generate_Query(int) {
    if (!attribute_values->Element(Query::QUERY)->Is_Set())
        return Report<Message::Query_Requires_Query>();
    Validate_SQL_Fields(*attribute_values->Element(Query::FIELDS));
    Output_Database_Command(3, OPCODE_DBQUERY);
    return PARSER_OK;
}
