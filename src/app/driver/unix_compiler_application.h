#ifndef APP_UNIX_COMPILER_APPLICATION_H
#define APP_UNIX_COMPILER_APPLICATION_H

#include "app/driver/compiler_application.h"

#include <memory>

class UNIXFileManager;

// The compiler with the services of a UNIX system, which it owns.
class UNIXCompilerApplication : public CompilerApplication {
  public:
    UNIXCompilerApplication(int argc, char** argv);
    ~UNIXCompilerApplication() override;

    FileManager* filemanager() override;
    ExternalLibraryManager* librarymanager() override;
    const char* lasterror() override;
    bool OpenOutput() override;
    ExternalCallManager* externalcallmanager() override;

  private:
    // The order of the fields is part of the binary interface; they go in this order, too.
    std::unique_ptr<UNIXFileManager> file_manager;
    std::unique_ptr<ExternalLibraryManager> library_manager;
    std::unique_ptr<ExternalCallManager> call_manager;
};

#endif
