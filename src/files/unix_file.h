#ifndef FILES_UNIX_FILE_H
#define FILES_UNIX_FILE_H

#include "files/descriptor.h"
#include "files/file.h"

#include <cstddef>
#include <sys/types.h>

class UNIXFileManager;

// A file behind a POSIX descriptor, made by UNIXFileManager. All opening is close-on-exec.
class UNIXFile : public File {
  public:
    ~UNIXFile() override;

    bool OwnerID(int* id) override;
    bool GroupID(int* id) override;
    long Read(char* buffer, unsigned long length) override;
    long Write(const char* text, unsigned long length) override;
    long Seek(long position) override;
    long Tell() override;
    long Length() override;
    bool IsDirectory(bool* directory) override;
    bool Lock(FileLockType type, long start, unsigned long length) override;
    bool Release(long start, unsigned long length) override;
    const char* Map(long offset, long length) override;
    void Release() override;
    // Reopening a contained file changes the current directory. A raw file with a relative path is looked for
    // from the current directory of that moment.
    bool Activate(String& error) override;
    // A file that has no position comes back at 0.
    bool Deactivate() override;
    bool Stat(struct stat* status) override;

    // The descriptor, which stays the file's; -1 while parked.
    int Handle() const { return descriptor.get(); }

    using File::Read;
    using File::Write;

  private:
    friend class UNIXFileManager;

    // Both take over the descriptor, which was opened with the flags.
    UNIXFile(UNIXFileManager* manager, const char* path, Descriptor opened, int flags);
    UNIXFile(UNIXFileManager* manager, Tarn_PathType type, const char* path, Descriptor opened, int flags);

    bool Ready();
    long Answer(long result); // of a system call, whose failure is stored
    bool Fail_System();
    bool Range_Lock(short type, long start, unsigned long length);
    int Reopen(String& error);

    // The order of the fields is part of the binary interface.
    Descriptor descriptor; // -1 while parked
    void* mapping = nullptr;
    std::size_t mapping_length = 0;
    int open_flags;     // for reopening: nothing is created or truncated again
    off_t position = 0; // while parked
};

#endif
