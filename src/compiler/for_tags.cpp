// TnFOR: counts a scratch variable up, to COUNT or LAST or until EXPR is false. The name that the page gives
// as INDEX is a reference to it.
#include "compiler/loop_code.h"

namespace {

enum For_Element { INDEX, FIRST, NEXT, LAST, COUNT, EXPR };

} // namespace

ParserStatus CompilerParser::Open_For(int) {
    Open_Block(&for_stack);
    return PARSER_OK;
}

ParserStatus CompilerParser::Close_For(int) {
    return Close_Loop("TnFOR", &for_stack, OPCODE_JMP, LABEL_LOOP);
}

ParserStatus CompilerParser::Generate_For(int) {
    const auto given = [this](int element) { return attribute_values->Element(element)->Is_Set(); };
    if (given(LAST) && (given(EXPR) || given(COUNT))) {
        return Report<Message::For_Last_Excludes>();
    }
    if (given(EXPR) && given(COUNT)) {
        return Report<Message::For_Expression_Excludes>();
    }
    if (given(COUNT) && (given(FIRST) || given(NEXT))) {
        return Report<Message::For_Count_Excludes>();
    }
    if (!given(LAST) && !given(EXPR) && !given(COUNT)) {
        return Report<Message::For_Requires_Count>();
    }
    return attribute_values->Output_For(for_stack.Entries(), for_stack.Top()->label, INDEX, FIRST, NEXT, LAST,
                                        COUNT, EXPR);
}

ParserStatus AttributeValueArray::Output_For(int depth, int label, int index, int first, int next, int last,
                                             int count, int expr) {
    const bool counted = Element(count)->Is_Set();
    const int i = parser->Find_ScratchVariable_Ident("for_index", label);
    const int limit = counted ? parser->Find_ScratchVariable_Ident("for_count", depth) : 0;
    Loop_Code code(parser, label);

    if (AttributeValue* name = Element(index); name->Is_Set()) {
        if (name->Parse_String_Variable(parser)) {
            return parser->Report_Stored_Error(*name);
        }
        code.Bind(i);
    }
    if (counted) {
        Output(count + 1, count);
        code.Truncate();
        code.Pop(limit);
    }
    if (Element(first)->Is_Set()) {
        Output(first + 1, first);
    } else {
        code.Push_Integer(1);
    }
    code.Pop(i);
    code.Jump(OPCODE_JMP, LABEL_START);

    code.Label(LABEL_LOOP);
    if (Element(next)->Is_Set()) {
        Output(next + 1, next);
        code.Pop(i);
    } else {
        code.Increment(i);
    }

    code.Label(LABEL_START);
    if (counted) {
        code.Leave_Beyond(i, limit);
    } else if (Element(expr)->Is_Set()) {
        Output(expr + 1, expr);
        code.Jump(OPCODE_JMP_EQ, LABEL_END);
    } else {
        code.Push(i);
        Output(last + 1, last);
        code.Truncate();
        code.Operator(OPCODE_LE);
        code.Jump(OPCODE_JMP_EQ, LABEL_END);
    }
    return PARSER_OK;
}
