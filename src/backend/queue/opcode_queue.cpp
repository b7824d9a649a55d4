// The two queues: one passes instructions on, the other keeps those of an expression.

#include "backend/queue/opcode_queue.h"

#include "compiler/generator/compiler_parser.h"
#include "core/text_length.h"

#include <algorithm>
#include <sys/mman.h>
#include <utility>

OpcodeQueue::OpcodeQueue(CompilerParser* parser, _OpcodeQueueType type) : parser(parser), type(type) {
}

OpcodeQueue::~OpcodeQueue() {
    delete spare;
}

OpcodeQueue* OpcodeQueue::Confirm_Type(OpcodeQueue* queue, _OpcodeQueueType wanted) {
    if (queue->type != wanted)
        queue->Flush();
    return Replace(queue, wanted);
}

OpcodeQueue* OpcodeQueue::Replace(OpcodeQueue* queue, _OpcodeQueueType wanted) {
    if (queue->type == wanted)
        return queue;
    OpcodeQueue* successor = std::exchange(queue->spare, nullptr);
    if (successor && wanted == OPCODE_QUEUE_QUEUE)
        static_cast<OpcodeQueueQueue*>(successor)->Start_Expression();
    else if (wanted == OPCODE_QUEUE_QUEUE)
        successor = new OpcodeQueueQueue(queue->parser);
    else if (!successor)
        successor = new OpcodeQueueOutput(queue->parser);
    successor->spare = queue;
    return successor;
}

OpcodeQueueOutput::OpcodeQueueOutput(CompilerParser* parser) : OpcodeQueue(parser, OPCODE_QUEUE_OUTPUT) {
}

OpcodeQueueOutput::~OpcodeQueueOutput() = default;

void OpcodeQueueOutput::Clear_RHS() {
}

void OpcodeQueueOutput::Queue_Generated_Label(ParserLabelType type, int number) {
    parser->Follow_LineNo();
    parser->Output_Generated_Label(type, number);
}

void OpcodeQueueOutput::Queue_Opcode_With_Label(int opcode, ParserLabelType type, int number) {
    parser->Follow_LineNo();
    parser->Output_Opcode_With_Label(opcode, type, number);
}

void OpcodeQueueOutput::Queue_Opcode_With_Label_and_Immediate(int opcode, ParserLabelType type, int number,
                                                              int immediate) {
    parser->Follow_LineNo();
    parser->Output_Opcode_With_Label_and_Immediate(opcode, type, number, immediate);
}

void OpcodeQueueOutput::Queue_Opcode(int opcode, double value) {
    parser->Follow_LineNo();
    parser->Output_Opcode(opcode, value);
}

// A source file has no line yet when its name is given.
void OpcodeQueueOutput::Queue_Opcode(int opcode, int first, int second) {
    if (opcode != OPCODE_SOURCEFILE)
        parser->Follow_LineNo();
    parser->Output_Opcode(opcode, first, second);
}

void OpcodeQueueOutput::Queue_Opcode(int opcode, const char* text, int length, int lower) {
    parser->Follow_LineNo();
    parser->Output_Opcode(opcode, text, length, lower);
}

void OpcodeQueueOutput::Queue_Variable_Instruction(int is_pop, int ident, Variable_Scope scope, int alias,
                                                   int by_reference) {
    parser->Follow_LineNo();
    parser->Output_Variable_Instruction(is_pop, ident, scope, alias, by_reference);
}

void OpcodeQueueOutput::Flush() {
}

void OpcodeQueueOutput::Queue_Pushed_Constant(int ident, int opcode) {
    parser->Follow_LineNo();
    parser->Output_Pushed_Constant(ident, opcode);
}

void QueuedOpcode::Output(CompilerParser* parser) {
    parser->Force_LineNo(line);
}

void QueuedOpcode_Integer::Output(CompilerParser* parser) {
    QueuedOpcode::Output(parser);
    parser->Output_Opcode(opcode, first, second);
}

void QueuedOpcode_Double::Output(CompilerParser* parser) {
    QueuedOpcode::Output(parser);
    parser->Output_Opcode(opcode, value);
}

void QueuedOpcode_With_Label::Output(CompilerParser* parser) {
    QueuedOpcode::Output(parser);
    parser->Output_Opcode_With_Label(opcode, label_type, label);
}

void QueuedOpcode_With_Label_and_Immediate::Output(CompilerParser* parser) {
    QueuedOpcode::Output(parser);
    parser->Output_Opcode_With_Label_and_Immediate(opcode, label_type, label, immediate);
}

void QueuedOpcode_Label::Output(CompilerParser* parser) {
    QueuedOpcode::Output(parser);
    parser->Output_Generated_Label(label_type, label);
}

void QueuedOpcode_Text::Output(CompilerParser* parser) {
    QueuedOpcode::Output(parser);
    parser->Output_Opcode(opcode, text, length, lower);
}

void QueuedOpcode_Variable::Output(CompilerParser* parser) {
    QueuedOpcode::Output(parser);
    parser->Output_Variable_Instruction(is_pop, ident, scope, alias, by_reference);
}

void QueuedOpcode_Pushed_Constant::Output(CompilerParser* parser) {
    QueuedOpcode::Output(parser);
    parser->Output_Pushed_Constant(ident, opcode);
}

void Record_Memory::Take_All_Back() {
    if (current.owned) {
        full.clear();
        current = {nullptr, first_block, first_block};
        limit = std::end(first_block);
    }
    current.end = current.begin;
}

std::size_t Record_Memory::Size() const {
    std::size_t size = current.Size();
    for (const Block& block : full)
        size += block.Size();
    return size;
}

// Its pages too: what is freed may stay with the allocator, and the text comes while the records go.
void Record_Memory::Give_Back(Block& block) {
    constexpr std::size_t page = 4096;
    const std::size_t ahead = -reinterpret_cast<std::uintptr_t>(block.begin) % page;
    if (block.Size() > largest_block / 2)
        (void)madvise(block.begin + ahead, (block.Size() - ahead) / page * page, MADV_DONTNEED);
    block.owned.reset();
}

void Record_Memory::Add_Block(std::size_t size) {
    size = std::max(size, std::min(2 * static_cast<std::size_t>(limit - current.begin), largest_block));
    auto block = std::make_unique_for_overwrite<std::byte[]>(size);
    std::byte* const begin = block.get();
    full.push_back(std::exchange(current, {std::move(block), begin, begin}));
    limit = begin + size;
}

OpcodeQueueQueue::OpcodeQueueQueue(CompilerParser* parser) : OpcodeQueue(parser, OPCODE_QUEUE_QUEUE) {
}

OpcodeQueueQueue::~OpcodeQueueQueue() = default;

void OpcodeQueueQueue::Clear_RHS() {
    rhs = 0;
}

void OpcodeQueueQueue::Queue_Generated_Label(ParserLabelType type, int number) {
    Append<QueuedOpcode_Label>(parser->Line(), type, number);
}

void OpcodeQueueQueue::Queue_Opcode_With_Label(int opcode, ParserLabelType type, int number) {
    Append<QueuedOpcode_With_Label>(opcode, parser->Line(), type, number);
}

void OpcodeQueueQueue::Queue_Opcode_With_Label_and_Immediate(int opcode, ParserLabelType type, int number,
                                                             int immediate) {
    Append<QueuedOpcode_With_Label_and_Immediate>(opcode, parser->Line(), type, number, immediate);
}

void OpcodeQueueQueue::Queue_Opcode(int opcode, double value) {
    Append<QueuedOpcode_Double>(opcode, parser->Line(), value);
}

void OpcodeQueueQueue::Queue_Opcode(int opcode, int first, int second) {
    Append<QueuedOpcode_Integer>(opcode, parser->Line(), first, second);
}

void OpcodeQueueQueue::Queue_Opcode(int opcode, const char* text, int length, int lower) {
    length = Text_Length(text, length);
    records.Append<QueuedOpcode_Text>(QueuedOpcode_Text::Size_With(length), opcode, parser->Line(), text,
                                      length, lower);
}

void OpcodeQueueQueue::Queue_Variable_Instruction(int is_pop, int ident, Variable_Scope scope, int alias,
                                                  int by_reference) {
    Append<QueuedOpcode_Variable>(parser->Line(), is_pop, ident, scope, alias, by_reference);
}

void OpcodeQueueQueue::Flush() {
    if (!rhs)
        Make_Accesses_Writable();
    if (records.Is_Long())
        parser->Expect_Code(records.Size()); // records take about as much as their text
    records.For_Each_Block(
        [&](QueuedOpcode* entry, const QueuedOpcode* end) {
            while (entry != end)
                entry = parser->Output_Run(entry, end);
        },
        true);
    records.Take_All_Back();
    parser->Unforce_LineNo();
}

void OpcodeQueueQueue::Queue_Pushed_Constant(int ident, int opcode) {
    Append<QueuedOpcode_Pushed_Constant>(parser->Line(), ident, opcode);
}

// One change anywhere makes every access writable, those included that have nothing to do with it.
void OpcodeQueueQueue::Make_Accesses_Writable() {
    records.For_Each_Block([](QueuedOpcode* entry, const QueuedOpcode* end) {
        for (; entry != end; entry = entry->Next())
            entry->opcode = static_cast<std::uint16_t>(Writable_Access(entry->opcode));
    });
}
