// The managers that the compiler works with on this system.

#include "app/driver/unix_compiler_application.h"

#include "app/driver/run_guard.h"
#include "extension/external_call.h"
#include "extension/unix_external_library.h"
#include "files/unix_file.h"
#include "files/unix_file_manager.h"

#include <cerrno>
#include <cstring>

UNIXCompilerApplication::UNIXCompilerApplication(int argc, char** argv)
    : CompilerApplication(argc, argv), file_manager(new UNIXFileManager(this)),
      library_manager(new UNIXExternalLibraryManager()),
      call_manager(new ExternalCallManager(library_manager)) {
    Run_Guard::Watch_Sources(file_manager);
}

UNIXCompilerApplication::~UNIXCompilerApplication() {
    End_Run();
    Run_Guard::Watch_Sources(nullptr);
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

bool UNIXCompilerApplication::OpenOutput() {
    if (!CompilerApplication::OpenOutput())
        return false;
    const int descriptor = static_cast<UNIXFile*>(output_file.get())->Handle();
    if (Run_Guard::Watch_Output(descriptor))
        return true;
    Path_Error("create", output_path, lasterror());
    Discard_Output();
    return false;
}
