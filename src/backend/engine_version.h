// Features of the compiled file, by the engine that brought them.
#ifndef BACKEND_ENGINE_VERSION_H
#define BACKEND_ENGINE_VERSION_H

#include <iterator>
#include <string_view>

// The engine that this compiler is of.
inline constexpr double newest_engine_version = 5.52;

// The system variable that tells the running engine's.
inline constexpr std::string_view engine_version_variable = "tarnversion";

inline constexpr int file_version_major = 1;

// The minor file version that a piece of code demands, named after the code.
enum File_Version {
    FILE_VERSION_FIRST = 0,
    FILE_VERSION_SECOND = 1,
    FILE_VERSION_OPEN_FLAGS = 2,         // TnOPEN in its long form, TnCOMMIT, TnROLLBACK
    FILE_VERSION_READ_ONLY_ELEMENTS = 3, // elem_ro, memb_ro
    FILE_VERSION_CALL_CERTIFICATE = 4,   // http_cf
    FILE_VERSION_REFERENCES = 5,         // stores by reference, TnTRANSACT, TnDBCOMMAND
    FILE_VERSION_CAPTURE = 6,
    FILE_VERSION_CALL_COUNTED = 7,    // httpn
    FILE_VERSION_LOCALIZED_TEXTS = 8, // a second text within one TnLOCALIZED block
    FILE_VERSION_INCREMENT = 9,       // ++ and -- by store
    FILE_VERSION_SMTP_COUNTED = 10,   // smtpn
    FILE_VERSION_ASYNCHRONOUS = 11,
    FILE_VERSION_PRIVATE_FUNCTIONS = 12,
    FILE_VERSION_ISOLATION = 13 // TnASYNCHRONOUS with ISOLATION
};

// The highest minor version that can be asked for; the last one is not given out yet.
inline constexpr int file_version_limit = 14;

// The first engine that reads each minor file version.
inline constexpr double file_version_engines[] = {
    0, 4.0, 4.03, 4.07, 4.11, 4.15, 4.1506, 4.1509, 5.07, 5.17, 5.18, 5.24, 5.35, 5.51, 0,
};
static_assert(std::size(file_version_engines) == file_version_limit + 1);

#endif
