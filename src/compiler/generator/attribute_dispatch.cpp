// Attributes: a name selects a route, the value that follows is converted and stored as the route says. The
// code that the values are for is written at the end of the tag.

#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"
#include "compiler/records/attribute_routes.h"
#include "core/text_length.h"
#include "frontend/values/text_pieces.h"

#include <utility>

namespace {

constexpr std::string_view error_suffix = "_error";

// The value that a tag passed on as text empties, whichever tag it stands in.
constexpr int emptied_element = 0;

// What the report calls a text that is kept for run time; null where its generator checks it.
const char* Dynamic_Text_Role(int tag) {
    switch (tag) {
    case Tag::Do: return nullptr;
    case Tag::Import: return "TnIMPORT filter";
    default: return "filter";
    }
}

bool Is_Directive(Convert convert) {
    return convert >= Convert::Include_Interpret;
}

} // namespace

ParserStatus CompilerParser::Attribute_Name(const char* text, int length) {
    const std::string_view name = Slice(text, length);
    const _AttributeLookup* attribute = attribute_lookup.Lookup(text, length);
    if (!attribute && current_tag != Tag::Tarn)
        return Ignore_Unknown_Attribute(name);
    Close_Valueless_Attribute();
    if (!attribute)
        return Select_Tag_Error(name);
    current_attribute = Find_Attribute_Route(current_tag, attribute->id);
    return current_attribute == ATTRIBUTE_NONE ? Ignore_Unused_Attribute(name) : PARSER_OK;
}

ParserStatus CompilerParser::Ignore_Unknown_Attribute(std::string_view name) {
    current_attribute = ATTRIBUTE_IGNORED;
    return Report<Message::Unknown_Attribute>(name);
}

ParserStatus CompilerParser::Ignore_Unused_Attribute(std::string_view name) {
    ParserStatus status = PARSER_OK;
    if (!Tag_Has_Attributes(current_tag))
        status = Report<Message::Internal_Attribute_Table>(current_tag, name);
    if (tag_name) {
        String tag(tag_name);
        tag.upcase();
        const ParserStatus unused = Report<Message::Attribute_Not_Used>(tag, name);
        status = status == PARSER_OK ? unused : status;
    }
    current_attribute = ATTRIBUTE_IGNORED;
    return status;
}

// TARN takes the name of any tag, followed by _ERROR.
ParserStatus CompilerParser::Select_Tag_Error(std::string_view name) {
    const _TagLookup* tag = nullptr;
    if (name.size() > error_suffix.size()) {
        const std::string_view stem = name.substr(0, name.size() - error_suffix.size());
        if (Same_Word(name.substr(stem.size()), error_suffix))
            tag = tag_lookup.Lookup(stem.data(), Length_Of(stem));
    }
    if (!tag)
        return Ignore_Unknown_Attribute(name);
    tag_error_code = tag->id;
    current_attribute = Tag_Error_Route();
    return PARSER_OK;
}

// A flag that is set already stays as it is.
void CompilerParser::Set_Flag(const Attribute_Route& route) {
    (void)Convert_Value(route, attribute_values->Element(route.element), nullptr, 0);
}

ParserStatus CompilerParser::Attribute_Value(const char* text, int length) {
    const int state = std::exchange(current_attribute, ATTRIBUTE_NONE);
    if (state == ATTRIBUTE_IGNORED)
        return PARSER_OK;
    const Attribute_Route* route = Route_Of(state);
    if (!route) {
        Output_Captured_Value(text, length);
        return PARSER_OK;
    }
    if (Is_Directive(route->convert))
        return Run_Directive(*route, text, length);
    const ParserStatus status = Check_Value(*route, text, length);
    return status == PARSER_OK ? Store_Value(*route, text, length) : status;
}

// The value of an attribute of a tag that is passed on as text, whose braces are text too. The scanner has
// taken the closing quote for the end of the value.
void CompilerParser::Output_Captured_Value(const char* text, int length) {
    Queue(OPCODE_PUSHC, Constant(Slice(text, length)));
    Queue(OPCODE_OUT);
    Queue(OPCODE_PUSHC, Constant("\""));
    Queue(OPCODE_OUT);
    attribute_values->Element(emptied_element)->Reset();
}

ParserStatus CompilerParser::Check_Value(const Attribute_Route& route, const char* text, int length) {
    if (route.convert == Convert::Dynamic_Text) {
        const char* role = Dynamic_Text_Role(route.tag);
        return role ? Check_Dynamic_Expression_String(text, length, role) : PARSER_OK;
    }
    if (route.convert == Convert::Certificate_Type) {
        const std::string_view word = Slice(text, length);
        if (!Same_Word(word, "pem") && !Same_Word(word, "asn1"))
            return Report<Message::Call_Certificate_Type>(word);
    }
    return PARSER_OK;
}

ParserStatus CompilerParser::Store_Value(const Attribute_Route& route, const char* text, int length) {
    AttributeValue* value = Route_Element(route);
    if (!value)
        return Report_Outside_Array_Block(route.tag);
    if (Convert_Value(route, value, text, length))
        return Report_Stored_Error(*value);
    value->line = Linenumber();
    return PARSER_OK;
}

// Null when the element belongs to an array block and none is open.
AttributeValue* CompilerParser::Route_Element(const Attribute_Route& route) {
    if (route.convert != Convert::Array_Index && route.convert != Convert::Array_Member)
        return attribute_values->Element(route.element);
    return array_values ? array_values->Element(array_count++) : nullptr;
}

ParserStatus CompilerParser::Report_Outside_Array_Block(int tag) {
    return Report<Message::Outside_Array_Block>(Tag_Word(tag));
}

int CompilerParser::Constant(std::string_view text) {
    return Generate_String_Directive(text.data(), Length_Of(text), EXPRESSION_STATE_ESCAPED);
}

int CompilerParser::Positive_Constant(const char* text, int length) {
    return Generate_Integral_String_Directive(text, length, EXPRESSION_STATE_ESCAPED);
}

// The engine knows the two ends of a table by number.
int CompilerParser::Row_Constant(std::string_view row) {
    if (Same_Word(row, "top"))
        return Constant("-1");
    return Constant(Same_Word(row, "bottom") ? "-2" : row);
}

// Answers 1 when the value refused and has stored the report.
int CompilerParser::Convert_Value(const Attribute_Route& route, AttributeValue* value, const char* text,
                                  int length) {
    switch (route.convert) {
    case Convert::Target_Variable: return value->Set_Literal(this, text, length, ATTREXPR_TARGET);
    case Convert::Whole_Name: return value->Set_Literal(this, text, length, ATTREXPR_WHOLE_NAME);
    case Convert::Index:
    case Convert::Array_Index: return value->Set_Literal(Positive_Constant(text, length), ATTREXPR_INDEX);
    case Convert::Positive_Number: return value->Set_Literal(Positive_Constant(text, length), ATTREXPR_VALUE);
    case Convert::Member:
    case Convert::Array_Member: return value->Set_Simple_Text(text, length, ATTREXPR_MEMBER);
    case Convert::Variable_Name:
    case Convert::Reference_Name:
    case Convert::Directive_Text:
    case Convert::Dynamic_Text: return value->Set_Simple_Text(text, length, ATTREXPR_VALUE);
    case Convert::Text: return value->Set_Simple_Text(text, length, ATTREXPR_TEXT);
    case Convert::Flag:
    case Convert::Copy_Flag: return value->Set_Literal(1, ATTREXPR_FLAG);
    case Convert::Constant_Flag: return value->Set_Literal(Constant("1"), ATTREXPR_VALUE);
    case Convert::Row_Position: return value->Set_Literal(Row_Constant(Slice(text, length)), ATTREXPR_VALUE);
    default: return value->Set_Literal(Constant(Slice(text, length)), ATTREXPR_VALUE);
    }
}
