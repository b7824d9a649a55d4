// Bringing TLS up: the client's certificate, and who the server is.

#include "core/text_length.h"
#include "files/file.h"
#include "files/file_manager.h"
#include "network/network_connection.h"
#include "network/network_manager.h"
#include "network/settings.h"
#include "network/tls_library.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>

namespace {

// A setting of how to name the server: never, always, and else where the library is new enough.
enum Server_Name_Setting { SERVER_NAME_NEVER = 0, SERVER_NAME_ALWAYS = 1 };

template <typename Object>
using TLS_Pointer = std::unique_ptr<Object, void (*)(Object*)>;

} // namespace

bool NetworkManager::Names_Server() const {
    const int setting = Integer_Setting(application, CONFIG_SERVER_NAME);
    if (setting == SERVER_NAME_NEVER || setting == SERVER_NAME_ALWAYS)
        return setting == SERVER_NAME_ALWAYS;
    const TLS_Library tls(application);
    return tls.version_number && tls.version_number() > tls_last_version_without_names;
}

int NetworkManager::SSL_Connect(NetworkConnection* connection, const char* host, const char* cert_file,
                                const char* cert_value, const char* cert_type, const char* cert_password,
                                const char* pin_algorithm, const char* pin_digest, int timeout,
                                unsigned flags) {
    String reason("");
    if (!application->SSL_Available(&reason))
        return Fail(reason);
    x509_st* certificate = nullptr;
    evp_pkey_st* key = nullptr;
    if (cert_type && Given(cert_file)) {
        if (!Load_Client_Certificate(cert_file, cert_type, cert_password, &certificate, &key))
            return 0;
    } else if (cert_type && Given(cert_value)) {
        if (!Populate_Client_Certificate(cert_value, Text_Length(cert_value, -1), cert_type, cert_password,
                                         &certificate, &key))
            return 0;
    }
    const bool is_address = IsIPAddress(host);
    const char* server_name = !is_address && Names_Server() ? host : nullptr;
    if (!connection->EstablishTLSConnection(server_name, certificate, key, timeout, flags))
        return Fail(connection->error());
    x509_st* server = connection->Server_Certificate();
    if (!(is_address ? Verify_Certificate_IP(server, host, flags)
                     : Verify_Certificate_Hostname(server, host, flags)))
        return Fail("Unable to verify server identity");
    if (Given(pin_algorithm) && Given(pin_digest))
        return Verify_Certificate_Pinning(server, pin_algorithm, pin_digest);
    return 1;
}

bool NetworkManager::Verify_Certificate_Hostname(x509_st* certificate, const char* host, unsigned flags) {
    const int checks = Integer_Setting(application, CONFIG_CERTIFICATE_CHECKS);
    if (!(flags & CONNECTION_MUST_VERIFY) && (checks & CERTIFICATE_HOSTNAME_UNCHECKED))
        return true;
    const TLS_Library tls(application);
    return certificate && tls.check_hostname &&
           tls.check_hostname(certificate, host, strlen(host), 0, nullptr) == 1;
}

bool NetworkManager::Verify_Certificate_IP(x509_st* certificate, const char* address, unsigned flags) {
    const int checks = Integer_Setting(application, CONFIG_CERTIFICATE_CHECKS);
    if (!(flags & CONNECTION_MUST_VERIFY) && !(checks & CERTIFICATE_ADDRESS_CHECKED))
        return true;
    const TLS_Library tls(application);
    return certificate && tls.check_address && tls.check_address(certificate, address, 0) == 1;
}

bool NetworkManager::Verify_Certificate_Pinning(x509_st* certificate, const char* algorithm,
                                                const char* expected) {
    const TLS_Library tls(application);
    const evp_md_st* method = tls.find_digest ? tls.find_digest(algorithm) : nullptr;
    if (!method)
        return Fail("Unsupported certificate pinning algorithm");
    unsigned char digest[tls_longest_digest];
    unsigned length = 0;
    if (!certificate || !tls.digest_certificate ||
        tls.digest_certificate(certificate, method, digest, &length) != 1 || strlen(expected) != length ||
        memcmp(expected, digest, length) != 0)
        return Fail("Certificate does not match expected fingerprint");
    return true;
}

int Load_Client_Certificate_Password_Callback(char* buffer, int size, int, void* password) {
    if (!password || size < 1)
        return 0;
    const char* text = static_cast<const char*>(password);
    const std::size_t count = std::min(strlen(text), static_cast<std::size_t>(size));
    memcpy(buffer, text, count);
    return static_cast<int>(count);
}

int NetworkManager::Populate_Client_Certificate(const char* value, int length, const char* type,
                                                const char* password, x509_st** certificate,
                                                evp_pkey_st** key) {
    const String kind(type);
    const int letter = std::tolower(static_cast<unsigned char>(*kind.text()));
    const TLS_Library tls(application);
    const String missing = tls.missing(TLS_READING);
    if (missing.length() > 0)
        return Fail("Unable to read from client certificate buffer: " + missing);
    tls.Forget_Errors();
    bio_st* bytes = tls.new_buffer(value, length);
    if (!bytes)
        return Fail("Unable to read from client certificate buffer: " + tls.Last_Error());
    const std::unique_ptr<bio_st, int (*)(bio_st*)> buffer(bytes, tls.free_buffer);
    if (letter != 'a' && letter != 'p' && letter != '\0')
        return Fail("Unsupported certificate type '" + kind + "'");
    const bool is_der = letter == 'a';
    void* secret = const_cast<char*>(password);
    TLS_Password_Callback* callback = Load_Client_Certificate_Password_Callback;
    TLS_Pointer<x509_st> found(is_der ? tls.read_der_certificate(bytes, nullptr)
                                      : tls.read_pem_certificate(bytes, nullptr, callback, secret),
                               tls.free_certificate);
    if (!found)
        return Fail("Error reading client certificate: " + tls.Last_Error());
    if (is_der)
        tls.control_buffer(bytes, tls_control_buffer_rewind, 0, nullptr);
    evp_pkey_st* const found_key =
        is_der ? tls.read_der_key(bytes, nullptr) : tls.read_pem_key(bytes, nullptr, callback, secret);
    if (!found_key)
        return Fail("Error reading client key: " + tls.Last_Error());
    *certificate = found.release();
    *key = found_key;
    return 1;
}

int NetworkManager::Load_Client_Certificate(const char* file, const char* type, const char* password,
                                            x509_st** certificate, evp_pkey_st** key) {
    FileManager* files = application->filemanager();
    const std::unique_ptr<File> opened(files ? files->Open(file, FILE_MODE_READ) : nullptr);
    if (!opened)
        return Fail("Unable to load client certificate: " + (files ? files->error() : String()));
    const long length = opened->Length();
    if (length > INT_MAX)
        opened->Error(strerror(EFBIG));
    const char* bytes = length > INT_MAX ? nullptr : opened->Map(0, length);
    if (!bytes)
        return Fail("Unable to read from client certificate file: " + opened->error());
    return Populate_Client_Certificate(bytes, static_cast<int>(length), type, password, certificate, key);
}
