// An open file: reading, writing, mapping, parking.

#include "files/unix_file.h"

#include "files/descriptor.h"
#include "files/unix_file_manager.h"

#include <climits>
#include <sys/mman.h>

namespace {

// Flags that would create or empty a file again when it is reopened.
constexpr int first_open_flags = O_CREAT | O_EXCL | O_TRUNC;

} // namespace

UNIXFile::UNIXFile(UNIXFileManager* manager, const char* path, Descriptor opened, int flags)
    : File(manager, path), descriptor(std::move(opened)), open_flags(flags & ~first_open_flags) {
}

UNIXFile::UNIXFile(UNIXFileManager* manager, Tarn_PathType type, const char* path, Descriptor opened,
                   int flags)
    : File(manager, type, path), descriptor(std::move(opened)), open_flags(flags & ~first_open_flags) {
}

UNIXFile::~UNIXFile() {
    Release();
}

// Every operation begins with this one, which brings a parked file back.
bool UNIXFile::Ready() {
    if (descriptor || manager->ActivateFile(this))
        return true;
    Error(manager->error());
    return false;
}

bool UNIXFile::Fail_System() {
    Error(manager->lasterror());
    return false;
}

bool UNIXFile::Stat(struct stat* status) {
    return Ready() && (fstat(descriptor.get(), status) == 0 || Fail_System());
}

bool UNIXFile::OwnerID(int* id) {
    struct stat status;
    if (!Stat(&status))
        return false;
    *id = static_cast<int>(status.st_uid);
    return true;
}

bool UNIXFile::GroupID(int* id) {
    struct stat status;
    if (!Stat(&status))
        return false;
    *id = static_cast<int>(status.st_gid);
    return true;
}

long UNIXFile::Answer(long result) {
    if (result < 0)
        Fail_System();
    return result;
}

long UNIXFile::Read(char* buffer, unsigned long length) {
    return Ready() ? Answer(Uninterrupted([&] { return read(descriptor.get(), buffer, length); })) : -1;
}

long UNIXFile::Write(const char* text, unsigned long length) {
    return Ready() ? Answer(Uninterrupted([&] { return write(descriptor.get(), text, length); })) : -1;
}

long UNIXFile::Seek(long position) {
    return Ready() ? Answer(lseek(descriptor.get(), position, SEEK_SET)) : -1;
}

long UNIXFile::Tell() {
    return Ready() ? Answer(lseek(descriptor.get(), 0, SEEK_CUR)) : -1;
}

long UNIXFile::Length() {
    struct stat status;
    if (!Stat(&status))
        return -1;
    return Length_Of(status);
}

bool UNIXFile::IsDirectory(bool* directory) {
    struct stat status;
    if (!Stat(&status))
        return false;
    *directory = S_ISDIR(status.st_mode);
    return true;
}

bool UNIXFile::Range_Lock(short type, long start, unsigned long length) {
    if (!Ready())
        return false;
    if (length > LONG_MAX) {
        errno = EINVAL; // the system would read it as a range ahead of the start
        return Fail_System();
    }
    struct flock range = {};
    range.l_type = type;
    range.l_whence = SEEK_SET;
    range.l_start = start;
    range.l_len = static_cast<off_t>(length);
    return Uninterrupted([&] { return fcntl(descriptor.get(), F_OFD_SETLKW, &range); }) == 0 || Fail_System();
}

bool UNIXFile::Lock(FileLockType type, long start, unsigned long length) {
    return Range_Lock(type == FILE_LOCK_EXCLUSIVE ? F_WRLCK : F_RDLCK, start, length);
}

bool UNIXFile::Release(long start, unsigned long length) {
    return Range_Lock(F_UNLCK, start, length);
}

const char* UNIXFile::Map(long offset, long length) {
    Release();
    struct stat status;
    if (!Ready() || (length == -1 && !Stat(&status)))
        return nullptr;
    if (length == -1)
        length = status.st_size;
    if (length <= 0) {
        Error("Invalid argument");
        return nullptr;
    }
    const auto size = static_cast<std::size_t>(length);
    void* address = mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor.get(), offset);
    if (address == MAP_FAILED) {
        Fail_System();
        return nullptr;
    }
    mapping = address;
    mapping_length = size;
    return static_cast<const char*>(address);
}

void UNIXFile::Release() {
    if (mapping)
        munmap(mapping, mapping_length);
    mapping = nullptr;
    mapping_length = 0;
}

bool UNIXFile::Activate(String& error) {
    if (descriptor)
        return true;
    Descriptor opened(Reopen(error));
    if (!opened)
        return false;
    if (position != 0 && lseek(opened.get(), position, SEEK_SET) != position) {
        error = "Unable to restore file position during activation";
        return false;
    }
    descriptor = std::move(opened);
    return true;
}

int UNIXFile::Reopen(String& error) {
    if (contained) {
        const int opened =
            static_cast<UNIXFileManager*>(manager)->OpenContained(path_type, path.get(), open_flags);
        if (opened < 0)
            error = manager->error();
        return opened;
    }
    const int opened = Open_Path(path.get(), open_flags);
    if (opened < 0)
        error = manager->lasterror();
    return opened;
}

bool UNIXFile::Deactivate() {
    if (!descriptor)
        return true;
    const off_t here = lseek(descriptor.get(), 0, SEEK_CUR);
    position = here < 0 ? 0 : here;
    return descriptor.Close() || Fail_System();
}
