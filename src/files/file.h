#ifndef FILES_FILE_H
#define FILES_FILE_H

#include "core/resized_array.h"
#include "core/string.h"
#include "files/path_type.h"

#include <memory>
#include <sys/stat.h>

class FileManager;

// An open file. Only a FileManager makes one; whoever opened it deletes it, before the manager goes. The
// manager may park a file, that is close its descriptor to stay below its limit; the next operation opens it
// again at the same position, and fails when it can't. Range locks don't survive parking. Operations answer
// -1, false or null on failure, with the text in error().
class File {
  public:
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~File();

    virtual bool OwnerID(int* id) = 0;
    virtual bool GroupID(int* id) = 0;

    // Answer the number of bytes, which may be less than asked for; Read answers 0 at the end of the file.
    virtual long Read(char* buffer, unsigned long length) = 0;
    virtual long Write(const char* text, unsigned long length) = 0;

    // Positions count from the start of the file. Both answer the position.
    virtual long Seek(long position) = 0;
    virtual long Tell() = 0;

    // In bytes; 0 for a FIFO.
    virtual long Length() = 0;

    virtual bool IsDirectory(bool* directory) = 0;

    // Locks a range of bytes against other open files, of this process too, and waits for it. A length of 0
    // reaches to the end of the file.
    virtual bool Lock(FileLockType type, long start, unsigned long length) = 0;
    virtual bool Release(long start, unsigned long length) = 0;

    // Maps a part of the file for reading, in place of the mapping that the file had. A length of -1 means
    // the length of the file, a length of 0 is refused, an offset is a multiple of the page size. The mapping
    // belongs to the file and is valid up to the next Map, Release() or the end of the file object; it
    // survives parking.
    virtual const char* Map(long offset, long length) = 0;
    virtual void Release() = 0;

    // Opens the file again where it stood; closes the descriptor and remembers the position. A file that
    // already is as asked for is left alone. Activate keeps the text of its failure in error only. Deactivate
    // closes in any case; it fails when the system tells late that something written is lost.
    virtual bool Activate(String& error) = 0;
    virtual bool Deactivate() = 0;

    // An unassigned text leaves the last one in place.
    virtual void Error(const String& text);
    virtual const String& error() const;

    // What the system tells of the open file: its kind, device and inode, and so on.
    virtual bool Stat(struct stat* status) = 0;

    long Write(const String& text);
    long Read(unsigned char* buffer, unsigned long length);
    long Write(const unsigned char* text, unsigned long length);

  protected:
    // The path is copied.
    File(FileManager* manager, const char* path);
    File(FileManager* manager, Tarn_PathType type, const char* path);

    // The order of the fields is part of the binary interface.
    FileManager* manager;
    int contained;                           // opened below a root, by path_type
    Tarn_PathType path_type;                 // counts only when contained
    std::unique_ptr<char, Free_Memory> path; // as given, from strdup
    String error_;
};

#endif
