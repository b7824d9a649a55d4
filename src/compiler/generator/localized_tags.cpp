// Texts in several languages. The variants are no code: each becomes a directive with its language and the id
// of the block, and the block comes down to one instruction that names the id. A block has no stack: an inner
// one overwrites what is kept of the outer.

#include "backend/instructions/engine_version.h"
#include "backend/instructions/opcode.h"
#include "compiler/generator/compiler_parser.h"
#include "core/text_length.h"
#include "frontend/values/text_pieces.h"

// The text between the tags of the block is dropped.
ParserStatus CompilerParser::Open_Localized(int) {
    saved_localized_flags = output_flags;
    Set_Output_Flags(0);
    localized_text_flags = OUTPUT_HTML | OUTPUT_TEXT | OUTPUT_COMPRESS;
    localized_text_count = 0;
    return PARSER_OK;
}

// Keeps ids unique in one compilation. A repeated one is changed without a report; what is made up is not
// looked up again.
ParserStatus CompilerParser::Check_Localized_ID(int) {
    AttributeValue* value = Value<Tag::Localized, Attribute::Id>();
    const std::string_view given = Text_Of(*value);
    const int given_length = Length_Of(given);
    if (!value->Is_Set())
        Make_Localized_ID(value, *Current_File());
    else if (localized_ids.Find(given.data(), given_length))
        Make_Localized_ID(value, String(given.data(), given_length));
    else
        localized_ids.Insert(new String(given.data(), given_length));
    return PARSER_OK;
}

void CompilerParser::Make_Localized_ID(AttributeValue* value, const String& stem) {
    auto* id = new String(stem + '-' + localized_sequence++);
    value->Reset();
    (void)value->Set_Simple_Text(id->text(), id->length(), ATTREXPR_VALUE); // a reset value takes it
    localized_ids.Insert(id);
}

ParserStatus CompilerParser::Open_Localized_Text(int tag) {
    if (localized_text)
        return Report<Message::Inside_Localized_Text>(Tag_Word(tag));
    localized_text = std::make_unique<String>("", 0);
    Set_Output_Flags(localized_text_flags);
    if (++localized_text_count == 1)
        return PARSER_OK;
    return Output_Version(file_version_major, FILE_VERSION_LOCALIZED_TEXTS);
}

ParserStatus CompilerParser::Close_Localized_Text(int) {
    const ParserStatus status = Generate_Localized_Directive();
    localized_text.reset();
    Set_Output_Flags(0);
    return status;
}

ParserStatus CompilerParser::Generate_Localized_Directive() {
    AttributeValue* language = Value<Tag::Localized_Text, Attribute::Language>();
    ParserStatus status = PARSER_OK;
    if (!language->Is_Set())
        status = Report<Message::Localized_Requires_Language>();
    int language_length = 0;
    int id_length = 0;
    const char* language_text = language->Get_Simple_Text(&language_length);
    const char* id = Value<Tag::Localized, Attribute::Id>()->Get_Simple_Text(&id_length);
    if (!language_text || !id)
        return PARSER_ERROR;
    if (status != PARSER_OK)
        return status;
    const char* body = localized_text ? localized_text->text() : "";
    const int body_length = localized_text ? localized_text->length() : 0;
    Output_Localized_Directive(language_text, language_length, id, id_length, body, body_length);
    language->Reset();
    return PARSER_OK;
}

ParserStatus CompilerParser::Check_Token_Placement(int tag) {
    return localized_text ? Report<Message::Inside_Localized_Text>(Tag_Word(tag)) : PARSER_OK;
}

// Stores like TnASSIGN, with an index and a member too when the tag around it has left values there.
ParserStatus CompilerParser::Generate_Localized_Token(int) {
    constexpr int value = element_of<Tag::Localized_Token, Attribute::Value>;
    constexpr int name = element_of<Tag::Localized_Token, Attribute::Name>;
    constexpr int index = element_of<Tag::Assign, Attribute::Index>;
    constexpr int member = element_of<Tag::Assign, Attribute::Member>;
    return attribute_values->Output_Assignment(value, name, index, member, nullptr, 0);
}

ParserStatus CompilerParser::Close_Localized(int) {
    int length = 0;
    const char* id = Value<Tag::Localized, Attribute::Id>()->Get_Simple_Text(&length);
    if (!id)
        return PARSER_ERROR;
    const int ident = Generate_String_Directive(id, length, EXPRESSION_STATE_ESCAPED);
    ParserStatus status = PARSER_OK;
    if (Is_Given<Tag::Localized, Attribute::Name>()) {
        Queue(OPCODE_LOCALIZEV, ident);
        status = attribute_values->Output_Assignment(-1, element_of<Tag::Localized, Attribute::Name>, -1, -1,
                                                     nullptr, 0);
    } else {
        Queue(OPCODE_LOCALIZE, ident);
    }
    Set_Output_Flags(saved_localized_flags);
    return status;
}
