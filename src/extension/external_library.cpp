#include "extension/external_library.h"

ExternalLibrary::~ExternalLibrary() = default;

ExternalLibraryManager::ExternalLibraryManager() : libraries(1, 1, 12, 512) {
}

// Each library is taken out ahead of the table's own end: a lasting one is left alone, loaded as it is.
ExternalLibraryManager::~ExternalLibraryManager() {
    while (ExternalLibrary* library = libraries.First()) {
        (void)libraries.Remove(library->filename.text(), library->filename.length());
        if (library->type < ExternalLibrary::LASTING)
            delete library;
    }
}

ExternalLibrary* ExternalLibraryManager::Lookup(const char* path, ExternalLibrary::Type type) {
    if (ExternalLibrary* known = libraries.Find(path, -1))
        return known;
    ExternalLibrary* library = Load(path, type);
    if (library)
        libraries.Insert(library);
    return library;
}
