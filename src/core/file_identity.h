#ifndef CORE_FILE_IDENTITY_H
#define CORE_FILE_IDENTITY_H

#include <sys/stat.h>

// Whether both tell of one file, by whatever names it was reached.
inline bool Same_File(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

#endif
