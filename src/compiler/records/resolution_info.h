// The records of open blocks, and of functions defined or called.
#ifndef COMPILER_RESOLUTION_INFO_H
#define COMPILER_RESOLUTION_INFO_H

#include "core/hash_table.h"
#include "core/string.h"

#include <string_view>

// A block that a tag has opened and none has closed yet. The stack of its family owns it.
class Resolution_Info {
  public:
    // Copies the file name, which may be null.
    Resolution_Info(int label, int line, const String* file);
    virtual ~Resolution_Info();
    Resolution_Info(const Resolution_Info&) = delete;
    Resolution_Info& operator=(const Resolution_Info&) = delete;

    int label; // number of the block's labels, 0 where the block takes none
    int line;  // source line of the opening tag
    String file;
};

class If_Resolution_Info : public Resolution_Info {
  public:
    If_Resolution_Info(int label, int line, const String* file, int chain);

    // Notes the use of the else clause; 1 when it was used before.
    int Set_Else_Used();

    int chain; // label of the first condition of the chain, -1 on that one itself
    int else_used;
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

// A function: its definition, or one call of it.
class Function_Resolution_Info : public Resolution_Info {
  public:
    // A length of -1 takes the name up to its NUL.
    Function_Resolution_Info(int line, const char* name, int length, const String* file);

    String name;
    int parameters; // declared, or given in the call
};

inline std::string_view Hash_Key(const Function_Resolution_Info& function) {
    return {function.name.text(), static_cast<std::size_t>(function.name.length())};
}

template <>
inline constexpr bool Hash_Key_Ignores_Case<Function_Resolution_Info> = true;

#endif
