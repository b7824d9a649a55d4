#ifndef VALUE_SYSTEM_VARIABLE_HASH_H
#define VALUE_SYSTEM_VARIABLE_HASH_H

#include "core/list.h"
#include "core/stack.h"
#include "value/variable.h"
#include "value/variable_hash.h"

// What a slot held before a change within an open scope. The order of the fields is part of the binary
// interface.
struct _SVH_Entry {
    int slot;
    int version;
    VariableHold var; // has the table's count; null for none
};

// The system variables: a table with scopes. While one is open, whatever stores another variable in a slot
// records what was there, and Pop puts that back, in the order in which it was recorded: of a slot that was
// changed twice in one scope the value before the last change stays. Scripts see this, so it is kept. Setting
// the value of a variable in place is no such change.
class SystemVariableHash : public VariableHash {
  public:
    SystemVariableHash(Dictionary* dictionary, int bucket_bits, int capacity);
    // The same structure with another dictionary, no scope open.
    SystemVariableHash(TarnApplication* application, Dictionary* dictionary, VariableHash& source,
                       bool clone);
    SystemVariableHash(const SystemVariableHash&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    ~SystemVariableHash() override;
    using VariableHash::Insert;
    using VariableHash::SetVariable;
    void SetVariable(Variable* variable) override;
    void SetVariable_Reference(int slot, Variable* target) override;
    // Never appends.
    int SetVariable_Fancy(const char* name, int name_length, const char* value, int value_length,
                          int append) override;
    // Within a scope a name that has a slot gets the variable there.
    int Insert(int id, const char* name, int name_length, Variable* variable) override;
    int Version() override;
    Variable* Index(int slot, int create) override;
    void Push() override;
    int Pop() override;
    SystemVariableHash* AsSystem() override;

  private:
    // Takes over the count of variable, which may be null.
    void Record(int slot, int version, Variable* variable);
    // Stores variable and keeps what was there for Pop.
    void Store(int slot, Variable* variable);
    void Restore(_SVH_Entry& entry);

    // The order of the fields is part of the binary interface.
    int level = 0; // scopes open
    Stack<List<_SVH_Entry>> scopes{1};
    List<_SVH_Entry>* current = nullptr; // the top of scopes, null without
};

#endif
