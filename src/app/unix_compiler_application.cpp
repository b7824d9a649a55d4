#include "app/unix_compiler_application.h"

#include "extension/external_call.h"
#include "extension/unix_external_library.h"
#include "files/unix_file_manager.h"

#include <cerrno>
#include <cstring>

UNIXCompilerApplication::UNIXCompilerApplication(int argc, char** argv)
    : CompilerApplication(argc, argv), file_manager(new UNIXFileManager(this)),
      library_manager(new UNIXExternalLibraryManager()),
      call_manager(new ExternalCallManager(library_manager)) {
}

UNIXCompilerApplication::~UNIXCompilerApplication() {
    End_Run();
    delete file_manager;
    delete library_manager;
    delete call_manager;
}

FileManager* UNIXCompilerApplication::filemanager() {
    return file_manager;
}

ExternalLibraryManager* UNIXCompilerApplication::librarymanager() {
    return library_manager;
}

const char* UNIXCompilerApplication::lasterror() {
    return strerror(errno);
}

ExternalCallManager* UNIXCompilerApplication::externalcallmanager() {
    return call_manager;
}
