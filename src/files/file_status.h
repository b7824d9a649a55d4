#ifndef FILES_FILE_STATUS_H
#define FILES_FILE_STATUS_H

#include "core/file_identity.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

// Whether both paths lead to one file, behind all links; a path that leads nowhere has none.
inline bool Same_File(const char* a, const char* b) {
    struct stat first, second;
    return stat(a, &first) == 0 && stat(b, &second) == 0 && Same_File(first, second);
}

// Whether the path leads to a pipe, a socket or a device: it can't be mapped, and its length tells nothing.
// The null device is none of them, since it is known to be empty.
inline bool Is_Stream(const char* path) {
    struct stat status;
    if (stat(path, &status) != 0 || S_ISREG(status.st_mode) || S_ISDIR(status.st_mode))
        return false;
    return !S_ISCHR(status.st_mode) || status.st_rdev != makedev(1, 3);
}

#endif
