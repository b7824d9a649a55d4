// The libraries that are loaded, by file name.

#include "extension/external_library.h"

ExternalLibrary::~ExternalLibrary() = default;

ExternalLibraryManager::ExternalLibraryManager() = default;

// Lasting libraries are left alone, loaded as they are. Nothing is looked up: a file name that was changed
// leads nowhere.
ExternalLibraryManager::~ExternalLibraryManager() {
    libraries.Disown();
    for (ExternalLibrary* library = libraries.First(); library; library = libraries.Next())
        if (library->type < ExternalLibrary::LASTING)
            delete library;
}

ExternalLibrary* ExternalLibraryManager::Lookup(const char* path, ExternalLibrary::Type type) {
    if (ExternalLibrary* known = libraries.Find(path, -1))
        return known;
    ExternalLibrary* library = Load(path, type);
    if (library)
        libraries.Insert(library);
    return library;
}
