#ifndef NETWORK_TLS_LIBRARY_H
#define NETWORK_TLS_LIBRARY_H

#include "core/string.h"

#include <cstddef>

class TarnApplication;
struct bio_st;
struct evp_md_st;
struct evp_pkey_st;
struct ssl_ctx_st;
struct ssl_st;
struct x509_st;
struct x509_store_ctx_st;

using TLS_Password_Callback = int(char* buffer, int size, int writing, void* password);

// What error_code answers for the result of an operation.
enum TLS_Error {
    TLS_ERROR_LIBRARY = 1,
    TLS_ERROR_WANTS_READ = 2,
    TLS_ERROR_WANTS_WRITE = 3,
    TLS_ERROR_SYSTEM = 5,
    TLS_ERROR_CLOSED = 6
};

// Codes and values that the library's operations take.
constexpr int tls_verify_peer = 1;
constexpr int tls_control_server_name = 55;
constexpr long tls_server_name_is_host = 0;
constexpr int tls_control_buffer_rewind = 1;
constexpr std::size_t tls_longest_digest = 64;
constexpr unsigned long tls_last_version_without_names = 0xfffffff;

// What functions of the TLS library are needed for, as bits.
enum TLS_Need : unsigned {
    TLS_CONNECTION = 1, // going over to TLS
    TLS_CLIENT = 2,     // showing a client certificate
    TLS_READING = 4     // reading one
};

// The functions of the TLS library, as the application gives them out; see tls_functions.def. A member is
// null where there is no such function: whoever needs some asks missing() before the first call.
struct TLS_Library {
    explicit TLS_Library(TarnApplication* application);

#define TLS_FUNCTION(needs, member, result, arguments, name, older_name) result(*member) arguments = nullptr;
#include "network/tls_functions.def"

    // The first function that the library lacks for any of these TLS_Need bits, in words; "" for none.
    String missing(unsigned needs) const;
    // The text of the last error, the first that was noted if there are several. All of them are forgotten.
    String Last_Error() const;
    void Forget_Errors() const;

  private:
    TarnApplication* application;
};

#endif
