#include "network/network_support.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

const std::string request4 = "\4\1\1\xbb\x7f\0\0\1"s; // to port 443
const std::string request5 = "\5\1\0\1\x7f\0\0\1\1\xbb"s;
const std::string greeting = "\5\1\0"s;
const std::string greeting_with_password = "\5\2\0\2"s;
const std::string password = "\1\4user\6secret";

struct Exchange {
    int version;
    std::string answers;
    std::string expected; // what is sent
    std::string error = "";
    std::string user = "";
    std::string password = "";
    const char* host = "127.0.0.1";
};

const Exchange exchanges[] = {
    {4, "\0\x5a......"s, request4 + "me\0"s, "", "me"},
    {4, "\0\x5b......"s, request4 + "\0"s, "SOCKS4: Failed to connect to host (91)"},
    {5, "\5\2\1\0\5\0\0\1....pp"s, greeting_with_password + password + request5, "", "user", "secret"},
    {5, "\5\0\5\0\0\1....pp"s, greeting_with_password + request5, "", "user", "secret"},
    {5, "\5\0\5\0\0\1....pp"s, greeting + request5, "", "user"},
    {5, "\5\0\5\0\0\1....pp"s, greeting + "\5\1\0\3\6a.test\1\xbb"s, "", "", "", "a.test"},
    {5, "\5\0\5\0\0\4................pp"s, greeting + request5},
    {5, "\5\0\5\2\0\1"s, greeting + request5, "SOCKS5: Connection not allowed by ruleset"},
    {5, "\5\0\5\4\0\1"s, greeting + request5, "SOCKS5: Host unreachable"},
    {5, "\5\2\1\0\5\0\0\1....pp"s,
     greeting_with_password + "\1\xff" + std::string(255, 'u') + "\1p" + request5, "", std::string(255, 'u'),
     "p"},
    {5, "", "", "SOCKS5: Username / password must be 255 characters or less", std::string(256, 'u'), "p"},
    {5, "", "", "SOCKS5: Username / password must be 255 characters or less", "u", std::string(256, 'p')},
};
const Exchange& with_password = exchanges[2];

// Answers the error, "" for success.
std::string Converse(const Exchange& exchange, Script& script) {
    Network_Application application;
    application.texts = {{CONFIG_SOCKS_USER, exchange.user.c_str()},
                         {CONFIG_SOCKS_PASSWORD, exchange.password.c_str()}};
    UNIXNetworkManager manager(&application);
    Scripted_Connection connection(&application, script);
    const int done = exchange.version == 4 ? manager.SOCKS4_Connect(&connection, exchange.host, 443, 5)
                                           : manager.SOCKS5_Connect(&connection, exchange.host, 443, 5);
    EXPECT_EQ(done, manager.error().length() == 0);
    return manager.error().text();
}

TEST(SOCKS, Speaks_With_Proxies) {
    for (const Exchange& exchange : exchanges) {
        SCOPED_TRACE(&exchange - exchanges);
        for (const int step : {INT_MAX, 1}) {
            Script script{.incoming = exchange.answers + "behind", .step = step};
            EXPECT_EQ(Converse(exchange, script), exchange.error);
            EXPECT_EQ(script.written, exchange.expected);
            EXPECT_EQ(script.position, exchange.answers.size());
        }
    }
}

// Every byte of the answers is waited for, and looked at up to the address.
TEST(SOCKS, Tells_What_Broke_Off_Or_Was_Not_Expected) {
    const auto converse = [](const Exchange& exchange, const std::string& answers, int written = INT_MAX) {
        Script script{.incoming = answers, .write_limit = written};
        return Converse(exchange, script);
    };
    const char* const unexpected[] = {"Unexpected version",         "No acceptable authentication methods",
                                      "Unexpected version",         "Authentication failed",
                                      "Unexpected version",         "Failed to connect to host (255)",
                                      "Unexpected response packet", "Unexpected address type"};
    const std::string& answers = with_password.answers;
    for (std::size_t read = 0; read < answers.size(); ++read) {
        EXPECT_EQ(converse(with_password, answers.substr(0, read)),
                  read < 2   ? "SOCKS5: Greeting read error: "
                  : read < 4 ? "SOCKS5: Client authentication read error: "
                  : read < 8 ? "SOCKS5: Client connection response error: "
                             : "SOCKS5: Client connection response error");
        std::string other = answers;
        other[read] = '\xff';
        EXPECT_EQ(converse(with_password, other), read < 8 ? std::string("SOCKS5: ") + unexpected[read] : "");
    }
    const Exchange& old = exchanges[0];
    EXPECT_EQ(converse(old, "\4\x5a......"), "SOCKS4: Unexpected version");
    EXPECT_EQ(converse(old, old.answers.substr(0, 7)), "SOCKS4: Connect read error: ");
    EXPECT_EQ(converse(old, old.answers, 0), "SOCKS4: Connect error: peer is gone");
    EXPECT_EQ(converse(with_password, answers, 0), "SOCKS5: Greeting write error: peer is gone");
    EXPECT_EQ(converse(with_password, answers, 4), "SOCKS5: Client authentication write error: peer is gone");
    EXPECT_EQ(converse(with_password, answers, 17), "SOCKS5: Client connection request error: peer is gone");
}

} // namespace
