// TLS against openssl's server. The application brings the library in by what this program is linked with.

#include "peers/peer.h"

#include <dlfcn.h>
#include <openssl/ssl.h>

namespace {

struct TLS_Application : Network_Application {
    ~TLS_Application() override { SSL_CTX_free(static_cast<SSL_CTX*>(ssl_state_)); }
    bool SSL_Initialize(String*) override {
        return (ssl_state_ = SSL_CTX_new(TLS_client_method())) != nullptr;
    }
    void* SSL_GetFunction(const char* name) override {
        return lacking == name ? nullptr : dlsym(RTLD_DEFAULT, name);
    }
    std::string lacking;
};

struct TLS : testing::Test {
    void SetUp() override {
        NEED_PROGRAM("openssl", "openssl");
        ASSERT_TRUE(Run("openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 "
                        "-subj /CN=localhost -addext subjectAltName=DNS:localhost -keyout key -out named"));
        ASSERT_TRUE(Run("openssl req -x509 -key key -days 2 -subj /CN=plain -out plain"));
    }
    bool Run(const std::string& command) const {
        return std::system(("cd " + directory.path + " && { " + command + "; } >>log 2>&1").c_str()) == 0;
    }
    bool Knows_Localhost() {
        String address;
        return manager.GetHostAddress("localhost", address);
    }
    // The command of a server that shows another certificate to who asks for localhost.
    std::string Server(const std::string& options = "-www") const {
        return "openssl s_server -cert plain -key key -servername localhost -cert2 named -key2 key " +
               options + " -accept 127.0.0.1:" + std::to_string(port.number);
    }
    // Expects a page or an error that begins so.
    void Expect(const std::string& begin, const Page_Request& request,
                const std::string& host = "localhost") {
        const std::string url = "https://" + host + ":" + std::to_string(port.number) + "/";
        EXPECT_EQ(Get_Page(manager, url, request).substr(0, begin.size()), begin);
    }
    int SSL_Connect(NetworkConnection& connection, int timeout) {
        return manager.SSL_Connect(&connection, "127.0.0.1", nullptr, nullptr, nullptr, nullptr, nullptr,
                                   nullptr, timeout, 0);
    }

    const Peer_Directory directory;
    TLS_Application application;
    UNIXNetworkManager manager{&application};
    const Reserved_Port port;
};

// A root without /etc/hosts has no name for the machine itself.
#define NEED_LOCALHOST()                                                                                     \
    if (!Knows_Localhost())                                                                                  \
    GTEST_SKIP() << "the name localhost is unknown here"

TEST_F(TLS, Names_And_Verifies_The_Server) {
    NEED_LOCALHOST();
    const Peer server(Server(), directory, port);
    auto& settings = application.integers;
    Expect("Unable to verify server identity", {});
    settings[CONFIG_CERTIFICATE_CHECKS] = CERTIFICATE_HOSTNAME_UNCHECKED;
    Expect("200 ", {});
    Expect("200 ", {}, "127.0.0.1");
    settings[CONFIG_CERTIFICATE_CHECKS] = CERTIFICATE_ADDRESS_CHECKED;
    Expect("Unable to verify server identity", {}, "127.0.0.1");
    settings[CONFIG_SERVER_NAME] = 2; // the library is new enough
    Expect("200 ", {});
    // Nobody that the context trusts has signed it.
    Expect("Error establishing SSL connection: error:", {1.0, CONNECTION_MUST_VERIFY});
    SSL_CTX_load_verify_locations(static_cast<SSL_CTX*>(application.ssl_state()),
                                  (directory.path + "/named").c_str(), nullptr);
    settings[CONFIG_SERVER_NAME] = 1;
    settings[CONFIG_CERTIFICATE_CHECKS] = CERTIFICATE_HOSTNAME_UNCHECKED;
    Expect("200 ", {1.0, CONNECTION_MUST_VERIFY});
}

TEST_F(TLS, Demands_The_Pinned_Certificate) {
    // A digest that holds a NUL never matches.
    std::string digest(1, '\0');
    while (digest.find('\0') != std::string::npos) {
        ASSERT_TRUE(Run("openssl req -x509 -key key -days 2 -subj /CN=pinned -out plain && openssl x509 -in "
                        "plain -outform DER | openssl dgst -sha256 -binary -out digest"));
        digest = directory.Get("digest");
    }
    const Peer server(Server(), directory, port);
    const auto pinned = [](const char* algorithm, const std::string& pin) {
        return Page_Request{1.0, 0, nullptr, nullptr, nullptr, nullptr, algorithm, pin.c_str()};
    };
    const std::string longer = digest + "x", other(32, 'x');
    Expect("200 ", pinned("sha256", digest), "127.0.0.1");
    Expect("Certificate does not match expected fingerprint", pinned("sha256", longer), "127.0.0.1");
    Expect("Certificate does not match expected fingerprint", pinned("sha256", other), "127.0.0.1");
    Expect("Unsupported certificate pinning algorithm", pinned("none", digest), "127.0.0.1");
}

TEST_F(TLS, Shows_The_Client_Certificate) {
    NEED_LOCALHOST();
    application.integers[CONFIG_CERTIFICATE_CHECKS] = CERTIFICATE_HOSTNAME_UNCHECKED;
    ASSERT_TRUE(Run("openssl pkcs8 -topk8 -v2 aes128 -passout pass:secret -in key | cat named - >locked; "
                    "openssl x509 -in named -outform DER -out der"));
    const Peer server(Server("-www -tls1_2 -Verify 1 -verify_return_error -CAfile named"), directory, port);
    const std::string value = directory.Get("named") + directory.Get("key");
    const std::string locked = directory.path + "/locked", der = directory.path + "/der";
    const auto client = [](const char* type, const char* value, const char* file = nullptr,
                           const char* password = nullptr) {
        return Page_Request{1.0, 0, type, value, file, password};
    };
    Expect("200 ", client("PEM", value.c_str()));
    Expect("200 ", client("", value.c_str()));
    Expect("200 ", client("pem", nullptr, locked.c_str(), "secret"));
    Expect("Error reading client key: error:", client("pem", nullptr, locked.c_str(), "wrong"));
    Expect("Error reading client key: error:", client("pem", nullptr, locked.c_str()));
    Expect("Error reading client key: error:", client("ASN1", nullptr, der.c_str()));
    Expect("Error reading client certificate: error:", client("PEM", "x"));
    Expect("Unsupported certificate type 'X'", client("X", "x"));
    Expect("Unable to load client certificate: No such file or directory", client("PEM", nullptr, "/none"));
    Expect("Unable to read from client certificate file: ", client("PEM", nullptr, "/dev/null"));
    application.lacking = "BIO_new_mem_buf"; // which only a client certificate needs
    Expect("Unable to read from client certificate buffer: The SSL library has no BIO_new_mem_buf",
           client("PEM", value.c_str()));
    Expect("Error establishing SSL connection: error:", client(nullptr, value.c_str()));
    char buffer[] = "....", secret[] = "secret";
    EXPECT_EQ(Load_Client_Certificate_Password_Callback(buffer, 3, 0, secret), 3);
    EXPECT_STREQ(buffer, "sec.");
}

// A peer that says nothing, one that ends at once, one that doesn't speak TLS.
TEST_F(TLS, Fails_With_Hostile_Peers) {
    const struct {
        const char* says;
        bool ends;
        std::string expected;
    } cases[] = {{"", false, "Error establishing SSL connection: Connection timed out"},
                 {"", true, "Error establishing SSL connection: "},
                 {"HTTP/1.0 400 Bad Request\r\n\r\n", true, "Error establishing SSL connection: error:"}};
    for (const auto& c : cases) {
        Listener listener;
        const std::unique_ptr<NetworkConnection> connection(
            manager.Connect("127.0.0.1", listener.number, patience));
        const int peer = listener.Accept();
        Send_All(peer, c.says);
        if (c.ends)
            shutdown(peer, SHUT_WR);
        EXPECT_FALSE(SSL_Connect(*connection, 1));
        EXPECT_EQ(std::string(manager.error().text()).substr(0, c.expected.size()), c.expected);
        close(peer);
    }
}

// Lines and bytes both ways; what is written to a server that is gone is an error and no signal.
TEST_F(TLS, Reads_Lines_And_Survives_The_Server) {
    auto server = std::make_unique<Peer>(Server("-rev"), directory, port);
    const std::unique_ptr<NetworkConnection> connection(manager.Connect("127.0.0.1", port.number, patience));
    ASSERT_TRUE(connection && SSL_Connect(*connection, patience)) << manager.error().text();
    EXPECT_EQ(connection->Write(String("abc\nde\n"), patience), 7);
    String line;
    char buffer[8];
    EXPECT_EQ(connection->ReadLine(line, patience, 1), 4) << connection->error().text();
    EXPECT_STREQ(line.text(), "cba\n");
    EXPECT_EQ(connection->Read(buffer, sizeof buffer, patience), 3);
    EXPECT_EQ(connection->Read(buffer, sizeof buffer, 1), -1);
    EXPECT_STREQ(connection->error().text(), "SSL Read Timeout");
    server.reset();
    int count = 1;
    for (int tries = 0; tries < 100 && count > 0; tries++)
        count = connection->Write("x", 1, patience);
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(std::string(connection->error().text()).starts_with("SSL Read Error: "));
    EXPECT_EQ(connection->ReadLine(line, patience, 1), -1);
}

} // namespace
