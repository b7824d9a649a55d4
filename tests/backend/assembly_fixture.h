#ifndef TESTS_BACKEND_ASSEMBLY_FIXTURE_H
#define TESTS_BACKEND_ASSEMBLY_FIXTURE_H

#include "backend/outputs/compiler_output.h"
#include "backend/queue/opcode_queue.h"
#include "backend/writers/file_compiler_parser.h"

#include <string>
#include <utility>
#include <vector>

// The pieces as one text; they are gone then.
inline std::string Take_All(std::vector<std::string>& pieces) {
    std::string all;
    for (const std::string& piece : std::exchange(pieces, {}))
        all += piece;
    return all;
}

// Keeps each piece that reaches the sink.
class Recording_Output : public CompilerOutput {
  public:
    using CompilerOutput::CompilerOutput;

    int DoWrite(const char* text, int length) override {
        pieces.emplace_back(text, length);
        return length;
    }
    // All that was written since it was asked for.
    std::string Written() { return Flush(), Take_All(pieces); }

    std::vector<std::string> pieces;
};

// A back end that writes to memory, on a line that the test chooses. No instruction of line 0 has a lineno.
class Assembly_Parser : public FileCompilerParser {
  public:
    Assembly_Parser()
        : FileCompilerParser(new Tokenizer("", 0, 0), &text, nullptr, nullptr, -1, -1, START_FILE, nullptr,
                             nullptr, nullptr) {
        Go_To_Line(0);
    }

    // No instruction of line 0 has a lineno ahead of it.
    void Go_To_Line(int line) { tokenizer->line = line - 1; }
    std::string Written() { return text.Written(); }
    void Queue_Expression() { opcode_queue = OpcodeQueue::Confirm_Type(opcode_queue, OPCODE_QUEUE_QUEUE); }

    Recording_Output text{1024};
};

#endif
