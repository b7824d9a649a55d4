#ifndef TESTS_FILES_CONTAINED_OPERATIONS_H
#define TESTS_FILES_CONTAINED_OPERATIONS_H

#include "files/unix_file_manager.h"

#include <memory>
#include <string>
#include <sys/stat.h>

inline constexpr Tarn_PathType data = Tarn_PathType_Data;

// What no operation may see: the content of a file, and a name.
inline constexpr char secret[] = "secret of others";
inline constexpr long secret_time = 86400;
inline constexpr int secret_mode = S_IFREG | 0711;

// What the operations below have found out.
struct Observation {
    bool Shows_Secret() const {
        return exists || text.find(secret) != std::string::npos || length == sizeof secret - 1 ||
               time == secret_time || mode == secret_mode;
    }

    std::string text;
    unsigned long length = 0;
    long time = 0;
    int mode = 0;
    bool exists = false;
    bool directory = false;
};
inline Observation observed;

inline bool see(File* opened) {
    const std::unique_ptr<File> file(opened);
    char buffer[64];
    const long length = file ? file->Read(buffer, sizeof buffer) : -1;
    observed.text.assign(buffer, length < 0 ? 0 : static_cast<std::size_t>(length));
    return file != nullptr;
}

inline bool see_temporary(UNIXFileManager& m, const char* path, const char* prefix) {
    char* name = nullptr;
    const bool made = see(prefix ? m.MakeTemporary(data, path, prefix, &name, FILE_MODE_READ)
                                 : m.MakeTemporaryLike(data, path, &name, FILE_MODE_READ));
    const std::unique_ptr<char[]> owner(name);
    return made && m.Delete(data, name);
}

inline bool see_names(UNIXFileManager& m, const char* path) {
    List<String> names(1);
    const bool done = m.DirectoryListing(data, path, &names);
    for (const String* name = names.First(); name; name = names.Next())
        observed.text += name->text();
    return done;
}

// A contained operation on a path of the data directory, beside the file "aside" and the name "new" there.
struct Contained_Operation {
    const char* name;
    const char* inside; // what makes the path out of that of a directory
    bool on_file;       // looks at the last name, or opens it; may be run on any file
    bool (*run)(UNIXFileManager& m, const char* p);
};

#define OPERATION(expression) [](UNIXFileManager& m, const char* p) -> bool { return expression; }

// clang-format off
inline const Contained_Operation contained_operations[] = {
    {"Open", "/x", true, OPERATION(see(m.Open(data, p, FILE_MODE_READ)))},
    {"Open to empty", "/x", true, OPERATION(see(m.Open(data, p, FILE_MODE_READ | FILE_MODE_TRUNCATE)))},
    {"Open to write", "/x", true,
     OPERATION(see(m.Open(data, p, FILE_MODE_WRITE | FILE_MODE_CREATE | FILE_MODE_TRUNCATE)))},
    {"Lock", "/x.l", false, OPERATION(m.Lock(data, p) == FILE_LOCK_HELD && m.Lock_Delete(data, p))},
    {"Lock_Valid", "/x", true, OPERATION(m.Lock_Valid(data, p) != FILE_LOCK_UNREADABLE)},
    {"Lock_Delete", "/x", false, OPERATION(m.Lock_Delete(data, p))},
    {"Delete", "/x", false, OPERATION(m.Delete(data, p))},
    {"Copy from", "/x", true,
     OPERATION(m.Copy(data, p, data, "aside") && see(m.Open(data, "aside", FILE_MODE_READ)))},
    {"Copy to", "/x", true, OPERATION(m.Copy(data, "aside", data, p))},
    {"Rename from", "/x", false,
     OPERATION(m.Rename(data, p, data, "aside") && see(m.Open(data, "aside", FILE_MODE_READ)))},
    {"Rename to", "/x", false, OPERATION(m.TouchFile(data, "new") && m.Rename(data, "new", data, p))},
    {"Rename beside", "/x", false, OPERATION(m.Rename(data, p, data, (std::string(p) + "2").c_str()))},
    {"TouchFile", "/x", true, OPERATION(m.TouchFile(data, p))},
    {"Exists", "/x_", false, OPERATION(m.Exists(data, p, &observed.exists))},
    {"Length", "/x", true, OPERATION(m.Length(data, p, &observed.length))},
    {"IsDirectory", "/x", true, OPERATION(m.IsDirectory(data, p, &observed.directory))},
    {"SetModifiedTime", "/x", true, OPERATION(m.SetModifiedTime(data, p, 1))},
    {"ModifiedTime", "/x", true, OPERATION(m.ModifiedTime(data, p, &observed.time))},
    {"MakeDirectory", "/x.d", false, OPERATION(m.MakeDirectory(data, p) && m.RemoveDirectory(data, p))},
    {"RemoveDirectory", "/x_", false, OPERATION(m.RemoveDirectory(data, p))},
    {"MakeSymbolicLink", "/x.s", false,
     OPERATION(m.MakeSymbolicLink(data, "aside", data, p) && m.Delete(data, p))},
    {"MakeSymbolicLink to", "/x", false,
     OPERATION(m.MakeSymbolicLink(data, p, data, "new") && m.Delete(data, "new"))},
    {"Mode", "/x", true, OPERATION(m.Mode(data, p, &observed.mode))},
    {"ChangeMode", "/x", true, OPERATION(m.ChangeMode(data, p, 0700))},
    {"MakeTemporary", "", false, OPERATION(see_temporary(m, p, "t"))},
    {"MakeTemporaryLike", "/x", false, OPERATION(see_temporary(m, p, nullptr))},
    {"DirectoryListing", "", false, OPERATION(see_names(m, p))},
};
// clang-format on

#endif
