// URLs, and the HTTP requests that are sent to them.

#include "app/services/tarn_application.h"
#include "core/text_length.h"
#include "core/text_words.h"
#include "network/network_connection.h"
#include "network/network_manager.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <string_view>

namespace {

constexpr std::string_view separator = "://";
constexpr int http_port = 80;
constexpr int https_port = 443;

struct URL {
    std::string_view protocol;
    std::string_view host;
    std::string_view port; // null data: none
    std::string_view path;
};

// Takes what stands ahead of the first of these bytes, or all of it, away from the rest.
std::string_view Take_Until(std::string_view& rest, const char* bytes) {
    const std::string_view taken = rest.substr(0, rest.find_first_of(bytes));
    rest.remove_prefix(taken.size());
    return taken;
}

// A literal address keeps its brackets. False where one isn't closed.
bool Take_Host(std::string_view& rest, std::string_view& host) {
    if (!rest.starts_with('[')) {
        host = Take_Until(rest, ":/?");
        return true;
    }
    const std::size_t end = rest.find(']');
    if (end == std::string_view::npos)
        return false;
    host = rest.substr(0, end + 1);
    rest.remove_prefix(end + 1);
    return true;
}

bool Split(std::string_view rest, URL& url) {
    url.protocol = Take_Until(rest, ":");
    if (!rest.starts_with(separator))
        return false;
    rest.remove_prefix(separator.size());
    if (!Take_Host(rest, url.host))
        return false;
    if (rest.starts_with(':')) {
        rest.remove_prefix(1);
        url.port = Take_Until(rest, "/?");
    }
    if (rest.starts_with('/'))
        rest.remove_prefix(1);
    else if (!rest.empty() && rest.front() != '?')
        return false;
    url.path = rest;
    return true;
}

void Store(std::string_view part, const char** text, int* length) {
    *text = part.data();
    *length = Length_Of(part);
}

// Answers a version that the protocol has, for one that isn't a number, too.
double Sound_Version(double version) {
    if (!(version <= 9.0))
        return 1.1;
    return version < 0 ? 1.0 : version;
}

void Append_Version(String& head, double version) {
    char digits[16];
    const auto end = std::to_chars(digits, digits + sizeof digits, version, std::chars_format::fixed, 1).ptr;
    head.cat(digits, static_cast<int>(end - digits));
}

} // namespace

int NetworkManager::SplitURL(const char* url, int length, const char** protocol, int* protocol_length,
                             const char** host, int* host_length, const char** port, int* port_length,
                             const char** path, int* path_length) {
    URL parts;
    const bool sound = Split(View(url, length), parts);
    if (!sound)
        parts = URL();
    Store(parts.protocol, protocol, protocol_length);
    Store(parts.host, host, host_length);
    Store(parts.port, port, port_length);
    Store(parts.path, path, path_length);
    return sound;
}

NetworkConnection* NetworkManager::OpenURL(const char* method, const char* url, const char* body,
                                           const char* content_type, int body_length, const char* cert_file,
                                           const char* cert_value, const char* cert_type,
                                           const char* cert_password, const char* pin_algorithm,
                                           const char* pin_digest, const char* headers, int headers_length,
                                           double http_version, int timeout, unsigned flags) {
    const char *protocol, *host, *port, *path;
    int protocol_length, host_length, port_length, path_length;
    if (!SplitURL(url, -1, &protocol, &protocol_length, &host, &host_length, &port, &port_length, &path,
                  &path_length)) {
        Error("Malformed URL");
        return nullptr;
    }
    int port_value = 0;
    std::unique_ptr<NetworkConnection> connection(OpenURL_Connect(
        protocol, protocol_length, host, host_length, port, port_length, cert_file, cert_value, cert_type,
        cert_password, pin_algorithm, pin_digest, timeout, flags, &port_value));
    if (!connection || !OpenURL_SendRequest(connection.get(), method, path, path_length, host, host_length,
                                            port, port_length, port_value, body, content_type, body_length,
                                            headers, headers_length, http_version, timeout))
        return nullptr;
    return connection.release();
}

NetworkConnection* NetworkManager::OpenURL_Connect(const char* protocol, int protocol_length,
                                                   const char* host, int host_length, const char* port,
                                                   int port_length, const char* cert_file,
                                                   const char* cert_value, const char* cert_type,
                                                   const char* cert_password, const char* pin_algorithm,
                                                   const char* pin_digest, int timeout, unsigned flags,
                                                   int* port_value) {
    const String name(protocol, protocol_length);
    const bool secure = Same_Word(name.view(), "https");
    String refusal;
    if (!secure && !Same_Word(name.view(), "http"))
        refusal = "Unsupported protocol '" + name + "'";
    else if (!secure && (flags & CONNECTION_MUST_BE_SECURE))
        refusal = "Request requires a secure connection";
    else if (!secure && Given(pin_algorithm) && Given(pin_digest))
        refusal = "Certificate pinning requested for non-secure connection";
    if (refusal.length() > 0) {
        Error(refusal);
        return nullptr;
    }
    String peer(host, host_length);
    if (peer.length() >= 2 && peer.matches('[', 0) && peer.matches(']', peer.length() - 1))
        peer = peer.at(1, peer.length() - 1);
    *port_value = secure ? https_port : http_port;
    if (port && Text_Length(port, port_length) > 0)
        *port_value = TarnApplication::stoi(port, port_length, nullptr);
    std::unique_ptr<NetworkConnection> connection(Connect(peer.text(), *port_value, timeout));
    if (connection && secure &&
        !SSL_Connect(connection.get(), peer.text(), cert_file, cert_value, cert_type, cert_password,
                     pin_algorithm, pin_digest, timeout, flags))
        return nullptr;
    return connection.release();
}

int NetworkManager::OpenURL_SendRequest(NetworkConnection* connection, const char* method, const char* path,
                                        int path_length, const char* host, int host_length, const char* port,
                                        int port_length, int port_value, const char* body,
                                        const char* content_type, int body_length, const char* headers,
                                        int headers_length, double http_version, int timeout) {
    body_length = Text_Length(body, body_length);
    const double version = Sound_Version(http_version);
    String head(method);
    head += " /";
    head.cat(path, path_length);
    head += " HTTP/";
    Append_Version(head, version);
    head += "\r\n";
    if (version >= 1.0) {
        head += "Host: ";
        head.cat(host, host_length);
        if (port && Text_Length(port, port_length) > 0)
            head += String(":") + port_value;
        head += "\r\n";
    }
    if (body_length > 0) {
        head += "Content-Type: ";
        head += content_type;
        head += String("\r\nContent-Length: ") + body_length + "\r\n";
    }
    head.cat(headers, headers_length);
    head += version >= 1.1 ? "Connection: close\r\n\r\n" : "\r\n";
    if (connection->Write(head, timeout) != head.length() ||
        (body_length > 0 && connection->Write(body, body_length, timeout) != body_length))
        return Fail(connection->error());
    return 1;
}
