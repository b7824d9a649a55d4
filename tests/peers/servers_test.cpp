// Connections, proxies and responses against the servers that people run.

#include "network/http_response_stream.h"
#include "network/network_application.h"
#include "network/network_connection.h"
#include "network/unix_network_manager.h"
#include "peers/peer.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

class Servers : public testing::Test {
  protected:
    void Use_Proxy(int version, const char* user = "", const char* password = "") {
        application.settings.integers = {{CONFIG_SOCKS_VERSION, version}, {CONFIG_SOCKS_PORT, port}};
        application.settings.texts = {
            {CONFIG_SOCKS_HOST, "127.0.0.1"}, {CONFIG_SOCKS_USER, user}, {CONFIG_SOCKS_PASSWORD, password}};
    }
    // The first line that a peer of ours says through the proxy, or the error.
    std::string Line_Through_Proxy(const char* host) {
        Listener target;
        const std::unique_ptr<NetworkConnection> connection(manager.Connect(host, target.port(), 5));
        if (!connection)
            return manager.error().text();
        std::thread peer = Play(target.Accept(), [](int descriptor) { Send_All(descriptor, "hello\n"); });
        String line;
        EXPECT_EQ(connection->ReadLine(line, 5, 512), 6) << connection->error().text();
        peer.join();
        return line.text();
    }
    // The body of a response, and what its head says of the length.
    std::string Get(const std::string& path, double version, int* length) {
        const std::string url = "http://127.0.0.1:" + std::to_string(port) + path;
        HTTPResponseStream stream(manager.OpenURL("GET", url.c_str(), nullptr, nullptr, 0, nullptr, nullptr,
                                                  nullptr, nullptr, nullptr, nullptr, nullptr, 0, version, 5,
                                                  0),
                                  5);
        std::string body;
        char buffer[1000];
        EXPECT_TRUE(stream.Read_Headers()) << stream.error().text() << manager.error().text();
        for (int count; (count = stream.Read(buffer, sizeof buffer)) > 0;)
            body.append(buffer, static_cast<size_t>(count));
        stream.Close();
        *length = stream.content_length();
        return std::to_string(stream.status()) + " " + body;
    }

    Peer_Directory directory;
    Network_Application application;
    UNIXNetworkManager manager{&application};
    const int port = Free_Port();
    const std::string port_text = std::to_string(port);
};

TEST_F(Servers, Microsocks_Connects) {
    NEED_PROGRAM("microsocks", "microsocks");
    const Peer proxy("microsocks -i 127.0.0.1 -p " + port_text, port);
    ASSERT_TRUE(proxy.started());
    Use_Proxy(5);
    EXPECT_EQ(Line_Through_Proxy("127.0.0.1"), "hello\n");
    EXPECT_EQ(Line_Through_Proxy("localhost"), "hello\n"); // the proxy resolves it
    Use_Proxy(5, "user", "secret");
    EXPECT_EQ(Line_Through_Proxy("127.0.0.1"), "hello\n"); // which it doesn't ask for
}

TEST_F(Servers, Microsocks_Wants_Its_Password) {
    NEED_PROGRAM("microsocks", "microsocks");
    const Peer proxy("microsocks -i 127.0.0.1 -u user -P secret -p " + port_text, port);
    ASSERT_TRUE(proxy.started());
    Use_Proxy(5, "user", "secret");
    EXPECT_EQ(Line_Through_Proxy("127.0.0.1"), "hello\n");
    Use_Proxy(5, "user", "wrong");
    EXPECT_EQ(Line_Through_Proxy("127.0.0.1"), "SOCKS5: Authentication failed");
    Use_Proxy(5, "user");
    EXPECT_EQ(Line_Through_Proxy("127.0.0.1"), "SOCKS5: No acceptable authentication methods");
}

TEST_F(Servers, Dante_Speaks_Both_Versions) {
    NEED_PROGRAM("danted", "dante-server");
    const std::string local = "from: 127.0.0.0/8 to: ";
    const std::string settings = directory.Put(
        "danted.conf", "logoutput: " + directory.path + "/log\ninternal: 127.0.0.1 port = " + port_text +
                           "\nexternal: lo\nclientmethod: none\nsocksmethod: none\n" + "client pass { " +
                           local + "0.0.0.0/0 }\n" + "socks block { " + local +
                           "127.0.0.2/32 }\nsocks pass { " + local + "0.0.0.0/0 }\n");
    const Peer proxy("danted -f " + settings, port);
    ASSERT_TRUE(proxy.started()) << directory.Get("log");
    Use_Proxy(4, "me");
    EXPECT_EQ(Line_Through_Proxy("127.0.0.1"), "hello\n");
    EXPECT_EQ(Line_Through_Proxy("127.0.0.2"), "SOCKS4: Failed to connect to host (91)");
    Use_Proxy(5);
    EXPECT_EQ(Line_Through_Proxy("127.0.0.1"), "hello\n");
    EXPECT_EQ(Line_Through_Proxy("127.0.0.2"), "SOCKS5: Connection not allowed by ruleset");
}

TEST_F(Servers, Nginx_Answers_Sized_And_Chunked) {
    NEED_PROGRAM("nginx", "nginx-light");
    std::string body;
    for (int number = 0; number < 50'000; number++)
        body += std::to_string(number) + "\n";
    directory.Put("sized", body);
    directory.Put("chunked", "<!--# echo var=\"none\" default=\"" + body + "\" -->" + body);
    const std::string settings = directory.Put(
        "nginx.conf", "daemon off; master_process off; pid pid; error_log log; events {}\n"
                      "http { access_log off; client_body_temp_path body; proxy_temp_path proxy;\n"
                      "fastcgi_temp_path fastcgi; uwsgi_temp_path uwsgi; scgi_temp_path scgi;\n"
                      "ssi_types *; ssi_value_length 1000000; server { listen 127.0.0.1:" +
                          port_text + "; root .; location /chunked { ssi on; } } }\n");
    const Peer server("nginx -p " + directory.path + " -c " + settings + " -e log", port);
    ASSERT_TRUE(server.started()) << directory.Get("log");
    int length;
    EXPECT_EQ(Get("/sized", 1.1, &length), "200 " + body);
    EXPECT_EQ(length, static_cast<int>(body.size()));
    EXPECT_EQ(Get("/chunked", 1.1, &length), "200 " + body + body);
    EXPECT_EQ(length, -1);
    EXPECT_EQ(Get("/chunked", 1.0, &length), "200 " + body + body); // by the end of the connection
    EXPECT_EQ(Get("/missing", 1.1, &length).substr(0, 4), "404 ");
}

// TLS comes from the application that has it; the compiler has none.
TEST(Program, Links_No_TLS_Library) {
    EXPECT_EQ(std::system("readelf -d " tnc_path " | grep -q NEEDED"), 0);
    EXPECT_NE(std::system("readelf -d " tnc_path " | grep NEEDED | grep -qE 'ssl|crypto|tls'"), 0);
}

} // namespace
