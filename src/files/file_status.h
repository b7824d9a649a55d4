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

// What a path led to ahead of its opening. Of a path that led nowhere nothing is known.
class File_Stamp {
  public:
    File_Stamp() = default;
    explicit File_Stamp(const char* path) : is_known(stat(path, &status) == 0) {}

    // Whether it is a pipe, a socket or a device: it can't be mapped, and its length tells nothing. The null
    // device is none of them, since it is known to be empty.
    bool Is_Stream() const {
        if (!is_known || S_ISREG(status.st_mode) || S_ISDIR(status.st_mode))
            return false;
        return !S_ISCHR(status.st_mode) || status.st_rdev != makedev(1, 3);
    }

    bool Is(const struct stat& file) const { return is_known && Same_File(status, file); }

    // Whether the path leads to another file now, or the file has been written to.
    bool Is_Changed(const char* path) const {
        struct stat now;
        return stat(path, &now) == 0 && Is_Changed(now);
    }
    // The same for what has been found now.
    bool Is_Changed(const struct stat& now) const {
        if (!is_known || !S_ISREG(status.st_mode))
            return false;
        return !Same_File(status, now) || status.st_size != now.st_size ||
               status.st_mtim.tv_sec != now.st_mtim.tv_sec || status.st_mtim.tv_nsec != now.st_mtim.tv_nsec;
    }

  private:
    struct stat status = {};
    bool is_known = false;
};

constexpr const char* file_changed = "The file was changed";

#endif
