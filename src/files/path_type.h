#ifndef FILES_PATH_TYPE_H
#define FILES_PATH_TYPE_H

// The numbers that callers of files and file managers pass and get: which root a path belongs to, how a file
// is opened, range locks of open files, named locks, and what links may do. Scripts and extension libraries
// know them by value.

// The root directory that a contained path belongs to.
enum Tarn_PathType {
    Tarn_PathType_Data = 0,
    Tarn_PathType_Script = 1,
    Tarn_PathType_Temp = 2, // the data directory, too, while no temporary directory is configured
};

// Bits of the mode that files are opened with. Neither of the first two means FILE_MODE_READ.
enum FileMode {
    FILE_MODE_READ = 1,
    FILE_MODE_WRITE = 2,
    FILE_MODE_CREATE = 4,
    FILE_MODE_TRUNCATE = 8,
    FILE_MODE_APPEND = 16,
    FILE_MODE_EXCLUSIVE = 32,
    FILE_MODE_UNMANAGED = 64, // not counted against the limit of open files and never parked
};

// Locks on a range of bytes of an open file.
enum FileLockType {
    FILE_LOCK_SHARED = 0,
    FILE_LOCK_EXCLUSIVE = 1,
};

// What FileManager::Lock answers.
enum FileLockResult {
    FILE_LOCK_HELD = 0,      // by the caller
    FILE_LOCK_CANCELLED = 1, // the application was cancelled while it waited
    FILE_LOCK_FAILED = 2,
    FILE_LOCK_DEADLOCK = 3, // this very thread holds it already
};

// What FileManager::Lock_Valid answers.
enum FileLockState {
    FILE_LOCK_VALID = 0, // the holder is alive or can't be judged
    FILE_LOCK_STALE = 1, // may be removed
    FILE_LOCK_UNREADABLE = 2,
    FILE_LOCK_OWN = 3, // held by this very thread
};

// Bits of FileManager::SecurityOptions, by root: may paths lead through symbolic links, may such a link lead
// to something that another user owns, and is a path that begins with "/" taken as absolute.
enum FileSecurityOption {
    SECURITY_SCRIPT_LINKS = 1,
    SECURITY_SCRIPT_OTHER_OWNER = 2,
    SECURITY_DATA_LINKS = 4,
    SECURITY_DATA_OTHER_OWNER = 8,
    SECURITY_DATA_ABSOLUTE = 16,
    SECURITY_SCRIPT_ABSOLUTE = 32,
    SECURITY_TEMP_LINKS = 256,
    SECURITY_TEMP_OTHER_OWNER = 512,
};

#endif
