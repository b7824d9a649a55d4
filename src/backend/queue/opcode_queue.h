// Where generators send their instructions: to the back end at once, or to a list that is kept until its
// expression is complete.
#ifndef BACKEND_OPCODE_QUEUE_H
#define BACKEND_OPCODE_QUEUE_H

#include "backend/instructions/labels.h"
#include "backend/instructions/opcode.h"
#include "value/variable_scope.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <new>
#include <vector>

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
    // pushc and, behind it, an instruction without operands.
    virtual void Queue_Pushed_Constant(int ident, int opcode) = 0;

    // The queue if it is of the wanted type, else a fresh one of that type which takes its place, behind a
    // flush.
    [[nodiscard]] static OpcodeQueue* Confirm_Type(OpcodeQueue* queue, _OpcodeQueueType wanted);

    // The same exchange without the flush. The queue that gave way keeps its instructions and belongs to the
    // answer. The parser first puts the answer in force and then flushes the other: what its instructions
    // write on the way, such as a line number, goes through the queue in force and so comes out at once.
    [[nodiscard]] static OpcodeQueue* Replace(OpcodeQueue* queue, _OpcodeQueueType wanted);

    // The order of the fields is part of the binary interface.
    CompilerParser* parser;
    _OpcodeQueueType type;

  private:
    // The queue of the other type, owned; null while there was none. Without it a page of code takes
    // 8.4 % more instructions, counted as recycled_memory.h tells.
    OpcodeQueue* spare = nullptr;
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
    void Queue_Pushed_Constant(int ident, int opcode) override;
};

// The class of a record, as far as a back end may write it by itself.
enum Queued_Kind : unsigned char {
    QUEUED_CALL,    // whatever it is, it makes its call
    QUEUED_NUMBERS, // QueuedOpcode_Integer
    QUEUED_TEXT,    // QueuedOpcode_Text
};

// One call of a queue operation, with the line on which it was made. It lives in the memory of its queue,
// which drops all of them at once: nothing that a record holds may need a destructor.
class QueuedOpcode {
  public:
    QueuedOpcode(int opcode, int line, Queued_Kind kind = QUEUED_CALL)
        : line(line), opcode(static_cast<std::uint16_t>(opcode)), kind(kind) {}
    virtual ~QueuedOpcode() = default;

    // Makes the call on the back end, with the parser forced to the line of the record.
    virtual void Output(CompilerParser* parser);

    inline QueuedOpcode* Next(); // the one behind it, or the end

    int line;
    std::uint16_t opcode; // 0 where the operation has none
    Queued_Kind kind;
    // A byte is left of the word, for the small fields that a descendant begins with.
};

class QueuedOpcode_Integer : public QueuedOpcode {
  public:
    QueuedOpcode_Integer(int opcode, int line, int first, int second)
        : QueuedOpcode(opcode, line, QUEUED_NUMBERS), first(first), second(second) {}

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

    ParserLabelType label_type : 8;
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
    // A text that is shorter than that may be read with so many bytes.
    static constexpr int padding = 8;

    static std::size_t Size_With(int length) {
        return sizeof(QueuedOpcode_Text) + (static_cast<std::size_t>(length) / padding + 1) * padding;
    }

    // Copies the text, with a final NUL, to the place behind the record.
    QueuedOpcode_Text(int opcode, int line, const char* source, int length, int lower)
        : QueuedOpcode(opcode, line, QUEUED_TEXT), length(length), lower(lower) {
        char* copy = reinterpret_cast<char*>(this + 1);
        *std::copy_n(source, length, copy) = '\0';
        text = copy;
    }

    void Output(CompilerParser* parser) override;

    const char* text;
    int length;
    int lower;
};

class QueuedOpcode_Variable : public QueuedOpcode {
  public:
    QueuedOpcode_Variable(int line, int is_pop, int ident, Variable_Scope scope, int alias, int by_reference)
        : QueuedOpcode(0, line), is_pop(is_pop != 0), by_reference(by_reference != 0), scope(scope),
          ident(ident), alias(alias) {}

    void Output(CompilerParser* parser) override;

    bool is_pop : 1;
    bool by_reference : 1;
    Variable_Scope scope : 6;
    int ident;
    int alias;
};

class QueuedOpcode_Pushed_Constant : public QueuedOpcode {
  public:
    QueuedOpcode_Pushed_Constant(int line, int ident, int opcode)
        : QueuedOpcode(opcode, line), ident(ident) {}

    void Output(CompilerParser* parser) override;

    int ident;
};

// What a record takes in the memory of its queue, but for a text, which takes more.
constexpr std::size_t record_size = 24;

inline QueuedOpcode* QueuedOpcode::Next() {
    const std::size_t size = kind == QUEUED_TEXT
                                 ? QueuedOpcode_Text::Size_With(static_cast<QueuedOpcode_Text*>(this)->length)
                                 : record_size;
    return reinterpret_cast<QueuedOpcode*>(reinterpret_cast<std::byte*>(this) + size);
}

// The records of a queue, one behind the other. What fits into the first block costs no allocation; further
// blocks grow up to a size, so that there is always little of what is written already, and go when the queue
// is emptied.
class Record_Memory {
  public:
    // Makes a record of that size.
    template <typename Record, typename... Fields>
    void Append(std::size_t size, Fields... fields) {
        if (static_cast<std::size_t>(limit - current.end) < size) [[unlikely]]
            Add_Block(size);
        new (current.end) Record(fields...);
        current.end += size;
    }
    // Calls the function, which must append nothing, with the first record of each block and the end of its
    // last one. With discard a full block goes as soon as the function has had it; Take_All_Back comes next.
    template <typename Function>
    void For_Each_Block(Function function, bool discard = false) {
        for (std::size_t i = 0; i < full.size(); ++i) {
            function(full[i].First(), full[i].Last_End());
            if (discard)
                Give_Back(full[i]);
        }
        function(current.First(), current.Last_End());
    }
    void Take_All_Back();
    // Whether there is more than the first block.
    bool Is_Long() const { return !full.empty(); }
    // Bytes of the records.
    std::size_t Size() const;

  private:
    static constexpr std::size_t alignment = alignof(QueuedOpcode);
    static_assert(alignment == QueuedOpcode_Text::padding);

    struct Block {
        std::unique_ptr<std::byte[]> owned; // null for the first block
        std::byte* begin;
        std::byte* end; // of what is used

        QueuedOpcode* First() const { return reinterpret_cast<QueuedOpcode*>(begin); }
        QueuedOpcode* Last_End() const { return reinterpret_cast<QueuedOpcode*>(end); }
        std::size_t Size() const { return static_cast<std::size_t>(end - begin); }
    };

    // Bytes, unless a single text is longer.
    static constexpr std::size_t largest_block = std::size_t{1} << 20;

    void Add_Block(std::size_t size);
    // To the system.
    static void Give_Back(Block& block);

    alignas(alignment) std::byte first_block[4096];
    std::vector<Block> full; // ahead of the current one
    Block current{nullptr, first_block, first_block};
    std::byte* limit = std::end(first_block); // of the current block
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
    void Queue_Pushed_Constant(int ident, int opcode) override;

    // Takes what comes for an expression that is only read so far.
    void Start_Expression() { rhs = 1; }

  private:
    template <typename Record, typename... Fields>
    void Append(Fields... fields) {
        static_assert(sizeof(Record) == record_size);
        records.Append<Record>(record_size, fields...);
    }
    void Make_Accesses_Writable();

    Record_Memory records;
    int rhs = 1; // 1 while the expression is only read, 0 once something in it changes a value
};

#endif
