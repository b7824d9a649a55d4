// The records of open blocks, and of functions defined or called.
#ifndef COMPILER_RESOLUTION_INFO_H
#define COMPILER_RESOLUTION_INFO_H

#include "core/hash_table.h"
#include "core/recycled_memory.h"
#include "core/string.h"

#include <memory>
#include <string_view>

// The name of a source file, of which all records of the file have the same copy.
class Shared_Name {
  public:
    // Copies the name, which may be null.
    Shared_Name(const String* name) : name(std::make_shared<const String>(name ? *name : String())) {}

    const String* get() const { return name.get(); }

  private:
    std::shared_ptr<const String> name;
};

// A block that a tag has opened and none has closed yet. The stack of its family owns it.
class Resolution_Info {
  public:
    Resolution_Info(int label, int line, Shared_Name file);
    virtual ~Resolution_Info();
    Resolution_Info(const Resolution_Info&) = delete;
    Resolution_Info& operator=(const Resolution_Info&) = delete;

    int label; // number of the block's labels, 0 where the block takes none
    int line;  // source line of the opening tag
    Shared_Name file;
};

class If_Resolution_Info : public Resolution_Info {
  public:
    If_Resolution_Info(int label, int line, Shared_Name file, int chain);

    // Notes the use of the else clause; 1 when it was used before.
    int Set_Else_Used();

    int chain; // label of the first condition of the chain, -1 on that one itself
    int else_used;
};

class Ifdef_Resolution_Info : public Resolution_Info {
  public:
    Ifdef_Resolution_Info(int line, Shared_Name file, int generating, int negated);

    int generating; // 1 when this condition and those of all enclosing blocks hold
    int negated;    // 1 for TnIFNDEF
};

class Capture_Resolution_Info : public Resolution_Info {
  public:
    Capture_Resolution_Info(int label, int line, Shared_Name file, int saved_flags);

    int saved_flags; // output flags to go back to, -1 when the tag changed none
};

// A function: its definition, or one call of it. There may be a million calls, so that their records share
// what they can.
class Function_Resolution_Info final : public Resolution_Info {
  public:
    // A length of -1 takes the name up to its NUL.
    // Another call of the same function may be given, of which the name is kept when it is spelled so.
    Function_Resolution_Info(int line, const char* name, int length, Shared_Name file,
                             Function_Resolution_Info* first = nullptr);

    static void* operator new(std::size_t) { return Recycled_Memory<Function_Resolution_Info>::Take(); }
    static void operator delete(void* memory) {
        Recycled_Memory<Function_Resolution_Info>::Give_Back(memory);
    }

    // As the source has it.
    const String& Name() const { return first && !own_name.capacity() ? first->own_name : own_name; }
    // The record that stands for all calls of the function.
    Function_Resolution_Info* First() { return first ? first : this; }

    int parameters = 0;              // declared, or given in the call
    Function_Resolution_Info* first; // the first call of the function, null for that one
    const Function_Resolution_Info* definition =
        nullptr; // of the first call, once it was looked for and found

  private:
    String own_name; // unassigned while that of the first call serves
};

inline std::string_view Hash_Key(const Function_Resolution_Info& function) {
    return function.Name().view();
}

template <>
inline constexpr bool Hash_Key_Ignores_Case<Function_Resolution_Info> = true;

#endif
