// Which operation a tag runs at each of its events. What needs the attributes runs at the end of the tag;
// what needs none and has to stand ahead of their code runs at its start.

#include "compiler/generator/block_tables.h"
#include "compiler/generator/plain_tags.h"
#include "compiler/records/tag_rows.h"

#include <iterator>
#include <type_traits>
#include <utility>

// The jumps that leave or repeat a block differ on purpose in when they run: those that run at the start do
// so for a stray closing tag too.
constexpr CompilerParser::Tag_Actions CompilerParser::tag_actions[] = {
    {Tag::If, nullptr, &CompilerParser::Generate_End_If, &CompilerParser::Generate_If},
    {Tag::Else, nullptr, &CompilerParser::Reject_Closing_Else, &CompilerParser::Generate_Else},
    {Tag::Import, nullptr, &CompilerParser::Close_Loop_Block, &CompilerParser::Generate_Import},
    {Tag::Import_Stop, nullptr, nullptr, &CompilerParser::Jump_In_Block},
    {Tag::Export, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Assign, nullptr, nullptr, &CompilerParser::Generate_Assign},
    {Tag::Eval, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Hide, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Pop, nullptr, &CompilerParser::Close_Loop_Block, &CompilerParser::Generate_Pop3},
    {Tag::Pop_Stop, nullptr, nullptr, &CompilerParser::Jump_In_Block},
    {Tag::Pop_Delete, nullptr, nullptr, &CompilerParser::Jump_In_Block},
    {Tag::Smtp, nullptr, &CompilerParser::Close_Smtp, &CompilerParser::Generate_Smtp},
    {Tag::While, &CompilerParser::Open_While, &CompilerParser::Close_While, &CompilerParser::Generate_While},
    {Tag::While_Stop, &CompilerParser::Jump_In_Block, &CompilerParser::Jump_In_Block, nullptr},
    {Tag::Call, nullptr, &CompilerParser::Close_Loop_Block, &CompilerParser::Generate_Call},
    {Tag::Call_Stop, nullptr, nullptr, &CompilerParser::Jump_In_Block},
    {Tag::Function, &CompilerParser::Open_Function, &CompilerParser::Close_Function,
     &CompilerParser::Generate_Function},
    {Tag::Function_Return, &CompilerParser::Check_Return_Placement, &CompilerParser::Reject_Closing_Return,
     &CompilerParser::Generate_Function_Return},
    {Tag::Elseif, nullptr, nullptr, &CompilerParser::Generate_Elseif},
    {Tag::Commerce, nullptr, &CompilerParser::Close_Loop_Block, &CompilerParser::Generate_Commerce},
    {Tag::Commerce_Stop, nullptr, nullptr, &CompilerParser::Jump_In_Block},
    {Tag::Comment, nullptr, &CompilerParser::Reject_Closing_Comment, nullptr},
    {Tag::Do, nullptr, nullptr, &CompilerParser::Generate_Do},
    {Tag::Lockfile, nullptr, &CompilerParser::Close_Lockfile, &CompilerParser::Generate_Lockfile},
    {Tag::Localized, &CompilerParser::Open_Localized, &CompilerParser::Close_Localized,
     &CompilerParser::Check_Localized_ID},
    {Tag::Localized_Token, &CompilerParser::Check_Token_Placement, &CompilerParser::Check_Token_Placement,
     &CompilerParser::Generate_Localized_Token},
    {Tag::Localized_Text, &CompilerParser::Open_Localized_Text, &CompilerParser::Close_Localized_Text,
     nullptr},
    {Tag::Exit, nullptr, nullptr, &CompilerParser::Generate_Exit},
    {Tag::Open, nullptr, nullptr, &CompilerParser::Generate_Open},
    {Tag::Close, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Skip, nullptr, nullptr, &CompilerParser::Generate_Move},
    {Tag::Go, nullptr, nullptr, &CompilerParser::Generate_Move},
    {Tag::Primary, nullptr, nullptr, &CompilerParser::Generate_Primary},
    {Tag::Find, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Setindex, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Update, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Delete, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Undelete, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Add, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Makeindex, nullptr, nullptr, &CompilerParser::Generate_Makeindex},
    {Tag::Pack, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Reindex, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Create, nullptr, nullptr, &CompilerParser::Generate_Create},
    {Tag::Revealstructure, nullptr, nullptr, &CompilerParser::Generate_Revealstructure},
    {Tag::Openview, nullptr, nullptr, &CompilerParser::Generate_Openview},
    {Tag::Closeview, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Query, nullptr, nullptr, &CompilerParser::Generate_Query},
    {Tag::Filter, nullptr, nullptr, &CompilerParser::Generate_Filter},
    {Tag::Tarn, nullptr, nullptr, &CompilerParser::Generate_Tarn},
    {Tag::Assignarray, &CompilerParser::Open_Array_Block, &CompilerParser::Close_Array_Block, nullptr},
    {Tag::Dimension, nullptr, nullptr, nullptr},
    {Tag::Member, nullptr, nullptr, nullptr},
    {Tag::Commit, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Rollback, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Include, &CompilerParser::Open_Include, &CompilerParser::Open_Include,
     &CompilerParser::Generate_Include},
    {Tag::Transact, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Reference, nullptr, nullptr, &CompilerParser::Generate_Reference},
    {Tag::Referencearray, &CompilerParser::Open_Array_Block, &CompilerParser::Close_Array_Block,
     &CompilerParser::Check_Reference_Array},
    {Tag::Dbcommand, nullptr, nullptr, &CompilerParser::Generate_Plain_Tag},
    {Tag::Capture, &CompilerParser::Open_Capture, &CompilerParser::Close_Capture,
     &CompilerParser::Generate_Capture},
    {Tag::Ifdef, nullptr, &CompilerParser::Process_End_IFDEF, &CompilerParser::Process_IFDEF},
    {Tag::Ifndef, nullptr, &CompilerParser::Process_End_IFDEF, &CompilerParser::Process_IFDEF},
    {Tag::Expression, &CompilerParser::Unimplemented_Tag, &CompilerParser::Unimplemented_Tag, nullptr},
    {Tag::Import_Continue, &CompilerParser::Jump_In_Block, &CompilerParser::Jump_In_Block, nullptr},
    {Tag::Pop_Continue, &CompilerParser::Jump_In_Block, &CompilerParser::Jump_In_Block, nullptr},
    {Tag::While_Continue, &CompilerParser::Jump_In_Block, &CompilerParser::Jump_In_Block, nullptr},
    {Tag::Call_Continue, &CompilerParser::Jump_In_Block, &CompilerParser::Jump_In_Block, nullptr},
    {Tag::Commerce_Continue, &CompilerParser::Jump_In_Block, &CompilerParser::Jump_In_Block, nullptr},
    {Tag::Foreach, &CompilerParser::Open_Foreach, &CompilerParser::Close_Foreach,
     &CompilerParser::Generate_Foreach},
    {Tag::Foreach_Stop, &CompilerParser::Jump_In_Block, &CompilerParser::Jump_In_Block, nullptr},
    {Tag::Foreach_Continue, &CompilerParser::Jump_In_Block, &CompilerParser::Jump_In_Block, nullptr},
    {Tag::For, &CompilerParser::Open_For, &CompilerParser::Close_For, &CompilerParser::Generate_For},
    {Tag::For_Stop, &CompilerParser::Jump_In_Block, &CompilerParser::Jump_In_Block, nullptr},
    {Tag::For_Continue, &CompilerParser::Jump_In_Block, &CompilerParser::Jump_In_Block, nullptr},
    {Tag::Assembly, &CompilerParser::Unimplemented_Tag, &CompilerParser::Unimplemented_Tag, nullptr},
    {Tag::Asynchronous, nullptr, &CompilerParser::Close_Asynchronous, &CompilerParser::Generate_Asynchronous},
};

namespace {

// The tags that say where an array block leads, and those that leave no code in it.
bool Is_Allowed_In_Array_Block(int tag) {
    switch (tag) {
    case Tag::Comment:
    case Tag::Assignarray:
    case Tag::Dimension:
    case Tag::Member:
    case Tag::Referencearray:
    case Tag::Ifdef:
    case Tag::Ifndef:
    case Tag::Assembly: return true;
    default: return false;
    }
}

} // namespace

// Whether Blocks_Of has a stack for the family.
constexpr bool CompilerParser::Has_Stack(int family) {
    return Has_Row(block_families, family) && Row_Of(block_families, family).stack;
}

// Whether the table that an operation reads, if it reads one, has a row for the tag. Operations are told
// apart as types, since sanitizers keep pointers from being compared while compiling.
template <CompilerParser::Tag_Operation operation, int tag>
constexpr bool CompilerParser::Has_Its_Row() {
    using Asked = std::integral_constant<Tag_Operation, operation>;
    if (std::is_same_v<Asked, std::integral_constant<Tag_Operation, &CompilerParser::Generate_Plain_Tag>>)
        return Has_Row(plain_tags, tag);
    if (std::is_same_v<Asked, std::integral_constant<Tag_Operation, &CompilerParser::Jump_In_Block>>)
        return Has_Row(block_jumps, tag) && Has_Stack(Row_Of(block_jumps, tag).family);
    if (std::is_same_v<Asked, std::integral_constant<Tag_Operation, &CompilerParser::Close_Loop_Block>>)
        return Has_Row(loop_blocks, tag) && Has_Stack(tag);
    return true;
}

template <int... tags>
constexpr bool CompilerParser::Actions_Are_Sound(std::integer_sequence<int, tags...>) {
    return ((tag_actions[tags].tag == tags && Has_Its_Row<tag_actions[tags].at_open, tags>() &&
             Has_Its_Row<tag_actions[tags].at_close, tags>() &&
             Has_Its_Row<tag_actions[tags].at_end, tags>()) &&
            ...);
}

ParserStatus CompilerParser::Start_Of_Tag(int tag, int closing, int required, int optional,
                                          const char* name) {
    static_assert(std::size(tag_actions) == std::size(required_slots), "a row for each tag");
    static_assert(Actions_Are_Sound(std::make_integer_sequence<int, std::size(tag_actions)>()));

    current_attribute = ATTRIBUTE_NONE;
    ParserStatus placement = PARSER_OK;
    if (closing) {
        current_tag = -1;
        tag_name = nullptr;
    } else {
        current_tag = tag;
        tag_name = name;
        // Tags without an attribute list go on with the values of the tag around them.
        if (required != NO_SLOTS)
            attribute_values->Reset(required + optional);
        if (array_values && !Is_Allowed_In_Array_Block(tag))
            placement = Report<Message::Tag_In_Array_Block>();
    }
    if (tag < 0 || tag >= static_cast<int>(std::size(tag_actions)))
        return Unimplemented_Tag(tag);
    const Tag_Operation operation = closing ? tag_actions[tag].at_close : tag_actions[tag].at_open;
    const ParserStatus status = operation ? (this->*operation)(tag) : PARSER_OK;
    return status == PARSER_OK ? placement : status;
}

// The scanner tells the end of a self-closing tag at its / and again at its >, and it tells the > of a
// closing tag too. The first end of a tag takes it out of current_tag, as a closing tag does at its start, so
// that the end that follows finds none and does nothing.
ParserStatus CompilerParser::End_Of_Tag(int) {
    ParserStatus status = PARSER_OK;
    if (current_tag >= 0 && current_tag < static_cast<int>(std::size(tag_actions))) {
        Close_Valueless_Attribute();
        if (const Tag_Operation operation = tag_actions[current_tag].at_end)
            status = (this->*operation)(current_tag);
    }
    current_tag = -1;
    current_attribute = ATTRIBUTE_NONE;
    return status;
}

ParserStatus CompilerParser::Report_Message(Message message) {
    return CompileError(Code_Of_Message(message), Row_Of_Message(message).text, -1, nullptr);
}

// Numbers wrap around rather than overflow.
int CompilerParser::Take_Label() {
    return std::exchange(next_label, static_cast<int>(static_cast<unsigned>(next_label) + 1));
}

ParserStatus CompilerParser::Unimplemented_Tag(int tag) {
    return Report<Message::Internal_Tag_Number>(tag);
}

ParserStatus CompilerParser::Reject_Closing_Else(int tag) {
    return Report<Message::Closing_Tag_Not_Supported>(Tag_Word(tag), Tag_Word(tag), Tag_Word(tag));
}

ParserStatus CompilerParser::Reject_Closing_Comment(int) {
    return Report<Message::Comment_Unopened>();
}
