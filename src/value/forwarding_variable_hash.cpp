// A table that stands for another.

#include "value/forwarding_variable_hash.h"

ForwardingVariableHash::ForwardingVariableHash(Dictionary* dictionary, VariableHash* target, int bucket_bits,
                                               int capacity)
    : VariableHash(dictionary, bucket_bits, capacity, 0), target(target->RealIdentity()) {
}

ForwardingVariableHash::ForwardingVariableHash(TarnApplication* application, Dictionary* dictionary,
                                               VariableHash& source, bool clone)
    : VariableHash(application, dictionary, source, clone), target(this) {
}

int ForwardingVariableHash::Insert(Variable* variable) {
    return Is_Plain() ? VariableHash::Insert(variable) : target->Insert(variable);
}

int ForwardingVariableHash::Insert(const char* name, int name_length) {
    return Is_Plain() ? VariableHash::Insert(name, name_length) : target->Insert(name, name_length);
}

int ForwardingVariableHash::Insert(int id) {
    return Is_Plain() ? VariableHash::Insert(id) : target->Insert(id);
}

void ForwardingVariableHash::SetVariable(const char* name, int name_length, const char* value,
                                         int value_length) {
    Is_Plain() ? VariableHash::SetVariable(name, name_length, value, value_length)
               : target->SetVariable(name, name_length, value, value_length);
}

void ForwardingVariableHash::SetVariable(Variable* variable) {
    Is_Plain() ? VariableHash::SetVariable(variable) : target->SetVariable(variable);
}

void ForwardingVariableHash::SetVariable_Reference(int slot, Variable* variable) {
    if (Is_Plain())
        VariableHash::SetVariable_Reference(slot, variable);
    else
        target->SetVariable_Reference(Target_Slot(slot, 1), variable);
}

int ForwardingVariableHash::SetVariable_Fancy(const char* name, int name_length, const char* value,
                                              int value_length, int append) {
    return Is_Plain() ? VariableHash::SetVariable_Fancy(name, name_length, value, value_length, append)
                      : target->SetVariable_Fancy(name, name_length, value, value_length, append);
}

int ForwardingVariableHash::Seek(int id, const char* name, int name_length, _VH_Entry** entry) {
    return Is_Plain() ? VariableHash::Seek(id, name, name_length, entry)
                      : target->Seek(id, name, name_length, entry);
}

int ForwardingVariableHash::Insert(int id, const char* name, int name_length, Variable* variable) {
    return Is_Plain() ? VariableHash::Insert(id, name, name_length, variable)
                      : target->Insert(id, name, name_length, variable);
}

int ForwardingVariableHash::Version() {
    return Is_Plain() ? VariableHash::Version() : target->Version();
}

bool ForwardingVariableHash::ClearVariable(const char* name, int name_length) {
    return Is_Plain() ? VariableHash::ClearVariable(name, name_length)
                      : target->ClearVariable(name, name_length);
}

bool ForwardingVariableHash::Find(Variable** variable, const char* name, int name_length, int create) {
    const int slot = VariableHash::Seek(-1, name, name_length, nullptr);
    if (slot < 0 && !Is_Plain())
        return target->Find(variable, name, name_length, create);
    if (slot < 0)
        return false;
    *variable = Index(slot, create);
    return true;
}

bool ForwardingVariableHash::LookupVariable_Fancy(Variable** variable, const char* name, int name_length,
                                                  int create) {
    if (Is_Plain())
        return VariableHash::LookupVariable_Fancy(variable, name, name_length, create);
    return target->LookupVariable_Fancy(variable, name, name_length, create) || Error(target->error());
}

Variable* ForwardingVariableHash::Index(int slot, int create) {
    return Is_Plain() ? VariableHash::Index(slot, create) : target->Index(Target_Slot(slot, create), create);
}

int ForwardingVariableHash::Entries() {
    return Is_Plain() ? VariableHash::Entries() : target->Entries();
}

void ForwardingVariableHash::AllocatedVars(VariableList* list) {
    Is_Plain() ? VariableHash::AllocatedVars(list) : target->AllocatedVars(list);
}

bool ForwardingVariableHash::Read(TaggedFile* file) {
    if (!VariableHash::Read(file))
        return false;
    for (int slot = 0; slot < variable_count; ++slot)
        entries[slot].version = -1;
    return true;
}

void ForwardingVariableHash::Push() {
    Is_Plain() ? VariableHash::Push() : target->Push();
}

int ForwardingVariableHash::Pop() {
    return Is_Plain() ? VariableHash::Pop() : target->Pop();
}

VariableHash* ForwardingVariableHash::RealIdentity() {
    return Is_Plain() ? this : target->RealIdentity();
}

int ForwardingVariableHash::Target_Slot(int slot, int create) {
    int length = 0;
    const char* name = Is_Slot(slot) ? Name_Of(slot, &length) : nullptr;
    if (!name)
        return -1;
    int& there = entries[slot].version;
    if (there < 0)
        there = target->Seek(-1, name, length, nullptr);
    if (there < 0 && create)
        there = target->Insert(New_Variable(slot));
    return there;
}
