// How a contained path becomes a real location: the directory is checked as text, entered, and compared with
// where the process has arrived. All that comes after works on bare names in the current directory.

#include "files/descriptor.h"
#include "files/opened_name.h"
#include "files/unix_file_manager.h"
#include "files/unix_file_path.h"

#include <cstring>
#include <iterator>
#include <memory>

namespace {

// By RealizeStatus.
constexpr const char* realize_failures[] = {
    nullptr,
    "The specified path references a directory that does not exist",
    "The specified path references a symbolic link",
    "The specified path references a symbolic link to a directory owned by a different user",
};
static_assert(std::size(realize_failures) == REALIZE_OTHER_OWNER + 1);

constexpr char outside[] = "The specified path references a path outside the configured ";

constexpr std::size_t path_size = 4096;

std::unique_ptr<UNIXFilePath> Current_Directory() {
    std::unique_ptr<char[]> text(new char[path_size]);
    if (!getcwd(text.get(), path_size))
        return nullptr;
    return std::make_unique<UNIXFilePath>(text.release(), false);
}

// Enters a directory or what a link leads to, which must have the owner of the link.
int Enter_With_Owner_Check(const Opened_Name& element) {
    if (!element)
        return REALIZE_NOT_ENTERED;
    if (!element.Is_Link())
        return element.Enter() ? REALIZE_RESOLVED : REALIZE_NOT_ENTERED;
    struct stat entered;
    if (chdir(element.Target()) != 0 || stat(".", &entered) != 0)
        return REALIZE_NOT_ENTERED;
    return entered.st_uid == element.Owner() ? REALIZE_RESOLVED : REALIZE_OTHER_OWNER;
}

int Enter_With_Owner_Checks(UNIXFilePath& path) {
    if (chdir(path.Element(0)) != 0)
        return REALIZE_NOT_ENTERED;
    int status = REALIZE_RESOLVED;
    for (int i = 1; const char* element = path.Element(i); ++i)
        if (status = Enter_With_Owner_Check(Opened_Name(element)); status != REALIZE_RESOLVED)
            break;
    return status;
}

} // namespace

bool UNIXFileManager::Fail_Realize(int status) {
    return Fail(realize_failures[status]);
}

int UNIXFileManager::RealizePath(const char* path, UNIXFilePath** out, bool allow_links,
                                 bool allow_other_owner) {
    UNIXFilePath p(path);
    return RealizePath(&p, Path_Text(path), out, allow_links, allow_other_owner);
}

int UNIXFileManager::RealizePath(UNIXFilePath* p, const char* path, UNIXFilePath** out, bool allow_links,
                                 bool allow_other_owner) {
    if (chdir(path) != 0)
        return REALIZE_NOT_ENTERED;
    std::unique_ptr<UNIXFilePath> real = Current_Directory();
    if (!real)
        return REALIZE_NOT_ENTERED;
    if (!p->Matches(*real, 0)) { // a link lies on the way
        if (!allow_links)
            return REALIZE_LINK;
        if (!allow_other_owner) {
            if (const int status = Enter_With_Owner_Checks(*p); status != REALIZE_RESOLVED)
                return status;
            real = Current_Directory();
            if (!real)
                return REALIZE_NOT_ENTERED;
        }
    }
    *out = real.release();
    return REALIZE_RESOLVED;
}

bool UNIXFileManager::RealizeContainedPath(Tarn_PathType type, const char* directory, UNIXFilePath** out) {
    _UNIXContainedPathSettings settings;
    return ContainedPathSettings(type, &settings) && RealizeContainedPath(type, &settings, directory, out);
}

bool UNIXFileManager::RealizeContainedPath(Tarn_PathType type, _UNIXContainedPathSettings* settings,
                                           const char* directory, UNIXFilePath** out) {
    if (!FreeFileSpace(1))
        return false;
    if (!Root_Of(type) || !settings->root) {
        errno = EINVAL;
        return Fail_System();
    }
    UNIXFilePath& root = *settings->root;
    const char* below = Path_Text(directory);
    const bool absolute = settings->allow_absolute && *below == '/';
    if (!absolute)
        below += strspn(below, "/");

    if (!*below || !strcmp(below, ".")) {
        if (fchdir(settings->directory_fd) != 0)
            return Fail_System();
        if (out)
            *out = new UNIXFilePath(root.Whole());
        return true;
    }

    UNIXFilePath candidate = absolute ? UNIXFilePath(below) : UNIXFilePath(root.Whole(), below);
    if (!root.Contains(candidate))
        return Fail(String(outside) + Root_Name(type) + " directory");
    if (!absolute && fchdir(settings->directory_fd) != 0)
        return Fail_System();
    UNIXFilePath* real = nullptr;
    const int status =
        RealizePath(&candidate, below, &real, settings->allow_links, settings->allow_other_owner);
    if (status != REALIZE_RESOLVED)
        return Fail_Realize(status);
    std::unique_ptr<UNIXFilePath> found(real);
    if (out)
        *out = found.release();
    return true;
}

char* UNIXFileManager::NormalizeContainedPath(Tarn_PathType type, const char* path, int* length, int* size) {
    _UNIXContainedPathSettings settings;
    if (!ContainedPathSettings(type, &settings))
        return nullptr;
    if (!settings.root) {
        errno = EINVAL;
        return Fail_System(), nullptr;
    }
    path = Path_Text(path);
    if (!settings.allow_absolute)
        return UNIXFilePath(path + strspn(path, "/")).Collapsed_Path(length, size);
    if (*path == '/')
        return UNIXFilePath(path).Collapsed_Path(length, size);
    return UNIXFilePath(settings.root->Whole(), path).Collapsed_Path(length, size);
}
