#ifndef APP_UNIX_COMPILER_APPLICATION_H
#define APP_UNIX_COMPILER_APPLICATION_H

#include "app/driver/compiler_application.h"

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
    // The order of the fields is part of the binary interface; the destructor deletes them in this order.
    UNIXFileManager* file_manager;
    ExternalLibraryManager* library_manager;
    ExternalCallManager* call_manager;
};

#endif
