// The last name of a contained path, which may be a link: looking whether it leads to something, and opening
// it. Every link is followed here, one at a time, and never by the system, so that each step can be judged.

#include "core/stat_hash_table.h"
#include "files/descriptor.h"
#include "files/opened_name.h"
#include "files/unix_file_manager.h"
#include "files/unix_file_path.h"

#include <cstring>
#include <memory>
#include <string>

namespace {

constexpr char recursive_failure[] = "The specified path references a recursive symbolic link";
constexpr char owner_failure[] =
    "The specified path references a symbolic link to a directory or file owned by a different user";

// Empties what was opened, also for reading alone: such a descriptor can't be cut, but the file behind it
// can.
bool Empty_File(int descriptor, int flags) {
    if ((flags & O_ACCMODE) != O_RDONLY)
        return ftruncate(descriptor, 0) == 0;
    return truncate(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), 0) == 0;
}

} // namespace

struct UNIXFileManager::Link_Walk {
    bool Judges_Owner() const { return settings.allow_links && !settings.allow_other_owner; }

    _UNIXContainedPathSettings settings;
    std::unique_ptr<UNIXFilePath> directory; // real path of the current directory
    std::string name;                        // in it
    HashTable<struct stat> seen;             // what the links so far lead to

    uid_t owner = 0;       // everything on the way must have it, where owners count
    bool creating = false; // of an opening: the file wasn't there
};

bool UNIXFileManager::Begin_Walk(Tarn_PathType type, const char* path, Link_Walk* walk) {
    UNIXFilePath asked(path);
    UNIXFilePath* directory;
    if (!ContainedPathSettings(type, &walk->settings) ||
        !RealizeContainedPath(type, &walk->settings, asked.Collapsed_Directory(), &directory))
        return false;
    walk->directory.reset(directory);
    walk->name = asked.Collapsed_Filename();
    return true;
}

// Takes one step along a link with this text.
bool UNIXFileManager::Follow(Link_Walk* walk, const char* target, const struct stat& target_status) {
    auto reached = std::make_unique<struct stat>(target_status);
    if (walk->seen.Find(reached.get()))
        return Fail(recursive_failure);
    walk->seen.Insert(reached.release());
    if (!walk->settings.allow_other_owner && walk->owner != target_status.st_uid)
        return Fail(owner_failure);
    if (!strchr(target, '/')) {
        walk->name = target;
        return true;
    }
    UNIXFilePath path =
        *target == '/' ? UNIXFilePath(target) : UNIXFilePath(walk->directory->Whole(), target);
    UNIXFilePath* directory = nullptr;
    const int status = RealizePath(path.Collapsed_Directory(), &directory, walk->settings.allow_links,
                                   walk->settings.allow_other_owner);
    if (status != REALIZE_RESOLVED)
        return Fail_Realize(status);
    walk->directory.reset(directory);
    walk->name = path.Collapsed_Filename();
    return true;
}

bool UNIXFileManager::Exists(Tarn_PathType type, const char* path, bool* exists) {
    *exists = false;
    Link_Walk walk;
    if (!Begin_Walk(type, path, &walk))
        return false;
    for (;;) {
        const Opened_Name found(walk.name.c_str());
        if (!found)
            return errno == ENOENT;
        if (walk.Judges_Owner() && walk.seen.Entries() != 0 && found.Owner() != walk.owner)
            return Fail(owner_failure);
        if (!found.Is_Link())
            break;
        if (!walk.settings.allow_links)
            return Fail_Realize(REALIZE_LINK);
        struct stat target_status;
        if (lstat(found.Target(), &target_status) != 0)
            return errno == ENOENT;
        walk.owner = found.Owner();
        if (!Follow(&walk, found.Target(), target_status))
            return false;
    }
    *exists = true;
    return true;
}

int UNIXFileManager::OpenContained(Tarn_PathType type, const char* path, int flags) {
    return Open_Contained(type, path, flags, new_file_mode);
}

int UNIXFileManager::Open_Contained(Tarn_PathType type, const char* path, int flags, mode_t mode) {
    Link_Walk walk;
    if (!Begin_Walk(type, path, &walk) || !Look(&walk, flags))
        return -1;
    // What the check behind the opening may still refuse isn't emptied by the opening.
    const int late_flags = walk.Judges_Owner() ? O_TRUNC : 0;
    for (;;) {
        const int added_flags = O_NOFOLLOW | (walk.creating ? O_EXCL : 0);
        Descriptor opened(Open_Path(walk.name.c_str(), (flags & ~late_flags) | added_flags, mode));
        if (opened)
            return Check_Opened(walk, opened.get(), flags) ? opened.Release() : -1;
        if (errno == EEXIST && walk.creating && !(flags & O_EXCL)) { // made by someone else meanwhile
            if (!Look(&walk, flags))
                return -1;
        } else if (errno != ELOOP) {
            return Fail_System(), -1;
        } else if (!Follow_Found_Link(&walk)) {
            return -1;
        }
    }
}

bool UNIXFileManager::Look(Link_Walk* walk, int flags) {
    walk->creating = false;
    if (!walk->Judges_Owner())
        return true;
    struct stat status;
    if (lstat(walk->name.c_str(), &status) == 0) {
        walk->owner = status.st_uid;
        return true;
    }
    walk->creating = errno == ENOENT && flags & O_CREAT;
    return walk->creating || Fail_System();
}

// The opening met a link, though something else may stand there again: then it is opened anew.
bool UNIXFileManager::Follow_Found_Link(Link_Walk* walk) {
    if (!walk->settings.allow_links)
        return Fail_Realize(REALIZE_LINK);
    const Opened_Name found(walk->name.c_str());
    if (!found)
        return Fail_System();
    if (!found.Is_Link())
        return true;
    struct stat target_status;
    if (lstat(found.Target(), &target_status) != 0)
        return Fail_System();
    if (walk->Judges_Owner() && found.Owner() != walk->owner)
        return Fail(owner_failure);
    return Follow(walk, found.Target(), target_status);
}

// Where owners count, the opening itself has emptied nothing.
bool UNIXFileManager::Check_Opened(const Link_Walk& walk, int descriptor, int flags) {
    if (!walk.Judges_Owner() || walk.creating)
        return true;
    struct stat status;
    if (fstat(descriptor, &status) != 0)
        return Fail_System();
    if (status.st_uid != walk.owner)
        return Fail(owner_failure);
    return !(flags & O_TRUNC) || !S_ISREG(status.st_mode) || Empty_File(descriptor, flags) || Fail_System();
}
