// Connections against peers on the same machine, most of them hostile.

#include "network/logging_network_connection.h"
#include "network/network_output.h"
#include "network/network_service.h"
#include "network/network_support.h"
#include "network/unix_network_connection.h"

#include <chrono>
#include <csignal>
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <netdb.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <thread>

// In place of the system's: the host two.test has an address where nobody listens, and then this machine's.
extern "C" int getaddrinfo(const char* host, const char* service, const addrinfo* hints, addrinfo** found) {
    static const auto look_up = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    if (!host || std::string_view(host) != "two.test")
        return look_up(host, service, hints, found);
    const int failure = look_up("127.0.0.2", service, hints, found);
    return failure ? failure : look_up("127.0.0.1", service, hints, &(*found)->ai_next);
}

namespace {

// A connection whose peer is the other end of a pair of sockets.
struct Paired_Connection : UNIXNetworkConnection {
    static int Descriptor(NetworkConnection& other) {
        return static_cast<UNIXNetworkConnection&>(other).*&Paired_Connection::socket;
    }
    explicit Paired_Connection(TarnApplication* application) : UNIXNetworkConnection(application) {
        int ends[2];
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends);
        socket = ends[0];
        peer = ends[1];
        fcntl(socket, F_SETFL, O_NONBLOCK);
    }
    ~Paired_Connection() override { Leave(); }
    void Leave() { close(std::exchange(peer, -1)); }
    void Move_To(int descriptor) { close(std::exchange(socket, dup2(socket, descriptor))); }

    int peer;
};

struct Connection : testing::Test {
    Network_Application application;
    UNIXNetworkManager manager{&application};
    Paired_Connection connection{&application};
    String line;
    char buffer[64];
};

// Expects of an operation that it fails after one second. A loaded machine may need some attempts at that.
template <typename Operation>
void Expect_One_Second(Operation operation) {
    double passed = 2;
    for (int attempts = 0; attempts < 10 && passed > 1.2; ++attempts) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(operation(), -1);
        passed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        EXPECT_GE(passed, 1.0);
    }
    EXPECT_LE(passed, 1.2);
}

TEST_F(Connection, Reads_A_Line_And_Leaves_The_Rest) {
    Send_All(connection.peer, "a longer line\n\nrest");
    EXPECT_EQ(connection.ReadLine(line, patience, 4), 14);
    EXPECT_STREQ(line.text(), "a longer line\n");
    EXPECT_EQ(connection.ReadLine(line, patience, 0), 1);
    EXPECT_EQ(connection.Read(buffer, 0, patience), 0);
    EXPECT_EQ(connection.Read(buffer, sizeof buffer, patience), 4);
    EXPECT_TRUE(connection.Write(patience, "%s=%d", "a", 7));
    EXPECT_EQ(connection.Write("x", -1, patience), 1);
    EXPECT_EQ(std::string(buffer, recv(connection.peer, buffer, sizeof buffer, MSG_DONTWAIT)), "a=7x");
    EXPECT_FALSE(connection.Write(patience, "%9000d", 1));
}

// A signal for a broken pipe would end the test.
TEST_F(Connection, Fails_With_A_Peer_That_Is_Gone) {
    Send_All(connection.peer, "partial");
    connection.Leave();
    EXPECT_EQ(connection.ReadLine(line, patience, 3), -1);
    EXPECT_EQ(line.length(), 0);
    EXPECT_STREQ(connection.error().text(), "Read Error: Connection closed by remote host");
    EXPECT_EQ(connection.Read(buffer, 1, patience), 0);
    EXPECT_EQ(connection.Write("x", 1, patience), -1);
    EXPECT_STREQ(connection.error().text(), "Write Error: Broken pipe");
}

// Through signals, and on a descriptor that no set of descriptors holds.
TEST_F(Connection, Times_Out_With_A_Silent_Peer) {
    const rlimit wanted{4096, 4096};
    if (setrlimit(RLIMIT_NOFILE, &wanted) == 0)
        connection.Move_To(3000);
    signal(SIGALRM, [](int) {});
    const itimerval often{{0, 50'000}, {0, 50'000}}, never{};
    setitimer(ITIMER_REAL, &often, nullptr);
    application.integers[CONFIG_TIMEOUT] = 1;
    Send_All(connection.peer, "half a line");
    Expect_One_Second([&] { return connection.ReadLine(line, 0, 512); });
    EXPECT_STREQ(connection.error().text(), "Read Timeout");
    const std::string much(10'000'000, 'x');
    Expect_One_Second([&] { return connection.Write(much.data(), -1, 1); });
    EXPECT_STREQ(connection.error().text(), "Write Timeout");
    setitimer(ITIMER_REAL, &never, nullptr);
}

// Each byte starts the timeout anew.
TEST_F(Connection, Bounds_Each_Wait_And_Not_The_Whole) {
    const std::jthread peer([this] {
        for (const char byte : {'a', 'b', 'c', '\n'}) {
            usleep(600'000);
            Send_All(connection.peer, {byte});
        }
    });
    EXPECT_EQ(connection.ReadLine(line, 2, 512), 4);
}

TEST_F(Connection, Reaches_The_Second_Address_And_Meets_A_Reset) {
    const Listener listener;
    const std::unique_ptr<NetworkConnection> made(manager.Connect("two.test", listener.number, patience));
    ASSERT_TRUE(made) << manager.error().text();
    EXPECT_STREQ(made->ipaddress().text(), "127.0.0.1");
    EXPECT_EQ(fcntl(Paired_Connection::Descriptor(*made), F_GETFD), FD_CLOEXEC);
    const int peer = listener.Accept();
    const linger reset{1, 0};
    setsockopt(peer, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
    close(peer);
    EXPECT_EQ(made->ReadLine(line, patience, 512), -1);
    EXPECT_STREQ(made->error().text(), "Read Error: Connection reset by peer");
}

TEST_F(Connection, Tells_Why_It_Was_Not_Made) {
    const Reserved_Port silent;
    EXPECT_EQ(manager.Connect("127.0.0.1", silent.number, patience), nullptr);
    EXPECT_EQ(manager.error().text(), "Error connecting to 127.0.0.1 on port " +
                                          std::to_string(silent.number) + ": Connection refused");
    EXPECT_FALSE(connection.EstablishTLSConnection("host", nullptr, nullptr, 1, 0));
    EXPECT_STREQ(connection.error().text(),
                 "Error establishing SSL connection: The SSL library has no SSL_new");
}

// Notes what it is told.
struct Noting_Connection : LoggingNetworkConnection {
    using LoggingNetworkConnection::LoggingNetworkConnection;
    void Log_Read(const char* text, int length) override { log += "r:" + std::string(text, length); }
    void Log_Read_Failure() override { log += "no read;"; }
    void Log_Write(const char* text, int length) override { log += "w:" + std::string(text, length); }
    void Log_Write_Failure() override { log += "no write;"; }
    std::string log;
};

TEST_F(Connection, Is_Logged) {
    Script script{.incoming = "line\nabc", .write_limit = 3};
    Noting_Connection noting(&application, "name", -1, 7, new Scripted_Connection(&application, script));
    EXPECT_EQ(noting.ReadLine(line, 5, 512), 5);
    EXPECT_EQ(noting.Read(buffer, sizeof buffer, 5), 3);
    EXPECT_EQ(noting.Read(buffer, sizeof buffer, 5), 0);
    EXPECT_EQ(noting.ReadLine(line, 5, 512), -1);
    EXPECT_EQ(noting.Write("", 0, 5), 0);
    EXPECT_EQ(noting.Write("wxyz", 4, 5), 3);
    EXPECT_EQ(noting.Write(String("z"), 5), -1);
    EXPECT_EQ(noting.log, "r:line\nr:abcno read;w:wxyno write;");
    EXPECT_STREQ((noting.ipaddress() + " " + noting.error()).text(), "192.0.2.1 peer is gone");
}

struct Header_Output : NullOutput {
    void Header(const char* name, const char* value) override { seen += std::string(name) + "=" + value; }
    void Write_Error(const char* text, int) override { seen += text; }
    std::string seen;
};

TEST_F(Connection, Is_Written_To_By_An_Output_That_Hands_Headers_On) {
    Script script{.write_limit = 5};
    Scripted_Connection scripted(&application, script);
    Header_Output inner;
    NetworkOutput output(&inner, &scripted, 5, 4);
    output.Header("a", "b");
    output.Write_Error("!", 1);
    EXPECT_EQ(output.Write("abcdef", -1), 6);
    EXPECT_EQ(script.written + inner.seen, "abcda=b!");
    EXPECT_EQ(output.Flush(), 1);
    EXPECT_STREQ(output.error().text(), "peer took a part");
}

TEST_F(Connection, Has_An_Address_In_Figures) {
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

TEST_F(Connection, Serves_A_Protocol) {
    Script script;
    Scripted_Manager manager(&application, script);
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
