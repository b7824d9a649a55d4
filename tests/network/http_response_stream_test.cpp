#include "network/http_response_stream.h"
#include "network/network_output.h"
#include "network/network_support.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

// What a reader makes of a response.
struct Outcome {
    std::string head; // status, content length, and number of headers
    std::string body; // with a '|' behind each read
    std::string error = {};
};

Outcome Read_Response(Script& script) {
    Network_Application application;
    HTTPResponseStream stream(new Scripted_Connection(&application, script), 5);
    Outcome outcome;
    char buffer[9];
    int count = stream.Read_Headers() ? 1 : -1;
    while (count > 0 && (count = stream.Read(buffer, sizeof buffer)) > 0)
        outcome.body += std::string(buffer, static_cast<std::size_t>(count)) + "|";
    if (count < 0)
        outcome.error = stream.error().text();
    stream.Close();
    EXPECT_EQ(script.open, 0);
    EXPECT_EQ(stream.Read(buffer, 1), -1);
    for (const int number : {stream.status(), stream.content_length(), stream.headers().Entries()})
        outcome.head += std::to_string(number) + " ";
    return outcome;
}

const std::string ok = "HTTP/1.1 200 OK\r\n";
const std::string chunked = ok + "Transfer-Encoding: CHUNKED\r\n\r\n";

const struct {
    std::string response;
    std::string head, body, error = "";
} responses[] = {
    {ok + "\r\nall of it", "200 -1 1 ", "all of it|"},
    {"HTTP/1.1 99999999999 A\r\n\r\n", "-1 -1 1 ", ""},
    {ok + "Content-Length: 5\r\nA : b\r\n\r\nfive more", "200 5 3 ", "five |"},
    {ok + "Content-Length: 1\r\nContent-Length: 3\r\n\r\nabcd", "200 3 3 ", "abc|"},
    {ok + "Content-Length: 2147483648\r\n\r\nabcd", "200 -1 2 ", "abcd|"},
    {ok + "Content-Length: none\r\n\r\nabcd", "200 0 2 ", ""},
    {ok + "Transfer-Encoding: gzip, chunked\r\nContent-Length: 2\r\n\r\n3\r\n", "200 2 3 ", "3\r|"},
    {ok + "Transfer-Encoding: chunked\r\nContent-Length: 2\r\n\r\n3\r\nabc\r\n0\r\n\r\n", "200 -1 3 ",
     "abc|"},
    {chunked + "1A;x=y\r\n01234567890123456789012345\r\n003\r\nabc\r\n0\r\n\r\nbehind", "200 -1 2 ",
     "012345678|901234567|89012345|abc|"},
    {"", "-1 -1 0 ", "", "line broken off"},
    {chunked + "100000001\r\na", "200 -1 2 ", "", "Invalid chunk size"},
    {chunked + "7FFFFFFF\r\nabc", "200 -1 2 ", "abc|"},
    {chunked + "3\r\nabc0\r\n\r\n", "200 -1 2 ", "", "Invalid chunk terminator"},
    {chunked + "3\r\nabc\r\n-2\r\n", "200 -1 2 ", "", "Invalid chunk size"},
    {chunked + "3\r\nabc\r\n3\r\ndef\r\n0\r\nTrailer: x\r\n\r\n", "200 -1 2 ", "abc|",
     "Invalid chunk terminator"},
};

// Read whole, in single bytes, and cut off at each byte: then what is read is a beginning of the body.
TEST(HTTPResponse, Is_Read_As_It_Comes) {
    for (const auto& c : responses) {
        SCOPED_TRACE(c.response);
        Script whole{.incoming = c.response}, slow{.incoming = c.response, .step = 1};
        const Outcome outcome = Read_Response(whole), slowly = Read_Response(slow);
        EXPECT_EQ(outcome.head + outcome.body + outcome.error, c.head + c.body + c.error);
        EXPECT_EQ(slowly.head + slowly.error, c.head + c.error);
        for (std::size_t length = 0; length < c.response.size() && c.error.empty(); ++length) {
            Script cut{.incoming = c.response.substr(0, length)};
            const std::string body = Read_Response(cut).body;
            EXPECT_TRUE(body.empty() || c.body.starts_with(body.substr(0, body.size() - 1))) << length;
        }
    }
}

TEST(HTTPResponse, Splits_Headers_At_The_First_Colon) {
    Network_Application application;
    Script script{.incoming = "HTTP/1.1 200 OK\r\n A\t: b:c \r\nplain\r\n:x\r\n\r\nbody"};
    Scripted_Connection connection(&application, script);
    HTTPResponseStream stream(&connection, 5);
    char buffer[8];
    for (int round = 0; round < 2; round++, script.position = 0) {
        ASSERT_TRUE(stream.Read_Headers());
        EXPECT_EQ(stream.total_read(), 0);
        std::string seen;
        for (auto* header = stream.headers().First(); header; header = stream.headers().Next())
            seen += header->line.text() + "|"s + header->name.text() + "|" + header->value.text() + "\n";
        EXPECT_EQ(seen, "HTTP/1.1 200 OK|HTTP/1.1 200 OK|\nA\t: b:c|A|b:c\nplain|plain|\n:x||x\n");
        EXPECT_EQ(stream.Read(buffer, sizeof buffer), 4);
        EXPECT_EQ(stream.total_read(), 4);
    }
}

struct Header_Output : NullOutput {
    void Header(const char* name, const char* value) override { seen += name + "="s + value; }
    void Write_Error(const char* text, int) override { seen += text; }
    std::string seen;
};

TEST(NetworkOutput, Writes_To_The_Connection_And_Hands_Headers_On) {
    Network_Application application;
    Script script{.write_limit = 5};
    Scripted_Connection connection(&application, script);
    Header_Output inner;
    NetworkOutput output(&inner, &connection, 5, 4);
    output.Header("a", "b");
    output.Write_Error("!", 1);
    EXPECT_EQ(output.Write("abcdef", -1), 6);
    EXPECT_EQ(script.written + inner.seen, "abcda=b!");
    EXPECT_EQ(output.Flush(), 1);
    EXPECT_STREQ(output.error().text(), "peer took a part");
}

} // namespace
