// Named locks, which are files that tell who holds them, and touching files.
//
// A lock file is complete when it appears: it is written under a name of the thread's own and then linked to
// its place. One that was left behind by a dead holder is removed by whoever waits for it; two who wait must
// not both remove, since the second might meet the new lock of the first. So the remover holds a lock on the
// file that it has judged while it makes sure that this very file still stands at the path.

#include "app/services/config.h"
#include "app/services/tarn_application.h"
#include "core/file_identity.h"
#include "core/md5.h"
#include "files/descriptor.h"
#include "files/unix_file_manager.h"
#include "files/unix_file_path.h"

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <sys/file.h>
#include <sys/select.h>
#include <utime.h>

namespace {

constexpr mode_t lock_file_mode = 0664;
constexpr mode_t touched_file_mode = 0644;
constexpr std::size_t lock_content_size = 512;

// What the content of a lock file tells.
struct Lock_Holder {
    long process = 0;
    long thread = 0; // 0 where none was recorded
    const char* host = nullptr;
};

// Cuts the content in place. Old lock files tell no thread.
Lock_Holder Parse_Holder(char* content) {
    Lock_Holder holder;
    char* colon = strchr(content, ':');
    if (!colon)
        return holder;
    *colon = '\0';
    holder.host = colon + 1;
    holder.process = strtol(content, nullptr, 10);
    if (const char* mark = strchr(content, '!'))
        holder.thread = strtol(mark + 1, nullptr, 10);
    return holder;
}

std::string Temporary_Lock_Name(TarnApplication& application, const char* path) {
    const char* host = application.lockhostname();
    unsigned char digest[16];
    char printable[32];
    MD5Encoder encoder;
    encoder.Encode(reinterpret_cast<const unsigned char*>(host), static_cast<unsigned>(strlen(host)), digest);
    encoder.Make_Printable(digest, printable);
    return std::string(path) + '.' + std::string(printable, sizeof printable) + '.' +
           std::to_string(application.processid()) + '.' + std::to_string(application.threadid());
}

std::string Lock_Content(TarnApplication& application) {
    return std::to_string(application.processid()) + '!' + std::to_string(application.threadid()) + ':' +
           application.lockhostname();
}

// For judging a lock file and then locking it: a shared file system grants that lock to writers only.
int Open_Lock_File(const char* path, int flags) {
    const int opened = Open_Path(path, O_RDWR | flags);
    return opened >= 0 ? opened : Open_Path(path, O_RDONLY | flags);
}

// Removes the open lock file, unless another stands at its path by now or someone else is about to do it.
bool Remove_Lock_File(const char* path, int descriptor) {
    struct stat judged, found;
    return flock(descriptor, LOCK_EX | LOCK_NB) == 0 && fstat(descriptor, &judged) == 0 &&
           stat(path, &found) == 0 && Same_File(judged, found) && unlink(path) == 0;
}

void Wait_For_Next_Pass(TarnApplication& application) {
    const Config* config = application.config();
    const int milliseconds = config ? std::max(config->Integer(CONFIG_LOCK_WAIT), 0) : 0;
    struct timeval wait = {milliseconds / 1000, milliseconds % 1000 * 1000};
    select(0, nullptr, nullptr, nullptr, &wait);
}

} // namespace

int UNIXFileManager::Lock(const char* path) {
    return Take_Lock(Path_Text(path), 0);
}

int UNIXFileManager::Lock(Tarn_PathType type, const char* path) {
    UNIXFilePath p(path);
    return Enter_Directory_Of(type, p) ? Take_Lock(p.Collapsed_Filename(), O_NOFOLLOW) : FILE_LOCK_FAILED;
}

int UNIXFileManager::Take_Lock(const char* path, int flags) {
    if (!FreeFileSpace(1))
        return FILE_LOCK_FAILED;
    const std::string temporary = Temporary_Lock_Name(*application, path);
    struct stat written;
    if (!Write_Lock_File(temporary.c_str(), &written))
        return FILE_LOCK_FAILED;
    const int result = Wait_For_Lock(temporary.c_str(), written, path, flags);
    unlink(temporary.c_str());
    return result;
}

bool UNIXFileManager::Write_Lock_File(const char* path, struct stat* status) {
    Descriptor opened(Open_Path(path, O_WRONLY | O_CREAT | O_EXCL | O_TRUNC, lock_file_mode));
    if (!opened && errno == EEXIST)
        return Fail_System(); // it isn't ours, and stays
    const std::string content = Lock_Content(*application);
    if (opened && Write_All(opened.get(), content.data(), content.size()) &&
        fstat(opened.get(), status) == 0 && opened.Close())
        return true;
    Fail_System();
    unlink(path);
    return false;
}

int UNIXFileManager::Wait_For_Lock(const char* temporary, const struct stat& written, const char* path,
                                   int flags) {
    for (;;) {
        if (application->cancelled())
            return Fail("Timed out waiting for lock"), FILE_LOCK_CANCELLED;
        // A lock is as old as its holding, not as the wait for it.
        if (utime(temporary, nullptr) != 0 || (link(temporary, path) != 0 && errno != EEXIST))
            return Fail_System(), FILE_LOCK_FAILED;
        struct stat found;
        if (lstat(path, &found) != 0)
            continue; // it went away in between
        // Only this tells who has it: over a network a link may be made and yet be reported as failed.
        if (Same_File(found, written))
            return FILE_LOCK_HELD;

        bool broken;
        if (Judge_And_Break_Lock(path, flags, &broken) == FILE_LOCK_OWN)
            return Fail("Possible deadlock detected"), FILE_LOCK_DEADLOCK;
        if (!broken)
            Wait_For_Next_Pass(*application);
    }
}

// The descriptor, and with it what keeps others from removing the lock file, is gone before anyone waits.
int UNIXFileManager::Judge_And_Break_Lock(const char* path, int flags, bool* broken) {
    const Descriptor opened(Open_Lock_File(path, O_NONBLOCK | flags));
    const int state = Judge_Lock(path, opened.get());
    *broken = state == FILE_LOCK_STALE && Remove_Lock_File(path, opened.get());
    return state;
}

int UNIXFileManager::Lock_Valid(const char* path) {
    return Open_And_Judge_Lock(Path_Text(path), 0);
}

int UNIXFileManager::Lock_Valid(Tarn_PathType type, const char* path) {
    UNIXFilePath p(path);
    if (!Enter_Directory_Of(type, p))
        return FILE_LOCK_UNREADABLE;
    return Open_And_Judge_Lock(p.Collapsed_Filename(), O_NOFOLLOW);
}

int UNIXFileManager::Open_And_Judge_Lock(const char* path, int flags) {
    if (!FreeFileSpace(1))
        return FILE_LOCK_UNREADABLE;
    return Judge_Lock(path, Descriptor(Open_Path(path, O_RDONLY | O_NONBLOCK | flags)).get());
}

int UNIXFileManager::Judge_Lock(const char* path, int descriptor) {
    char content[lock_content_size];
    const ssize_t length = descriptor < 0 ? -1 : Read_All(descriptor, content, sizeof content - 1);
    if (length < 0)
        return Fail_System(), FILE_LOCK_UNREADABLE;
    content[length] = '\0';

    const Lock_Holder holder = Parse_Holder(content);
    if (holder.host && !strcmp(holder.host, application->lockhostname()) && holder.process > 0 &&
        holder.process <= INT_MAX) {
        const bool own = holder.process == application->processid() &&
                         (holder.thread == 0 || holder.thread == application->threadid());
        if (own)
            return FILE_LOCK_OWN;
        return kill(static_cast<pid_t>(holder.process), 0) != 0 && errno == ESRCH ? FILE_LOCK_STALE
                                                                                  : FILE_LOCK_VALID;
    }

    // Nobody can be asked, so the lock is judged by its age.
    const int expiration = application->lockexpiration();
    struct stat status;
    if (expiration == 0 || lstat(path, &status) != 0)
        return FILE_LOCK_VALID;
    return time(nullptr) - status.st_mtime >= expiration ? FILE_LOCK_STALE : FILE_LOCK_VALID;
}

bool UNIXFileManager::Lock_Delete(const char* path) {
    return unlink(Path_Text(path)) == 0 || errno == ENOENT || Fail_System();
}

bool UNIXFileManager::Lock_Delete(Tarn_PathType type, const char* path) {
    UNIXFilePath p(path);
    return Enter_Directory_Of(type, p) && Lock_Delete(p.Collapsed_Filename());
}

bool UNIXFileManager::TouchFile(const char* path) {
    if (utime(Path_Text(path), nullptr) == 0)
        return true;
    if (errno != ENOENT)
        return Fail_System();
    if (!FreeFileSpace(1))
        return false;
    const Descriptor created(Open_Path(Path_Text(path), O_WRONLY | O_CREAT, touched_file_mode));
    return created || Fail_System();
}

bool UNIXFileManager::TouchFile(Tarn_PathType type, const char* path) {
    int opened = Open_To_Touch(type, path);
    if (opened < 0 && errno == ENOENT)
        opened = Open_Contained(type, path, O_WRONLY | O_CREAT | O_NONBLOCK, touched_file_mode);
    const Descriptor touched(opened);
    return touched && Answer(futimens(touched.get(), nullptr));
}
