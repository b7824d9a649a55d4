#ifndef FILES_UNIX_FILE_MANAGER_H
#define FILES_UNIX_FILE_MANAGER_H

#include "files/file_manager.h"

#include <memory>
#include <sys/stat.h>

class Descriptor;
class UNIXFilePath;

// How paths below one root are treated, from ContainedPathSettings. The order of the fields is part of the
// binary interface.
struct _UNIXContainedPathSettings {
    int directory_fd = -1;          // open root directory, the manager's
    UNIXFilePath* root = nullptr;   // real path of the root, the manager's
    bool allow_links = false;       // symbolic links may be followed
    bool allow_other_owner = false; // a link may lead to something that another user owns
    bool allow_absolute = false;    // a path that begins with "/" isn't taken relative to the root
};

// What RealizePath answers.
enum RealizeStatus {
    REALIZE_RESOLVED = 0,
    REALIZE_NOT_ENTERED = 1,
    REALIZE_LINK = 2,        // a symbolic link that isn't allowed
    REALIZE_OTHER_OWNER = 3, // a link to a directory of another owner
};

// The file manager of POSIX systems. A contained operation makes the checked directory of its path the
// current directory of the process and applies the system call to the bare name; none restores the directory,
// a caller that cares uses SaveCurrentDirectory and RestoreCurrentDirectory.
class UNIXFileManager : public FileManager {
  public:
    explicit UNIXFileManager(TarnApplication* application);
    // A manager with the same roots for another application. Limit and security options start at 0.
    UNIXFileManager(TarnApplication* application, UNIXFileManager& other);
    ~UNIXFileManager() override;

    const char* lasterror() override;

    File* Open(const char* path, int mode) override;
    int Lock(const char* path) override;
    int Lock_Valid(const char* path) override;
    bool Lock_Delete(const char* path) override;
    bool Delete(const char* path) override;
    bool Copy(const char* source, const char* target) override;
    bool Rename(const char* source, const char* target) override;
    bool TouchFile(const char* path) override;
    bool Exists(const char* path, bool* exists) override;
    bool Length(const char* path, unsigned long* length) override;
    bool IsDirectory(const char* path, bool* directory) override;
    bool SetModifiedTime(const char* path, long time) override;
    bool ModifiedTime(const char* path, long* time) override;
    bool MakeDirectory(const char* path) override;
    bool RemoveDirectory(const char* path) override;
    bool MakeSymbolicLink(const char* target, const char* link) override;
    bool Mode(const char* path, int* mode) override;
    bool ChangeMode(const char* path, int mode) override;
    File* MakeTemporary(const char* base, char** name, int mode) override;

    File* Open(Tarn_PathType type, const char* path, int mode) override;
    int Lock(Tarn_PathType type, const char* path) override;
    int Lock_Valid(Tarn_PathType type, const char* path) override;
    bool Lock_Delete(Tarn_PathType type, const char* path) override;
    bool Delete(Tarn_PathType type, const char* path) override;
    bool Copy(Tarn_PathType source_type, const char* source, Tarn_PathType target_type,
              const char* target) override;
    bool Rename(Tarn_PathType source_type, const char* source, Tarn_PathType target_type,
                const char* target) override;
    bool TouchFile(Tarn_PathType type, const char* path) override;
    bool Exists(Tarn_PathType type, const char* path, bool* exists) override;
    bool Length(Tarn_PathType type, const char* path, unsigned long* length) override;
    bool IsDirectory(Tarn_PathType type, const char* path, bool* directory) override;
    bool SetModifiedTime(Tarn_PathType type, const char* path, long time) override;
    bool ModifiedTime(Tarn_PathType type, const char* path, long* time) override;
    bool MakeDirectory(Tarn_PathType type, const char* path) override;
    bool RemoveDirectory(Tarn_PathType type, const char* path) override;
    bool MakeSymbolicLink(Tarn_PathType target_type, const char* target, Tarn_PathType link_type,
                          const char* link) override;
    bool Mode(Tarn_PathType type, const char* path, int* mode) override;
    bool ChangeMode(Tarn_PathType type, const char* path, int mode) override;
    File* MakeTemporary(Tarn_PathType type, const char* directory, const char* prefix, char** name,
                        int mode) override;
    File* MakeTemporaryLike(Tarn_PathType type, const char* path, char** name, int mode) override;
    bool DirectoryListing(Tarn_PathType type, const char* path, List<String>* names) override;

    const char* pathseparator() override;
    char* NormalizeContainedPath(Tarn_PathType type, const char* path, int* length, int* size) override;

    // The order of the virtual operations is part of the binary interface: add at the end.

    // Configure the roots with absolute paths. The name is the label of the script directory in messages, or
    // null. Whatever was configured before is forgotten first: after a failure there is no such root. The
    // current directory becomes the new root, or where a failure left it. Of the data and temporary directory
    // an earlier descriptor stays open, so these are configured once.
    virtual bool InitializeScriptDirectory(const char* path, const char* name);
    virtual bool InitializeDataDirectory(const char* path);
    virtual bool InitializeTempDirectory(const char* path);

    // Checks a path and opens it with flags of the operating system; answers the caller's descriptor, or -1.
    // The descriptor is close-on-exec, and a new file has the mode 0666 less the umask. O_NOFOLLOW among the
    // flags changes nothing: it holds for each step, and links that are allowed are followed one by one.
    // O_TRUNC leaves alone what is refused. The current directory becomes that of the file opened, behind all
    // links.
    virtual int OpenContained(Tarn_PathType type, const char* path, int flags);

    // A descriptor of the current directory; back to it, which closes the descriptor. Both answer -1 on
    // failure.
    virtual int SaveCurrentDirectory();
    virtual int RestoreCurrentDirectory(int descriptor);

    // Enters a directory and judges the links on the way, which is p; answers a RealizeStatus. The real path
    // goes to out, and is the caller's. The current directory stays where the walk ended, also on failure.
    virtual int RealizePath(const char* path, UNIXFilePath** out, bool allow_links, bool allow_other_owner);
    virtual int RealizePath(UNIXFilePath* p, const char* path, UNIXFilePath** out, bool allow_links,
                            bool allow_other_owner);

    // An unknown type succeeds and leaves the settings alone.
    virtual bool ContainedPathSettings(Tarn_PathType type, _UNIXContainedPathSettings* settings);

    // Checks a directory below a root and makes it the current directory. The real path goes to out, which
    // may be null, and is the caller's.
    virtual bool RealizeContainedPath(Tarn_PathType type, const char* directory, UNIXFilePath** out);
    virtual bool RealizeContainedPath(Tarn_PathType type, _UNIXContainedPathSettings* settings,
                                      const char* directory, UNIXFilePath** out);

    virtual bool Stat(Tarn_PathType type, const char* path, struct stat* status);

    // The path of the open file that is mapped at the address, null when none is. May be called by a handler
    // of the signal that a lost page raises.
    const char* Mapped_Path(const void* address);

    // Flags of the operating system for FILE_MODE_ bits.
    static int OpenMode(int mode);

  private:
    // The path is the root's real path, null until it is configured. Here too the order counts.
    struct Root {
        std::unique_ptr<UNIXFilePath> path;
        int descriptor = -1;
    };

    // What is remembered of a path while its last name is opened or looked at.
    struct Link_Walk;

    enum class Copied { No, Yes, Same_File };

    static Root Duplicate(const Root& root);
    static const char* Root_Name(Tarn_PathType type);
    Root* Root_Of(Tarn_PathType type); // null for an unknown type
    bool Initialize_Root(Tarn_PathType type, const char* path, const char* label);

    bool Answer(int result); // of a system call, whose failure is stored
    bool Fail_Realize(int status);
    bool Enter_Directory_Of(Tarn_PathType type, UNIXFilePath& path);
    File* Enter(File* file, int mode);

    int Open_Contained(Tarn_PathType type, const char* path, int flags, mode_t mode);
    int Open_To_Touch(Tarn_PathType type, const char* path);
    bool Begin_Walk(Tarn_PathType type, const char* path, Link_Walk* walk);
    // The look at a path's last name ahead of opening it; at its link, once it was found to be one.
    bool Look(Link_Walk* walk, int flags);
    bool Follow_Found_Link(Link_Walk* walk);
    bool Follow(Link_Walk* walk, const char* target, const struct stat& target_status);
    bool Check_Opened(const Link_Walk& walk, int descriptor, int flags);

    // Opens a new file with the first number behind the base that is free.
    int Open_Numbered(const String& base, int flags, String* name);

    Copied Copy_File(const char* source, const char* target);
    Copied Copy_File(Tarn_PathType source_type, const char* source, Tarn_PathType target_type,
                     const char* target);
    // The flags are added to those that lock files are opened with.
    int Take_Lock(const char* path, int flags);
    bool Write_Lock_File(const char* path, struct stat* status);
    int Wait_For_Lock(const char* temporary, const struct stat& written, const char* path, int flags);
    int Open_And_Judge_Lock(const char* path, int flags);
    // Of what opening the lock file gave.
    int Judge_Lock(const char* path, int descriptor);
    // Judges the lock that stands in the way, and removes it when it is stale.
    int Judge_And_Break_Lock(const char* path, int flags, bool* broken);

    bool Check_Copy_Source(int source);
    Copied Copy_Opened(int source, Descriptor& target);

    // The order of the fields is part of the binary interface.
    Root script;
    Root data;
    Root temp;
};

#endif
