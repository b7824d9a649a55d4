#include "network/network_service.h"
#include "network/network_support.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

// Notes where it is asked to connect to, and gives the script's peer.
struct Scripted_Manager : UNIXNetworkManager {
    Scripted_Manager(TarnApplication* application, Script& script)
        : UNIXNetworkManager(application), script(script) {}
    NetworkConnection* TCP_Connect(const char* host, int port, int) override {
        target = std::string(host) + " " + std::to_string(port);
        return new Scripted_Connection(application, script);
    }
    int SSL_Connect(NetworkConnection*, const char* host, const char* file, const char* value,
                    const char* type, const char* password, const char* algorithm, const char* pin,
                    int timeout, unsigned flags) override {
        target += " TLS";
        for (const char* const text : {host, file, value, type, password, algorithm, pin})
            target += std::string(" ") + (text ? text : "-");
        target += " " + std::to_string(timeout) + " " + std::to_string(flags);
        return flags & CONNECTION_MUST_VERIFY ? Fail("unknown server") : 1;
    }

    Script& script;
    std::string target;
};

struct Manager : testing::Test {
    Network_Application application;
    Script script;
    Scripted_Manager manager{&application, script};
};

struct Request {
    const char* url;
    const char* expected; // the request with its line ends as '|', or why there is none
    const char* target = "host 80";
    double version = 1.0;
    const char* body = "";
    int body_length = -1;
    unsigned flags = 0;
    const char* pin = nullptr;
};

const Request requests[] = {
    {"http://host:080/", "GET / HTTP/0.9|A: b||", "host 80", 0.9},
    {"http://host", "GET / HTTP/1.1|Host: host|A: b|Connection: close||", "host 80", 9.5},
    {"http://host", "GET / HTTP/1.0|Host: host|Content-Type: a/b|Content-Length: 3|A: b||xyz", "host 80", -1,
     "xyz"},
    {"http://host", "GET / HTTP/1.0|Host: host|Content-Type: a/b|Content-Length: 2|A: b||xy", "host 80", 1,
     "xyz", 2},
    {nullptr, "Malformed URL", ""},
    {"ftp://host/", "Unsupported protocol 'ftp'", ""},
    {"http://host", "Request requires a secure connection", "", 1, "", 0, CONNECTION_MUST_BE_SECURE},
    {"http://host", "Certificate pinning requested for non-secure connection", "", 1, "", 0, 0, "x"},
    {"https://host", "GET / HTTP/1.0|Host: host|A: b||",
     "host 443 TLS host file value type password sha256 x 5 1", 1, "", 0, CONNECTION_MUST_BE_SECURE, "x"},
    {"HTTPS://[::1]", "unknown server", "::1 443 TLS ::1 file value type password sha256 - 5 2", 1, "", 0,
     CONNECTION_MUST_VERIFY},
};

// Answers what was sent, or the error.
std::string Open(const Request& request, Scripted_Manager& manager) {
    const std::unique_ptr<NetworkConnection> connection(manager.OpenURL(
        "GET", request.url, request.body, "a/b", request.body_length, "file", "value", "type", "password",
        "sha256", request.pin, "A: b\r\n", -1, request.version, 5, request.flags));
    EXPECT_EQ(manager.script.open, connection ? 1 : 0);
    String sent = connection ? String(manager.script.written.c_str()) : manager.error();
    sent.gsub("\r\n", "|");
    return sent.text();
}

TEST_F(Manager, Opens_A_URL_By_A_Request) {
    for (const Request& request : requests) {
        script.written = manager.target = "";
        EXPECT_EQ(Open(request, manager), request.expected) << &request - requests;
        EXPECT_EQ(manager.target, request.target);
    }
    for (const int limit : {0, 20, 75}) {
        Script failing{.write_limit = limit};
        Scripted_Manager other(&application, failing);
        EXPECT_EQ(Open(requests[2], other), limit == 0 ? "peer is gone" : "peer took a part");
    }
}

TEST_F(Manager, Reads_Addresses) {
    const struct {
        const char* text;
        int family; // 4, 6, or 0 for what is no address
        const char* normal;
    } cases[] = {
        {"127.1", 4, "127.0.0.1"},
        {"0:0::1", 6, "::1"},
        {"[::1]", 0, ""},
        {"", 0, ""},
    };
    for (const auto& c : cases) {
        String normal;
        EXPECT_EQ(manager.IsIPv4Address(c.text), c.family == 4);
        EXPECT_EQ(manager.IsIPv6Address(c.text), c.family == 6);
        EXPECT_EQ(manager.IsIPAddress(c.text), c.family != 0);
        EXPECT_EQ(manager.NormalizeIPAddress(c.text, normal), c.family != 0);
        EXPECT_EQ(normal.view(), c.normal);
    }
    EXPECT_TRUE(manager.NetworkManager::IsIPAddress("1..2") && !manager.NetworkManager::IsIPAddress("::1"));
    EXPECT_TRUE(manager.CompareIPv6Addresses("::1", "0:0:0:0:0:0:0:1"));
    EXPECT_FALSE(manager.CompareIPv6Addresses("::1", "::2") || manager.CompareIPv6Addresses("a", "a"));
    unsigned char v6[16] = {0xfe, 0x80};
    char figures[8];
    EXPECT_TRUE(manager.ConvertIPv6ToString(v6, figures, sizeof figures) && !strcmp(figures, "fe80::"));
    EXPECT_FALSE(manager.ConvertIPv4ToString(v6, figures, 3));
}

struct Greeting_Service : NetworkService {
    using NetworkService::NetworkService;
    int Open_Exchange() override { return Connection()->Write(String("HELO"), timeout) == 4; }
};

TEST_F(Manager, Serves_A_Protocol) {
    application.manager = &manager;
    int owned = 1;
    Greeting_Service service(&application, tarn_strdup("host"), 4, 5, &owned, 25, 5);
    EXPECT_TRUE(service.Connect() && service.Connect());
    EXPECT_EQ(manager.target + script.written, "host 25HELOHELO");
    EXPECT_EQ(owned, 0);
    EXPECT_EQ(script.open, 1);
    application.texts[CONFIG_SOCKS_HOST] = "proxy";
    for (const auto& [version, error] : {std::pair(4, "SOCKS4: Error looking up ''"),
                                         {5, "SOCKS5: Greeting read error: "},
                                         {6, "Unsupported SOCKS version"}}) {
        application.integers = {{CONFIG_SOCKS_PORT, 1080}, {CONFIG_SOCKS_VERSION, version}};
        EXPECT_EQ(manager.Connect("", 1, 5), nullptr);
        EXPECT_EQ(manager.target + manager.error().text(), std::string("proxy 1080") + error);
    }
    EXPECT_FALSE(service.Connect());
    EXPECT_EQ(std::string(service.error().text()).find("Error connecting to 'host': "), 0);
    EXPECT_EQ(script.open, 0);
}

} // namespace
