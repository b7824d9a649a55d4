// Responses, proxies and URLs over a scripted connection, beside what the whole of the peer's words means.
#include "input.h"
#include "network/http_response_stream.h"
#include "network/network_support.h"

#include <memory>
#include <regex>
#include <vector>

namespace {

using namespace std::string_literals;

// The words of a peer, from the beginning.
struct Words {
    std::string left;

    bool Take(std::size_t count, std::string& words) {
        words = left.substr(0, count);
        left.erase(0, count);
        return words.size() == count;
    }
    bool Line(std::string& line) {
        const std::size_t end = left.find('\n');
        return end != left.npos && Take(end + 1, line);
    }
};

std::string Stripped(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n"), last = text.find_last_not_of(" \t\r\n");
    return first == text.npos ? "" : text.substr(first, last - first + 1);
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

struct Response {
    int status = -1, length = -1;
    bool chunked = false;
    std::vector<std::string> headers; // line, name and value of each
    std::string body, error;

    explicit Response(Words words) { Take(words); }

  private:
    void Take(Words& words) {
        std::string line;
        do {
            if (!words.Line(line))
                return Fail("line broken off");
            Take_Header(Stripped(line));
        } while (headers.size() == 3 || (line != "\n" && line != "\r\n"));
        headers.resize(headers.size() - 3); // the line that ends them is none
        if (chunked)
            return Take_Chunks(words);
        words.Take(length < 0 ? words.left.size() : length, body);
    }
    void Fail(const char* text) { error = text; }
    // -1 for what no int holds.
    static int Number(const std::string& text, int base) {
        const long number = std::strtol(text.c_str(), nullptr, base);
        return number < INT_MIN || number > INT_MAX ? -1 : static_cast<int>(number);
    }
    void Take_Header(const std::string& line) {
        const std::size_t colon = std::min(line.find(':'), line.size());
        const std::string name = Stripped(line.substr(0, colon)),
                          value = Stripped(line.substr(colon).erase(0, 1));
        if (headers.empty())
            status = Number(line.substr(std::min(line.find(' '), line.size())), 10);
        else if (Lower(name) == "transfer-encoding")
            chunked = Lower(value) == "chunked", length = -1;
        else if (Lower(name) == "content-length" && !chunked)
            length = std::max(Number(value, 10), -1);
        headers.insert(headers.end(), {line, name, value});
    }
    void Take_Chunks(Words& words) {
        std::string line, chunk;
        for (int size = 1, number = 0; size > 0; ++number) {
            if (!words.Line(line))
                return Fail("line broken off");
            size = Number(line, 16);
            if (size < 0)
                return Fail("Invalid chunk size");
            if (size == 0 && number == 0)
                return;
            const bool whole = words.Take(size, chunk);
            body += chunk;
            if (!whole)
                return;
            if (!words.Take(2, line) || line != "\r\n")
                return Fail("Invalid chunk terminator");
        }
    }
};

void Try_Response(Input& input, Script& script) {
    const int size = input.Between(1, 9);
    const char* const heads[] = {"", "HTTP/1.1 200 OK\r\n",
                                 "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"};
    script.incoming =
        input.One_Of(heads) +
        input.Pieces(
            65535,
            "HTTP/1.1 200 OK\r\n|HTTP/1.0 |404|\r\n|\n|\r\n\r\n| |:|Content-Length: |content-length:9\r\n|"
            "Transfer-Encoding: Chunked\r\n|transfer-encoding:|chunked|gzip|0|1\r\n.\r\n|3;x=y\r\nabc\r\n|1A|"
            "7FFFFFFF|2147483648|-1|0\r\n\r\n|\r\n0\r\n|x");
    Network_Application application;
    HTTPResponseStream stream(new Scripted_Connection(&application, script), 5);
    const Response expected({script.incoming});
    for (int round = 0; round < 2; ++round, script.position = 0) {
        std::string body;
        char buffer[9];
        int count = stream.Read_Headers() ? 1 : -1;
        while (count > 0 && (count = stream.Read(buffer, size)) > 0)
            body.append(buffer, count);
        CHECK(count == 0 ? expected.error.empty() : stream.error().view() == expected.error);
        // A read that meets a fault behind its bytes keeps them.
        CHECK(count == 0 ? body == expected.body : expected.body.starts_with(body));
        CHECK(stream.total_read() == static_cast<int>(expected.body.size()));
        CHECK(stream.status() == expected.status && stream.content_length() == expected.length);
        auto text = expected.headers.begin();
        for (auto* header = stream.headers().First(); header; header = stream.headers().Next())
            for (const String* seen : {&header->line, &header->name, &header->value})
                CHECK(text != expected.headers.end() && seen->view() == *text++);
        CHECK(text == expected.headers.end());
    }
    stream.Close();
}

// Both sides of an exchange, up to the first thing that goes wrong.
struct Talk {
    Words words;
    std::size_t limit; // of what the peer takes
    std::string sent = {}, heard = {}, error = {};

    bool Must(bool good, const std::string& text) {
        if (!good)
            error = text;
        return good;
    }
    bool Say(const std::string& text, const std::string& failure) {
        return Must(sent.size() < limit, failure + ": peer is gone") && (sent += text, true);
    }
    bool Hear(std::size_t count, const std::string& failure) {
        return Must(words.Take(count, heard), failure);
    }
    bool Hear_Yes(const std::string& version, char answer, const std::string& refusal) {
        return Must(heard[0] == version.back(), "Unexpected version") && Must(heard[1] == answer, refusal);
    }
    std::string Code() const { return "Failed to connect to host (" + std::to_string(heard[1] & 0xff) + ")"; }

    bool With_4(const std::string& user) {
        return Say("\4\1\1\xbb\x7f\0\0\1"s + user + '\0', "Connect error") &&
               Hear(8, "Connect read error: ") && Hear_Yes("\0"s, 'Z', Code());
    }
    bool With_5(const std::string& user, const std::string& password, const std::string& address) {
        const bool named = !user.empty() && !password.empty();
        return Must(user.size() < 256 && password.size() < 256,
                    "Username / password must be 255 characters or less") &&
               Say(named ? "\5\2\0\2"s : "\5\1\0"s, "Greeting write error") &&
               Hear(2, "Greeting read error: ") &&
               Hear_Yes("\5", heard[1] == 2 ? 2 : 0, "No acceptable authentication methods") &&
               (heard[1] == 0 || (Say('\1' + (static_cast<char>(user.size()) + user) +
                                          static_cast<char>(password.size()) + password,
                                      "Client authentication write error") &&
                                  Hear(2, "Client authentication read error: ") &&
                                  Hear_Yes("\1", 0, "Authentication failed"))) &&
               Say("\5\1\0"s + address + "\1\xbb", "Client connection request error") &&
               Hear(4, "Client connection response error: ") &&
               Hear_Yes("\5", 0,
                        heard[1] == 2   ? "Connection not allowed by ruleset"
                        : heard[1] == 4 ? "Host unreachable"
                                        : Code()) &&
               Must(heard[2] == 0, "Unexpected response packet") &&
               Must(heard[3] == 1 || heard[3] == 4, "Unexpected address type") &&
               Hear(heard[3] == 4 ? 18 : 6, "Client connection response error");
    }
};

void Try_Proxy(Input& input, Script& script) {
    const unsigned lengths[] = {0, 1, 255, 256};
    const std::string user(input.One_Of(lengths), 'u'), password(input.One_Of(lengths), 'p');
    const std::pair<const char*, std::string> hosts[] = {{"a.test", "\3\6a.test"},
                                                         {"127.0.0.1", "\1\x7f\0\0\1"s},
                                                         {"::1", "\4" + std::string(15, '\0') + "\1"}};
    const auto& [host, address] = input.One_Of(hosts);
    script.write_limit = input.Below(4) ? INT_MAX : input.Between(0, 40);
    const std::string answers[] = {"\0Z......"s, "\5\0\5\0\0\1......"s,
                                   "\5\2\1\0\5\0\0\4..................more"s};
    script.incoming = input.One_Of(answers);
    for (unsigned left = input.Below(3); left > 0; --left)
        script.incoming[input.Below(12) % script.incoming.size()] = input.Piece("\5|\2|\1|\4|Z|\xff")[0];
    script.incoming.resize(script.incoming.size() - (input.Below(2) ? 0 : input.Below(8)));
    Network_Application application;
    application.texts = {{CONFIG_SOCKS_USER, user.c_str()}, {CONFIG_SOCKS_PASSWORD, password.c_str()}};
    UNIXNetworkManager manager(&application);
    Scripted_Connection connection(&application, script);
    Talk talk{{script.incoming}, static_cast<std::size_t>(script.write_limit)};
    const bool old = script.incoming[0] == 0,
               done = old ? talk.With_4(user) : talk.With_5(user, password, address);
    CHECK(done == (old ? manager.SOCKS4_Connect(&connection, "127.0.0.1", 443, 5)
                       : manager.SOCKS5_Connect(&connection, host, 443, 5)));
    // Behind a colon the connection may say why.
    const std::string error = done ? "" : (old ? "SOCKS4: " : "SOCKS5: ") + talk.error;
    CHECK(done == manager.error().view().empty() && manager.error().view().starts_with(error));
    CHECK(talk.sent.substr(0, talk.limit) == script.written);
    CHECK(!done || script.position + talk.words.left.size() == script.incoming.size());
}

// Whether anything goes out, and what, follows from the parts of the URL.
void Try_Request(Input& input, Scripted_Manager& manager, const char* url, bool sound,
                 const std::string (&parts)[4]) {
    const std::pair<double, std::string> versions[] = {{0.9, "0.9"}, {1, "1.0"},   {1.1, "1.1"},
                                                       {9, "9.0"},   {9.5, "1.1"}, {-1, "1.0"}};
    const auto& [version, shown] = input.One_Of(versions);
    const auto& [protocol, host, port, path] = parts;
    const char* const pin = input.Below(4) ? nullptr : "x";
    const int length = input.Between(-1, 3);
    const unsigned flags = input.Below(3); // 1 for what must be secure, 2 for a known server
    const std::size_t limit = input.Below(2) ? INT_MAX : input.Between(0, 99);
    manager.script.write_limit = static_cast<int>(limit);
    const std::unique_ptr<NetworkConnection> connection(
        manager.OpenURL("GET", url, "xyz", "a/b", length, "file", "value", "type", "password", "sha256", pin,
                        "A: b\r\n", -1, version, 5, flags));

    const bool secure = Lower(protocol) == "https", bare = host.size() >= 2 && host[0] == '[';
    const int number = port.empty() ? (secure ? 443 : 80) : TarnApplication::stoi(port.c_str(), -1, nullptr);
    const std::string peer = bare ? host.substr(1, host.size() - 2) : host;
    const std::string target = peer + " " + std::to_string(number);
    const std::string body = std::string("xyz").substr(0, length);
    std::string sent = "GET /" + path + " HTTP/" + shown + "\r\n";
    if (shown != "0.9")
        sent += "Host: " + host + (port.empty() ? "" : ":" + std::to_string(number)) + "\r\n";
    if (!body.empty())
        sent += "Content-Type: a/b\r\nContent-Length: " + std::to_string(body.size()) + "\r\n";
    sent += shown < "1.1" ? "A: b\r\n\r\n" : "A: b\r\nConnection: close\r\n\r\n";
    const bool between = limit == 0 || limit == sent.size();
    sent += body;

    std::string error;
    if (!sound)
        error = "Malformed URL";
    else if (!secure && Lower(protocol) != "http")
        error = "Unsupported protocol '" + protocol + "'";
    else if (!secure && flags == 1)
        error = "Request requires a secure connection";
    else if (!secure && pin)
        error = "Certificate pinning requested for non-secure connection";
    const bool asked = error.empty();
    if (asked && secure && flags == 2)
        error = "unknown server";
    const bool written = error.empty();
    if (written && limit < sent.size())
        error = between ? "peer is gone" : "peer took a part";
    CHECK(!connection == !error.empty() && manager.error().view() == error);
    CHECK(manager.script.written == (written ? sent.substr(0, limit) : ""));
    CHECK(manager.target == (!asked    ? ""
                             : !secure ? target
                                       : target + " TLS " + peer + " file value type password sha256 " +
                                             (pin ? pin : "-") + " 5 " + std::to_string(flags)));
}

void Try_URL(Input& input, Script& script) {
    const std::string url = input.Pieces(11, "http://|HTTP:|https://|//|/|[|]|[::1]|:|?|host|80|08|x");
    Network_Application application;
    Scripted_Manager manager(&application, script);
    static const std::regex form("([^:]*)://(\\[[^\\]]*\\]|(?!\\[)[^:/?]*)(?::([^/?]*))?(?:/(.*)|(\\?.*)?)");
    std::smatch match;
    const bool sound = std::regex_match(url, match, form);
    const char* texts[4];
    int lengths[4];
    const std::string longer = url + (input.Below(2) ? "" : "]:/?x");
    const int length = longer.size() > url.size() ? static_cast<int>(url.size()) : -1;
    CHECK(manager.SplitURL(longer.c_str(), length, &texts[0], &lengths[0], &texts[1], &lengths[1], &texts[2],
                           &lengths[2], &texts[3], &lengths[3]) == sound);
    const std::string path = match[4].matched ? match[4].str() : match[5].str();
    const std::string parts[] = {match[1], match[2], match[3], path};
    for (int i = 0; i < 4; ++i)
        CHECK(!sound || (i == 2 && !match[3].matched) ? !texts[i]
                                                      : std::string(texts[i], lengths[i]) == parts[i]);
    Try_Request(input, manager, url.c_str(), sound, parts);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    void (*const targets[])(Input&, Script&) = {Try_Response, Try_Proxy, Try_URL};
    const auto target = input.One_Of(targets);
    const int steps[] = {1, 2, 5, INT_MAX};
    Script script{.step = input.One_Of(steps)};
    target(input, script);
    CHECK(script.open == 0);
    return 0;
}
