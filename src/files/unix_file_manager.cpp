// Operations on raw paths.

#include "files/unix_file_manager.h"

#include "core/file_identity.h"
#include "files/descriptor.h"
#include "files/unix_file.h"
#include "files/unix_file_path.h"

#include <cstdio>
#include <cstring>
#include <utime.h>

namespace {

// Answers whether all was copied; errno tells why not.
bool Copy_Bytes(int source, int target) {
    char buffer[8192];
    ssize_t length;
    while ((length = Uninterrupted([&] { return read(source, buffer, sizeof buffer); })) > 0)
        if (!Write_All(target, buffer, static_cast<std::size_t>(length)))
            return false;
    return length == 0;
}

} // namespace

UNIXFileManager::UNIXFileManager(TarnApplication* application) : FileManager(application) {
}

const char* UNIXFileManager::lasterror() {
    const char* text = strerror(errno);
    return *text ? text : "Unknown error";
}

const char* UNIXFileManager::pathseparator() {
    return "/";
}

int UNIXFileManager::OpenMode(int mode) {
    int flags = O_RDONLY;
    if (mode & FILE_MODE_WRITE)
        flags = mode & FILE_MODE_READ ? O_RDWR : O_WRONLY;
    if (mode & FILE_MODE_CREATE)
        flags |= O_CREAT;
    if (mode & FILE_MODE_TRUNCATE)
        flags |= O_TRUNC;
    if (mode & FILE_MODE_APPEND)
        flags |= O_APPEND;
    if (mode & FILE_MODE_EXCLUSIVE)
        flags |= O_EXCL;
    return flags;
}

const char* UNIXFileManager::Mapped_Path(const void* address) {
    for (const File* entry = active.First(); entry; entry = active.Next()) {
        const auto* file = static_cast<const UNIXFile*>(entry);
        const auto* start = static_cast<const char*>(file->mapping);
        if (start && address >= start && address < start + file->mapping_length)
            return file->path.get();
    }
    return nullptr;
}

File* UNIXFileManager::Enter(File* file, int mode) {
    return mode & FILE_MODE_UNMANAGED ? file : FileOpened(file);
}

File* UNIXFileManager::Open(const char* path, int mode) {
    if (!FreeFileSpace(1))
        return nullptr;
    const int flags = OpenMode(mode);
    Descriptor opened(Open_Path(Path_Text(path), flags, new_file_mode));
    if (!opened)
        return Fail_System(), nullptr;
    return Enter(new UNIXFile(this, Path_Text(path), std::move(opened), flags), mode);
}

bool UNIXFileManager::Answer(int result) {
    return result == 0 || Fail_System();
}

bool UNIXFileManager::Delete(const char* path) {
    return Answer(unlink(Path_Text(path)));
}

bool UNIXFileManager::MakeDirectory(const char* path) {
    return Answer(mkdir(Path_Text(path), new_directory_mode));
}

bool UNIXFileManager::RemoveDirectory(const char* path) {
    return Answer(rmdir(Path_Text(path)));
}

bool UNIXFileManager::ChangeMode(const char* path, int mode) {
    return Answer(chmod(Path_Text(path), static_cast<mode_t>(mode)));
}

bool UNIXFileManager::MakeSymbolicLink(const char* target, const char* link) {
    return Answer(symlink(Path_Text(target), Path_Text(link)));
}

bool UNIXFileManager::Exists(const char* path, bool* exists) {
    struct stat status;
    *exists = stat(Path_Text(path), &status) == 0;
    return *exists || Fail_System();
}

bool UNIXFileManager::Length(const char* path, unsigned long* length) {
    struct stat status;
    if (stat(Path_Text(path), &status) != 0)
        return Fail_System();
    *length = Length_Of(status);
    return true;
}

bool UNIXFileManager::IsDirectory(const char* path, bool* directory) {
    struct stat status;
    if (stat(Path_Text(path), &status) != 0)
        return Fail_System();
    *directory = S_ISDIR(status.st_mode);
    return true;
}

bool UNIXFileManager::Mode(const char* path, int* mode) {
    struct stat status;
    if (stat(Path_Text(path), &status) != 0)
        return Fail_System();
    *mode = static_cast<int>(status.st_mode);
    return true;
}

bool UNIXFileManager::ModifiedTime(const char* path, long* time) {
    struct stat status;
    if (lstat(Path_Text(path), &status) != 0)
        return Fail_System();
    *time = status.st_mtime;
    return true;
}

bool UNIXFileManager::SetModifiedTime(const char* path, long time) {
    const struct utimbuf times = {time, time};
    return utime(Path_Text(path), &times) == 0;
}

bool UNIXFileManager::Copy(const char* source, const char* target) {
    return Copy_File(source, target) != Copied::No;
}

bool UNIXFileManager::Rename(const char* source, const char* target) {
    if (rename(Path_Text(source), Path_Text(target)) == 0)
        return true;
    if (errno != EXDEV)
        return Fail_System();
    const Copied copied = Copy_File(source, target);
    return copied == Copied::Yes ? Delete(source) : copied == Copied::Same_File;
}

UNIXFileManager::Copied UNIXFileManager::Copy_File(const char* source, const char* target) {
    if (!FreeFileSpace(2))
        return Copied::No;
    const Descriptor from(Open_Path(Path_Text(source), O_RDONLY));
    if (!from)
        return Fail_System(), Copied::No;
    if (!Check_Copy_Source(from.get()))
        return Copied::No;
    Descriptor to(Open_Path(Path_Text(target), copy_target_flags, new_file_mode));
    if (!to)
        return Fail_System(), Copied::No;
    return Copy_Opened(from.get(), to);
}

bool UNIXFileManager::Check_Copy_Source(int source) {
    struct stat status;
    if (fstat(source, &status) != 0)
        return Fail_System();
    return !S_ISDIR(status.st_mode) || Fail("The source file is a directory");
}

// The target was opened as it is: it is emptied only when it turns out to be another file than the source.
UNIXFileManager::Copied UNIXFileManager::Copy_Opened(int source, Descriptor& target) {
    struct stat from, to;
    if (fstat(source, &from) != 0 || fstat(target.get(), &to) != 0)
        return Fail_System(), Copied::No;
    if (Same_File(from, to))
        return Copied::Same_File;
    const bool empty = !S_ISREG(to.st_mode) || ftruncate(target.get(), 0) == 0;
    if (!empty || !Copy_Bytes(source, target.get()) || !target.Close())
        return Fail_System(), Copied::No;
    return Copied::Yes;
}
