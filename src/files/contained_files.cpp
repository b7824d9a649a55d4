// The operations on files and directories below a root.

#include "files/descriptor.h"
#include "files/unix_file.h"
#include "files/unix_file_manager.h"
#include "files/unix_file_path.h"

#include <cstdio>
#include <dirent.h>
#include <memory>

bool UNIXFileManager::Enter_Directory_Of(Tarn_PathType type, UNIXFilePath& path) {
    return RealizeContainedPath(type, path.Collapsed_Directory(), nullptr);
}

File* UNIXFileManager::Open(Tarn_PathType type, const char* path, int mode) {
    const int flags = OpenMode(mode);
    Descriptor opened(OpenContained(type, path, flags));
    if (!opened)
        return nullptr;
    return Enter(new UNIXFile(this, type, Path_Text(path), std::move(opened), flags), mode);
}

bool UNIXFileManager::Delete(Tarn_PathType type, const char* path) {
    UNIXFilePath p(path);
    return Enter_Directory_Of(type, p) && Delete(p.Collapsed_Filename());
}

bool UNIXFileManager::MakeDirectory(Tarn_PathType type, const char* path) {
    UNIXFilePath p(path);
    return Enter_Directory_Of(type, p) && MakeDirectory(p.Collapsed_Filename());
}

bool UNIXFileManager::RemoveDirectory(Tarn_PathType type, const char* path) {
    UNIXFilePath p(path);
    return Enter_Directory_Of(type, p) && RemoveDirectory(p.Collapsed_Filename());
}

bool UNIXFileManager::Copy(Tarn_PathType source_type, const char* source, Tarn_PathType target_type,
                           const char* target) {
    return Copy_File(source_type, source, target_type, target) != Copied::No;
}

UNIXFileManager::Copied UNIXFileManager::Copy_File(Tarn_PathType source_type, const char* source,
                                                   Tarn_PathType target_type, const char* target) {
    if (!FreeFileSpace(2))
        return Copied::No;
    const Descriptor from(OpenContained(source_type, source, O_RDONLY));
    if (!from || !Check_Copy_Source(from.get()))
        return Copied::No;
    Descriptor to(OpenContained(target_type, target, copy_target_flags));
    return to ? Copy_Opened(from.get(), to) : Copied::No;
}

bool UNIXFileManager::Rename(Tarn_PathType source_type, const char* source, Tarn_PathType target_type,
                             const char* target) {
    UNIXFilePath from(source);
    UNIXFilePath to(target);
    if (source_type == target_type && from.Matches(to, 1))
        return Enter_Directory_Of(source_type, from) &&
               Answer(rename(from.Collapsed_Filename(), to.Collapsed_Filename()));
    const Copied copied = Copy_File(source_type, source, target_type, target);
    return copied == Copied::Yes ? Delete(source_type, source) : copied == Copied::Same_File;
}

bool UNIXFileManager::MakeSymbolicLink(Tarn_PathType target_type, const char* target, Tarn_PathType link_type,
                                       const char* link) {
    UNIXFilePath to(target);
    UNIXFilePath from(link);
    UNIXFilePath* directory;
    if (!RealizeContainedPath(target_type, to.Collapsed_Directory(), &directory))
        return false;
    const std::unique_ptr<UNIXFilePath> real(directory);
    UNIXFilePath stored(real->Whole(), to.Collapsed_Filename());
    const std::unique_ptr<char[]> text(stored.Collapsed_Path(nullptr, nullptr));
    return Enter_Directory_Of(link_type, from) && MakeSymbolicLink(text.get(), from.Collapsed_Filename());
}

bool UNIXFileManager::DirectoryListing(Tarn_PathType type, const char* path, List<String>* names) {
    if (!RealizeContainedPath(type, path, nullptr))
        return false;
    const std::unique_ptr<DIR, int (*)(DIR*)> directory(opendir("."), closedir);
    if (!directory)
        return Fail_System();
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(directory.get());
        if (!entry)
            return errno == 0 || Fail_System();
        names->Insert(new String(entry->d_name), LIST_LAST);
    }
}

bool UNIXFileManager::Stat(Tarn_PathType type, const char* path, struct stat* status) {
    const Descriptor opened(OpenContained(type, path, O_RDONLY | O_NONBLOCK));
    return opened && Answer(fstat(opened.get(), status));
}

bool UNIXFileManager::Length(Tarn_PathType type, const char* path, unsigned long* length) {
    struct stat status;
    if (!Stat(type, path, &status))
        return false;
    *length = Length_Of(status);
    return true;
}

bool UNIXFileManager::IsDirectory(Tarn_PathType type, const char* path, bool* directory) {
    struct stat status;
    if (!Stat(type, path, &status))
        return false;
    *directory = S_ISDIR(status.st_mode);
    return true;
}

bool UNIXFileManager::ModifiedTime(Tarn_PathType type, const char* path, long* time) {
    struct stat status;
    if (!Stat(type, path, &status))
        return false;
    *time = status.st_mtime;
    return true;
}

bool UNIXFileManager::Mode(Tarn_PathType type, const char* path, int* mode) {
    struct stat status;
    if (!Stat(type, path, &status))
        return false;
    *mode = static_cast<int>(status.st_mode);
    return true;
}

bool UNIXFileManager::ChangeMode(Tarn_PathType type, const char* path, int mode) {
    const Descriptor opened(OpenContained(type, path, O_RDONLY | O_NONBLOCK));
    return opened && Answer(fchmod(opened.get(), static_cast<mode_t>(mode)));
}

// Times are set through a descriptor, since the system would follow a link at the last name. Reading or
// writing serves.
int UNIXFileManager::Open_To_Touch(Tarn_PathType type, const char* path) {
    const int opened = OpenContained(type, path, O_RDONLY | O_NONBLOCK);
    return opened < 0 && errno == EACCES ? OpenContained(type, path, O_WRONLY | O_NONBLOCK) : opened;
}

bool UNIXFileManager::SetModifiedTime(Tarn_PathType type, const char* path, long time) {
    const Descriptor opened(Open_To_Touch(type, path));
    const struct timespec times[] = {{time, 0}, {time, 0}};
    return opened && futimens(opened.get(), times) == 0;
}
