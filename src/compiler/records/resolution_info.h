// The records of open blocks, and of functions defined or called.
#ifndef COMPILER_RESOLUTION_INFO_H
#define COMPILER_RESOLUTION_INFO_H

#include "core/hash_table.h"
#include "core/recycled_memory.h"
#include "core/string.h"

#include <cassert>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// A block that a tag has opened and none has closed yet. The stack of its family owns it.
class Resolution_Info {
  public:
    // The name of the file has to live as long as the record; it may be null.
    Resolution_Info(int label, int line, const String* file);
    virtual ~Resolution_Info();
    Resolution_Info(const Resolution_Info&) = delete;
    Resolution_Info& operator=(const Resolution_Info&) = delete;

    // Blocks of all classes have cells of one size.
    static void* operator new(std::size_t size) {
        assert(size <= sizeof(Cell));
        (void)size;
        return Recycled_Memory<Cell>::Take();
    }
    static void operator delete(void* memory) { Recycled_Memory<Cell>::Give_Back(memory); }

    int label; // number of the block's labels, 0 where the block takes none
    int line;  // source line of the opening tag
    const String* file;

  private:
    struct Cell {
        alignas(void*) std::byte bytes[32];
    };
};

class If_Resolution_Info : public Resolution_Info {
  public:
    If_Resolution_Info(int label, int line, const String* file, int chain);

    // Notes the use of the else clause; 1 when it was used before.
    int Set_Else_Used();

    int chain; // label of the first condition of the chain, -1 on that one itself
    int else_used = 0;
};

class Ifdef_Resolution_Info : public Resolution_Info {
  public:
    Ifdef_Resolution_Info(int line, const String* file, int generating, int negated);

    int generating; // 1 when this condition and those of all enclosing blocks hold
    int negated;    // 1 for TnIFNDEF
};

class Capture_Resolution_Info : public Resolution_Info {
  public:
    Capture_Resolution_Info(int label, int line, const String* file, int saved_flags);

    int saved_flags; // output flags to go back to, -1 when the tag changed none
};

// A function: its definition, its first call, or a call that spells the name in another case than that one.
class Function_Resolution_Info final : public Resolution_Info {
  public:
    // A length of -1 takes the name up to its NUL.
    Function_Resolution_Info(int line, const char* name, int length, const String* file);

    static void* operator new(std::size_t) { return Recycled_Memory<Function_Resolution_Info>::Take(); }
    static void operator delete(void* memory) {
        Recycled_Memory<Function_Resolution_Info>::Give_Back(memory);
    }

    // The record of a call that stands for all spellings of the name.
    Function_Resolution_Info* First() { return first ? first : this; }

    std::string name;                          // as the source has it
    int parameters = 0;                        // declared, or given in the call
    int number = 0;                            // of a call: its place in the Function_Records
    Function_Resolution_Info* first = nullptr; // the first call, null for that one
    // Of the first call, once it was looked for and found.
    const Function_Resolution_Info* definition = nullptr;
};

// The records of calls, numbered as they come.
class Function_Records {
  public:
    // Takes the record over.
    void Keep(Function_Resolution_Info* function) {
        function->number = static_cast<int>(records.size());
        records.emplace_back(function);
    }
    Function_Resolution_Info* Record(int number) const {
        return records[static_cast<std::size_t>(number)].get();
    }

  private:
    std::vector<std::unique_ptr<Function_Resolution_Info>> records;
};

// One call of a function. There may be a million of them.
struct Function_Call {
    Function_Resolution_Info* function; // by its spelling here
    const String* file;
    int line;
    int parameters;
};

// A call whose closing parenthesis is still to come.
struct Pending_Call {
    Function_Resolution_Info* function;
    std::unique_ptr<Function_Resolution_Info> spelling; // that record, when it was made for this call
    int line;
    int parameters = 0;
};

inline std::string_view Hash_Key(const Function_Resolution_Info& function) {
    return function.name;
}

template <>
inline constexpr bool Hash_Key_Ignores_Case<Function_Resolution_Info> = true;

#endif
