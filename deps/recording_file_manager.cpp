// What was opened for reading is told of.

#include "deps/recording_file_manager.h"

Recording_File_Manager::Recording_File_Manager(TarnApplication* application, Listener listener)
    : UNIXFileManager(application), listener(std::move(listener)) {
}

File* Recording_File_Manager::Open(const char* path, int mode) {
    File* file = UNIXFileManager::Open(path, mode);
    if (file && !(mode & FILE_MODE_WRITE))
        listener(path);
    return file;
}
