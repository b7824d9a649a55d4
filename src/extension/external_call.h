// Functions of extension libraries, by name, and the data that they keep.
#ifndef EXTENSION_EXTERNAL_CALL_H
#define EXTENSION_EXTERNAL_CALL_H

#include "core/hash_table.h"
#include "core/string.h"
#include "core/text_length.h"
#include "extension/external_function.h"

#include <memory>
#include <string_view>

class ExternalLibrary;
class ExternalLibraryManager;

// A function of a library, ready to be called. The record belongs to the library, which may be unloaded ahead
// of the call's end unless the function keeps data.
class ExternalCall {
  public:
    explicit ExternalCall(const _TN_EL_Function* record);
    ExternalCall(const ExternalCall&) = delete;
    ExternalCall& operator=(const ExternalCall&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~ExternalCall();
    // Runs the function; its result is in `result` until the next call. Answers 1.
    virtual int Call(TarnVM* vm, VariableHash* parameters);

    const _TN_EL_Function* record;
    void* data = nullptr;
    Variable* result;  // counted
    const String name; // a copy of the record's
};

inline std::string_view Hash_Key(const ExternalCall& call) {
    return call.name.view();
}

// A value that extension code keeps under a name. It is released with the record: by free_function, or as a
// byte without one.
class ExternalCallPersistentData {
  public:
    using Free_Function = void (*)(void* vm, void* value);

    // The name is copied; a length of -1 means up to the NUL.
    ExternalCallPersistentData(TarnVM* vm, const char* name, int name_length, void* value,
                               Free_Function free_function);
    ~ExternalCallPersistentData();
    ExternalCallPersistentData(const ExternalCallPersistentData&) = delete;
    ExternalCallPersistentData& operator=(const ExternalCallPersistentData&) = delete;

    TarnVM* vm;
    std::unique_ptr<char[]> name;
    int name_length;
    void* value;
    Free_Function free_function;
};

inline std::string_view Hash_Key(const ExternalCallPersistentData& persistent) {
    return Slice(persistent.name.get(), persistent.name_length);
}

// Finds functions in the libraries that were registered, in that order: an earlier library shadows a later
// one. Names are taken in any case, and a length of -1 means up to the NUL.
class ExternalCallManager {
  public:
    // The library manager is not owned.
    explicit ExternalCallManager(ExternalLibraryManager* library_manager);
    // Registers the libraries of another manager anew, in their order.
    ExternalCallManager(ExternalLibraryManager* library_manager, ExternalCallManager& other);
    ExternalCallManager(const ExternalCallManager&) = delete;
    ExternalCallManager& operator=(const ExternalCallManager&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    // Data and values are released one by one, those kept longest first. Whoever is called for that may look
    // up others: what is released already isn't found any more.
    virtual ~ExternalCallManager();
    // Loads a library and reads its function table. False on failure, with the reason in lasterror.
    [[nodiscard]] virtual bool RegisterDSO(const char* path);
    // The function of that name, owned by the manager; null when no library has it.
    virtual ExternalCall* Lookup_External(const char* name, int length);
    // The value kept under a name, or null.
    virtual void* Lookup_Persistent(const char* name, int length);
    // Keeps a value; one kept under that name before is released.
    virtual void Register_Persistent(TarnVM* vm, const char* name, int length, void* value,
                                     ExternalCallPersistentData::Free_Function free_function);

    // Whether any was registered.
    bool Has_Libraries() const { return registered_count > 0; }

  private:
    struct Registered_Library {
        ExternalLibrary* library;
        const _TN_EL_Function* functions; // ended by a null name; null is an empty table
    };

    void Append(ExternalLibrary* library, const _TN_EL_Function* functions);
    const _TN_EL_Function* Find_Record(const char* name, int length) const;

    static constexpr int registered_growth = 16;

    // The order of the fields is part of the binary interface.
    ExternalLibraryManager* library_manager;
    HashTable<ExternalCall> calls; // the functions found so far

  public:
    String lasterror;

  private:
    std::unique_ptr<Registered_Library[]> registered =
        std::make_unique<Registered_Library[]>(registered_growth);
    int registered_capacity = registered_growth;
    int registered_count = 0;
    HashTable<ExternalCallPersistentData> persistent;
};

#endif
