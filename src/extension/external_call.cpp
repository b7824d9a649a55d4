// The functions of extension libraries by name, and what they keep between calls.

#include "extension/external_call.h"

#include "core/text_length.h"
#include "core/text_search.h"
#include "extension/external_library.h"
#include "value/variable.h"

#include <algorithm>

namespace {

// Takes each element out ahead of its end, in which it may look up others.
template <class T>
void Empty(HashTable<T>& table) {
    while (const T* first = table.First()) {
        const std::string_view key = Hash_Key(*first);
        delete table.Remove(key.data(), Length_Of(key));
    }
}

} // namespace

ExternalCall::ExternalCall(const _TN_EL_Function* record)
    : record(record), result(new Variable), name(record->name, record->name_length) {
}

// A library may be gone by now, with the record, unless the function keeps data.
ExternalCall::~ExternalCall() {
    if (data)
        record->function(nullptr, nullptr, nullptr, &data);
    result->DecRefCount();
}

// Someone may still hold the last result: then it is left to them.
int ExternalCall::Call(TarnVM* vm, VariableHash* parameters) {
    if (result->refcount() >= 2) {
        result->DecRefCount();
        result = new Variable;
    } else {
        result->SetNULL();
    }
    record->function(vm, parameters, result, &data);
    return 1;
}

ExternalCallPersistentData::ExternalCallPersistentData(TarnVM* vm, const char* name, int name_length,
                                                       void* value, Free_Function free_function)
    : vm(vm), name_length(Text_Length(name, name_length)), value(value), free_function(free_function) {
    this->name = std::make_unique<char[]>(static_cast<std::size_t>(this->name_length) + 1);
    std::copy_n(name, this->name_length, this->name.get());
}

ExternalCallPersistentData::~ExternalCallPersistentData() {
    if (free_function)
        free_function(vm, value);
    else
        delete static_cast<char*>(value);
}

ExternalCallManager::ExternalCallManager(ExternalLibraryManager* library_manager)
    : library_manager(library_manager) {
}

ExternalCallManager::ExternalCallManager(ExternalLibraryManager* library_manager, ExternalCallManager& other)
    : ExternalCallManager(library_manager) {
    for (int index = 0; index < other.registered_count; ++index) {
        // One that can't be loaded again is left out, with the reason in lasterror.
        (void)ExternalCallManager::RegisterDSO(other.registered[index].library->filename.text());
    }
}

// No function is found anew from here on. A function that releases its data may still store a value.
ExternalCallManager::~ExternalCallManager() {
    registered_count = 0;
    Empty(persistent);
    Empty(calls);
    Empty(persistent);
}

bool ExternalCallManager::RegisterDSO(const char* path) {
    ExternalLibrary* library = library_manager->Lookup(path, ExternalLibrary::FUNCTIONS);
    if (!library) {
        lasterror = library_manager->lasterror;
        return false;
    }
    void* symbol = library->Get_Function(function_table_symbol);
    if (!symbol) {
        lasterror = library->lasterror;
        return false;
    }
    const _TN_EL_Descriptor* descriptor = reinterpret_cast<External_Function_Table>(symbol)();
    if (!descriptor) {
        lasterror.assign("Unable to retrieve function descriptor table", -1);
        return false;
    }
    Append(library, descriptor->functions);
    return true;
}

void ExternalCallManager::Append(ExternalLibrary* library, const _TN_EL_Function* functions) {
    if (registered_count == registered_capacity) {
        registered_capacity += registered_growth;
        auto larger = std::make_unique<Registered_Library[]>(static_cast<std::size_t>(registered_capacity));
        std::copy_n(registered.get(), registered_count, larger.get());
        registered = std::move(larger);
    }
    registered[registered_count++] = {library, functions};
}

ExternalCall* ExternalCallManager::Lookup_External(const char* name, int length) {
    length = Text_Length(name, length);
    ExternalCall* call = calls.Find(name, length);
    if (call || registered_count == 0)
        return call;
    const _TN_EL_Function* record = Find_Record(name, length);
    if (!record)
        return nullptr;
    call = new ExternalCall(record);
    calls.Insert(call);
    return call;
}

const _TN_EL_Function* ExternalCallManager::Find_Record(const char* name, int length) const {
    for (int index = 0; index < registered_count; ++index) {
        for (const _TN_EL_Function* record = registered[index].functions; record && record->name; ++record) {
            if (record->name_length == length && memcmpi(record->name, name, length) == 0)
                return record;
        }
    }
    return nullptr;
}

void* ExternalCallManager::Lookup_Persistent(const char* name, int length) {
    const ExternalCallPersistentData* found = persistent.Find(name, length);
    return found ? found->value : nullptr;
}

void ExternalCallManager::Register_Persistent(TarnVM* vm, const char* name, int length, void* value,
                                              ExternalCallPersistentData::Free_Function free_function) {
    delete persistent.Remove(name, length);
    persistent.Insert(new ExternalCallPersistentData(vm, name, length, value, free_function));
}
