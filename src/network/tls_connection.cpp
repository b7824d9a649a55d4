// Going over to TLS, and what a connection does from then on.

#include "network/settings.h"
#include "network/tls_library.h"
#include "network/unix_network_connection.h"

#include <climits>
#include <csignal>
#include <ctime>
#include <poll.h>

namespace {

constexpr const char* connect_failure = "Error establishing SSL connection";

// The library's failures while writing have the same text: users match on it.
constexpr const char* transfer_failure = "SSL Read Error";

// The TLS library writes to the socket as it likes, and so could raise SIGPIPE. This keeps the signal from
// the thread, and drops one that came meanwhile.
class Broken_Pipe_Guard {
  public:
    Broken_Pipe_Guard() {
        sigemptyset(&broken_pipe);
        sigaddset(&broken_pipe, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        was_pending = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &broken_pipe, &earlier);
    }
    Broken_Pipe_Guard(const Broken_Pipe_Guard&) = delete;
    Broken_Pipe_Guard& operator=(const Broken_Pipe_Guard&) = delete;
    ~Broken_Pipe_Guard() {
        const timespec at_once{};
        if (!was_pending)
            sigtimedwait(&broken_pipe, nullptr, &at_once);
        pthread_sigmask(SIG_SETMASK, &earlier, nullptr);
    }

  private:
    sigset_t broken_pipe;
    sigset_t earlier;
    bool was_pending;
};

// Frees an object as far as the library can.
template <typename Object>
void Release(Object*& object, void (*free_object)(Object*)) {
    if (object && free_object)
        free_object(object);
    object = nullptr;
}

} // namespace

void UNIXNetworkConnection::Free_TLS() {
    if (!tls)
        return;
    Release(tls_handle, tls->free_handle);
    Release(peer_certificate, tls->free_certificate);
    Release(client_certificate, tls->free_certificate);
    Release(client_key, tls->free_key);
}

int UNIXNetworkConnection::EstablishTLSConnection(const char* server_name, x509_st* certificate,
                                                  evp_pkey_st* key, int timeout, unsigned flags) {
    Free_TLS();
    tls = std::make_unique<const TLS_Library>(application);
    client_certificate = certificate;
    client_key = key;
    if (socket < 0)
        return Fail("TCP connection not established", 0);
    if (!Prepare_TLS(server_name, flags))
        return 0;
    const Broken_Pipe_Guard guard;
    constexpr Words words{connect_failure, "Error establishing SSL connection: Connection timed out"};
    return Run_TLS([this] { return tls->connect(tls_handle); }, 1, timeout, connect_failure, words) > 0;
}

bool UNIXNetworkConnection::Prepare_TLS(const char* server_name, unsigned flags) {
    const bool has_client = client_certificate && client_key;
    const String missing = tls->missing(has_client ? TLS_CONNECTION | TLS_CLIENT : TLS_CONNECTION);
    if (missing.length() > 0)
        return Fail(String(connect_failure) + ": " + missing, false);
    tls->Forget_Errors();
    tls_handle = tls->new_handle(static_cast<ssl_ctx_st*>(application->ssl_state()));
    if (!tls_handle)
        return Fail("Error allocating SSL handle: " + tls->Last_Error(), false);
    if (flags & CONNECTION_MUST_VERIFY)
        tls->set_verification(tls_handle, tls_verify_peer, nullptr);
    if (server_name)
        tls->control(tls_handle, tls_control_server_name, tls_server_name_is_host,
                     const_cast<char*>(server_name));
    if (has_client) {
        if (tls->assign_certificate(tls_handle, client_certificate) != 1)
            return Fail("Error assigning client certificate: " + tls->Last_Error(), false);
        if (tls->assign_key(tls_handle, client_key) != 1)
            return Fail("Error assigning client key: " + tls->Last_Error(), false);
    }
    if (tls->set_socket(tls_handle, socket) != 1)
        return Fail(String(connect_failure) + ": " + tls->Last_Error(), false);
    return true;
}

x509_st* UNIXNetworkConnection::Server_Certificate() {
    if (!peer_certificate && tls_handle && tls->peer_certificate)
        peer_certificate = tls->peer_certificate(tls_handle);
    return peer_certificate;
}

// Repeats an operation of the library, and waits for the socket as it wishes, until it answers from 1 to
// `most`, which is the answer. 0 for its failures, -1 for those of a wait.
template <typename Operation>
int UNIXNetworkConnection::Run_TLS(Operation operation, int most, int timeout, const char* failure,
                                   const Words& words) {
    for (;;) {
        tls->Forget_Errors();
        const int result = operation();
        if (result > 0 && result <= most)
            return result;
        const int code = tls->error_code(tls_handle, result);
        if (code != TLS_ERROR_WANTS_READ && code != TLS_ERROR_WANTS_WRITE)
            return Fail_TLS(code, failure);
        if (!Await(code == TLS_ERROR_WANTS_READ ? POLLIN : POLLOUT, timeout, words))
            return -1;
    }
}

int UNIXNetworkConnection::Fail_TLS(int code, const char* failure) {
    const String begin = String(failure) + ": ";
    switch (code) {
    case TLS_ERROR_LIBRARY:
    case TLS_ERROR_SYSTEM: return Fail(begin + tls->Last_Error(), 0);
    case TLS_ERROR_CLOSED: return Fail(begin + "The remote server closed the connection", 0);
    }
    return Fail(begin + "Unknown error", 0);
}

int UNIXNetworkConnection::Read_TLS(char* buffer, int length, int timeout) {
    constexpr Words words{transfer_failure, "SSL Read Timeout"};
    return Run_TLS([=, this] { return tls->read(tls_handle, buffer, length); }, INT_MAX, timeout,
                   transfer_failure, words);
}

int UNIXNetworkConnection::SSL_Read(char* buffer, int length, int timeout) {
    if (length < 1)
        return 0;
    const Broken_Pipe_Guard guard; // the library answers some of what it reads
    return Read_TLS(buffer, length, timeout);
}

int UNIXNetworkConnection::SSL_ReadLine(String& line, int timeout, int) {
    const Broken_Pipe_Guard guard;
    line.assign("", 0);
    for (char byte = 0; byte != '\n';) {
        if (Read_TLS(&byte, 1, timeout) < 1)
            return Fail_Line(line);
        line.cat(byte);
    }
    return line.length();
}

int UNIXNetworkConnection::SSL_Write(const char* buffer, int length, int timeout) {
    if (length < 1)
        return 0;
    const Broken_Pipe_Guard guard;
    return Run_TLS([=, this] { return tls->write(tls_handle, buffer, length); }, INT_MAX, timeout,
                   transfer_failure, write_words);
}
