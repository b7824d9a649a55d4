// TLS against openssl's server. The application brings the library in by what this program is linked with.

#include "network/http_response_stream.h"
#include "network/network_application.h"
#include "network/network_connection.h"
#include "network/unix_network_manager.h"
#include "peers/peer.h"

#include <algorithm>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <memory>
#include <openssl/ssl.h>

namespace {

struct TLS_Application : Network_Application {
    ~TLS_Application() override { SSL_CTX_free(static_cast<SSL_CTX*>(ssl_state_)); }
    bool SSL_Initialize(String*) override {
        return (ssl_state_ = SSL_CTX_new(TLS_client_method())) != nullptr;
    }
    void* SSL_GetFunction(const char* name) override { return dlsym(RTLD_DEFAULT, name); }
};

// What a page is asked for with. Null is what isn't given.
struct Request {
    unsigned flags = 0;
    const char* cert_type = nullptr;
    const char* cert_value = nullptr;
    const char* cert_file = nullptr;
    const char* password = nullptr;
    const char* pin_algorithm = nullptr;
    const char* pin = nullptr;
};

Request Pinned(const char* algorithm, const std::string& digest) {
    return {0, nullptr, nullptr, nullptr, nullptr, algorithm, digest.c_str()};
}

class TLS : public testing::Test {
  protected:
    void SetUp() override {
        NEED_PROGRAM("openssl", "openssl");
        application.settings.integers[CONFIG_SERVER_NAME] = 2; // the library is new enough
        ASSERT_TRUE(Make_Certificate("plain", "plain.test") && Make_Certificate("named", "localhost"))
            << directory.Get("log");
    }
    // A certificate that signs itself, with its key in a file of its own.
    bool Make_Certificate(const std::string& file, const std::string& name) {
        return directory.Run(
            "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -keyout " + file +
            ".key -out " + file + ".pem -subj /CN=" + name + " -addext subjectAltName=DNS:" + name);
    }
    // A server that shows another certificate to who asks for localhost.
    std::string Server(const std::string& options = "-www") const {
        return "sh -c 'cd " + directory.path +
               " && exec openssl s_server -accept 127.0.0.1:" + std::to_string(port) +
               " -cert plain.pem -key plain.key -servername localhost -cert2 named.pem" +
               " -key2 named.key " + options + "'";
    }
    // The status of the page, or the error.
    std::string Get(const Request& request, const char* host = "localhost") {
        const std::string url = "https://" + std::string(host) + ":" + std::to_string(port) + "/";
        HTTPResponseStream stream(manager.OpenURL("GET", url.c_str(), nullptr, nullptr, 0, request.cert_file,
                                                  request.cert_value, request.cert_type, request.password,
                                                  request.pin_algorithm, request.pin, nullptr, 0, 1.0, 5,
                                                  request.flags),
                                  5);
        const bool answered = stream.Read_Headers();
        char buffer[1000];
        int total = 0;
        for (int count; (count = stream.Read(buffer, sizeof buffer)) > 0;)
            total += count;
        stream.Close();
        EXPECT_EQ(answered, total > 0);
        return answered ? std::to_string(stream.status()) : manager.error().text();
    }

    Peer_Directory directory;
    TLS_Application application;
    UNIXNetworkManager manager{&application};
    const int port = Free_Port();
};

constexpr const char* unverified = "Unable to verify server identity";

TEST_F(TLS, Names_And_Verifies_The_Server) {
    const Peer server(Server(), port);
    ASSERT_TRUE(server.started());
    EXPECT_EQ(Get({}), "200");
    auto& settings = application.settings.integers;
    settings[CONFIG_SERVER_NAME] = 0;
    EXPECT_EQ(Get({}), unverified);
    settings[CONFIG_CERTIFICATE_CHECKS] = CERTIFICATE_HOSTNAME_UNCHECKED;
    EXPECT_EQ(Get({}), "200");
    EXPECT_EQ(Get({}, "127.0.0.1"), "200");
    settings[CONFIG_CERTIFICATE_CHECKS] = CERTIFICATE_ADDRESS_CHECKED;
    EXPECT_EQ(Get({}, "127.0.0.1"), unverified);
    // Nobody that the context trusts has signed it.
    EXPECT_NE(Get({CONNECTION_MUST_VERIFY}).find("certificate verify failed"), std::string::npos);
    settings[CONFIG_SERVER_NAME] = 1;
    ASSERT_TRUE(application.SSL_Available(nullptr));
    SSL_CTX_load_verify_locations(static_cast<SSL_CTX*>(application.ssl_state()),
                                  (directory.path + "/named.pem").c_str(), nullptr);
    EXPECT_EQ(Get({CONNECTION_MUST_VERIFY}), "200");
}

TEST_F(TLS, Demands_The_Pinned_Certificate) {
    // A digest that holds a NUL never matches.
    std::string digest(1, '\0');
    while (digest.find('\0') != std::string::npos) {
        ASSERT_TRUE(Make_Certificate("named", "localhost"));
        ASSERT_TRUE(directory.Run("openssl x509 -in named.pem -outform DER -out named.der && "
                                  "openssl dgst -sha256 -binary -out digest named.der"));
        digest = directory.Get("digest");
    }
    const Peer server(Server(), port);
    ASSERT_TRUE(server.started());
    const std::string longer = digest + "x", other(32, 'x');
    EXPECT_EQ(Get(Pinned("sha256", digest)), "200");
    for (const std::string& wrong : {longer, other})
        EXPECT_EQ(Get(Pinned("sha256", wrong)), "Certificate does not match expected fingerprint");
    EXPECT_EQ(Get(Pinned("none", digest)), "Unsupported certificate pinning algorithm");
}

TEST_F(TLS, Shows_The_Client_Certificate) {
    ASSERT_TRUE(Make_Certificate("client", "client.test"));
    ASSERT_TRUE(
        directory.Run("openssl pkcs8 -topk8 -v2 aes128 -passout pass:secret -in client.key -out locked.key; "
                      "openssl x509 -in client.pem -outform DER -out client.der"));
    const Peer server(Server("-www -tls1_2 -Verify 1 -verify_return_error -CAfile client.pem"), port);
    ASSERT_TRUE(server.started());
    const std::string value = directory.Get("client.pem") + directory.Get("client.key");
    const std::string locked =
        directory.Put("locked.pem", directory.Get("client.pem") + directory.Get("locked.key"));
    const std::string der = directory.path + "/client.der";
    const struct {
        Request request;
        const char* expected; // how the answer or the error begins
    } cases[] = {
        {{0, "PEM", value.c_str()}, "200"},
        {{0, "", value.c_str()}, "200"},
        {{0, "pem", nullptr, locked.c_str(), "secret"}, "200"},
        {{0, "pem", nullptr, locked.c_str(), "wrong"}, "Error reading client key: error:"},
        {{0, "pem", nullptr, locked.c_str()}, "Error reading client key: error:"},
        {{0, "ASN1", nullptr, der.c_str()}, "Error reading client key: error:"},
        {{0, "PEM", "x"}, "Error reading client certificate: error:"},
        {{0, "X", "x"}, "Unsupported certificate type 'X'"},
        {{0, "PEM", nullptr, "/none"}, "Unable to load client certificate: No such file or directory"},
        {{0, "PEM", nullptr, "/dev/null"}, "Unable to read from client certificate file: "},
        {{}, "Error establishing SSL connection: error:"},
        {{0, nullptr, value.c_str()}, "Error establishing SSL connection: error:"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Get(c.request).substr(0, strlen(c.expected)), c.expected);
}

// A peer that says nothing, one that goes away, one that doesn't speak TLS.
TEST_F(TLS, Fails_With_Hostile_Peers) {
    const struct {
        const char* says;
        bool goes;
        const char* expected;
    } cases[] = {{"", false, "Error establishing SSL connection: Connection timed out"},
                 {"", true, "Error establishing SSL connection: "},
                 {"HTTP/1.0 400 Bad Request\r\n\r\n", true, "Error establishing SSL connection: error:"}};
    for (const auto& c : cases) {
        Listener listener;
        const std::unique_ptr<NetworkConnection> connection(manager.Connect("127.0.0.1", listener.port(), 5));
        const int peer = listener.Accept();
        Send_All(peer, c.says);
        if (c.goes)
            close(peer);
        EXPECT_FALSE(manager.SSL_Connect(connection.get(), "127.0.0.1", nullptr, nullptr, nullptr, nullptr,
                                         nullptr, nullptr, 1, 0));
        EXPECT_EQ(std::string(manager.error().text()).substr(0, strlen(c.expected)), c.expected);
        if (!c.goes)
            close(peer);
    }
}

// Lines and bytes both ways; what was written to a server that is gone is an error and no signal.
TEST_F(TLS, Reads_Lines_And_Survives_The_Server) {
    std::unique_ptr<Peer> server = std::make_unique<Peer>(Server("-rev"), port);
    ASSERT_TRUE(server->started());
    const std::unique_ptr<NetworkConnection> connection(manager.Connect("127.0.0.1", port, 5));
    ASSERT_TRUE(connection);
    ASSERT_TRUE(manager.SSL_Connect(connection.get(), "127.0.0.1", nullptr, nullptr, nullptr, nullptr,
                                    nullptr, nullptr, 5, 0));
    EXPECT_EQ(connection->Write(String("abc\nde\n"), 5), 7);
    String line;
    char buffer[8];
    EXPECT_EQ(connection->ReadLine(line, 5, 1), 4) << connection->error().text();
    EXPECT_STREQ(line.text(), "cba\n");
    EXPECT_EQ(connection->Read(buffer, sizeof buffer, 5), 3);
    EXPECT_EQ(connection->Read(buffer, sizeof buffer, 1), -1);
    EXPECT_STREQ(connection->error().text(), "SSL Read Timeout");
    server.reset();
    int count = 1;
    for (int tries = 0; tries < 100 && count > 0; tries++)
        count = connection->Write("x", 1, 5);
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(std::string(connection->error().text()).starts_with("SSL Read Error: "));
    EXPECT_EQ(connection->Read(buffer, sizeof buffer, 5), 0);
    EXPECT_EQ(connection->ReadLine(line, 5, 1), -1);
}

} // namespace
