// Operands of expressions, and the end and reset of an expression. Operands go out as they are met; what is
// kept of them is how many values each open subexpression has on the stack, and what class of constants it
// has met.

#include "backend/instructions/opcode.h"
#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"

void CompilerParser::Reset_Expression() {
    subexpressions.Clear();
    operators.Clear();
    priority_bias = 0;
    conditional_operators = 0;
}

void CompilerParser::Decrement_Stackcount() {
    if (SubexpressionStatistic* statistic = subexpressions.Top())
        --statistic->count;
}

ParserStatus CompilerParser::Expression_NumericLiteral(const char* text, int length) {
    opcode_queue->Queue_Opcode(OPCODE_PUSHI, text, length, 0);
    Count_Value();
    return Check_Types(OPERAND_NUMERIC);
}

ParserStatus CompilerParser::Expression_FloatLiteral(const char* text, int length) {
    opcode_queue->Queue_Opcode(OPCODE_PUSHF, text, length, 0);
    Count_Value();
    return Check_Types(OPERAND_NUMERIC);
}

// The name is the right operand of the : operator, which takes it without a count of its own.
ParserStatus CompilerParser::Expression_Member(const char* name, int length) {
    Queue(OPCODE_PUSHC, Generate_String_Directive(name, length, EXPRESSION_STATE_ESCAPED));
    return PARSER_OK;
}

ParserStatus CompilerParser::Check_Types(int type) {
    if (type == OPERAND_NONE)
        return PARSER_OK;
    SubexpressionStatistic* statistic = subexpressions.Top();
    if (!statistic)
        return Report<Message::Internal_Statistic_Stack_Empty>();
    if (type == OPERAND_BOOLEAN)
        statistic->type = OPERAND_NONE;
    else if (statistic->type == OPERAND_NONE)
        statistic->type = type;
    else if (statistic->type != type)
        statistic->type = OPERAND_MIXED;
    return PARSER_OK;
}

// An expression in an unknown tag, or in a part of a known one that keeps no value, prints itself where it
// stands.
ParserStatus CompilerParser::End_Of_Expression() {
    int written = 0;
    ParserStatus status = Output_Remaining_Operators(&written);
    Flush_Opcode_Queue();
    if (priority_bias != 0)
        status = Report<Message::Parentheses_Unbalanced>(priority_bias < 1 ? "close" : "open");
    if (subexpressions.Top())
        Check_Last_Subexpression(written, &status);
    if (subexpressions.Top()) {
        subexpressions.Clear();
        if (status == PARSER_OK)
            status = Report<Message::Too_Many_Open_Parentheses>();
    }
    if (current_tag == -1 && start_state != START_EXPRESSION)
        Queue(OPCODE_OUT);
    Reset_Output();
    return status;
}

ParserStatus CompilerParser::Output_Remaining_Operators(int* written) {
    ParserStatus status = PARSER_OK;
    while (status == PARSER_OK && operators.Top()) {
        status = Output_Top_Operator();
        ++*written;
    }
    return status;
}

void CompilerParser::Check_Last_Subexpression(int operators_written, ParserStatus* status) {
    const SubexpressionStatistic last = subexpressions.Pop();
    if (operators_written == 0 && last.count == 0)
        *status = Report<Message::Expression_Empty>();
    if (last.count != 1)
        *status = Report<Message::Operator_Count>(last.count < 1 ? "many" : "few");
    if (last.type == OPERAND_MIXED)
        *status = Report<Message::Mixed_Operand_Types>();
}
