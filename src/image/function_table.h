#ifndef IMAGE_FUNCTION_TABLE_H
#define IMAGE_FUNCTION_TABLE_H

#include "core/list.h"
#include "core/string.h"
#include "value/chain_heads.h"
#include "value/variable_hash.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

class Dictionary;
class TaggedFile;
class TarnApplication;

class FunctionParameter {
  public:
    FunctionParameter(int name_index, String name, int flags, int ident);
    virtual ~FunctionParameter();

    int name_index; // in the dictionary
    String name;
    int flags; // other than 0 for a reference, which the word "var" behind the name asks for
    int ident; // slot in the function's locals
};

// A function of a compiled image: its name, its parameters and its local variables. Doesn't own the
// dictionary.
class Function {
  public:
    static constexpr int flag_by_name = 1; // added by its name alone

    // Without a name.
    Function(Dictionary* dictionary, int flags);
    // With another dictionary, which has the same names; the locals have no variables. Moves the cursor of
    // the source's list of parameters.
    Function(TarnApplication* application, Dictionary* dictionary, Function& source);
    Function(const Function&) = delete;
    Function& operator=(const Function&) = delete;
    virtual ~Function();

    // Adds a parameter behind the others, and a local variable for it, whose slot it answers.
    int AddParameter(int flags, const char* name, int length);
    // Adds the parameters of a list as it is written in a program: "first, second var". Nothing behind a last
    // comma is no parameter.
    void SetParameters(const char* text, int length);

    int index = -1; // its place in the manager
    int flags;
    int name_index = -1; // in the dictionary; what Write puts down for the name
    String name;         // what the table goes by
    List<FunctionParameter> parameters{1};
    int body_a = -1; // where the body is, for the engine; both are -1 without one
    int body_b = -1;
    Dictionary* dictionary;
    int engine_word = 0; // the engine's own
    VariableHash locals;
};

// The functions of a compiled image, by name, in the hash table that stands in the file. Names ignore case;
// equal names aren't refused, and the first that was added is found. Owns the functions, but not the
// dictionary, which outlives it.
//
// The section holds no names but their indices in the dictionary, so a dictionary is read ahead of the table
// over it, and written in the same state. A bucket's number takes 15 bits there: a table of more bits can be
// written as long as no function falls into a bucket above 32767.
class FunctionManager {
  public:
    // For 1 << bucket_bits buckets.
    FunctionManager(Dictionary* dictionary, int bucket_bits);
    // With another dictionary, which has the same names.
    FunctionManager(TarnApplication* application, Dictionary* dictionary, FunctionManager& source);
    FunctionManager(const FunctionManager&) = delete;
    FunctionManager& operator=(const FunctionManager&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~FunctionManager();
    // Null without one. A length of -1 means up to the NUL.
    virtual Function* Function_Get(const char* name, int length);
    virtual const String& error();
    virtual bool Error(const String& text); // answers false

    // All answer the function, and number it. The first takes a function over with the name and the
    // name_index that it has; the second takes it over with a new name, which it enters in the dictionary;
    // the others make it. The third adds flag_by_name to the flags.
    Function* Function_Add(Function* function);
    Function* Function_Add(Function* function, const char* name, int length);
    Function* Function_Add(const char* name, int length, int flags);
    Function* Function_Add(int body_a, int body_b, const char* name, int length, const char* parameters,
                           int parameters_length, int flags);
    // In the order of adding; null for a number that isn't there.
    [[nodiscard]] Function* Function_At(int index) const;
    [[nodiscard]] int Entries() const { return static_cast<int>(functions.size()); }

    // The section "func". False with the text in error() on failure; a failed Read leaves the table as it
    // was. Write leaves the section open, for the caller to end.
    bool Read(TaggedFile* file);
    bool Write(TaggedFile* file);

  private:
    [[nodiscard]] std::size_t Bucket_Of(std::string_view name) const;
    [[nodiscard]] int Order(std::string_view name, int index) const;
    bool Read_Section(TaggedFile* file);
    bool Read_Function(TaggedFile* file, std::int64_t& name_room, Function& function);
    bool Read_Parameters(TaggedFile* file, std::int64_t& name_room, std::uint32_t count, Function& function);
    bool Read_Name(int index, const char* unknown, std::int64_t& room, String& name);

    String error_;
    ChainHeads buckets;    // the first function of each chain
    int bucket_bits;       // 32 means one bucket, as 0 does
    std::vector<int> next; // the function behind each one in its chain, -1 at the end
    std::vector<std::unique_ptr<Function>> functions;
    Dictionary* dictionary;
};

#endif
