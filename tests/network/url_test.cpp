#include "network/network_application.h"
#include "network/network_service.h"
#include "network/scripted_connection.h"
#include "network/unix_network_manager.h"

#include <gtest/gtest.h>
#include <memory>

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
        const char* parts; // none where it is no URL
    } cases[] = {
        {"http://host", -1, "<http><host>-<>"},
        {"http://host/", -1, "<http><host>-<>"},
        {"http://host?x=1", -1, "<http><host>-<?x=1>"},
        {"http://host:80?x", -1, "<http><host><80><?x>"},
        {"http://host:/a//b?c:d", -1, "<http><host><><a//b?c:d>"},
        {"http://[::1]:8080/a", -1, "<http><[::1]><8080><a>"},
        {"http://[::1]?q", -1, "<http><[::1]>-<?q>"},
        {"ftp://host/", -1, "<ftp><host>-<>"},
        {"://", -1, "<><>-<>"},
        {"http://host/path", 13, "<http><host>-<p>"},
        {"http://[::1]x/", -1, "----"},
        {"http://[::1", -1, "----"},
        {"http:/host/", -1, "----"},
        {"http://host", 6, "----"},
        {"http", -1, "----"},
        {nullptr, -1, "----"},
    };
    Network_Application application;
    UNIXNetworkManager manager(&application);
    for (const auto& c : cases) {
        const char *protocol = "", *host = "", *port = "", *path = "";
        int lengths[] = {1, 1, 1, 1};
        const int sound = manager.SplitURL(c.url, c.length, &protocol, &lengths[0], &host, &lengths[1], &port,
                                           &lengths[2], &path, &lengths[3]);
        const std::string parts = Part(protocol, lengths[0]) + Part(host, lengths[1]) +
                                  Part(port, lengths[2]) + Part(path, lengths[3]);
        EXPECT_EQ(parts, c.parts);
        EXPECT_EQ(sound, parts != "----") << c.url;
    }
}

struct Request {
    const char* url;
    const char* expected; // the request with its line ends as '|', or why there is none
    const char* target = "host 80";
    double version = 1.0;
    const char* headers = nullptr;
    const char* body = nullptr;
    int body_length = -1;
    unsigned flags = 0;
    const char* pin = nullptr;
};

const Request requests[] = {
    {"http://host", "GET / HTTP/1.0|Host: host||"},
    {"HTTP://host?x=1", "GET /?x=1 HTTP/1.0|Host: host||"},
    {"http://[::1]:8080/a", "GET /a HTTP/1.0|Host: [::1]:8080||", "::1 8080"},
    {"http://host:/", "GET / HTTP/1.0|Host: host||"},
    {"http://host:080/", "GET / HTTP/0.9||", "host 80", 0.9},
    {"http://host/", "GET / HTTP/1.1|Host: host|A: b|Connection: close||", "host 80", 9.5, "A: b\r\n"},
    {"http://host/", "GET / HTTP/1.0|Host: host|Content-Type: a/b|Content-Length: 3||xyz", "host 80", -1, "",
     "xyz"},
    {"http://host/", "GET / HTTP/2.0|Host: host|Content-Type: a/b|Content-Length: 2|Connection: close||xy",
     "host 80", 2, "", "xyz", 2},
    {"http://host/", "GET / HTTP/1.0|Host: host||", "host 80", 1, "", "xyz", 0},
    {"http:/host", "Malformed URL", ""},
    {"ftp://host/", "Unsupported protocol 'ftp'", ""},
    {"http://host/", "Request requires a secure connection", "", 1, "", "", 0, CONNECTION_MUST_BE_SECURE},
    {"http://host/", "Certificate pinning requested for non-secure connection", "", 1, "", "", 0, 0, "x"},
    {"http://host/", "GET / HTTP/1.0|Host: host||", "host 80", 1, "", "", 0, 0, ""},
    {"https://host/", "", "host 443"}, // the compiler has no TLS, and no reason to tell
};

// Answers what was sent, or the error.
std::string Open(const Request& request, Scripted_Manager& manager) {
    const std::unique_ptr<NetworkConnection> connection(manager.OpenURL(
        "GET", request.url, request.body, "a/b", request.body_length, nullptr, nullptr, nullptr, nullptr,
        "sha256", request.pin, request.headers, -1, request.version, 5, request.flags));
    EXPECT_EQ(manager.script.open, connection ? 1 : 0);
    String sent = connection ? String(manager.script.written.c_str()) : manager.error();
    sent.gsub("\r\n", "|");
    return sent.text();
}

TEST(URL, Is_Opened_By_A_Request) {
    for (const Request& request : requests) {
        Network_Application application;
        Script script;
        Scripted_Manager manager(&application, script);
        EXPECT_EQ(Open(request, manager), request.expected) << request.url;
        EXPECT_EQ(manager.target, request.target);
    }
    for (const int limit : {0, 20, 70}) {
        Network_Application application;
        Script script{.write_limit = limit};
        Scripted_Manager manager(&application, script);
        EXPECT_EQ(Open(requests[6], manager), limit == 0 ? "peer is gone" : "peer took a part");
    }
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
        {"[::1]", false, false, "", "\3\5[::1]"},
        {"1.2.3.256", false, false, "",
         "\3\x09"
         "1.2.3.256"},
        {"", false, false, "", {"\3\0", 2}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(manager.IsIPv4Address(c.text), c.v4);
        EXPECT_EQ(manager.IsIPv6Address(c.text), c.v6);
        EXPECT_EQ(manager.IsIPAddress(c.text), c.v4 || c.v6);
        String normal, socks5;
        EXPECT_EQ(manager.NormalizeIPAddress(c.text, normal), c.v4 || c.v6);
        EXPECT_STREQ(normal.text(), c.normal);
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
    EXPECT_EQ(manager.TCP_Connect("", 80, 1), nullptr);
    EXPECT_STREQ(manager.error().text(), "Error looking up ''");
    unsigned char v6[16] = {0xfe, 0x80};
    char figures[8];
    EXPECT_TRUE(manager.ConvertIPv6ToString(v6, figures, sizeof figures));
    EXPECT_STREQ(figures, "fe80::");
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
    int owned = 1;
    Greeting_Service service(&application, tarn_strdup("host"), 4, 5, &owned, 25, 5);
    EXPECT_EQ(owned, 0);
    EXPECT_TRUE(service.Connect() && service.Connect());
    EXPECT_EQ(manager.target + script.written, "host 25HELOHELO");
    EXPECT_EQ(script.open, 1);
    application.settings.texts[CONFIG_SOCKS_HOST] = "proxy";
    application.settings.integers = {{CONFIG_SOCKS_PORT, 1080}, {CONFIG_SOCKS_VERSION, 6}};
    EXPECT_FALSE(service.Connect());
    EXPECT_EQ(manager.target, "proxy 1080");
    EXPECT_STREQ(service.error().text(), "Error connecting to 'host': Unsupported SOCKS version");
    EXPECT_EQ(script.open, 0);
}

} // namespace
