// A proxy and a web server that people run.

#include "network/http_response_stream.h"
#include "network/network_support.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>

namespace {

struct Server : testing::Test {
    // Starts a program that lives as long as the folder, and waits until it listens; false where there is
    // none.
    bool Start(const std::string& program, const std::string& arguments, const std::string& configuration) {
        std::filesystem::permissions(folder.path, std::filesystem::perms(0755));
        std::ofstream(folder.path + "/conf") << configuration;
        const std::string path = "PATH=$PATH:/usr/sbin; cd " + folder.path + "; ";
        if (std::system((path + "command -v " + program + " >log").c_str()) != 0)
            return false;
        shell.reset(
            popen((path + program + arguments + " >log 2>&1 & read end; kill $!; wait").c_str(), "we"));
        std::unique_ptr<NetworkConnection> connection;
        for (int tries = 0; tries < patience * 50 && !connection; ++tries) {
            usleep(20'000);
            connection.reset(manager.TCP_Connect("127.0.0.1", port.number, patience));
        }
        return connection != nullptr;
    }

    const Passing_Folder folder;
    Network_Application application;
    UNIXNetworkManager manager{&application};
    const Reserved_Port port;
    const std::string port_text = std::to_string(port.number);
    std::unique_ptr<FILE, int (*)(FILE*)> shell{nullptr, pclose};
};

TEST_F(Server, Dante_Speaks_Both_Versions_Of_SOCKS) {
    if (!Start("danted", " -f conf",
               "logoutput: stderr\nexternal: lo\nclientmethod: none\nsocksmethod: none\n"
               "internal: 127.0.0.1 port = " +
                   port_text +
                   "\nclient pass { from: 127.0.0.0/8 to: 0.0.0.0/0 }\n"
                   "socks block { from: 127.0.0.0/8 to: 127.0.0.2/32 }\n"
                   "socks pass { from: 127.0.0.0/8 to: 0.0.0.0/0 }\n"))
        GTEST_SKIP() << "no proxy here: install the package dante-server";
    application.texts = {{CONFIG_SOCKS_HOST, "127.0.0.1"}, {CONFIG_SOCKS_USER, "me"}};
    for (const int version : {4, 5}) {
        application.integers = {{CONFIG_SOCKS_VERSION, version}, {CONFIG_SOCKS_PORT, port.number}};
        const Listener target;
        const std::unique_ptr<NetworkConnection> connection(
            manager.Connect("127.0.0.1", target.number, patience));
        ASSERT_TRUE(connection) << manager.error().text();
        Send_All(target.Accept(), "hello\n");
        String line;
        EXPECT_EQ(connection->ReadLine(line, patience, 512), 6) << connection->error().text();
    }
    EXPECT_FALSE(manager.Connect("127.0.0.2", 1, patience));
    EXPECT_STREQ(manager.error().text(), "SOCKS5: Connection not allowed by ruleset");
}

TEST_F(Server, Nginx_Answers_In_Chunks_And_Without) {
    const std::string body(300'000, 'x'), url = "http://127.0.0.1:" + port_text + "/page";
    std::ofstream(folder.path + "/page") << "<!--# echo var='none' default='" << body << "' -->" << body;
    if (!Start("nginx", " -p . -c conf -e log",
               "daemon off; master_process off; pid pid; error_log log; events {} http { access_log off;\n"
               "client_body_temp_path a; proxy_temp_path b; fastcgi_temp_path c; uwsgi_temp_path d;\n"
               "scgi_temp_path e; ssi on; ssi_types *; ssi_value_length 1000000;\n"
               "server { root .; listen 127.0.0.1:" +
                   port_text + "; } }\n"))
        GTEST_SKIP() << "no web server here: install the package nginx-light";
    for (const double version : {1.0, 1.1}) {
        HTTPResponseStream stream(manager.OpenURL("GET", url.c_str(), nullptr, nullptr, 0, nullptr, nullptr,
                                                  nullptr, nullptr, nullptr, nullptr, nullptr, 0, version,
                                                  patience, 0),
                                  patience);
        EXPECT_TRUE(stream.Read_Headers()) << manager.error().text();
        std::string page(700'000, ' ');
        while (stream.Read(&page[static_cast<std::size_t>(stream.total_read())], 1000) > 0) {
        }
        EXPECT_EQ(page.substr(0, static_cast<std::size_t>(stream.total_read())), body + body);
        stream.Close();
    }
}

} // namespace
