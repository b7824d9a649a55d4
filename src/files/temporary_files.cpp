// New files under names that nobody uses yet.

#include "files/descriptor.h"
#include "files/unix_file.h"
#include "files/unix_file_manager.h"
#include "files/unix_file_path.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr unsigned last_number = 0x7fffffff;
constexpr int temporary_mode = FILE_MODE_CREATE | FILE_MODE_EXCLUSIVE;

// What stands ahead of a name in this directory.
String Directory_Part(const char* directory) {
    const std::size_t length = strlen(directory);
    if (length == 0 || !strcmp(directory, "."))
        return "";
    return directory[length - 1] == '/' ? String(directory) : String(directory) + "/";
}

} // namespace

int UNIXFileManager::Open_Numbered(const String& base, int flags, String* name) {
    for (unsigned i = 0; i < last_number; ++i) {
        char number[16];
        snprintf(number, sizeof number, ".%x", i);
        *name = base + number;
        const int descriptor = Open_Path(name->text(), flags, new_file_mode);
        if (descriptor >= 0)
            return descriptor;
        if (errno != EEXIST)
            return Fail_System(), -1;
    }
    return Fail("Unable to generate unique temporary filename"), -1;
}

File* UNIXFileManager::MakeTemporary(const char* base, char** name, int mode) {
    if (!FreeFileSpace(1))
        return nullptr;
    const int flags = OpenMode(mode | temporary_mode);
    String path;
    Descriptor opened(Open_Numbered(Path_Text(base), flags, &path));
    if (!opened)
        return nullptr;
    File* file = Enter(new UNIXFile(this, path.text(), std::move(opened), flags), mode);
    *name = path.release(nullptr, nullptr);
    return file;
}

File* UNIXFileManager::MakeTemporary(Tarn_PathType type, const char* directory, const char* prefix,
                                     char** name, int mode) {
    directory = Path_Text(directory);
    prefix = Path_Text(prefix);
    if (strchr(prefix, '/')) {
        Fail("Invalid temporary filename prefix");
        return nullptr;
    }
    if (!FreeFileSpace(1) || !RealizeContainedPath(type, directory, nullptr))
        return nullptr;
    const int flags = OpenMode(mode | temporary_mode);
    String path;
    Descriptor opened(Open_Numbered(prefix, flags, &path));
    if (!opened)
        return nullptr;
    path = Directory_Part(directory) + path;
    File* file = Enter(new UNIXFile(this, type, path.text(), std::move(opened), flags), mode);
    *name = path.release(nullptr, nullptr);
    return file;
}

File* UNIXFileManager::MakeTemporaryLike(Tarn_PathType type, const char* path, char** name, int mode) {
    UNIXFilePath p(path);
    const char* directory = p.Collapsed_Directory();
    return MakeTemporary(type, directory, p.Collapsed_Filename(), name, mode);
}
