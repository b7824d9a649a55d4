#ifndef FILES_FILE_MANAGER_H
#define FILES_FILE_MANAGER_H

#include "core/list.h"
#include "core/string.h"
#include "files/file.h"
#include "files/path_type.h"

class TarnApplication;

// The one gateway to the file system. Every operation comes in two forms: raw, with a path as the operating
// system reads it, and contained, with a root in front of each path. The text of a contained path can't leave
// the root. Links are refused at first; once SecurityOptions allows them, one may lead out of the root.
// Operations answer false, null or what they say on failure, with the text in error(). A null path is the
// empty path.
//
// New files get the mode 0666, new directories 0777, touched files 0644 and lock files 0664, each less the
// umask.
//
// The manager also keeps the number of open files below a limit by parking the ones that were opened or
// reopened longest ago. It owns no file: all of them are deleted before it. It isn't safe for threads, and
// contained operations change the current directory of the process, so operations of one process must not
// overlap.
class FileManager {
  public:
    explicit FileManager(TarnApplication* application);
    FileManager(const FileManager&) = delete;
    FileManager& operator=(const FileManager&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~FileManager() = default;

    // The system's text for the last failed system call.
    virtual const char* lasterror() = 0;

    // Raw operations

    // The mode is made of FILE_MODE_ bits. The file is the caller's.
    virtual File* Open(const char* path, int mode) = 0;

    // Takes a named lock, and tries until the application is cancelled; the setting CONFIG_LOCK_WAIT of its
    // config() tells the milliseconds between two attempts, and without a config() there are none. The lock
    // is a file at the path, which tells the holder's process, thread and host. Answers a FileLockResult.
    virtual int Lock(const char* path) = 0;
    // Judges a lock file. Answers a FileLockState.
    virtual int Lock_Valid(const char* path) = 0;
    // Gives a lock back; a missing lock file counts as success.
    virtual bool Lock_Delete(const char* path) = 0;

    virtual bool Delete(const char* path) = 0;
    // The target is replaced. A copy onto the same file, by whatever name, succeeds and changes nothing.
    virtual bool Copy(const char* source, const char* target) = 0;
    // Across file systems it copies and then deletes.
    virtual bool Rename(const char* source, const char* target) = 0;
    // Sets the file's times to now, and creates it when it is missing.
    virtual bool TouchFile(const char* path) = 0;
    // A missing file is a failure of this form, with the system's text; the contained form answers false for
    // it.
    virtual bool Exists(const char* path, bool* exists) = 0;
    // In bytes; 0 for a FIFO.
    virtual bool Length(const char* path, unsigned long* length) = 0;
    virtual bool IsDirectory(const char* path, bool* directory) = 0;
    // Times are in seconds since 1970. A failure leaves no text.
    virtual bool SetModifiedTime(const char* path, long time) = 0;
    // Of a link, its own time.
    virtual bool ModifiedTime(const char* path, long* time) = 0;
    virtual bool MakeDirectory(const char* path) = 0;
    virtual bool RemoveDirectory(const char* path) = 0;
    virtual bool MakeSymbolicLink(const char* target, const char* link) = 0;
    // The mode as the system tells it, kind of file included.
    virtual bool Mode(const char* path, int* mode) = 0;
    virtual bool ChangeMode(const char* path, int mode) = 0;
    // Opens a new file whose name is the base, a point and the first free hexadecimal number. The name is a
    // new array and the caller's, as is the file.
    virtual File* MakeTemporary(const char* base, char** name, int mode) = 0;

    // Contained operations

    virtual File* Open(Tarn_PathType type, const char* path, int mode) = 0;
    virtual int Lock(Tarn_PathType type, const char* path) = 0;
    virtual int Lock_Valid(Tarn_PathType type, const char* path) = 0;
    virtual bool Lock_Delete(Tarn_PathType type, const char* path) = 0;
    virtual bool Delete(Tarn_PathType type, const char* path) = 0;
    virtual bool Copy(Tarn_PathType source_type, const char* source, Tarn_PathType target_type,
                      const char* target) = 0;
    // Renames in place within one directory; else it copies and then deletes.
    virtual bool Rename(Tarn_PathType source_type, const char* source, Tarn_PathType target_type,
                        const char* target) = 0;
    virtual bool TouchFile(Tarn_PathType type, const char* path) = 0;
    // A link that leads to nothing doesn't exist.
    virtual bool Exists(Tarn_PathType type, const char* path, bool* exists) = 0;
    // Length, IsDirectory, ModifiedTime, Mode and ChangeMode open the file, which must be readable.
    virtual bool Length(Tarn_PathType type, const char* path, unsigned long* length) = 0;
    virtual bool IsDirectory(Tarn_PathType type, const char* path, bool* directory) = 0;
    virtual bool SetModifiedTime(Tarn_PathType type, const char* path, long time) = 0;
    virtual bool ModifiedTime(Tarn_PathType type, const char* path, long* time) = 0;
    virtual bool MakeDirectory(Tarn_PathType type, const char* path) = 0;
    virtual bool RemoveDirectory(Tarn_PathType type, const char* path) = 0;
    // The link stored is always absolute.
    virtual bool MakeSymbolicLink(Tarn_PathType target_type, const char* target, Tarn_PathType link_type,
                                  const char* link) = 0;
    virtual bool Mode(Tarn_PathType type, const char* path, int* mode) = 0;
    virtual bool ChangeMode(Tarn_PathType type, const char* path, int mode) = 0;
    // The name returned begins with the directory as given.
    virtual File* MakeTemporary(Tarn_PathType type, const char* directory, const char* prefix, char** name,
                                int mode) = 0;
    // A temporary file beside the path, whose name begins like it.
    virtual File* MakeTemporaryLike(Tarn_PathType type, const char* path, char** name, int mode) = 0;
    // Appends the names in the system's order, "." and ".." included; the strings are the list owner's.
    virtual bool DirectoryListing(Tarn_PathType type, const char* path, List<String>* names) = 0;

    // Error text and paths

    virtual const String& error() const;
    // An unassigned text leaves the last one in place.
    virtual void Error(const String& text);
    virtual const char* pathseparator() = 0;
    // The collapsed form of a path as its root sees it, without a look at the file system: a new array, the
    // caller's, or null when the root isn't configured. Length and size may be null.
    virtual char* NormalizeContainedPath(Tarn_PathType type, const char* path, int* length, int* size) = 0;

    // Bookkeeping of open files

    // Parks files until count more descriptors fit below the limit.
    virtual bool FreeFileSpace(int count);
    // Enters a file that was just opened, and answers it.
    virtual File* FileOpened(File* file);
    // Forgets a file; a file that isn't entered is left alone.
    virtual void FileClosed(File* file);
    virtual void DeactivateFile(File* file);
    virtual bool ActivateFile(File* file);
    // 0 means no limit.
    virtual void MaxFiles(int count);
    // FileSecurityOption bits; read anew at each use.
    virtual void SecurityOptions(int options);

  protected:
    // Both store the text and answer false.
    bool Fail(const String& text);
    bool Fail_System();

    // The order of the fields is part of the binary interface.
    TarnApplication* application;
    String error_;
    int max_files = 0;
    int security_options = 0;
    List<File> active{0};   // files with a descriptor, newest first
    List<File> inactive{0}; // parked files
};

#endif
