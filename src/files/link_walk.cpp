// The last name of a contained path, which may be a link: looking whether it leads to something, and opening
// it. Every link is followed here, one at a time, and never by the system, so that each step can be judged.

#include "core/stat_hash_table.h"
#include "files/descriptor.h"
#include "files/unix_file_manager.h"
#include "files/unix_file_path.h"

#include <cstring>
#include <memory>
#include <string>

namespace {

constexpr char recursive_failure[] = "The specified path references a recursive symbolic link";
constexpr char owner_failure[] =
    "The specified path references a symbolic link to a directory or file owned by a different user";

constexpr size_t target_size = 4096;

} // namespace

struct UNIXFileManager::Link_Walk {
    bool Judges_Owner() const { return settings.allow_links && !settings.allow_other_owner; }

    _UNIXContainedPathSettings settings;
    std::unique_ptr<UNIXFilePath> directory;    // real path of the current directory
    std::string name;                           // in it
    HashTable<struct stat> seen{1, 1, 12, 512}; // what the links so far lead to

    // Of an opening
    uid_t owner = 0;       // everything on the way must have it, where owners count
    bool creating = false; // the file wasn't there
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

// Takes one step along a link with this text, whose target must have this owner where owners count.
bool UNIXFileManager::Follow(Link_Walk* walk, uid_t owner, const char* target,
                             const struct stat& target_status) {
    auto reached = std::make_unique<struct stat>(target_status);
    if (walk->seen.Find(reached.get()))
        return Fail(recursive_failure);
    walk->seen.Insert(reached.release());
    if (!walk->settings.allow_other_owner && owner != target_status.st_uid)
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
    struct stat status;
    if (lstat(walk.name.c_str(), &status) != 0)
        return errno == ENOENT;
    while (S_ISLNK(status.st_mode)) {
        if (!walk.settings.allow_links)
            return Fail_Realize(REALIZE_LINK);
        char target[target_size];
        struct stat target_status;
        const ssize_t length = readlink(walk.name.c_str(), target, target_size - 1);
        if (length < 0)
            return errno == ENOENT;
        target[length] = '\0';
        if (lstat(target, &target_status) != 0)
            return errno == ENOENT;
        if (!Follow(&walk, status.st_uid, target, target_status))
            return false;
        status = target_status;
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
    const bool truncate_late = walk.Judges_Owner() && flags & O_TRUNC && (flags & O_ACCMODE) != O_RDONLY;
    if (truncate_late)
        flags &= ~O_TRUNC;
    for (;;) {
        Descriptor opened(
            open_path(walk.name.c_str(), flags | O_NOFOLLOW | (walk.creating ? O_EXCL : 0), mode));
        if (opened)
            return Check_Opened(walk, opened.get(), truncate_late) ? opened.Release() : -1;
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

// The opening met a link. Its owner and its text are read from one descriptor: the name may lead elsewhere by
// now.
bool UNIXFileManager::Follow_Found_Link(Link_Walk* walk) {
    if (!walk->settings.allow_links)
        return Fail_Realize(REALIZE_LINK);
    const Descriptor link(open_path(walk->name.c_str(), O_PATH | O_NOFOLLOW));
    struct stat link_status, target_status;
    if (!link || fstat(link.get(), &link_status) != 0)
        return Fail_System();
    char target[target_size];
    const ssize_t length = readlinkat(link.get(), "", target, target_size - 1);
    if (length < 0)
        return Fail_System();
    target[length] = '\0';
    if (lstat(target, &target_status) != 0)
        return Fail_System();
    if (walk->Judges_Owner() && link_status.st_uid != walk->owner)
        return Fail(owner_failure);
    return Follow(walk, walk->owner, target, target_status);
}

bool UNIXFileManager::Check_Opened(const Link_Walk& walk, int descriptor, bool truncate) {
    if (walk.Judges_Owner() && !walk.creating) {
        struct stat status;
        if (fstat(descriptor, &status) != 0)
            return Fail_System();
        if (status.st_uid != walk.owner)
            return Fail(owner_failure);
        truncate = truncate && S_ISREG(status.st_mode);
    }
    return !truncate || Answer(ftruncate(descriptor, 0));
}
