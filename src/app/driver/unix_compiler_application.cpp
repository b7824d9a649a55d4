// The managers that the compiler works with on this system.

#include "app/driver/unix_compiler_application.h"

#include "app/driver/run_guard.h"
#include "extension/external_call.h"
#include "extension/unix_external_library.h"
#include "files/file_status.h"
#include "files/unix_file.h"
#include "files/unix_file_manager.h"

#include <cerrno>
#include <cstring>
#include <link.h>

namespace {

// Asked of each library of the process; answers other than 0 for the one that the path leads to.
int Is_Loaded_From(dl_phdr_info* library, std::size_t, void* path) {
    return Same_File(library->dlpi_name, static_cast<const char*>(path));
}

} // namespace

UNIXCompilerApplication::UNIXCompilerApplication(int argc, char** argv)
    : CompilerApplication(argc, argv), file_manager(std::make_unique<UNIXFileManager>(this)),
      library_manager(std::make_unique<UNIXExternalLibraryManager>()),
      call_manager(std::make_unique<ExternalCallManager>(library_manager.get())) {
    Run_Guard::Watch_Sources(file_manager.get());
}

UNIXCompilerApplication::~UNIXCompilerApplication() {
    End_Run();
    Run_Guard::Watch_Sources(nullptr);
    file_manager.reset();
    library_manager.reset();
    call_manager.reset();
}

FileManager* UNIXCompilerApplication::filemanager() {
    return file_manager.get();
}

ExternalLibraryManager* UNIXCompilerApplication::librarymanager() {
    return library_manager.get();
}

const char* UNIXCompilerApplication::lasterror() {
    return strerror(errno);
}

ExternalCallManager* UNIXCompilerApplication::externalcallmanager() {
    return call_manager.get();
}

// A library that is emptied while it is mapped takes the process along.
bool UNIXCompilerApplication::OpenOutput() {
    if (call_manager->Has_Libraries() && dl_iterate_phdr(Is_Loaded_From, const_cast<char*>(output_path)))
        return Path_Error("write", output_path, "it is one of the libraries");
    if (!CompilerApplication::OpenOutput())
        return false;
    const int descriptor = static_cast<UNIXFile*>(output_file.get())->Handle();
    if (Run_Guard::Watch_Output(descriptor))
        return true;
    Path_Error("create", output_path, lasterror());
    Discard_Output();
    return false;
}
