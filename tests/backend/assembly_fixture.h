// A back end that writes to memory, on a line that the test chooses.
#ifndef TESTS_BACKEND_ASSEMBLY_FIXTURE_H
#define TESTS_BACKEND_ASSEMBLY_FIXTURE_H

#include "backend/outputs/compiler_output.h"
#include "backend/queue/opcode_queue.h"
#include "backend/writers/file_compiler_parser.h"

#include <string>

class Assembly_Parser : public FileCompilerParser {
  public:
    Assembly_Parser()
        : FileCompilerParser(nullptr, &text, nullptr, nullptr, -1, -1, START_FILE, nullptr, nullptr,
                             nullptr) {}

    int Linenumber() override { return line; }

    std::string Written() {
        int length;
        const char* const contents = text.Contents(&length);
        const std::string written(contents, length);
        text.Clear();
        return written;
    }
    void Queue_Expression() { opcode_queue = OpcodeQueue::Confirm_Type(opcode_queue, OPCODE_QUEUE_QUEUE); }

    int line = 0; // no instruction of line 0 has a lineno ahead of it
    StringOutput text;
};

#endif
