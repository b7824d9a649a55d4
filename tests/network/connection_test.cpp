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
#include <fstream>
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
        ASSERT_EQ(dup2(socket, descriptor), descriptor);
        close(socket);
        socket = descriptor;
    }
    int Take_Peer() { return std::exchange(peer, -1); }

    int peer;
};

class Connection : public testing::Test {
  protected:
    ~Connection() override { close(connection.peer); }
    // From now on a wait without a timeout of its own lasts for one second.
    void Set_Default_Timeout() { application.settings.integers[CONFIG_TIMEOUT] = 1; }
    // Closes so that what the peer wasn't sent is lost and what it sends is refused.
    static void Reset(int descriptor) {
        const linger at_once{1, 0};
        setsockopt(descriptor, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
        close(descriptor);
    }

    Network_Application application;
    Paired_Connection connection{&application};
    String line;
    char buffer[64];
};

// Runs what waits for one second in vain.
template <typename Operation>
void Expect_One_Second(Operation operation) {
    const auto start = std::chrono::steady_clock::now();
    operation();
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    EXPECT_GE(passed.count(), 1.0);
    EXPECT_LT(passed.count(), 1.2);
}

TEST_F(Connection, Reads_A_Line_And_Leaves_The_Rest) {
    Send_All(connection.peer, "a longer line\n\nrest");
    for (const int size : {4, 0}) {
        EXPECT_EQ(connection.ReadLine(line, 5, size), size ? 14 : 1);
        EXPECT_STREQ(line.text(), size ? "a longer line\n" : "\n");
    }
    EXPECT_EQ(recv(connection.peer + 0, buffer, 1, MSG_DONTWAIT), -1);
    EXPECT_EQ(connection.Read(buffer, sizeof buffer, 5), 4);
    EXPECT_EQ(connection.Read(buffer, 0, 5), 0);
    EXPECT_EQ(connection.Write(5, "%s=%d", "a", 7), true);
    EXPECT_EQ(connection.Write("x", -1, 5), 1);
    EXPECT_EQ(std::string(buffer, recv(connection.peer, buffer, sizeof buffer, 0)), "a=7x");
    EXPECT_FALSE(connection.Write(5, "%9000d", 1));
}

TEST_F(Connection, Fails_With_A_Line_Broken_Off) {
    Send_All(connection.peer, "partial");
    close(connection.Take_Peer());
    EXPECT_EQ(connection.ReadLine(line, 5, 3), -1);
    EXPECT_EQ(line.length(), 0);
    EXPECT_STREQ(connection.error().text(), "Read Error: Connection closed by remote host");
    EXPECT_EQ(connection.Read(buffer, 1, 5), 0);
}

TEST_F(Connection, Times_Out_With_A_Silent_Peer) {
    Set_Default_Timeout();
    Expect_One_Second([&] { EXPECT_EQ(connection.Read(buffer, 1, 0), -1); });
    EXPECT_STREQ(connection.error().text(), "Read Timeout");
    Send_All(connection.peer, "half a line");
    Expect_One_Second([&] { EXPECT_EQ(connection.ReadLine(line, 1, 512), -1); });
    EXPECT_STREQ(connection.error().text(), "Read Timeout");
    const std::string much(10'000'000, 'x');
    Expect_One_Second([&] { EXPECT_EQ(connection.Write(much.data(), -1, 1), -1); });
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

TEST_F(Connection, Waits_Through_Signals_To_The_Old_Deadline) {
    struct sigaction handler {
    }, earlier;
    handler.sa_handler = [](int) {};
    sigaction(SIGALRM, &handler, &earlier);
    const itimerval often{{0, 50'000}, {0, 50'000}}, never{};
    setitimer(ITIMER_REAL, &often, nullptr);
    Expect_One_Second([&] { EXPECT_EQ(connection.Read(buffer, 1, 1), -1); });
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &earlier, nullptr);
    EXPECT_STREQ(connection.error().text(), "Read Timeout");
}

TEST_F(Connection, Waits_On_A_High_Descriptor) {
    const rlimit wanted{4096, 4096};
    if (setrlimit(RLIMIT_NOFILE, &wanted) != 0)
        GTEST_SKIP() << "no more than 1024 descriptors are allowed here";
    connection.Move_To(3000);
    Expect_One_Second([&] { EXPECT_EQ(connection.Read(buffer, 1, 1), -1); });
    Send_All(connection.peer, "x");
    EXPECT_EQ(connection.Read(buffer, 1, 1), 1);
}

// SIGPIPE would end the test.
TEST_F(Connection, Fails_To_Write_To_A_Peer_That_Is_Gone) {
    close(connection.Take_Peer());
    EXPECT_EQ(connection.Write("x", 1, 5), -1);
    EXPECT_STREQ(connection.error().text(), "Write Error: Broken pipe");
}

// In KiB: the most that the process ever held.
long Peak_Memory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        long size;
        if (word == "VmHWM:" && status >> size)
            return size;
    }
    return -1;
}

TEST_F(Connection, Reads_A_Line_Of_100_Megabytes_In_Three_Times_Its_Memory) {
    constexpr int length = 100'000'000;
    std::thread peer = Play(connection.Take_Peer(), [](int descriptor) {
        const std::string piece(length / 1000, 'x');
        Send_All(descriptor, "HTTP/1.1 200 OK\r\nLong:");
        for (int count = 0; count < 1000; count++)
            Send_All(descriptor, piece);
        Send_All(descriptor, "\r\n\r\n");
    });
    const long before = Peak_Memory();
    {
        HTTPResponseStream stream(&connection, 5);
        EXPECT_TRUE(stream.Read_Headers());
        EXPECT_EQ(stream.headers().Last()->value.length(), length);
    }
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
    UNIXNetworkManager manager(&application);
    EXPECT_FALSE(manager.Verify_Certificate_Hostname(nullptr, "host", 0));
    EXPECT_TRUE(manager.Verify_Certificate_IP(nullptr, "::1", 0));
    application.settings.integers[CONFIG_CERTIFICATE_CHECKS] =
        CERTIFICATE_HOSTNAME_UNCHECKED | CERTIFICATE_ADDRESS_CHECKED;
    EXPECT_TRUE(manager.Verify_Certificate_Hostname(nullptr, "host", 0));
    EXPECT_FALSE(manager.Verify_Certificate_Hostname(nullptr, "host", CONNECTION_MUST_VERIFY));
    EXPECT_FALSE(manager.Verify_Certificate_IP(nullptr, "::1", 0));
}

TEST(KeyPassword, Is_Cut_To_The_Buffer) {
    char buffer[] = "....";
    char secret[] = "secret";
    EXPECT_EQ(Load_Client_Certificate_Password_Callback(buffer, 3, 0, secret), 3);
    EXPECT_STREQ(buffer, "sec.");
    EXPECT_EQ(Load_Client_Certificate_Password_Callback(buffer, 3, 0, nullptr), 0);
}

TEST_F(Connection, Reaches_A_Listener_And_Meets_A_Reset) {
    Listener listener;
    UNIXNetworkManager manager(&application);
    const std::unique_ptr<NetworkConnection> made(manager.Connect("127.0.0.1", listener.port(), 5));
    ASSERT_TRUE(made);
    EXPECT_STREQ(made->ipaddress().text(), "127.0.0.1");
    Reset(listener.Accept());
    EXPECT_EQ(made->ReadLine(line, 5, 512), -1);
    EXPECT_STREQ(made->error().text(), "Read Error: Connection reset by peer");
    EXPECT_EQ(made->Write("x", 1, 5), -1);
    EXPECT_STREQ(made->error().text(), "Write Error: Broken pipe");
}

TEST_F(Connection, Tells_Why_It_Was_Not_Made) {
    UNIXNetworkManager manager(&application);
    const int port = Free_Port();
    EXPECT_EQ(manager.Connect("127.0.0.1", port, 5), nullptr);
    EXPECT_EQ(manager.error().text(),
              "Error connecting to 127.0.0.1 on port " + std::to_string(port) + ": Connection refused");
    // Where the queue is full, nobody answers.
    Listener listener(0);
    std::vector<std::unique_ptr<NetworkConnection>> queued;
    for (int count = 0; count < 4; count++) {
        const auto start = std::chrono::steady_clock::now();
        queued.emplace_back(manager.Connect("127.0.0.1", listener.port(), 1));
        if (queued.back())
            continue;
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1200));
        EXPECT_TRUE(std::string(manager.error().text()).ends_with(": Connection timed out"));
        return;
    }
    FAIL() << "the queue was never full";
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
    {
        Noting_Connection connection(&application, "name", -1, 7,
                                     new Scripted_Connection(&application, script));
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
    EXPECT_EQ(script.open, 0);
}

} // namespace
