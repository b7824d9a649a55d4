// TLS against a server on a thread of the test. The application brings in the library that this program
// links.

#include "network/network_support.h"

#include <csignal>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <thread>

namespace {

struct TLS_Application : Network_Application {
    ~TLS_Application() override { SSL_CTX_free(static_cast<SSL_CTX*>(ssl_state_)); }
    bool SSL_Initialize(String*) override { return (ssl_state_ = SSL_CTX_new(TLS_client_method())); }
    void* SSL_GetFunction(const char* name) override {
        return instead.contains(name) ? instead[name] : dlsym(RTLD_DEFAULT, name);
    }
    std::map<std::string, void*> instead; // of the library's functions; null for none
};

struct Request {
    const char* host = "127.0.0.1";
    unsigned flags = 0;
    int server_name = 0, checks = 0;                                                     // the settings
    const char *type = nullptr, *file = nullptr, *value = nullptr, *password = "secret"; // of the client
    const char *algorithm = nullptr, *pin = nullptr;
    const char* lacking = ""; // a function of the library
    bool is_trusted = false;
};

struct TLS : testing::Test {
    // Makes a certificate for the host a.test with a digest that holds no NUL, which would match nothing.
    void SetUp() override {
        std::filesystem::current_path(folder.path);
        do
            if (std::system(
                    "exec >log 2>&1; openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 "
                    "-days 2 -subj /CN=x -addext subjectAltName=DNS:a.test -passout pass:secret "
                    "-keyout key -out named && openssl x509 -in named -outform DER -out der && openssl "
                    "dgst -sha256 -binary -out digest der && cat named key >both; truncate -s 2G large"))
                GTEST_SKIP() << "no certificate here: install the package openssl";
        while (Text("digest").find('\0') != std::string::npos);
        SSL_CTX_set_default_passwd_cb_userdata(server.get(), const_cast<char*>("secret"));
        SSL_CTX_use_certificate_file(server.get(), "named", SSL_FILETYPE_PEM);
        SSL_CTX_use_PrivateKey_file(server.get(), "key", SSL_FILETYPE_PEM);
        SSL_CTX_set_verify(server.get(), SSL_VERIFY_PEER, [](int, X509_STORE_CTX*) { return 1; });
        application.SSL_Available(nullptr);
    }
    static std::string Text(const char* name) {
        std::ifstream file(name);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    // Answers the first byte of a client with the name that it asked for and whether it showed a certificate.
    void Serve() const {
        sigset_t signals; // those of a broken pipe are for the client
        sigfillset(&signals);
        pthread_sigmask(SIG_BLOCK, &signals, nullptr);
        const int peer = listener.Accept();
        const std::unique_ptr<SSL, void (*)(SSL*)> ssl(SSL_new(server.get()), SSL_free);
        SSL_set_fd(ssl.get(), peer);
        char byte;
        if (SSL_accept(ssl.get()) == 1 && SSL_read(ssl.get(), &byte, 1) == 1) {
            const char* const name = SSL_get_servername(ssl.get(), TLSEXT_NAMETYPE_host_name);
            const bool is_known = SSL_get0_peer_certificate(ssl.get());
            const std::string line = std::string(name ? name : "-") + (is_known ? " client\n" : " -\n");
            SSL_write(ssl.get(), line.data(), static_cast<int>(line.size()));
            SSL_shutdown(ssl.get());
        }
        close(peer);
    }
    // Goes over to TLS. Answers what the server says then, or the error.
    std::string Connect(const Request& r) {
        connection.reset(manager.TCP_Connect("127.0.0.1", listener.number, patience));
        if (!manager.SSL_Connect(connection.get(), r.host, r.file, r.value, r.type, r.password, r.algorithm,
                                 r.pin, patience, r.flags))
            return manager.error().text();
        String line;
        EXPECT_EQ(connection->Write("x", -1, patience), 1) << connection->error().text();
        EXPECT_GT(connection->ReadLine(line, patience, 1), 0) << connection->error().text();
        return line.text();
    }

    const Passing_Folder folder;
    const std::unique_ptr<SSL_CTX, void (*)(SSL_CTX*)> server{SSL_CTX_new(TLS_server_method()), SSL_CTX_free};
    TLS_Application application;
    UNIXNetworkManager manager{&application};
    const Listener listener;
    std::unique_ptr<NetworkConnection> connection;
    const std::string failed = "Error establishing SSL connection: ";
};

TEST_F(TLS, Knows_Who_Is_Who) {
    const std::string both = Text("both"), named = Text("named"), digest = Text("digest"),
                      longer = digest + "x", unknown = "Unable to verify server identity",
                      lacks = "The SSL library has no ",
                      mismatch = "Certificate does not match expected fingerprint",
                      unread = "Unable to read from client certificate ", bad = "Error reading client ";
    const int unchecked = CERTIFICATE_HOSTNAME_UNCHECKED;
    const struct {
        std::string answer; // begins so
        Request request;
    } cases[] = {
        {"- -", {.flags = CONNECTION_MUST_BE_SECURE, .server_name = 1}},
        {unknown, {.checks = CERTIFICATE_ADDRESS_CHECKED}},
        {"a.test -", {.host = "a.test", .server_name = 1}},
        {"a.test -", {.host = "a.test", .server_name = 2}}, // the library is new enough
        {unknown, {.host = "b.test"}},
        {"- -", {.host = "b.test", .checks = unchecked}},
        // Nobody that the context trusts has signed it.
        {failed + "error:0", {.host = "a.test", .flags = CONNECTION_MUST_VERIFY}},
        {"- -", {.host = "a.test", .flags = CONNECTION_MUST_VERIFY, .is_trusted = true}},
        {unknown,
         {.host = "b.test", .flags = CONNECTION_MUST_VERIFY, .checks = unchecked, .is_trusted = true}},
        {unknown, {.flags = CONNECTION_MUST_VERIFY, .is_trusted = true}},
        {"- -", {.algorithm = "sha256", .pin = digest.c_str()}},
        {mismatch, {.algorithm = "sha256", .pin = longer.c_str()}},
        {mismatch, {.algorithm = "sha256", .pin = "01234567890123456789012345678901"}},
        {"Unsupported certificate pinning algorithm", {.algorithm = "none", .pin = digest.c_str()}},
        {"- client", {.type = "", .value = both.c_str()}},
        {"- client", {.type = "pem", .file = "both", .value = "x"}},
        {"- -", {.value = both.c_str()}},
        {bad + "key: error:", {.type = "PEM", .file = "both", .password = nullptr}},
        {bad + "key: error:", {.type = "ASN1", .file = "der"}},
        {bad + "certificate: error:0", {.type = "PEM", .value = "x"}},
        {"Unsupported certificate type 'X'", {.type = "X", .value = "x"}},
        {"Unable to load client certificate: No such file or directory", {.type = "p", .file = "none"}},
        {unread + "file: File too large", {.type = "p", .file = "large"}},
        {unread + "buffer: " + lacks + "X509_free",
         {.type = "p", .value = named.c_str(), .lacking = "X509_free"}},
        {failed + lacks + "SSL_use_certificate",
         {.type = "p", .value = both.c_str(), .lacking = "SSL_use_certificate"}},
    };
    for (const auto& [answer, r] : cases) {
        application.integers = {{CONFIG_SERVER_NAME, r.server_name}, {CONFIG_CERTIFICATE_CHECKS, r.checks}};
        application.instead = {{r.lacking, nullptr}};
        if (r.is_trusted)
            SSL_CTX_load_verify_locations(static_cast<SSL_CTX*>(application.ssl_state()), "named", nullptr);
        ERR_raise(ERR_LIB_USER, 1); // an earlier failure, of anybody's
        const std::jthread serving([this] { Serve(); });
        EXPECT_EQ(Connect(r).substr(0, answer.size()), answer);
        EXPECT_FALSE(answer.find("error:") < answer.size() && ERR_peek_error()); // what is told is forgotten
        connection.reset();
    }
    char buffer[] = "....", secret[] = "secret";
    EXPECT_EQ(Load_Client_Certificate_Password_Callback(buffer, 3, 0, secret), 3);
    EXPECT_STREQ(buffer, "sec.");
}

// In place of functions of the library: they answer -1 twice and then 1, for the reason wished.
int tries, wish;
template <typename... Arguments>
int Third_Try(SSL*, Arguments...) {
    return ++tries % 3 ? -1 : 1;
}

TEST_F(TLS, Waits_As_The_Library_Wishes) {
    application.instead = {{"SSL_new", reinterpret_cast<void*>(+[](SSL_CTX*) -> SSL* { return nullptr; })}};
    ERR_raise(ERR_LIB_USER, 1);
    EXPECT_EQ(Connect({}), "Error allocating SSL handle: "); // for no reason of its own
    application.instead = {{"SSL_connect", reinterpret_cast<void*>(+[](SSL*) { return 2; })}};
    EXPECT_EQ(Connect({}), failed + "Unknown error"); // 1 is what ends a handshake
    void* const third_transfer = reinterpret_cast<void*>(Third_Try<void*, int>);
    application.instead = {{"SSL_connect", reinterpret_cast<void*>(Third_Try<>)},
                           {"SSL_read", third_transfer},
                           {"SSL_write", third_transfer},
                           {"SSL_get_error", reinterpret_cast<void*>(+[](SSL*, int) { return wish; })}};
    wish = SSL_ERROR_WANT_READ;
    ASSERT_FALSE(connection->EstablishTLSConnection(nullptr, nullptr, nullptr, 1, 0));
    EXPECT_EQ(connection->error().text(), failed + "Connection timed out");
    const int silent = listener.Accept();
    tries = 2;
    EXPECT_TRUE(connection->EstablishTLSConnection(nullptr, nullptr, nullptr, 1, 0));
    const struct {
        int wish, answer;
        const char *read_error, *write_error;
    } cases[] = {
        {3, 1, "", ""}, // there is room for what is written at once, and never something to read
        {2, -1, "SSL Read Timeout", "Write Timeout"},
        {99, 0, "SSL Read Error: Unknown error", "SSL Read Error: Unknown error"},
    };
    char byte = 0;
    for (const auto& c : cases) {
        connection->Error("");
        wish = c.wish;
        tries = 0;
        EXPECT_EQ(connection->Read(&byte, 1, 1), c.answer);
        EXPECT_STREQ(connection->error().text(), c.read_error);
        tries = 0;
        EXPECT_EQ(connection->Write(&byte, 1, 1), c.answer);
        EXPECT_STREQ(connection->error().text(), c.write_error);
    }
    close(silent);
}

// What is written to a server that is gone is an error and no signal.
TEST_F(TLS, Survives_The_Server) {
    const std::jthread serving([this] { Serve(); });
    EXPECT_EQ(Connect({}), "- -\n");
    char byte = 0;
    ERR_raise(ERR_LIB_USER, 1);
    EXPECT_EQ(connection->Read(&byte, 0, patience) + connection->Read(&byte, 1, patience), 0);
    EXPECT_STREQ(connection->error().text(), "SSL Read Error: The remote server closed the connection");
    String line;
    EXPECT_EQ(connection->ReadLine(line, patience, 1), -1);
    int count = 1;
    for (int writes = 0; writes < 100 && count > 0; ++writes)
        count = connection->Write("x", 1, patience);
    EXPECT_EQ(count, 0);
}

} // namespace
