// The table of variables by the numbers and names of a dictionary.

#include "value/variable_hash.h"

#include "core/string_hash.h"
#include "core/text_search.h"
#include "image/dictionary.h"
#include "value/reference_variable.h"
#include "value/variable_list.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr int slot_growth = 512;

} // namespace

VariableHash::VariableHash(Dictionary* dictionary, int bucket_bits, int capacity, int variable_count)
    : buckets(bucket_bits, std::max({capacity, variable_count, 0})), bucket_bits(bucket_bits),
      bucket_size(1 << (bucket_bits & 31)), variable_count(variable_count), dictionary_(dictionary) {
    Reserve(std::max({capacity, variable_count, 0}));
}

VariableHash::VariableHash(VariableHash& source)
    : VariableHash(source.dictionary_, source.bucket_bits, source.capacity, source.variable_count) {
    Copy_Structure(source);
}

VariableHash::VariableHash(TarnApplication* application, Dictionary* dictionary, VariableHash& source,
                           bool clone)
    : VariableHash(dictionary, source.bucket_bits, source.capacity, source.variable_count) {
    Copy_Structure(source);
    for (int slot = 0; clone && slot < variable_count; ++slot)
        if (Variable* variable = source.entries[slot].var)
            entries[slot].var = variable->Clone(application);
}

VariableHash::~VariableHash() {
    Dump();
}

int VariableHash::Insert(Variable* variable) {
    const String& name = variable->name();
    return Insert(-1, name.text(), name.length(), variable);
}

int VariableHash::Insert(const char* name, int name_length) {
    return Insert(-1, name, name_length, nullptr);
}

int VariableHash::Insert(int id) {
    return Insert(id, nullptr, -1, nullptr);
}

void VariableHash::SetVariable(const char* name, int name_length, const char* value, int value_length) {
    Variable* variable = nullptr;
    if (!Find(&variable, name, name_length, 1)) {
        variable = new Variable(name, name_length);
        Insert(variable);
    }
    variable->SetValue(value, value_length);
}

void VariableHash::SetVariable(Variable* variable) {
    const int slot = Seek(-1, variable->name().text(), variable->name().length(), nullptr);
    if (slot < 0)
        Insert(variable);
    else
        Replace(slot, variable);
}

void VariableHash::SetVariable_Reference(int slot, Variable* target) {
    if (Is_Slot(slot) && entries[slot].var != target)
        Replace(slot, New_Reference(slot, target));
}

int VariableHash::Seek(int id, const char* name, int name_length, _VH_Entry** entry) {
    if (!name)
        name = dictionary_->Entry(id, &name_length);
    else if (name_length < 0)
        name_length = static_cast<int>(std::strlen(name));
    if (!name)
        return -1;
    const Place place = Find_Place(name, name_length, false);
    if (!place.equal)
        return -1;
    if (entry)
        *entry = &entries[place.slot];
    return place.slot;
}

int VariableHash::Insert(int id, const char* name, int name_length, Variable* variable) {
    if (variable_count == capacity)
        Reserve(capacity + slot_growth);
    if (!name)
        name = dictionary_->Entry(id, &name_length);
    else {
        if (name_length < 0)
            name_length = static_cast<int>(std::strlen(name));
        if (id == -1)
            id = dictionary_->Entry_Add(name, name_length);
    }
    const int slot = variable_count;
    entries[slot] = {id, Version(), variable};
    next[slot] = -1;
    if (name)
        Link(name, name_length, slot);
    ++variable_count;
    return slot;
}

int VariableHash::Version() {
    return 0;
}

bool VariableHash::ClearVariable(const char* name, int name_length) {
    Variable* variable = nullptr;
    if (!Find(&variable, name, name_length, 0) || !variable)
        return false;
    variable->SetNULL();
    return true;
}

bool VariableHash::Find(Variable** variable, const char* name, int name_length, int create) {
    const int slot = Seek(-1, name, name_length, nullptr);
    if (slot < 0)
        return false;
    *variable = Index(slot, create);
    return true;
}

Variable* VariableHash::Index(int slot, int create) {
    if (!Is_Slot(slot))
        return nullptr;
    if (!entries[slot].var && create) {
        entries[slot].var = New_Variable(slot);
        entries[slot].version = Version();
    }
    return entries[slot].var;
}

int VariableHash::Size() {
    return capacity;
}

int VariableHash::Entries() {
    return variable_count;
}

void VariableHash::AllocatedVars(VariableList* list) {
    for (int slot = 0; slot < variable_count; ++slot)
        if (entries[slot].var)
            list->Insert(entries[slot].var, LIST_LAST);
}

const String& VariableHash::error() {
    return error_;
}

bool VariableHash::Error(const String& text) {
    error_ = text;
    return false;
}

void VariableHash::Push() {
}

int VariableHash::Pop() {
    return 0;
}

VariableHash* VariableHash::RealIdentity() {
    return this;
}

SystemVariableHash* VariableHash::AsSystem() {
    return nullptr;
}

void VariableHash::Dump() {
    for (int slot = 0; slot < variable_count; ++slot)
        if (Variable* variable = std::exchange(entries[slot].var, nullptr))
            variable->DecRefCount();
}

const char* VariableHash::Name_Of(int slot, int* length) const {
    return dictionary_->Entry(entries[slot].id, length);
}

Variable* VariableHash::New_Variable(int slot) const {
    int length = 0;
    const char* name = Name_Of(slot, &length);
    return new Variable(name, length);
}

Variable* VariableHash::New_Reference(int slot, Variable* target) const {
    int length = 0;
    const char* name = Name_Of(slot, &length);
    return new ReferenceVariable(name, length, target);
}

void VariableHash::Replace(int slot, Variable* variable) {
    Variable* old = std::exchange(entries[slot].var, variable);
    entries[slot].version = Version();
    if (old)
        old->DecRefCount();
}

// Chains come from a file, too: a link that leads nowhere ends the chain, and a circle is left after as many
// steps as there are slots.
VariableHash::Place VariableHash::Find_Place(const char* name, int name_length, bool behind_equals) const {
    const auto length = static_cast<std::uint32_t>(name_length);
    const int bucket = static_cast<int>(hashi(name, length, 0) & static_cast<std::uint32_t>(bucket_size - 1));
    Place place{bucket, -1, buckets.Head(bucket), false};
    for (int steps = 0; Is_Slot(place.slot) && steps < variable_count; ++steps) {
        const int order = Compare_Name(name, name_length, place.slot);
        place.equal = order == 0;
        if (order < 0 || (place.equal && !behind_equals))
            return place;
        place.previous = place.slot;
        place.slot = next[place.slot];
    }
    return {bucket, place.previous, -1, false};
}

// The sign of the name against a slot's: shorter names sort first. A slot without a name is passed over.
int VariableHash::Compare_Name(const char* name, int name_length, int slot) const {
    int length = 0;
    const char* text = Name_Of(slot, &length);
    if (!text)
        return 1;
    if (length != name_length)
        return name_length < length ? -1 : 1;
    return memcmpi(name, text, static_cast<std::size_t>(length));
}

void VariableHash::Link(const char* name, int name_length, int slot) {
    const Place place = Find_Place(name, name_length, true);
    next[slot] = place.slot;
    if (place.previous >= 0)
        next[place.previous] = slot;
    else {
        bucket_entries += buckets.Head(place.bucket) < 0;
        buckets.Set_Head(place.bucket, slot);
    }
}

void VariableHash::Reserve(int slots) {
    if (slots <= capacity)
        return;
    const auto size = static_cast<std::size_t>(slots);
    Resize(next, size);
    Resize(entries, size);
    std::fill(next.get() + capacity, next.get() + slots, -1);
    std::fill(entries.get() + capacity, entries.get() + slots, _VH_Entry{});
    capacity = slots;
}

void VariableHash::Copy_Structure(const VariableHash& source) {
    bucket_entries = source.bucket_entries;
    buckets = source.buckets;
    std::copy_n(source.next.get(), variable_count, next.get());
    for (int slot = 0; slot < variable_count; ++slot)
        entries[slot] = {source.entries[slot].id, -1, nullptr};
}
