#include "network/http_response_stream.h"

#include "network/network_application.h"
#include "network/network_output.h"
#include "network/scripted_connection.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

// What a reader makes of a response.
struct Outcome {
    std::string head; // status, content length, and number of headers
    std::string body;
    std::string error = {};
};

Outcome Read_Response(Script& script) {
    Network_Application application;
    HTTPResponseStream stream(new Scripted_Connection(&application, script), 5);
    Outcome outcome;
    char buffer[7];
    int count = stream.Read_Headers() ? 1 : -1;
    while (count > 0 && (count = stream.Read(buffer, sizeof buffer)) > 0)
        outcome.body.append(buffer, static_cast<size_t>(count));
    if (count < 0)
        outcome.error = stream.error().text();
    else
        EXPECT_EQ(stream.total_read(), static_cast<int>(outcome.body.size()));
    stream.Close();
    EXPECT_EQ(script.open, 0);
    EXPECT_EQ(stream.Read(buffer, 1), -1);
    for (const int number : {stream.status(), stream.content_length(), stream.headers().Entries()})
        outcome.head += std::to_string(number) + " ";
    return outcome;
}

constexpr const char* chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: CHUNKED\r\n\r\n";

const struct {
    std::string response;
    std::string head, body, error = "";
} responses[] = {
    {"HTTP/1.0 200 OK\r\n\r\nall of it", "200 -1 1 ", "all of it"},
    {"HTTP/1.0 404\n\n", "404 -1 1 ", ""},
    {"nothing\r\n\r\n", "0 -1 1 ", ""},
    {"HTTP/1.1 99999999999 A\r\n\r\n", "-1 -1 1 ", ""},
    {"HTTP/1.1 200 OK\r\nContent-Length: 5\r\nA : b\r\n\r\nfive more", "200 5 3 ", "five "},
    {"HTTP/1.1 200 OK\r\ncontent-length:9\r\n\r\nfive", "200 9 2 ", "five"},
    {"HTTP/1.1 200 OK\r\nContent-Length: 1\r\nContent-Length: 3\r\n\r\nabcd", "200 3 3 ", "abc"},
    {"HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\nabcd", "200 -1 2 ", "abcd"},
    {"HTTP/1.1 200 OK\r\nContent-Length: 2147483648\r\n\r\nabcd", "200 -1 2 ", "abcd"},
    {"HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999\r\n\r\nabcd", "200 -1 2 ", "abcd"},
    {"HTTP/1.1 200 OK\r\nContent-Length: none\r\n\r\nabcd", "200 0 2 ", ""},
    {"HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip, chunked\r\nContent-Length: 2\r\n\r\n3\r\n", "200 2 3 ",
     "3\r"},
    {"HTTP/1.1 200 OK\r\nContent-Length: 2\r\nTransfer-Encoding: identity\r\n\r\nabc", "200 -1 3 ", "abc"},
    {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nContent-Length: 2\r\n\r\n3\r\nabc\r\n0\r\n\r\n",
     "200 -1 3 ", "abc"},
    {chunked + "1A;x=y\r\n01234567890123456789012345\r\n003\r\nabc\r\n0\r\n\r\nbehind"s, "200 -1 2 ",
     "01234567890123456789012345abc"},
    {chunked + "0\r\n"s, "200 -1 2 ", ""},
    {"", "-1 -1 0 ", "", "line broken off"},
    {"HTTP/1.1 200 OK\r\n", "200 -1 1 ", "", "line broken off"},
    {chunked + "-1\r\n"s, "200 -1 2 ", "", "Invalid chunk size"},
    {chunked + "FFFFFFFF\r\nabc"s, "200 -1 2 ", "", "Invalid chunk size"},
    {chunked + "100000001\r\na"s, "200 -1 2 ", "", "Invalid chunk size"},
    {chunked + "FFFFFFFFFFFFFFFFFFFF\r\na"s, "200 -1 2 ", "", "Invalid chunk size"},
    {chunked + "7FFFFFFF\r\nabc"s, "200 -1 2 ", "abc"},
    {chunked + "3\r\nabc0\r\n\r\n"s, "200 -1 2 ", "", "Invalid chunk terminator"},
    {chunked + "3\r\nabc\n0\r\n"s, "200 -1 2 ", "", "Invalid chunk terminator"},
    {chunked + "3\r\nabc\r\n-2\r\n"s, "200 -1 2 ", "", "Invalid chunk size"},
    {chunked + "3\r\nabc\r\n"s, "200 -1 2 ", "", "line broken off"},
    {chunked + "3\r\nabc\r\n3\r\ndef\r\n0\r\nTrailer: x\r\n\r\n"s, "200 -1 2 ", "abc",
     "Invalid chunk terminator"},
};

TEST(HTTPResponse, Is_Read_Whole_And_In_Single_Bytes) {
    for (const auto& c : responses) {
        for (const int step : {INT_MAX, 1}) {
            Script script{.incoming = c.response, .step = step};
            const Outcome outcome = Read_Response(script);
            EXPECT_EQ(outcome.head + outcome.error, c.head + c.error) << c.response;
            // How much of a broken chunk was handed out depends on the reads.
            EXPECT_TRUE(outcome.body == c.body || (step == 1 && !c.error.empty())) << outcome.body;
        }
    }
}

// Whatever is cut off, what is read is a beginning of the body.
TEST(HTTPResponse, Ends_Wherever_It_Is_Cut) {
    for (const auto& c : responses) {
        for (size_t length = 0; length < c.response.size(); length++) {
            Script script{.incoming = c.response.substr(0, length)};
            const std::string body = Read_Response(script).body;
            EXPECT_TRUE(c.body.starts_with(body) || !c.error.empty()) << c.response.substr(0, length);
        }
    }
}

TEST(HTTPResponse, Splits_Headers_At_The_First_Colon) {
    Network_Application application;
    Script script{.incoming = "HTTP/1.1 200 OK\r\n A\t: b:c \r\nplain\r\n:x\r\n\r\n"};
    Scripted_Connection connection(&application, script);
    HTTPResponseStream stream(&connection, 5);
    for (int round = 0; round < 2; round++, script.position = 0) {
        ASSERT_TRUE(stream.Read_Headers());
        std::string seen;
        for (auto* header = stream.headers().First(); header; header = stream.headers().Next())
            seen += header->line.text() + "|"s + header->name.text() + "|" + header->value.text() + "\n";
        EXPECT_EQ(seen, "HTTP/1.1 200 OK|HTTP/1.1 200 OK|\nA\t: b:c|A|b:c\nplain|plain|\n:x||x\n");
    }
}

TEST(HTTPResponse, Has_As_Many_Headers_As_The_Peer_Sends) {
    Script script{.incoming = "HTTP/1.1 200 OK\r\n"};
    for (int count = 0; count < 1'000'000; count++)
        script.incoming += "A: b\r\n";
    script.incoming += "\r\nbody";
    const Outcome outcome = Read_Response(script);
    EXPECT_EQ(outcome.head + outcome.body, "200 -1 1000001 body");
}

TEST(HTTPResponse, Ends_No_Read_Behind_Its_Chunk) {
    Network_Application application;
    Script script{.incoming = chunked + "3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n"s};
    Scripted_Connection connection(&application, script);
    HTTPResponseStream stream(&connection, 5);
    ASSERT_TRUE(stream.Read_Headers());
    char buffer[16];
    for (const int expected : {3, 2, 0, 0})
        EXPECT_EQ(stream.Read(buffer, sizeof buffer), expected);
    EXPECT_EQ(stream.Read(buffer, -1), 0);
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
    {
        NetworkOutput output(&inner, &connection, 5, 4);
        output.Header("a", "b");
        output.Write_Error("!", 1);
        EXPECT_EQ(output.Write("abcdef", -1), 6);
        EXPECT_EQ(script.written + inner.seen, "abcda=b!");
        EXPECT_EQ(output.Flush(), 1);
        EXPECT_STREQ(output.error().text(), "peer took a part");
    }
    NetworkOutput nowhere(nullptr, nullptr, 5, 0);
    EXPECT_EQ(nowhere.DoWrite("x", 1), -1);
}

} // namespace
