// The operators ++ and --. An older engine has no way to store below the top of the stack: there the variable
// is bound to a scratch local, and the new value stored through it.

#include "backend/instructions/engine_version.h"
#include "backend/instructions/opcode.h"
#include "backend/queue/opcode_queue.h"
#include "compiler/generator/compiler_parser.h"
#include "frontend/scanner/operator_lookup.h"

ParserStatus CompilerParser::Output_Operator_IncrementDecrement(int id, int flags) {
    opcode_queue->Clear_RHS();
    if (id != OPERATOR_INCREMENT && id != OPERATOR_DECREMENT)
        return Report<Message::Internal_Operator_Number>(id);
    const int arithmetic = id == OPERATOR_INCREMENT ? OPCODE_ADD : OPCODE_SUB;
    const bool prefix = flags & OPERATOR_PREFIX;
    if (Engine_Version() < file_version_engines[FILE_VERSION_INCREMENT]) {
        Output_Scratch_Increment(arithmetic, prefix);
        return PARSER_OK;
    }
    if (const ParserStatus status = Output_Version(file_version_major, FILE_VERSION_INCREMENT))
        return status;
    Output_Stack_Increment(arithmetic, prefix);
    return PARSER_OK;
}

void CompilerParser::Output_Scratch_Increment(int arithmetic, bool prefix) {
    const int scratch = Find_ScratchVariable_Ident("incdec", 0);
    Queue(OPCODE_DUP);
    Queue(OPCODE_PUSHL, scratch);
    Queue(OPCODE_REFER);
    if (prefix) {
        Queue_Step(arithmetic);
        Queue(OPCODE_DUP);
    } else {
        Queue_Value_Copy();
        Queue(OPCODE_DUP);
        Queue_Step(arithmetic);
    }
    Queue(OPCODE_POPL, scratch);
}

void CompilerParser::Output_Stack_Increment(int arithmetic, bool prefix) {
    Queue(OPCODE_DUP);
    if (prefix) {
        Queue_Step(arithmetic);
        Queue(OPCODE_DUP);
        Queue(OPCODE_SWAPN, 0, 2);
    } else {
        Queue_Value_Copy();
        Queue(OPCODE_SWAP);
        Queue(OPCODE_DUP);
        Queue_Step(arithmetic);
        Queue(OPCODE_SWAP);
    }
    Queue(OPCODE_STORE);
}

void CompilerParser::Queue_Step(int arithmetic) {
    Queue(OPCODE_PUSHI, 1);
    Queue(arithmetic);
}

// Adding 0 leaves the value where the variable itself stood.
void CompilerParser::Queue_Value_Copy() {
    Queue(OPCODE_PUSHI, 0);
    Queue(OPCODE_ADD);
}
