// TnFOR: counts a scratch variable up, to COUNT or LAST or until EXPR is false. The name that the page gives
// as INDEX is a reference to it.

#include "compiler/generator/loop_code.h"

namespace {

constexpr int index_element = element_of<Tag::For, Attribute::Index>;
constexpr int first_element = element_of<Tag::For, Attribute::First>;
constexpr int next_element = element_of<Tag::For, Attribute::Next>;
constexpr int last_element = element_of<Tag::For, Attribute::Last>;
constexpr int count_element = element_of<Tag::For, Attribute::Count>;
constexpr int expression_element = element_of<Tag::For, Attribute::Expression>;

} // namespace

ParserStatus CompilerParser::Open_For(int) {
    Open_Block(&for_stack);
    return PARSER_OK;
}

ParserStatus CompilerParser::Close_For(int tag) {
    return Close_Loop(Tag_Word(tag), &for_stack, OPCODE_JMP, LABEL_LOOP);
}

ParserStatus CompilerParser::Generate_For(int) {
    const auto given = [this](int element) { return attribute_values->Element(element)->Is_Set(); };
    if (given(last_element) && (given(expression_element) || given(count_element)))
        return Report<Message::For_Last_Excludes>();
    if (given(expression_element) && given(count_element))
        return Report<Message::For_Expression_Excludes>();
    if (given(count_element) && (given(first_element) || given(next_element)))
        return Report<Message::For_Count_Excludes>();
    if (!given(last_element) && !given(expression_element) && !given(count_element))
        return Report<Message::For_Requires_Count>();
    return attribute_values->Output_For(for_stack.Entries(), for_stack.Top()->label, index_element,
                                        first_element, next_element, last_element, count_element,
                                        expression_element);
}

ParserStatus AttributeValueArray::Output_For(int depth, int label, int index, int first, int next, int last,
                                             int count, int expr) {
    Loop_Code code(parser, this, label);
    const bool counted = code.Given(count);
    const int i = parser->Find_ScratchVariable_Ident("for_index", label);
    const int limit = counted ? parser->Find_ScratchVariable_Ident("for_count", depth) : 0;

    if (code.Given(index)) {
        if (Element(index)->Parse_String_Variable(parser))
            return parser->Report_Stored_Error(*Element(index)); // a warning, too, ends the code here
        code.Bind(i);
    }
    if (counted) {
        code.Push_Integer_Value(count);
        code.Pop(limit);
    }
    if (code.Given(first))
        code.Push_Value(first);
    else
        code.Push_Integer(1);
    code.Pop(i);
    code.Jump(OPCODE_JMP, LABEL_START);

    code.Label(LABEL_LOOP);
    if (code.Given(next)) {
        code.Push_Value(next);
        code.Pop(i);
    } else {
        code.Increment(i);
    }

    // A count is evaluated once, the other bounds in every round.
    code.Label(LABEL_START);
    if (counted) {
        code.Leave_Above(i, limit);
    } else if (code.Given(expr)) {
        code.Push_Value(expr);
        code.Jump(OPCODE_JMP_EQ, LABEL_END);
    } else {
        code.Push(i);
        code.Push_Integer_Value(last);
        code.Leave_Above();
    }
    return PARSER_OK;
}
