// Values in braces. The attribute's route says which value takes the code of the expression and what the
// expression yields. What no route claims is compiled where it stands, or kept as text.

#include "backend/outputs/compiler_output.h"
#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"
#include "compiler/records/attribute_routes.h"

namespace {

// Behind all others of the tag: takes the expression of COPY, which has been refused.
constexpr int refused_copy_element = elements_of<Tag::Reference>;
static_assert(elements_of<Tag::Referencearray> == refused_copy_element);

// What the expressions of a route yield, nothing for a route whose expressions have no element.
std::optional<AttrExprType> Expression_Kind(Convert convert) {
    switch (convert) {
    case Convert::Constant:
    case Convert::Reference_Name:
    case Convert::Positive_Number:
    case Convert::Text:
    case Convert::Certificate_Type:
    case Convert::Row_Position:
    case Convert::Localized_Level: return ATTREXPR_VALUE;
    case Convert::Target_Variable: return ATTREXPR_TARGET;
    case Convert::Whole_Name: return ATTREXPR_WHOLE_NAME;
    case Convert::Variable_Name: return ATTREXPR_VARIABLE;
    case Convert::Index:
    case Convert::Array_Index: return ATTREXPR_INDEX;
    case Convert::Member:
    case Convert::Array_Member: return ATTREXPR_MEMBER;
    default: return std::nullopt;
    }
}

// Element and member accesses of an expression that is read may still turn out to be writable ones.
_OpcodeQueueType Queue_Type(AttrExprType type) {
    switch (type) {
    case ATTREXPR_MEMBER:
    case ATTREXPR_INDEX:
    case ATTREXPR_VALUE: return OPCODE_QUEUE_QUEUE;
    default: return OPCODE_QUEUE_OUTPUT;
    }
}

} // namespace

ParserStatus CompilerParser::Start_Of_Expression() {
    expression_type = ATTREXPR_VALUE;
    Reset_Expression();
    Push_Statistic(SUBEXPRESSION_WHOLE);
    if (current_attribute == ATTRIBUTE_IGNORED) {
        discard_value.Reset();
        return Start_Fragment(&discard_value, ATTREXPR_VALUE);
    }
    const Attribute_Route* route = Route_Of(current_attribute);
    return route ? Start_Attribute_Expression(*route) : Start_Text_Expression();
}

ParserStatus CompilerParser::Start_Attribute_Expression(const Attribute_Route& route) {
    if (route.convert == Convert::Dynamic_Text)
        return Capture_Braces();
    if (route.refusal) {
        const ParserStatus status = Report_Message(*route.refusal);
        return route.convert == Convert::Copy_Flag
                   ? Start_Fragment(attribute_values->Element(refused_copy_element), ATTREXPR_TARGET)
                   : status;
    }
    const std::optional<AttrExprType> kind = Expression_Kind(route.convert);
    if (!kind)
        return Start_Text_Expression();
    AttributeValue* value = Route_Element(route);
    return value ? Start_Fragment(value, *kind) : Report_Outside_Array_Block(route.tag);
}

ParserStatus CompilerParser::Start_Text_Expression() {
    current_attribute = ATTRIBUTE_NONE;
    return interpret_expressions ? PARSER_OK : Capture_Braces();
}

// The value arrives as a plain one, braces included.
ParserStatus CompilerParser::Capture_Braces() {
    (void)subexpressions.Pop();
    Capture_Expression_Text(1);
    return PARSER_OK;
}

ParserStatus CompilerParser::Start_Fragment(AttributeValue* value, AttrExprType type) {
    StringOutput* fragment;
    ParserStatus status = PARSER_OK;
    expression_type = type;
    if (value->Get_Expression(&fragment, type))
        status = Report_Stored_Error(*value);
    else
        saved_output = Set_Output(fragment);
    opcode_queue = OpcodeQueue::Confirm_Type(opcode_queue, Queue_Type(type));
    return status;
}
