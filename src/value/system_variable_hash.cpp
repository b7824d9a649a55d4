// The table of system variables, with levels to go back to.

#include "value/system_variable_hash.h"

#include <memory>
#include <utility>

SystemVariableHash::SystemVariableHash(Dictionary* dictionary, int bucket_bits, int capacity)
    : VariableHash(dictionary, bucket_bits, capacity, 0) {
}

SystemVariableHash::SystemVariableHash(TarnApplication* application, Dictionary* dictionary,
                                       VariableHash& source, bool clone)
    : VariableHash(application, dictionary, source, clone) {
}

SystemVariableHash::~SystemVariableHash() = default;

void SystemVariableHash::SetVariable(Variable* variable) {
    const int slot = Seek(-1, variable->name().text(), variable->name().length(), nullptr);
    if (level && slot >= 0)
        Store(slot, variable);
    else
        VariableHash::SetVariable(variable);
}

void SystemVariableHash::SetVariable_Reference(int slot, Variable* target) {
    if (!level)
        VariableHash::SetVariable_Reference(slot, target);
    else if (Is_Slot(slot) && entries[slot].var != target)
        Store(slot, New_Reference(slot, target));
}

int SystemVariableHash::SetVariable_Fancy(const char* name, int name_length, const char* value,
                                          int value_length, int) {
    return VariableHash::SetVariable_Fancy(name, name_length, value, value_length, 0);
}

int SystemVariableHash::Insert(int id, const char* name, int name_length, Variable* variable) {
    int slot = level ? Seek(id, name, name_length, nullptr) : -1;
    if (slot >= 0) {
        Store(slot, variable);
        return slot;
    }
    slot = VariableHash::Insert(id, name, name_length, variable);
    if (level)
        Record(slot, 0, nullptr);
    return slot;
}

int SystemVariableHash::Version() {
    return level;
}

Variable* SystemVariableHash::Index(int slot, int create) {
    if (level && create && Is_Slot(slot) && !entries[slot].var)
        Record(slot, 0, nullptr);
    return VariableHash::Index(slot, create);
}

void SystemVariableHash::Push() {
    ++level;
    current = new List<_SVH_Entry>(1);
    scopes.Push(current);
}

int SystemVariableHash::Pop() {
    if (!level)
        return 0;
    scopes.Top();
    std::unique_ptr<List<_SVH_Entry>> scope(scopes.Pop());
    --level;
    current = scopes.Top();
    for (_SVH_Entry* entry = scope->First(); entry; entry = scope->Next())
        Restore(*entry);
    return 1;
}

SystemVariableHash* SystemVariableHash::AsSystem() {
    return this;
}

void SystemVariableHash::Record(int slot, int version, Variable* variable) {
    current->Insert(new _SVH_Entry{slot, version, VariableHold(variable)}, LIST_LAST);
}

void SystemVariableHash::Store(int slot, Variable* variable) {
    Record(slot, entries[slot].version, entries[slot].var);
    entries[slot].var = variable;
    entries[slot].version = level;
}

// The slot may be gone if the table was read anew since.
void SystemVariableHash::Restore(_SVH_Entry& entry) {
    if (!Is_Slot(entry.slot))
        return;
    entries[entry.slot].version = entry.version;
    const VariableHold present(std::exchange(entries[entry.slot].var, entry.var.release()));
}
