// Where generators send their instructions: to the back end at once, or to a list that is kept until its
// expression is complete.
#ifndef BACKEND_OPCODE_QUEUE_H
#define BACKEND_OPCODE_QUEUE_H

#include "backend/instructions/labels.h"
#include "backend/instructions/opcode.h"
#include "value/variable_scope.h"

#include <cstddef>
#include <memory_resource>

class CompilerParser;

enum _OpcodeQueueType { OPCODE_QUEUE_OUTPUT = 0, OPCODE_QUEUE_QUEUE = 1 };

// The sink of instructions. Its operations mirror those of the back end, see CompilerParser.
//
// The parser owns the one queue in force. A queue that gave way to one of the other type is kept by its
// successor, so that a compilation makes one of each, however many expressions it has.
class OpcodeQueue {
  public:
    OpcodeQueue(CompilerParser* parser, _OpcodeQueueType type);
    OpcodeQueue(const OpcodeQueue&) = delete;
    OpcodeQueue& operator=(const OpcodeQueue&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~OpcodeQueue();

    // The expression changes something: its element and member accesses must be writable.
    virtual void Clear_RHS() = 0;
    virtual void Queue_Generated_Label(ParserLabelType type, int number) = 0;
    virtual void Queue_Opcode_With_Label(int opcode, ParserLabelType type, int number) = 0;
    virtual void Queue_Opcode_With_Label_and_Immediate(int opcode, ParserLabelType type, int number,
                                                       int immediate) = 0;
    virtual void Queue_Opcode(int opcode, double value) = 0;
    virtual void Queue_Opcode(int opcode, int first, int second) = 0;
    // The text may go away afterwards.
    virtual void Queue_Opcode(int opcode, const char* text, int length, int lower) = 0;
    virtual void Queue_Variable_Instruction(int is_pop, int ident, Variable_Scope scope, int alias,
                                            int by_reference) = 0;
    // Writes and forgets what is kept.
    virtual void Flush() = 0;

    // The queue if it is of the wanted type, else a fresh one of that type which takes its place, behind a
    // flush.
    [[nodiscard]] static OpcodeQueue* Confirm_Type(OpcodeQueue* queue, _OpcodeQueueType wanted);

    // Likewise, but nothing is flushed. The queue that gave way keeps its instructions and belongs to the
    // answer. The parser first puts the answer in force and then flushes the other: what its instructions
    // write on the way, such as a line number, goes through the queue in force and so comes out at once.
    [[nodiscard]] static OpcodeQueue* Replace(OpcodeQueue* queue, _OpcodeQueueType wanted);

    CompilerParser* parser;
    _OpcodeQueueType type;

  private:
    // Back to the state of a new queue.
    virtual void Renew() = 0;

    OpcodeQueue* spare = nullptr; // the queue of the other type, owned; null while there was none
};

// Passes every instruction on, behind the number of its line.
class OpcodeQueueOutput : public OpcodeQueue {
  public:
    explicit OpcodeQueueOutput(CompilerParser* parser);
    ~OpcodeQueueOutput() override;

    void Clear_RHS() override;
    void Queue_Generated_Label(ParserLabelType type, int number) override;
    void Queue_Opcode_With_Label(int opcode, ParserLabelType type, int number) override;
    void Queue_Opcode_With_Label_and_Immediate(int opcode, ParserLabelType type, int number,
                                               int immediate) override;
    void Queue_Opcode(int opcode, double value) override;
    void Queue_Opcode(int opcode, int first, int second) override;
    void Queue_Opcode(int opcode, const char* text, int length, int lower) override;
    void Queue_Variable_Instruction(int is_pop, int ident, Variable_Scope scope, int alias,
                                    int by_reference) override;
    void Flush() override;

  private:
    void Renew() override;
};

// One call of a queue operation, with the line on which it was made. It lives in the memory of its queue,
// which drops all of them at once: nothing that a record holds may need a destructor.
class QueuedOpcode {
  public:
    QueuedOpcode(int opcode, int line) : opcode(opcode), line(line) {}
    virtual ~QueuedOpcode() = default;

    // Makes the call on the back end, with the parser forced to the line of the record.
    virtual void Output(CompilerParser* parser);

    int opcode; // 0 where the operation has none
    int line;
    QueuedOpcode* next = nullptr;
};

class QueuedOpcode_Integer : public QueuedOpcode {
  public:
    QueuedOpcode_Integer(int opcode, int line, int first, int second)
        : QueuedOpcode(opcode, line), first(first), second(second) {}

    void Output(CompilerParser* parser) override;

    int first;
    int second;
};

class QueuedOpcode_Double : public QueuedOpcode {
  public:
    QueuedOpcode_Double(int opcode, int line, double value) : QueuedOpcode(opcode, line), value(value) {}

    void Output(CompilerParser* parser) override;

    double value;
};

class QueuedOpcode_With_Label : public QueuedOpcode {
  public:
    QueuedOpcode_With_Label(int opcode, int line, ParserLabelType label_type, int label)
        : QueuedOpcode(opcode, line), label_type(label_type), label(label) {}

    void Output(CompilerParser* parser) override;

    ParserLabelType label_type;
    int label;
};

class QueuedOpcode_With_Label_and_Immediate : public QueuedOpcode {
  public:
    QueuedOpcode_With_Label_and_Immediate(int opcode, int line, ParserLabelType label_type, int label,
                                          int immediate)
        : QueuedOpcode(opcode, line), label_type(label_type), label(label), immediate(immediate) {}

    void Output(CompilerParser* parser) override;

    ParserLabelType label_type;
    int label;
    int immediate;
};

class QueuedOpcode_Label : public QueuedOpcode {
  public:
    QueuedOpcode_Label(int line, ParserLabelType label_type, int label)
        : QueuedOpcode(0, line), label_type(label_type), label(label) {}

    void Output(CompilerParser* parser) override;

    ParserLabelType label_type;
    int label;
};

class QueuedOpcode_Text : public QueuedOpcode {
  public:
    // The text is the queue's copy, with a final NUL.
    QueuedOpcode_Text(int opcode, int line, const char* text, int length, int lower)
        : QueuedOpcode(opcode, line), text(text), length(length), lower(lower) {}

    void Output(CompilerParser* parser) override;

    const char* text;
    int length;
    int lower;
};

class QueuedOpcode_Variable : public QueuedOpcode {
  public:
    QueuedOpcode_Variable(int line, int is_pop, int ident, Variable_Scope scope, int alias, int by_reference)
        : QueuedOpcode(0, line), is_pop(is_pop), ident(ident), scope(scope), alias(alias),
          by_reference(by_reference) {}

    void Output(CompilerParser* parser) override;

    int is_pop;
    int ident;
    Variable_Scope scope;
    int alias;
    int by_reference;
};

// Keeps the instructions of one expression until it is complete: only then is it known whether the expression
// changes something, and with it whether its element and member accesses have to be writable.
class OpcodeQueueQueue : public OpcodeQueue {
  public:
    explicit OpcodeQueueQueue(CompilerParser* parser);
    ~OpcodeQueueQueue() override;

    void Clear_RHS() override;
    void Queue_Generated_Label(ParserLabelType type, int number) override;
    void Queue_Opcode_With_Label(int opcode, ParserLabelType type, int number) override;
    void Queue_Opcode_With_Label_and_Immediate(int opcode, ParserLabelType type, int number,
                                               int immediate) override;
    void Queue_Opcode(int opcode, double value) override;
    void Queue_Opcode(int opcode, int first, int second) override;
    void Queue_Opcode(int opcode, const char* text, int length, int lower) override;
    void Queue_Variable_Instruction(int is_pop, int ident, Variable_Scope scope, int alias,
                                    int by_reference) override;
    void Flush() override;

  private:
    void Renew() override;

    template <typename Record, typename... Fields>
    void Append(Fields... fields);
    void Delete_All();

    // The records of an ordinary expression fit here; a longer one takes blocks of growing size.
    alignas(std::max_align_t) std::byte first_block[4096];
    std::pmr::monotonic_buffer_resource memory{first_block, sizeof first_block};
    QueuedOpcode* first = nullptr;
    QueuedOpcode* last = nullptr;
    int rhs = 1; // 1 while the expression is only read, 0 once something in it changes a value
};

#endif
