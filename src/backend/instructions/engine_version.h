// Versions, by the rows of engine_version.def.
#ifndef BACKEND_ENGINE_VERSION_H
#define BACKEND_ENGINE_VERSION_H

#include <iterator>
#include <string_view>

// The engine that this compiler is of, as a number and as it is written.
#define PROGRAM_VERSION(version)                                                                             \
    inline constexpr double newest_engine_version = version;                                                 \
    inline constexpr const char* program_version = #version;
#include "backend/instructions/engine_version.def"

// The system variable that tells the running engine's.
inline constexpr std::string_view engine_version_variable = "tarnversion";

// The first engines with the features that have no file version: array_walk_engine and its kin;
// and the last ones without: last_writable_access_engine.
#define ENGINE_FEATURE(name, engine) inline constexpr double name##_engine = engine;
#define LAST_ENGINE(name, engine) inline constexpr double last_##name##_engine = engine;
#include "backend/instructions/engine_version.def"

inline constexpr int file_version_major = 1;

// The minor file version that a piece of code demands, named after the code.
enum File_Version {
#define FILE_VERSION(name, minor, engine) FILE_VERSION_##name = minor,
#include "backend/instructions/engine_version.def"
};

// The first engine that reads each minor file version.
inline constexpr double file_version_engines[] = {
#define FILE_VERSION(name, minor, engine) engine,
#include "backend/instructions/engine_version.def"
};

// The highest minor version that can be asked for.
inline constexpr int file_version_limit = FILE_VERSION_RESERVED;
// The newest that is given out: of the files that this program writes, and reads.
inline constexpr int newest_file_version = file_version_limit - 1;
static_assert(
    [] {
        int minor_wanted = 0;
        for (const int minor : {
#define FILE_VERSION(name, minor, engine) minor,
#include "backend/instructions/engine_version.def"
             })
            if (minor != minor_wanted++)
                return false;
        return minor_wanted == file_version_limit + 1;
    }(),
    "minor versions are dense, their rows in order");

#endif
