#ifndef EXTENSION_UNIX_EXTERNAL_LIBRARY_H
#define EXTENSION_UNIX_EXTERNAL_LIBRARY_H

#include "extension/external_library.h"

// A library opened with dlopen, closed with the object.
class UNIXExternalLibrary : public ExternalLibrary {
  public:
    ~UNIXExternalLibrary() override;
    [[nodiscard]] bool Load(const char* path, int mode) override;
    [[nodiscard]] void* Get_Function(const char* name) override;

  private:
    void* handle = nullptr;
};

class UNIXExternalLibraryManager : public ExternalLibraryManager {
  public:
    [[nodiscard]] ExternalLibrary* Load(const char* path, ExternalLibrary::Type type) override;
};

#endif
