// The head of a response with one very long line, over a pair of sockets.
#include "app/driver/unix_compiler_application.h"
#include "network/http_response_stream.h"
#include "network/unix_network_connection.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

struct Paired_Connection : UNIXNetworkConnection {
    explicit Paired_Connection(TarnApplication* application) : UNIXNetworkConnection(application) {
        int ends[2];
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends);
        socket = ends[0];
        peer = ends[1];
        fcntl(socket, F_SETFL, O_NONBLOCK);
    }
    ~Paired_Connection() override { close(peer); }

    int peer;
};

void Read_Long_Line(benchmark::State& state) {
    char program[] = "bench";
    char* arguments[] = {program, nullptr};
    UNIXCompilerApplication application(1, arguments);
    const std::string head = "HTTP/1.1 200 OK\r\nLong:" + std::string(state.range(0), 'x') + "\r\n\r\n";
    for (auto _ : state) {
        Paired_Connection connection(&application);
        const std::jthread peer([&] {
            for (std::size_t sent = 0; sent < head.size();)
                sent += static_cast<std::size_t>(write(connection.peer, &head[sent], head.size() - sent));
        });
        HTTPResponseStream stream(&connection, 60);
        if (!stream.Read_Headers())
            state.SkipWithError("no head");
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(Read_Long_Line)->Arg(1'000'000)->Arg(100'000'000)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
