#include "extension/unix_external_library.h"

#include <dlfcn.h>

#include <memory>

UNIXExternalLibrary::~UNIXExternalLibrary() {
    if (handle)
        dlclose(handle);
}

bool UNIXExternalLibrary::Load(const char* path, int mode) {
    handle = dlopen(path, mode);
    if (!handle)
        lasterror.assign(dlerror(), -1);
    return handle != nullptr;
}

void* UNIXExternalLibrary::Get_Function(const char* name) {
    void* function = dlsym(handle, name);
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
