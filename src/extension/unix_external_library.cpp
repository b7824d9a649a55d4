// Libraries by the system's loader.

#include "extension/unix_external_library.h"

#include <dlfcn.h>

void UNIXExternalLibrary::Close_Handle::operator()(void* handle) const {
    dlclose(handle);
}

UNIXExternalLibrary::~UNIXExternalLibrary() = default;

bool UNIXExternalLibrary::Load(const char* path, int mode) {
    void* loaded = dlopen(path, mode);
    if (loaded)
        handle.reset(loaded);
    else
        lasterror.assign(dlerror(), -1);
    return loaded != nullptr;
}

// Without a handle dlsym would search the program itself.
void* UNIXExternalLibrary::Get_Function(const char* name) {
    void* function = handle ? dlsym(handle.get(), name) : nullptr;
    if (!function) {
        lasterror.assign("Unknown symbol '", -1);
        lasterror.cat(name, -1);
        lasterror.cat("'", 1);
    }
    return function;
}

ExternalLibrary* UNIXExternalLibraryManager::Load(const char* path, ExternalLibrary::Type type) {
    auto library = std::make_unique<UNIXExternalLibrary>();
    library->filename.assign(path, -1);
    library->type = type;
    if (!library->Load(path, RTLD_LAZY)) {
        lasterror = library->lasterror;
        return nullptr;
    }
    return library.release();
}
