#ifndef EXTENSION_UNIX_EXTERNAL_LIBRARY_H
#define EXTENSION_UNIX_EXTERNAL_LIBRARY_H

#include "extension/external_library.h"

#include <memory>

// A library opened with dlopen, closed with the object. A further Load that succeeds closes what was loaded
// before, one that fails leaves it.
class UNIXExternalLibrary : public ExternalLibrary {
  public:
    ~UNIXExternalLibrary() override;
    [[nodiscard]] bool Load(const char* path, int mode) override;
    [[nodiscard]] void* Get_Function(const char* name) override;

  private:
    struct Close_Handle {
        void operator()(void* handle) const;
    };

    std::unique_ptr<void, Close_Handle> handle; // null until Load
};

class UNIXExternalLibraryManager : public ExternalLibraryManager {
  public:
    [[nodiscard]] ExternalLibrary* Load(const char* path, ExternalLibrary::Type type) override;
};

#endif
