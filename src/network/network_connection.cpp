// What all connections share.

#include "network/network_connection.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

NetworkConnection::NetworkConnection(TarnApplication* application) : application(application) {
}

NetworkConnection::~NetworkConnection() = default;

const String& NetworkConnection::error() {
    return error_;
}

void NetworkConnection::Error(const String& text) {
    error_ = text;
}

const String& NetworkConnection::ipaddress() {
    return ipaddress_;
}

int NetworkConnection::Write(const String& text, int timeout) {
    return Write(text.text(), text.length(), timeout);
}

bool NetworkConnection::Write(int timeout, const char* format, ...) {
    char text[8192];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    if (length < 0)
        return false;
    return Write(text, std::min(length, static_cast<int>(sizeof text) - 1), timeout) == length;
}
