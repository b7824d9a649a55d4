#include "network/http_response_stream.h"

#include "network/network_application.h"
#include "network/network_output.h"
#include "network/scripted_connection.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

// What a reader makes of a response: the body, and behind a '!' the error that ended it.
struct Outcome {
    int status;
    int content_length;
    int headers;
    std::string body;
};

Outcome Read_Response(Script& script) {
    Network_Application application;
    HTTPResponseStream stream(new Scripted_Connection(&application, script), 5);
    std::string body;
    int count = -1;
    if (stream.Read_Headers()) {
        char buffer[7];
        while ((count = stream.Read(buffer, sizeof buffer)) > 0)
            body.append(buffer, static_cast<size_t>(count));
        EXPECT_TRUE(count < 0 || stream.total_read() == static_cast<int>(body.size()));
    }
    if (count < 0)
        body += "!"s + stream.error().text();
    stream.Close();
    EXPECT_EQ(script.open, 0);
    char byte;
    EXPECT_EQ(stream.Read(&byte, 1), -1);
    return {stream.status(), stream.content_length(), stream.headers().Entries(), body};
}

constexpr const char* chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: CHUNKED\r\n\r\n";

const struct {
    std::string response;
    Outcome expected;
} responses[] = {
    {"HTTP/1.0 200 OK\r\n\r\nall of it", {200, -1, 1, "all of it"}},
    {"HTTP/1.0 404\n\n", {404, -1, 1, ""}},
    {"nothing\r\n\r\n", {0, -1, 1, ""}},
    {"HTTP/1.1 99999999999 A\r\n\r\n", {-1, -1, 1, ""}},
    {"HTTP/1.1 200 OK\r\nContent-Length: 5\r\nA : b\r\n\r\nfive more", {200, 5, 3, "five "}},
    {"HTTP/1.1 200 OK\r\ncontent-length:9\r\n\r\nfive", {200, 9, 2, "five"}},
    {"HTTP/1.1 200 OK\r\nContent-Length: 1\r\nContent-Length: 3\r\n\r\nabcd", {200, 3, 3, "abc"}},
    {"HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\nabcd", {200, -1, 2, "abcd"}},
    {"HTTP/1.1 200 OK\r\nContent-Length: 2147483648\r\n\r\nabcd", {200, -1, 2, "abcd"}},
    {"HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999\r\n\r\nabcd", {200, -1, 2, "abcd"}},
    {"HTTP/1.1 200 OK\r\nContent-Length: none\r\n\r\nabcd", {200, 0, 2, ""}},
    {"HTTP/1.1 200 OK\r\nTransfer-Encoding: gzip, chunked\r\nContent-Length: 2\r\n\r\n3\r\n",
     {200, 2, 3, "3\r"}},
    {"HTTP/1.1 200 OK\r\nContent-Length: 2\r\nTransfer-Encoding: identity\r\n\r\nabc", {200, -1, 3, "abc"}},
    {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nContent-Length: 2\r\n\r\n3\r\nabc\r\n0\r\n\r\n",
     {200, -1, 3, "abc"}},
    {chunked + "1A;x=y\r\n01234567890123456789012345\r\n003\r\nabc\r\n0\r\n\r\nbehind"s,
     {200, -1, 2, "01234567890123456789012345abc"}},
    {chunked + "0\r\n"s, {200, -1, 2, ""}},
    {"", {-1, -1, 0, "!line broken off"}},
    {"HTTP/1.1 200 OK\r\n", {200, -1, 1, "!line broken off"}},
    {chunked + "-1\r\n"s, {200, -1, 2, "!Invalid chunk size"}},
    {chunked + "FFFFFFFF\r\nabc"s, {200, -1, 2, "!Invalid chunk size"}},
    {chunked + "100000001\r\na"s, {200, -1, 2, "!Invalid chunk size"}},
    {chunked + "FFFFFFFFFFFFFFFFFFFF\r\na"s, {200, -1, 2, "!Invalid chunk size"}},
    {chunked + "7FFFFFFF\r\nabc"s, {200, -1, 2, "abc"}},
    {chunked + "3\r\nabc0\r\n\r\n"s, {200, -1, 2, "!Invalid chunk terminator"}},
    {chunked + "3\r\nabc\n0\r\n"s, {200, -1, 2, "!Invalid chunk terminator"}},
    {chunked + "3\r\nabc\r\n-2\r\n"s, {200, -1, 2, "!Invalid chunk size"}},
    {chunked + "3\r\nabc\r\n"s, {200, -1, 2, "!line broken off"}},
    {chunked + "3\r\nabc\r\n3\r\ndef\r\n0\r\nTrailer: x\r\n\r\n"s,
     {200, -1, 2, "abc!Invalid chunk terminator"}},
};

TEST(HTTPResponse, Is_Read_Whole_And_In_Single_Bytes) {
    for (const auto& c : responses) {
        SCOPED_TRACE(c.response);
        for (const int step : {INT_MAX, 1}) {
            Script script{.incoming = c.response, .step = step};
            const Outcome outcome = Read_Response(script);
            EXPECT_EQ(outcome.status, c.expected.status);
            EXPECT_EQ(outcome.content_length, c.expected.content_length);
            EXPECT_EQ(outcome.headers, c.expected.headers);
            // How much of a broken chunk was handed out depends on the reads.
            const size_t from = step == 1 ? c.expected.body.find('!') : std::string::npos;
            if (from == std::string::npos)
                EXPECT_EQ(outcome.body, c.expected.body);
            else
                EXPECT_TRUE(outcome.body.ends_with(c.expected.body.substr(from))) << outcome.body;
        }
    }
}

// Whatever is cut off, what is read is a beginning of the body.
TEST(HTTPResponse, Ends_Wherever_It_Is_Cut) {
    for (const auto& c : responses) {
        for (size_t length = 0; length < c.response.size(); length++) {
            Script script{.incoming = c.response.substr(0, length)};
            const std::string body = Read_Response(script).body;
            const bool sound = c.expected.body.find('!') == std::string::npos;
            EXPECT_TRUE(!sound || c.expected.body.starts_with(body.substr(0, body.find('!')))) << length;
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
    EXPECT_EQ(outcome.headers, 1'000'001);
    EXPECT_EQ(outcome.body, "body");
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
    Script script{.write_limit = 6};
    Scripted_Connection connection(&application, script);
    Header_Output inner;
    {
        NetworkOutput output(&inner, &connection, 5, 4);
        output.Header("a", "b");
        output.Write_Error("!", 1);
        EXPECT_EQ(output.Write("abcde", -1), 5);
        EXPECT_EQ(script.written, "abcd");
    }
    EXPECT_EQ(script.written, "abcde");
    EXPECT_EQ(inner.seen, "a=b!");
    NetworkOutput direct(nullptr, &connection, 5, 0);
    EXPECT_EQ(direct.Write("xyz", 3), 3);
    EXPECT_EQ(script.written, "abcdex");
    EXPECT_STREQ(direct.error().text(), "peer took a part");
    NetworkOutput nowhere(nullptr, nullptr, 5, 0);
    EXPECT_EQ(nowhere.DoWrite("x", 1), -1);
}

} // namespace
