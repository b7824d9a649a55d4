#include "network/network_application.h"
#include "network/network_service.h"
#include "network/scripted_connection.h"
#include "network/unix_network_manager.h"

#include <gtest/gtest.h>
#include <memory>
#include <optional>

namespace {

// Notes where it is asked to connect to, and gives the script's peer.
class Scripted_Manager : public UNIXNetworkManager {
  public:
    Scripted_Manager(TarnApplication* application, Script& script)
        : UNIXNetworkManager(application), script(script) {}
    NetworkConnection* TCP_Connect(const char* host, int port, int) override {
        target = std::string(host) + " " + std::to_string(port);
        return new Scripted_Connection(application, script);
    }

    Script& script;
    std::string target;
};

// A part in angle brackets, or "-" where it is null.
std::string Part(const char* text, int length) {
    return text ? "<" + std::string(text, static_cast<size_t>(length)) + ">" : "-";
}

TEST(URL, Is_Split_Into_Its_Parts) {
    const struct {
        const char* url;
        int length;
        std::optional<std::string> parts;
    } cases[] = {
        {"http://host", -1, "<http><host>-<>"},
        {"http://host/", -1, "<http><host>-<>"},
        {"http://host?x=1", -1, "<http><host>-<?x=1>"},
        {"http://host:80?x", -1, "<http><host><80><?x>"},
        {"http://host:/a//b?c:d", -1, "<http><host><><a//b?c:d>"},
        {"http://host:8080", -1, "<http><host><8080><>"},
        {"http://[::1]:8080/a", -1, "<http><[::1]><8080><a>"},
        {"http://[::1]?q", -1, "<http><[::1]>-<?q>"},
        {"ftp://host/", -1, "<ftp><host>-<>"},
        {"://", -1, "<><>-<>"},
        {"http://host/path", 11, "<http><host>-<>"},
        {"http://host/path", 13, "<http><host>-<p>"},
        {"http://[::1]x/", -1, {}},
        {"http://[::1", -1, {}},
        {"http:/host/", -1, {}},
        {"http://host", 6, {}},
        {"http", -1, {}},
        {"", -1, {}},
        {nullptr, -1, {}},
    };
    Network_Application application;
    UNIXNetworkManager manager(&application);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.url ? c.url : "null");
        const char *protocol = "", *host = "", *port = "", *path = "";
        int lengths[] = {1, 1, 1, 1};
        const int sound = manager.SplitURL(c.url, c.length, &protocol, &lengths[0], &host, &lengths[1], &port,
                                           &lengths[2], &path, &lengths[3]);
        EXPECT_EQ(sound, c.parts.has_value());
        EXPECT_EQ(Part(protocol, lengths[0]) + Part(host, lengths[1]) + Part(port, lengths[2]) +
                      Part(path, lengths[3]),
                  c.parts.value_or("----"));
    }
}

struct Request {
    const char* url;
    const char* expected; // the request, or why there is none
    const char* target = "host 80";
    const char* body = nullptr;
    int body_length = -1;
    double version = 1.0;
    const char* headers = nullptr;
    unsigned flags = 0;
    const char* pin = nullptr;
};

TEST(URL, Is_Opened_By_A_Request) {
    const Request cases[] = {
        {.url = "http://host", .expected = "GET / HTTP/1.0\r\nHost: host\r\n\r\n"},
        {.url = "HTTP://host?x=1", .expected = "GET /?x=1 HTTP/1.0\r\nHost: host\r\n\r\n"},
        {.url = "http://[::1]:8080/a",
         .expected = "GET /a HTTP/1.0\r\nHost: [::1]:8080\r\n\r\n",
         .target = "::1 8080"},
        {.url = "http://host:/", .expected = "GET / HTTP/1.0\r\nHost: host\r\n\r\n"},
        {.url = "http://host:080/", .expected = "GET / HTTP/0.9\r\n\r\n", .version = 0.9},
        {.url = "http://host/a",
         .expected = "GET /a HTTP/1.1\r\nHost: host\r\nA: b\r\nConnection: close\r\n\r\n",
         .version = 9.5,
         .headers = "A: b\r\n"},
        {.url = "http://host/a",
         .expected =
             "GET /a HTTP/1.0\r\nHost: host\r\nContent-Type: text/plain\r\nContent-Length: 3\r\n\r\nxyz",
         .body = "xyz",
         .version = -1},
        {.url = "http://host/a",
         .expected = "GET /a HTTP/2.0\r\nHost: host\r\nContent-Type: text/plain\r\nContent-Length: 2\r\n"
                     "Connection: close\r\n\r\nxy",
         .body = "xyz",
         .body_length = 2,
         .version = 2},
        {.url = "http://host/",
         .expected = "GET / HTTP/1.0\r\nHost: host\r\n\r\n",
         .body = "xyz",
         .body_length = 0},
        {.url = "http:/host", .expected = "Malformed URL", .target = ""},
        {.url = "ftp://host/", .expected = "Unsupported protocol 'ftp'", .target = ""},
        {.url = "http://host/",
         .expected = "Request requires a secure connection",
         .target = "",
         .flags = CONNECTION_MUST_BE_SECURE},
        {.url = "http://host/",
         .expected = "Certificate pinning requested for non-secure connection",
         .target = "",
         .pin = "x"},
        {.url = "http://host/", .expected = "GET / HTTP/1.0\r\nHost: host\r\n\r\n", .pin = ""},
        // The compiler has no TLS, and no reason to tell.
        {.url = "https://host/", .expected = "", .target = "host 443"},
    };
    for (const Request& c : cases) {
        SCOPED_TRACE(c.url + std::string(" expects ") + c.expected);
        Network_Application application;
        Script script;
        Scripted_Manager manager(&application, script);
        const std::unique_ptr<NetworkConnection> connection(
            manager.OpenURL("GET", c.url, c.body, "text/plain", c.body_length, nullptr, nullptr, nullptr,
                            nullptr, "sha256", c.pin, c.headers, -1, c.version, 5, c.flags));
        EXPECT_EQ(connection ? script.written : manager.error().text(), c.expected);
        EXPECT_EQ(manager.target, c.target);
        EXPECT_EQ(script.open, connection ? 1 : 0);
    }
}

TEST(URL, Fails_With_A_Peer_That_Does_Not_Take_The_Request) {
    const struct {
        int limit;
        const char* error;
    } cases[] = {{0, "peer is gone"}, {20, "peer took a part"}, {80, "peer took a part"}};
    for (const auto& c : cases) {
        Network_Application application;
        Script script{.write_limit = c.limit};
        Scripted_Manager manager(&application, script);
        const std::string body(100, 'x');
        EXPECT_EQ(manager.OpenURL("POST", "http://host/", body.c_str(), "a/b", -1, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr, nullptr, 0, 1.0, 5, 0),
                  nullptr);
        EXPECT_STREQ(manager.error().text(), c.error);
        EXPECT_EQ(script.open, 0);
    }
}

// Settings name a proxy of no known kind; the connection to it is given up.
TEST(Manager, Refuses_A_Proxy_Of_An_Unknown_Version) {
    Network_Application application;
    application.settings.texts[CONFIG_SOCKS_HOST] = "proxy";
    application.settings.integers = {{CONFIG_SOCKS_PORT, 1080}, {CONFIG_SOCKS_VERSION, 6}};
    Script script;
    Scripted_Manager manager(&application, script);
    EXPECT_EQ(manager.Connect("host", 80, 5), nullptr);
    EXPECT_EQ(manager.target, "proxy 1080");
    EXPECT_STREQ(manager.error().text(), "Unsupported SOCKS version");
    EXPECT_EQ(script.open, 0);
}

TEST(Manager, Reads_Addresses) {
    Network_Application application;
    UNIXNetworkManager manager(&application);
    const struct {
        const char* text;
        bool v4, v6;
        const char* normal;
        std::string socks5; // as a request names it
    } cases[] = {
        {"127.0.0.1", true, false, "127.0.0.1", {"\1\x7f\0\0\1", 5}},
        {"127.1", true, false, "127.0.0.1", {"\1\x7f\0\0\1", 5}},
        {"0:0::1", false, true, "::1", "\4" + std::string(15, '\0') + "\1"},
        {"[::1]", false, false, nullptr, "\3\5[::1]"},
        {"1.2.3.256", false, false, nullptr,
         "\3\x09"
         "1.2.3.256"},
        {"", false, false, nullptr, {"\3\0", 2}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(manager.IsIPv4Address(c.text), c.v4);
        EXPECT_EQ(manager.IsIPv6Address(c.text), c.v6);
        EXPECT_EQ(manager.IsIPAddress(c.text), c.v4 || c.v6);
        String normal, socks5;
        EXPECT_EQ(manager.NormalizeIPAddress(c.text, normal), c.normal != nullptr);
        EXPECT_STREQ(normal.text(), c.normal ? c.normal : "");
        EXPECT_TRUE(manager.GetSOCKS5Address(c.text, socks5));
        EXPECT_EQ(socks5.view(), c.socks5);
    }
    EXPECT_TRUE(manager.NetworkManager::IsIPAddress("") && manager.NetworkManager::IsIPAddress("1..2"));
    EXPECT_FALSE(manager.NetworkManager::IsIPAddress("::1"));
    EXPECT_TRUE(manager.CompareIPv6Addresses("::1", "0:0:0:0:0:0:0:1"));
    EXPECT_FALSE(manager.CompareIPv6Addresses("::1", "::2") || manager.CompareIPv6Addresses("a", "a"));
    String found;
    EXPECT_TRUE(manager.GetHostAddress("127.0.0.1", found));
    EXPECT_STREQ(found.text(), "127.0.0.1");
    EXPECT_FALSE(manager.GetHostAddress("", found) || manager.GetSOCKS4Address("", found));
    EXPECT_STREQ(manager.error().text(), "SOCKS4: Error looking up ''");
    EXPECT_EQ(manager.TCP_Connect("", 80, 1), nullptr);
    EXPECT_STREQ(manager.error().text(), "Error looking up ''");
    unsigned char v6[16] = {0xfe, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
    char figures[16];
    EXPECT_TRUE(manager.ConvertIPv6ToString(v6, figures, sizeof figures));
    EXPECT_STREQ(figures, "fe80::1");
    EXPECT_FALSE(manager.ConvertIPv4ToString(v6, figures, 3));
    EXPECT_STREQ(manager.error().text(), strerror(ENOSPC));
}

struct Greeting_Service : NetworkService {
    using NetworkService::NetworkService;
    int Open_Exchange() override { return Connection()->Write(String("HELO"), timeout) == 4; }
};

TEST(Service, Connects_And_Greets) {
    Network_Application application;
    Script script;
    Scripted_Manager manager(&application, script);
    application.manager = &manager;
    char* const host = tarn_strdup("host");
    int owned = 1;
    Greeting_Service service(&application, host, 4, 5, &owned, 25, 5);
    EXPECT_EQ(owned, 0);
    EXPECT_TRUE(service.Connect() && service.Connect());
    EXPECT_EQ(manager.target, "host 25");
    EXPECT_EQ(script.written, "HELOHELO");
    EXPECT_EQ(script.open, 1);
    application.settings.texts[CONFIG_SOCKS_HOST] = "proxy";
    EXPECT_FALSE(service.Connect());
    EXPECT_STREQ(service.error().text(), "Error connecting to 'host': Unsupported SOCKS version");
    EXPECT_EQ(script.open, 0);
}

} // namespace
