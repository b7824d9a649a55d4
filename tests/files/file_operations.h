#ifndef TESTS_FILES_FILE_OPERATIONS_H
#define TESTS_FILES_FILE_OPERATIONS_H

#include "files/unix_file_manager.h"

#include <memory>
#include <string>
#include <sys/stat.h>
#include <type_traits>

using Manager = UNIXFileManager;
inline constexpr Tarn_PathType data = Tarn_PathType_Data;

// What the operations below have found out.
inline struct Observation {
    std::string text;
    unsigned long length = 0;
    long time = 0;
    int mode = 0;
    bool exists = false;
    bool directory = false;
} observed;

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

// An operation on a path, beside the file "aside" and the name "new": on one of the data directory, and for
// most on a raw one too.
struct File_Operation {
    template <typename Run>
    File_Operation(const char* inside, bool on_file, const char* name, Run run)
        : inside(inside), on_file(on_file), name(name), contained(run) {
        if constexpr (std::is_invocable_v<Run, UNIXFileManager&, const char*>)
            raw = run;
    }

    const char* inside; // what makes the path out of that of a directory
    bool on_file;       // looks at the last name, or opens it; may be run on any file
    const char* name;
    bool (*contained)(UNIXFileManager& m, const char* p, Tarn_PathType in);
    bool (*raw)(UNIXFileManager& m, const char* p) = nullptr;
};

// clang-format off
#define BOTH(...) #__VA_ARGS__, [](Manager& m, const char* p, auto... in) -> bool { return __VA_ARGS__; }
#define CONTAINED(...) #__VA_ARGS__, [](Manager& m, const char* p, Tarn_PathType) { return __VA_ARGS__; }

inline const File_Operation file_operations[] = {
    {"/x", true, BOTH(see(m.Open(in..., p, FILE_MODE_READ)))},
    {"/x", true, BOTH(see(m.Open(in..., p, FILE_MODE_READ | FILE_MODE_TRUNCATE)))},
    {"/x", true, BOTH(see(m.Open(in..., p, FILE_MODE_WRITE | FILE_MODE_CREATE | FILE_MODE_TRUNCATE)))},
    {"/x.l", false, BOTH(m.Lock(in..., p) == FILE_LOCK_HELD && m.Lock_Delete(in..., p))},
    {"/x", true, BOTH(m.Lock_Valid(in..., p) != FILE_LOCK_UNREADABLE)},
    {"/x", false, CONTAINED(m.Lock_Delete(data, p))},
    {"/x", false, BOTH(m.Delete(in..., p))},
    {"/x", true, BOTH(m.Copy(in..., p, in..., "aside") && see(m.Open(in..., "aside", FILE_MODE_READ)))},
    {"/x", true, BOTH(m.Copy(in..., "aside", in..., p))},
    {"/x", false, BOTH(m.Rename(in..., p, in..., "aside") && see(m.Open(in..., "aside", FILE_MODE_READ)))},
    {"/x", false, BOTH(m.TouchFile(in..., "new") && m.Rename(in..., "new", in..., p))},
    {"/x", false, CONTAINED(m.Rename(data, p, data, (std::string(p) + "2").c_str()))},
    {"/x", true, BOTH(m.TouchFile(in..., p))},
    {"/x_", false, BOTH(m.Exists(in..., p, &observed.exists))},
    {"/x", true, BOTH(m.Length(in..., p, &observed.length))},
    {"/x", true, BOTH(m.IsDirectory(in..., p, &observed.directory))},
    {"/x", true, CONTAINED(m.SetModifiedTime(data, p, 1))},
    {"/x", true, BOTH(m.ModifiedTime(in..., p, &observed.time))},
    {"/x.d", false, BOTH(m.MakeDirectory(in..., p) && m.RemoveDirectory(in..., p))},
    {"/x_", false, BOTH(m.RemoveDirectory(in..., p))},
    {"/x.s", false, BOTH(m.MakeSymbolicLink(in..., "aside", in..., p) && m.Delete(in..., p))},
    {"/x", false, CONTAINED(m.MakeSymbolicLink(data, p, data, "new") && m.Delete(data, "new"))},
    {"/x", true, BOTH(m.Mode(in..., p, &observed.mode))},
    {"/x", true, BOTH(m.ChangeMode(in..., p, 0700))},
    {"", false, CONTAINED(see_temporary(m, p, "t"))},
    {"/x", false, CONTAINED(see_temporary(m, p, nullptr))},
    {"", false, CONTAINED(see_names(m, p))},
};
// clang-format on

#endif
