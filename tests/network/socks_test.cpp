#include "network/network_application.h"
#include "network/scripted_connection.h"
#include "network/unix_network_manager.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

const std::string v4 = "\1\x7f\0\0\1"s;
const std::string request4 = "\4\1\1\xbb\x7f\0\0\1"s; // to port 443
const std::string request5 = "\5\1\0"s + v4 + "\1\xbb";
const std::string greeting = "\5\1\0"s;
const std::string greeting_with_password = "\5\2\0\2"s;
const std::string password = "\1\4user\6secret";

struct Exchange {
    int version;
    std::string answers;
    std::string expected; // what is sent
    const char* error = "";
    const char* user = "";
    const char* password = "";
    const char* host = "127.0.0.1";
};

const Exchange exchanges[] = {
    {4, "\0\x5a......"s, request4 + "\0"s},
    {4, "\0\x5a......"s, request4 + "me\0"s, "", "me"},
    {4, "\0\x5b......"s, request4 + "\0"s, "SOCKS4: Failed to connect to host (91)"},
    {4, "\4\x5a......", request4 + "\0"s, "SOCKS4: Unexpected version"},
    {5, "\5\2\1\0\5\0\0\1....pp"s, greeting_with_password + password + request5, "", "user", "secret"},
    {5, "\5\0\5\0\0\1....pp"s, greeting_with_password + request5, "", "user", "secret"},
    {5, "\5\2\1\1"s, greeting_with_password + password, "SOCKS5: Authentication failed", "user", "secret"},
    {5, "\5\2\5\0"s, greeting_with_password + password, "SOCKS5: Unexpected version", "user", "secret"},
    {5, "\5\0\5\0\0\1....pp"s, greeting + request5, "", "user"},
    {5, "\5\0\5\0\0\1....pp"s, greeting + "\5\1\0\3\6a.test\1\xbb"s, "", "", "", "a.test"},
    {5, "\5\0\5\0\0\4................pp"s, greeting + request5},
    {5, "\4\0"s, greeting, "SOCKS5: Unexpected version"},
    {5, "\5\xff", greeting, "SOCKS5: No acceptable authentication methods"},
    {5, "\5\0\4\0\0\1"s, greeting + request5, "SOCKS5: Unexpected version"},
    {5, "\5\0\5\2\0\1"s, greeting + request5, "SOCKS5: Connection not allowed by ruleset"},
    {5, "\5\0\5\4\0\1"s, greeting + request5, "SOCKS5: Host unreachable"},
    {5, "\5\0\5\xff\0\1"s, greeting + request5, "SOCKS5: Failed to connect to host (255)"},
    {5, "\5\0\5\0\1\1"s, greeting + request5, "SOCKS5: Unexpected response packet"},
    {5, "\5\0\5\0\0\3"s, greeting + request5, "SOCKS5: Unexpected address type"},
};
const Exchange& with_password = exchanges[4];

// Answers the error, "" for success.
std::string Converse(const Exchange& exchange, Script& script) {
    Network_Application application;
    application.settings.texts = {{CONFIG_SOCKS_USER, exchange.user},
                                  {CONFIG_SOCKS_PASSWORD, exchange.password}};
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
            if (!*exchange.error) {
                EXPECT_EQ(script.position, exchange.answers.size());
            }
        }
    }
}

TEST(SOCKS, Tells_What_Broke_Off) {
    for (size_t length = 0; length < with_password.answers.size(); length++) {
        Script script{.incoming = with_password.answers.substr(0, length)};
        EXPECT_EQ(Converse(with_password, script), length < 2   ? "SOCKS5: Greeting read error: "
                                                   : length < 4 ? "SOCKS5: Client authentication read error: "
                                                   : length < 8 ? "SOCKS5: Client connection response error: "
                                                                : "SOCKS5: Client connection response error");
    }
    Script silent;
    EXPECT_EQ(Converse(exchanges[0], silent), "SOCKS4: Connect read error: ");
    const struct {
        const Exchange& exchange;
        size_t written; // before writing fails
        const char* error;
    } cases[] = {
        {exchanges[0], 0, "SOCKS4: Connect error: peer is gone"},
        {with_password, 0, "SOCKS5: Greeting write error: peer is gone"},
        {with_password, 4, "SOCKS5: Client authentication write error: peer is gone"},
        {with_password, 4 + password.size(), "SOCKS5: Client connection request error: peer is gone"},
    };
    for (const auto& c : cases) {
        Script script{.incoming = c.exchange.answers, .write_limit = static_cast<int>(c.written)};
        EXPECT_EQ(Converse(c.exchange, script), c.error);
    }
}

TEST(SOCKS, Sends_Credentials_Of_255_Bytes_And_No_Longer_Ones) {
    const std::string longest(255, 'u'), longer(256, 'u');
    Script script{.incoming = with_password.answers};
    EXPECT_EQ(Converse({5, "", "", "", longest.c_str(), "p"}, script), "");
    EXPECT_EQ(script.written, greeting_with_password + "\1\xff" + longest + "\1p" + request5);
    const char* const refusal = "SOCKS5: Username / password must be 255 characters or less";
    EXPECT_EQ(Converse({5, "", "", "", longer.c_str(), "p"}, script), refusal);
    EXPECT_EQ(Converse({5, "", "", "", "u", longer.c_str()}, script), refusal);
}

} // namespace
