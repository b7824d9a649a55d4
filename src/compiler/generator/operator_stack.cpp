// Precedence. Operators wait on a stack until one of lower priority, a closing bracket or the end arrives;
// brackets raise the priority of what stands in them by a bias.

#include "backend/instructions/opcode.h"
#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"
#include "frontend/scanner/operator_lookup.h"

namespace {

constexpr int paren_bias = 100;
constexpr int call_bias = 10000;

constexpr int OPCODE_NONE = -1;

// The instruction of each operator, OPCODE_NONE for those with a rule of their own.
constexpr int operator_opcodes[] = {
#define OPERATOR(name, id, key, priority, operands, type, opcode) OPCODE_##opcode,
#include "frontend/scanner/operators.def"
};

// Depth of brackets in hostile input may drive the bias past 32 bits; then it wraps.
int Wrapping_Sum(int a, int b) {
    return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
}

const char* Too_Many_Or_Few(int values) {
    return values < 1 ? "many" : "few";
}

} // namespace

ParserStatus CompilerParser::Expression_Operator(int id, int priority, int operands, int type, int flags) {
    if (id == OPERATOR_CLOSE_BRACKET)
        return Expression_Operator_Close_Elem(flags & OPERATOR_BEFORE_DOT);
    if (const Operator* top = operators.Top(); top && top->id == OPERATOR_MEMBER)
        (void)Output_Top_Operator(); // has reported; the operator that arrived is still taken
    const int biased = Wrapping_Sum(priority_bias, priority);
    switch (id) {
    case OPERATOR_COMMA: return Separate_Argument(biased);
    case OPERATOR_DECREMENT:
    case OPERATOR_INCREMENT:
        if (!(flags & OPERATOR_PREFIX))
            return Output_Operator_IncrementDecrement(id, flags);
        break;
    case OPERATOR_OPEN_BRACKET: Push_Statistic(SUBEXPRESSION_BRACKET); break;
    case OPERATOR_MEMBER: operators.Push({id, biased, operands, 0}); return PARSER_OK;
    default: break;
    }
    if (priority_bias == 0 && type == OPERAND_BOOLEAN)
        ++conditional_operators;
    if (const ParserStatus status = Flush_Operator_Queue(biased))
        return status;
    operators.Push({id, biased, operands, flags});
    return Check_Types(type);
}

// The comma of an argument list.
ParserStatus CompilerParser::Separate_Argument(int priority) {
    if (const SubexpressionStatistic* statistic = subexpressions.Top();
        statistic && statistic->kind != SUBEXPRESSION_CALL) {
        return Fatal<Message::Comma_Outside_Call>();
    }
    ParserStatus status = Flush_Operator_Queue(priority);
    int values = 0;
    if (const ParserStatus end_status = end_subexpression(&values, 1))
        status = end_status;
    Push_Statistic(SUBEXPRESSION_CALL);
    return status;
}

// Binary operators of equal priority go out at once, which makes them left-associative; prefix operators of
// equal priority wait, which makes them right-associative. A call has no operands and waits for its
// parenthesis.
ParserStatus CompilerParser::Flush_Operator_Queue(int priority) {
    while (const Operator* top = operators.Top()) {
        if (top->id == OPERATOR_OPEN_BRACKET)
            break;
        const bool due =
            top->operands == 2 ? top->priority >= priority : top->operands == 1 && top->priority > priority;
        if (!due)
            break;
        if (const ParserStatus status = Output_Top_Operator())
            return status;
    }
    return PARSER_OK;
}

ParserStatus CompilerParser::Flush_Operator_Queue_Until(int id) {
    while (const Operator* top = operators.Top()) {
        const bool wanted = top->id == id;
        const ParserStatus status = Output_Top_Operator();
        if (wanted || status != PARSER_OK)
            return status;
    }
    return PARSER_OK;
}

ParserStatus CompilerParser::Output_Top_Operator() {
    Operator top = operators.Pop();
    return Output_Operator(&top);
}

ParserStatus CompilerParser::Output_Operator(Operator* op) {
    SubexpressionStatistic* statistic = subexpressions.Top();
    if (!statistic)
        return Report<Message::Internal_Stack_Count_Empty>();
    if (op->operands != 0)
        statistic->count += 1 - op->operands;
    switch (op->id) {
    case OPERATOR_CLOSE_BRACKET: Queue(Element_Opcode()); return PARSER_OK;
    case OPERATOR_MEMBER: Queue(Member_Opcode()); return PARSER_OK;
    case OPERATOR_COMMA: return PARSER_OK;
    case OPERATOR_OPEN_BRACKET: return Report<Message::Too_Many_Open_Brackets>();
    case OPERATOR_DECREMENT:
    case OPERATOR_INCREMENT:
        opcode_queue->Clear_RHS();
        return Output_Operator_IncrementDecrement(op->id, op->flags);
    case OPERATOR_CALL: return Output_Pending_Call();
    default: break;
    }
    if (op->id < 0 || op->id >= static_cast<int>(std::size(operator_opcodes)) ||
        operator_opcodes[op->id] == OPCODE_NONE) {
        Note<Message::Internal_Operator_Number>(op->id);
        return PARSER_ERROR;
    }
    Queue(operator_opcodes[op->id]);
    return PARSER_OK;
}

// A name that is written to, and an argument that may be passed by reference, need access that can create
// elements.
bool CompilerParser::Needs_Writable_Access() {
    return expression_type == ATTREXPR_TARGET || !open_calls.empty();
}

int CompilerParser::Element_Opcode() {
    return Needs_Writable_Access() ? OPCODE_ELEM : OPCODE_ELEM_RO;
}

int CompilerParser::Member_Opcode() {
    return Needs_Writable_Access() ? OPCODE_MEMB : OPCODE_MEMB_RO;
}

// Of an access like a[i], the aggregate was counted as a value of the subexpression around the bracket, and
// the index in the bracket's own statistic, which goes here. The instruction takes both and leaves one
// element, so the count around the bracket is right as it stands.
ParserStatus CompilerParser::Expression_Operator_Close_Elem(int flags) {
    if (!subexpressions.Top())
        return Report<Message::Bracket_Unopened>();
    ParserStatus status = PARSER_OK;
    const Operator* top = operators.Top();
    while (top && top->id != OPERATOR_OPEN_BRACKET) {
        if (const ParserStatus output_status = Output_Top_Operator())
            status = output_status;
        top = operators.Top();
    }
    if (top)
        (void)operators.Pop();
    else
        status = Report<Message::Bracket_Unopened>();
    const SubexpressionStatistic index = subexpressions.Pop();
    if (index.count != 1)
        status = Report<Message::Operator_Count>(Too_Many_Or_Few(index.count));
    if (index.kind != SUBEXPRESSION_BRACKET)
        status = Report<Message::Expected_Close_Bracket>();
    Pass_On_Mixed_Type(index);
    if (!(flags & OPERATOR_BEFORE_DOT))
        Queue(Element_Opcode());
    return status;
}

void CompilerParser::Pass_On_Mixed_Type(const SubexpressionStatistic& inner) {
    SubexpressionStatistic* outer = subexpressions.Top();
    if (outer && inner.type == OPERAND_MIXED)
        outer->type = OPERAND_MIXED;
}

ParserStatus CompilerParser::Expression_StartParen() {
    Push_Statistic(SUBEXPRESSION_PAREN);
    priority_bias = Wrapping_Sum(priority_bias, paren_bias);
    return PARSER_OK;
}

ParserStatus CompilerParser::Expression_CloseParen() {
    const SubexpressionStatistic* statistic = subexpressions.Top();
    if (!statistic || statistic->kind == SUBEXPRESSION_WHOLE)
        return Report<Message::Too_Many_Close_Parentheses>();
    switch (statistic->kind) {
    case SUBEXPRESSION_BRACKET: return Report<Message::Expected_Close_Bracket>();
    case SUBEXPRESSION_PAREN: return Close_Paren();
    default: return Close_Call();
    }
}

ParserStatus CompilerParser::Close_Paren() {
    const ParserStatus status = Flush_Operator_Queue(priority_bias);
    priority_bias = Wrapping_Sum(priority_bias, -paren_bias);
    if (status != PARSER_OK)
        return status;
    int values = 0;
    return end_subexpression(&values, 1);
}

// The last argument may be missing, when the list is empty; the others were checked at their commas.
ParserStatus CompilerParser::Close_Call() {
    if (const ParserStatus status = Flush_Operator_Queue(priority_bias))
        return status;
    int last = 0;
    if (const ParserStatus status = end_subexpression(&last, -1))
        return status;
    if (last < 0 || last > 1)
        return Report<Message::Operator_Count>(last < 0 ? "many" : "few");
    int earlier = 0;
    const ParserStatus status = end_subexpression(&earlier, -1);
    if (!open_calls.empty())
        open_calls.back().parameters = earlier + last;
    Count_Value();
    priority_bias = Wrapping_Sum(priority_bias, -call_bias);
    const ParserStatus flush_status = Flush_Operator_Queue_Until(OPERATOR_CALL);
    return flush_status != PARSER_OK ? flush_status : status;
}

ParserStatus CompilerParser::end_subexpression(int* count, int expected) {
    if (!subexpressions.Top())
        return Report<Message::Too_Many_Close_Parentheses>();
    const SubexpressionStatistic ended = subexpressions.Pop();
    *count = ended.count;
    SubexpressionStatistic* outer = subexpressions.Top();
    if (expected != -1) {
        if (ended.count != expected)
            return Report<Message::Operator_Count>(ended.count < expected ? "many" : "few");
        if (outer)
            outer->count += ended.count;
    }
    Pass_On_Mixed_Type(ended);
    if (!outer)
        return Report<Message::Too_Few_Operands>();
    return PARSER_OK;
}

ParserStatus CompilerParser::Expression_StartFunctionCall(const char* name, int length, int dynamic) {
    if (dynamic)
        return Push_Dynamic_Call(name, length);
    Push_Statistic(SUBEXPRESSION_CALL); // gathers the finished arguments
    Push_Statistic(SUBEXPRESSION_CALL); // counts the current one
    Open_Call(name, length);
    operators.Push({OPERATOR_CALL, priority_bias, 0, 0});
    priority_bias = Wrapping_Sum(priority_bias, call_bias);
    return PARSER_OK;
}

// The whole call goes to the engine as text.
ParserStatus CompilerParser::Push_Dynamic_Call(const char* text, int length) {
    if (const ParserStatus status =
            Check_Dynamic_Expression_String(text, length, "external function parameter"))
        return status;
    opcode_queue->Queue_Pushed_Constant(Generate_String_Directive(text, length, EXPRESSION_STATE_FILTER),
                                        OPCODE_DO_FUNCTION);
    Count_Value();
    return PARSER_OK;
}
