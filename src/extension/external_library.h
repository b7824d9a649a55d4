// Shared libraries that offer functions to the language.
#ifndef EXTENSION_EXTERNAL_LIBRARY_H
#define EXTENSION_EXTERNAL_LIBRARY_H

#include "core/hash_table.h"
#include "core/string.h"

#include <string_view>

// One loaded library. Operations that fail keep the reason in lasterror.
class ExternalLibrary {
  public:
    // What the library serves. Those from LASTING on stay loaded when their manager goes.
    enum Type { FUNCTIONS = 0, COMMERCE = 1, DATABASE = 2, BUILTIN = 3, LASTING = 4 };

    ExternalLibrary() = default;
    ExternalLibrary(const ExternalLibrary&) = delete;
    ExternalLibrary& operator=(const ExternalLibrary&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~ExternalLibrary();
    // The mode is that of dlopen.
    [[nodiscard]] virtual bool Load(const char* path, int mode) = 0;
    // The address of a symbol, or null.
    [[nodiscard]] virtual void* Get_Function(const char* name) = 0;

    String filename; // as it was asked for; its manager's key, so not to be changed
    Type type = FUNCTIONS;
    String lasterror;
};

inline std::string_view Hash_Key(const ExternalLibrary& library) {
    return library.filename.view();
}

// Loads each library once, and owns what it has loaded.
//
// A library is known by the path as it was given, in any case: another spelling of the path is another
// library here, even where the system's loader answers the same one. A path without a slash isn't looked for
// in the current directory, but where the loader searches: "./functions.so" is not "functions.so".
class ExternalLibraryManager {
  public:
    ExternalLibraryManager();
    ExternalLibraryManager(const ExternalLibraryManager&) = delete;
    ExternalLibraryManager& operator=(const ExternalLibraryManager&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~ExternalLibraryManager();
    // The library of that path, loaded on first use, whose type stays that of its first use; null on failure,
    // with the reason in lasterror.
    [[nodiscard]] virtual ExternalLibrary* Lookup(const char* path, ExternalLibrary::Type type);
    // Loads the library; the caller owns the answer. Null on failure, with the reason in lasterror.
    [[nodiscard]] virtual ExternalLibrary* Load(const char* path, ExternalLibrary::Type type) = 0;

    String lasterror;

  protected:
    HashTable<ExternalLibrary> libraries;
};

#endif
