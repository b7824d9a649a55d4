// Composing the short items of assembly text in place.
#ifndef BACKEND_ASSEMBLY_ITEM_H
#define BACKEND_ASSEMBLY_ITEM_H

#include "backend/compiler_output.h"
#include "backend/opcode.h"

#include <charconv>
#include <cstring>
#include <string_view>

// One item on its way out: a few words and numbers, put together in the output's own buffer and handed over
// by the destructor. All of them together are limit bytes at most; texts of the source are written
// separately.
class Assembly_Item {
  public:
    static constexpr int limit = 96;

    explicit Assembly_Item(CompilerOutput* output) : output(output), reserved(output->Reserve(limit)) {
        position = reserved ? reserved : spare;
    }
    ~Assembly_Item() {
        if (reserved)
            output->Commit(position);
        else
            output->Write(spare, static_cast<int>(position - spare));
    }
    Assembly_Item(const Assembly_Item&) = delete;
    Assembly_Item& operator=(const Assembly_Item&) = delete;

    Assembly_Item& Head(const Opcode_Info& row) {
        std::memcpy(position, row.head, Opcode_Info::head_size);
        position += row.head_length;
        return *this;
    }
    Assembly_Item& Text(std::string_view text) {
        std::memcpy(position, text.data(), text.size());
        position += text.size();
        return *this;
    }
    Assembly_Item& Number(int number) {
        position = std::to_chars(position, position + 11, number).ptr;
        return *this;
    }

  private:
    CompilerOutput* output;
    char* reserved; // null when the output's buffer is too small
    char* position;
    char spare[limit];
};

#endif
