// Which diagnostics are printed, in what form, and which of them count.

#include "app/driver/compiler_application.h"

// A suppressed warning doesn't count either, even if it would be an error.
bool CompilerApplication::CompileError(ErrorCode code, const char* file, int line, const String& message) {
    if (!Error_WillPrint(code))
        return true;
    const bool is_warning = code <= LAST_WARNING;
    Error(String(file) + ":" + line + (is_warning ? ": CW_" : ": CE_") + code + ": " + message + "\n");
    return is_warning && !(warning_flags[code] & WARNING_ABORTS);
}

bool CompilerApplication::Error_WillPrint(ErrorCode code) {
    return code > LAST_WARNING || !(warning_flags[code] & WARNING_SUPPRESSED);
}
