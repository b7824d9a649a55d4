// Connections, proxies and responses against the servers that people run.

#include "peers/peer.h"

namespace {

struct Servers : testing::Test {
    // The first line that a peer of ours says through the proxy, or the error.
    std::string Through_Proxy(const char* host, int version, const char* user = "",
                              const char* password = "") {
        application.integers = {{CONFIG_SOCKS_VERSION, version}, {CONFIG_SOCKS_PORT, port.number}};
        application.texts = {
            {CONFIG_SOCKS_HOST, "127.0.0.1"}, {CONFIG_SOCKS_USER, user}, {CONFIG_SOCKS_PASSWORD, password}};
        Listener target;
        const std::unique_ptr<NetworkConnection> connection(manager.Connect(host, target.number, patience));
        if (!connection)
            return manager.error().text();
        const int peer = target.Accept();
        Send_All(peer, "hello\n");
        String line;
        EXPECT_EQ(connection->ReadLine(line, patience, 512), 6) << connection->error().text();
        close(peer);
        return line.text();
    }

    const Peer_Directory directory;
    Network_Application application;
    UNIXNetworkManager manager{&application};
    const Reserved_Port port;
    const std::string port_text = std::to_string(port.number);
};

TEST_F(Servers, Microsocks_Connects) {
    NEED_PROGRAM("microsocks", "microsocks");
    const Peer proxy("microsocks -i 127.0.0.1 -p " + port_text, directory, port);
    // The proxy resolves a name, which a bare system may not have, and takes the first address, where nobody
    // listens if it isn't this one.
    String address;
    const bool is_named = manager.GetHostAddress("localhost", address) && address.view() == "127.0.0.1";
    EXPECT_EQ(Through_Proxy(is_named ? "localhost" : "127.0.0.1", 5), "hello\n");
    EXPECT_EQ(Through_Proxy("127.0.0.1", 5, "user", "secret"), "hello\n"); // which it doesn't ask for
}

TEST_F(Servers, Microsocks_Wants_Its_Password) {
    NEED_PROGRAM("microsocks", "microsocks");
    const Peer proxy("microsocks -i 127.0.0.1 -u user -P secret -p " + port_text, directory, port);
    EXPECT_EQ(Through_Proxy("127.0.0.1", 5, "user", "secret"), "hello\n");
    EXPECT_EQ(Through_Proxy("127.0.0.1", 5, "user", "wrong"), "SOCKS5: Authentication failed");
    EXPECT_EQ(Through_Proxy("127.0.0.1", 5, "user"), "SOCKS5: No acceptable authentication methods");
}

TEST_F(Servers, Dante_Speaks_Both_Versions) {
    NEED_PROGRAM("danted", "dante-server");
    directory.Put("conf", "logoutput: stderr\ninternal: 127.0.0.1 port = " + port_text +
                              "\nexternal: lo\nclientmethod: none\nsocksmethod: none\n"
                              "client pass { from: 127.0.0.0/8 to: 0.0.0.0/0 }\n"
                              "socks block { from: 127.0.0.0/8 to: 127.0.0.2/32 }\n"
                              "socks pass { from: 127.0.0.0/8 to: 0.0.0.0/0 }\n");
    const Peer proxy("danted -f conf", directory, port);
    EXPECT_EQ(Through_Proxy("127.0.0.1", 4, "me"), "hello\n");
    EXPECT_EQ(Through_Proxy("127.0.0.2", 4, "me"), "SOCKS4: Failed to connect to host (91)");
    EXPECT_EQ(Through_Proxy("127.0.0.1", 5), "hello\n");
    EXPECT_EQ(Through_Proxy("127.0.0.2", 5), "SOCKS5: Connection not allowed by ruleset");
}

TEST_F(Servers, Nginx_Answers_Sized_And_Chunked) {
    NEED_PROGRAM("nginx", "nginx-light");
    std::string body;
    for (int number = 0; number < 50'000; number++)
        body += std::to_string(number) + "\n";
    directory.Put("sized", body);
    directory.Put("chunked", "<!--# echo var=\"none\" default=\"" + body + "\" -->" + body);
    directory.Put("conf", "daemon off; master_process off; pid pid; error_log log; events {}\n"
                          "http { access_log off; client_body_temp_path body; proxy_temp_path proxy;\n"
                          "fastcgi_temp_path fastcgi; uwsgi_temp_path uwsgi; scgi_temp_path scgi;\n"
                          "ssi_types *; ssi_value_length 1000000; server { listen 127.0.0.1:" +
                              port_text + "; root .; location /chunked { ssi on; } } }\n");
    const Peer server("nginx -p . -c conf -e log", directory, port);
    const std::string url = "http://127.0.0.1:" + port_text;
    EXPECT_EQ(Get_Page(manager, url + "/sized", {1.1}), "200 " + std::to_string(body.size()) + " " + body);
    EXPECT_EQ(Get_Page(manager, url + "/chunked", {1.1}), "200 -1 " + body + body);
    EXPECT_EQ(Get_Page(manager, url + "/chunked", {1.0}),
              "200 -1 " + body + body); // ends with the connection
}

// TLS comes from the application that has it; the compiler has none.
TEST(Program, Links_No_TLS_Library) {
    EXPECT_EQ(std::system("readelf -d " tnc_path " | grep -q NEEDED"), 0);
    EXPECT_NE(std::system("readelf -d " tnc_path " | grep NEEDED | grep -qE 'ssl|crypto|tls'"), 0);
}

} // namespace
