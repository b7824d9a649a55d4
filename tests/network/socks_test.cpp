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
    const char* user;
    const char* password;
    const char* host;
    std::string answers;
    std::string expected; // what is sent
    const char* error;    // "" for success
};

const Exchange exchanges[] = {
    {4, "", "", "127.0.0.1", "\0\x5a......"s, request4 + "\0"s, ""},
    {4, "me", "", "127.0.0.1", "\0\x5a......"s, request4 + "me\0"s, ""},
    {4, "", "", "127.0.0.1", "\0\x5b......"s, request4 + "\0"s, "SOCKS4: Failed to connect to host (91)"},
    {4, "", "", "127.0.0.1", "\4\x5a......", request4 + "\0"s, "SOCKS4: Unexpected version"},
    {5, "", "", "127.0.0.1", "\5\0\5\0\0\1....pp"s, greeting + request5, ""},
    {5, "", "", "127.0.0.1", "\5\0\5\0\0\4................pp"s, greeting + request5, ""},
    {5, "", "", "a.test", "\5\0\5\0\0\1....pp"s, greeting + "\5\1\0\3\6a.test\1\xbb"s, ""},
    {5, "user", "", "127.0.0.1", "\5\0\5\0\0\1....pp"s, greeting + request5, ""},
    {5, "user", "secret", "127.0.0.1", "\5\2\1\0\5\0\0\1....pp"s,
     greeting_with_password + password + request5, ""},
    {5, "user", "secret", "127.0.0.1", "\5\0\5\0\0\1....pp"s, greeting_with_password + request5, ""},
    {5, "user", "secret", "127.0.0.1", "\5\2\1\1"s, greeting_with_password + password,
     "SOCKS5: Authentication failed"},
    {5, "user", "secret", "127.0.0.1", "\5\2\5\0"s, greeting_with_password + password,
     "SOCKS5: Unexpected version"},
    {5, "", "", "127.0.0.1", "\4\0"s, greeting, "SOCKS5: Unexpected version"},
    {5, "", "", "127.0.0.1", "\5\xff", greeting, "SOCKS5: No acceptable authentication methods"},
    {5, "", "", "127.0.0.1", "\5\0\4\0\0\1"s, greeting + request5, "SOCKS5: Unexpected version"},
    {5, "", "", "127.0.0.1", "\5\0\5\2\0\1"s, greeting + request5,
     "SOCKS5: Connection not allowed by ruleset"},
    {5, "", "", "127.0.0.1", "\5\0\5\4\0\1"s, greeting + request5, "SOCKS5: Host unreachable"},
    {5, "", "", "127.0.0.1", "\5\0\5\xff\0\1"s, greeting + request5,
     "SOCKS5: Failed to connect to host (255)"},
    {5, "", "", "127.0.0.1", "\5\0\5\0\1\1"s, greeting + request5, "SOCKS5: Unexpected response packet"},
    {5, "", "", "127.0.0.1", "\5\0\5\0\0\3"s, greeting + request5, "SOCKS5: Unexpected address type"},
};

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

// The step of the exchange with user and password at which an answer or a request breaks off.
TEST(SOCKS, Tells_Which_Answer_Broke_Off) {
    const Exchange& whole = exchanges[8];
    for (std::size_t length = 0; length < whole.answers.size(); length++) {
        SCOPED_TRACE(length);
        Script script{.incoming = whole.answers.substr(0, length)};
        EXPECT_EQ(Converse(whole, script), length < 2   ? "SOCKS5: Greeting read error: "
                                           : length < 4 ? "SOCKS5: Client authentication read error: "
                                           : length < 8 ? "SOCKS5: Client connection response error: "
                                                        : "SOCKS5: Client connection response error");
    }
    Script silent;
    EXPECT_EQ(Converse(exchanges[0], silent), "SOCKS4: Connect read error: ");
    const struct {
        std::size_t exchange;
        std::size_t written; // before writing fails
        const char* error;
    } cases[] = {
        {0, 0, "SOCKS4: Connect error: peer is gone"},
        {8, 0, "SOCKS5: Greeting write error: peer is gone"},
        {8, greeting_with_password.size(), "SOCKS5: Client authentication write error: peer is gone"},
        {8, greeting_with_password.size() + password.size(),
         "SOCKS5: Client connection request error: peer is gone"},
    };
    for (const auto& c : cases) {
        Script script{.incoming = exchanges[c.exchange].answers, .write_limit = static_cast<int>(c.written)};
        EXPECT_EQ(Converse(exchanges[c.exchange], script), c.error);
    }
}

TEST(SOCKS, Sends_Credentials_Of_255_Bytes_And_No_Longer_Ones) {
    const std::string longest(255, 'u');
    Script script{.incoming = exchanges[8].answers};
    EXPECT_EQ(Converse({5, longest.c_str(), "p", "127.0.0.1", "", "", ""}, script), "");
    EXPECT_EQ(script.written, greeting_with_password + "\1\xff" + longest + "\1p" + request5);
    const std::string longer = longest + "u";
    for (const Exchange& c : {Exchange{5, longer.c_str(), "p", "127.0.0.1", "", "", ""},
                              Exchange{5, "u", longer.c_str(), "127.0.0.1", "", "", ""}})
        EXPECT_EQ(Converse(c, script), "SOCKS5: Username / password must be 255 characters or less");
}

} // namespace
