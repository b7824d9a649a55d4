// The operations of the TLS library by name.

#include "network/tls_library.h"

#include "app/services/tarn_application.h"

#include <cerrno>

namespace {

void* Find(TarnApplication* application, const char* name, const char* older_name) {
    void* found = application->SSL_GetFunction(name);
    return found || !older_name ? found : application->SSL_GetFunction(older_name);
}

} // namespace

TLS_Library::TLS_Library(TarnApplication* application) : application(application) {
#define TLS_FUNCTION(needs, member, result, arguments, name, older_name)                                     \
    member = reinterpret_cast<result(*) arguments>(Find(application, name, older_name));
#include "network/tls_functions.def"
}

String TLS_Library::missing(unsigned needs) const {
#define TLS_FUNCTION(function_needs, member, result, arguments, name, older_name)                            \
    if (((function_needs)&needs) && !member)                                                                 \
        return "The SSL library has no " name;
#include "network/tls_functions.def"
    return "";
}

String TLS_Library::Last_Error() const {
    const unsigned long code = next_error ? next_error() : 0;
    if (code == 0)
        return errno ? application->lasterror() : "";
    Forget_Errors();
    char text[256] = "";
    if (describe_error)
        describe_error(code, text, sizeof text);
    return text;
}

void TLS_Library::Forget_Errors() const {
    errno = 0;
    while (next_error && next_error()) {
    }
}
