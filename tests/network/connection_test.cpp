// Connections against peers on the same machine, most of them hostile.

#include "network/http_response_stream.h"
#include "network/logging_network_connection.h"
#include "network/loopback.h"
#include "network/network_application.h"
#include "network/scripted_connection.h"
#include "network/unix_network_connection.h"
#include "network/unix_network_manager.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <netdb.h>
#include <sys/resource.h>
#include <vector>

namespace {

using namespace std::string_literals;

// A connection whose peer is the other end of a pair of sockets.
class Paired_Connection : public UNIXNetworkConnection {
  public:
    explicit Paired_Connection(TarnApplication* application) : UNIXNetworkConnection(application) {
        int ends[2];
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends);
        socket = ends[0];
        peer = ends[1];
        fcntl(socket, F_SETFL, O_NONBLOCK);
    }
    void Move_To(int descriptor) {
        const int earlier = std::exchange(socket, dup2(socket, descriptor));
        close(earlier);
    }
    int Take_Peer() { return std::exchange(peer, -1); }

    int peer;
};

class Connection : public testing::Test {
  protected:
    ~Connection() override { close(connection.peer); }

    Network_Application application;
    UNIXNetworkManager manager{&application};
    Paired_Connection connection{&application};
    String line;
    char buffer[64];
};

// Expects of an operation that it fails after one second.
template <typename Operation>
void Expect_One_Second(Operation operation) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(operation(), -1);
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    EXPECT_GE(passed.count(), 1.0);
    EXPECT_LT(passed.count(), 1.2);
}

TEST_F(Connection, Reads_A_Line_And_Leaves_The_Rest) {
    Send_All(connection.peer, "a longer line\n\nrest");
    EXPECT_EQ(connection.ReadLine(line, 5, 4), 14);
    EXPECT_STREQ(line.text(), "a longer line\n");
    EXPECT_EQ(connection.ReadLine(line, 5, 0), 1);
    EXPECT_EQ(connection.Read(buffer, 0, 5), 0);
    EXPECT_EQ(connection.Read(buffer, sizeof buffer, 5), 4);
    EXPECT_TRUE(connection.Write(5, "%s=%d", "a", 7));
    EXPECT_EQ(connection.Write("x", -1, 5), 1);
    EXPECT_EQ(std::string(buffer, recv(connection.peer, buffer, sizeof buffer, 0)), "a=7x");
    EXPECT_FALSE(connection.Write(5, "%9000d", 1));
}

// A signal for a broken pipe would end the test.
TEST_F(Connection, Fails_With_A_Peer_That_Is_Gone) {
    Send_All(connection.peer, "partial");
    close(connection.Take_Peer());
    EXPECT_EQ(connection.ReadLine(line, 5, 3), -1);
    EXPECT_EQ(line.length(), 0);
    EXPECT_STREQ(connection.error().text(), "Read Error: Connection closed by remote host");
    EXPECT_EQ(connection.Read(buffer, 1, 5), 0);
    EXPECT_EQ(connection.Write("x", 1, 5), -1);
    EXPECT_STREQ(connection.error().text(), "Write Error: Broken pipe");
}

TEST_F(Connection, Times_Out_With_A_Silent_Peer) {
    application.settings.integers[CONFIG_TIMEOUT] = 1;
    Expect_One_Second([&] { return connection.Read(buffer, 1, 0); });
    EXPECT_STREQ(connection.error().text(), "Read Timeout");
    connection.Error("");
    Send_All(connection.peer, "half a line");
    Expect_One_Second([&] { return connection.ReadLine(line, 0, 512); });
    EXPECT_STREQ(connection.error().text(), "Read Timeout");
    const std::string much(10'000'000, 'x');
    Expect_One_Second([&] { return connection.Write(much.data(), -1, 1); });
    EXPECT_STREQ(connection.error().text(), "Write Timeout");
}

// Each byte starts the timeout anew.
TEST_F(Connection, Bounds_Each_Wait_And_Not_The_Whole) {
    std::thread peer = Play(connection.Take_Peer(), [](int descriptor) {
        for (const char byte : "slow\n"s) {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            Send_All(descriptor, {byte});
        }
    });
    EXPECT_EQ(connection.ReadLine(line, 1, 512), 5);
    peer.join();
}

TEST_F(Connection, Waits_Through_Signals_On_A_High_Descriptor) {
    const rlimit wanted{4096, 4096};
    if (setrlimit(RLIMIT_NOFILE, &wanted) == 0)
        connection.Move_To(3000);
    struct sigaction handler {};
    handler.sa_handler = [](int) {};
    sigaction(SIGALRM, &handler, nullptr);
    const itimerval often{{0, 50'000}, {0, 50'000}}, never{};
    setitimer(ITIMER_REAL, &often, nullptr);
    Expect_One_Second([&] { return connection.Read(buffer, 1, 1); });
    setitimer(ITIMER_REAL, &never, nullptr);
    Send_All(connection.peer, "x");
    EXPECT_EQ(connection.Read(buffer, 1, 1), 1);
}

// In KiB: the most that the process ever held.
long Peak_Memory() {
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST_F(Connection, Reads_A_Line_Of_100_Megabytes_In_Three_Times_Its_Memory) {
    constexpr int length = 100'000'000;
    const std::string piece(length / 1000, 'x');
    std::thread peer = Play(connection.Take_Peer(), [&](int descriptor) {
        Send_All(descriptor, "HTTP/1.1 200 OK\r\nLong:");
        for (int count = 0; count < 1000; count++)
            Send_All(descriptor, piece);
        Send_All(descriptor, "\r\n\r\n");
    });
    [[maybe_unused]] const long before = Peak_Memory();
    HTTPResponseStream stream(&connection, 5);
    EXPECT_TRUE(stream.Read_Headers());
    EXPECT_EQ(stream.headers().Last()->value.length(), length);
    peer.join();
#ifndef __SANITIZE_ADDRESS__
    EXPECT_LT((Peak_Memory() - before) * 1024, 3L * length);
#endif
}

TEST_F(Connection, Needs_A_TLS_Library_For_TLS) {
    EXPECT_EQ(connection.EstablishTLSConnection("host", nullptr, nullptr, 1, 0), 0);
    EXPECT_STREQ(connection.error().text(),
                 "Error establishing SSL connection: The SSL library has no SSL_new");
    UNIXNetworkConnection fresh(&application);
    EXPECT_EQ(fresh.EstablishTLSConnection("host", nullptr, nullptr, 1, 0), 0);
    EXPECT_STREQ(fresh.error().text(), "TCP connection not established");
}

TEST(KeyPassword, Is_Cut_To_The_Buffer) {
    char buffer[] = "....", secret[] = "secret";
    EXPECT_EQ(Load_Client_Certificate_Password_Callback(buffer, 3, 0, secret), 3);
    EXPECT_STREQ(buffer, "sec.");
    EXPECT_EQ(Load_Client_Certificate_Password_Callback(buffer, 3, 0, nullptr), 0);
}

TEST_F(Connection, Reaches_A_Listener_And_Meets_A_Reset) {
    Listener listener;
    const std::unique_ptr<NetworkConnection> made(manager.Connect("127.0.0.1", listener.port(), 5));
    ASSERT_TRUE(made);
    EXPECT_STREQ(made->ipaddress().text(), "127.0.0.1");
    const int peer = listener.Accept();
    const linger reset{1, 0};
    setsockopt(peer, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
    close(peer);
    EXPECT_EQ(made->ReadLine(line, 5, 512), -1);
    EXPECT_STREQ(made->error().text(), "Read Error: Connection reset by peer");
}

TEST_F(Connection, Tells_Why_It_Was_Not_Made) {
    const int port = Free_Port();
    EXPECT_EQ(manager.Connect("127.0.0.1", port, 5), nullptr);
    EXPECT_EQ(manager.error().text(),
              "Error connecting to 127.0.0.1 on port " + std::to_string(port) + ": Connection refused");
    // Where the queue is full, nobody answers.
    Listener listener(0);
    std::vector<std::unique_ptr<NetworkConnection>> queued;
    Expect_One_Second([&] {
        do
            queued.emplace_back(manager.Connect("127.0.0.1", listener.port(), 1));
        while (queued.back() && queued.size() < 5);
        return queued.back() ? 0 : -1;
    });
    EXPECT_TRUE(std::string(manager.error().text()).ends_with(": Connection timed out"));
}

// Notes what it is told.
struct Noting_Connection : LoggingNetworkConnection {
    using LoggingNetworkConnection::LoggingNetworkConnection;
    void Log_Read(const char* text, int length) override { log += "read " + std::string(text, length) + ";"; }
    void Log_Read_Failure() override { log += "no read;"; }
    void Log_Write(const char* text, int length) override {
        log += "write " + std::string(text, length) + ";";
    }
    void Log_Write_Failure() override { log += "no write;"; }
    std::string log;
};

TEST(Logging, Reports_What_Passes) {
    Network_Application application;
    Script script{.incoming = "line\nabc", .write_limit = 3};
    Noting_Connection connection(&application, "name", -1, 7, new Scripted_Connection(&application, script));
    String line;
    char buffer[8];
    EXPECT_EQ(connection.ReadLine(line, 5, 512), 5);
    EXPECT_EQ(connection.Read(buffer, sizeof buffer, 5), 3);
    EXPECT_EQ(connection.Read(buffer, sizeof buffer, 5), 0);
    EXPECT_EQ(connection.ReadLine(line, 5, 512), -1);
    EXPECT_EQ(connection.Write("wxyz", 4, 5), 3);
    EXPECT_EQ(connection.Write(String("z"), 5), -1);
    EXPECT_EQ(connection.log, "read line\n;read abc;no read;write wxy;no write;");
    EXPECT_STREQ(connection.error().text(), "peer is gone");
    EXPECT_STREQ(connection.ipaddress().text(), "192.0.2.1");
}

} // namespace
