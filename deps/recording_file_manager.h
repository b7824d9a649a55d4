#ifndef DEPS_RECORDING_FILE_MANAGER_H
#define DEPS_RECORDING_FILE_MANAGER_H

#include "files/unix_file_manager.h"

#include <functional>
#include <string>

// A file manager that tells of each file that it opens for reading, as often as it does.
class Recording_File_Manager : public UNIXFileManager {
  public:
    using Listener = std::function<void(const char* path)>;

    Recording_File_Manager(TarnApplication* application, Listener listener);

    using UNIXFileManager::Open;
    File* Open(const char* path, int mode) override;

  private:
    const Listener listener;
};

#endif
