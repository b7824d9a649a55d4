// A connection that logs what passes.

#include "network/logging_network_connection.h"

LoggingNetworkConnection::LoggingNetworkConnection(TarnApplication* application, const char* name, int length,
                                                   int value, NetworkConnection* inner)
    : NetworkConnection(application), name(name, length), value(value), inner(inner) {
}

LoggingNetworkConnection::~LoggingNetworkConnection() = default;

int LoggingNetworkConnection::EstablishTLSConnection(const char* server_name, x509_st* certificate,
                                                     evp_pkey_st* key, int timeout, unsigned flags) {
    return inner->EstablishTLSConnection(server_name, certificate, key, timeout, flags);
}

x509_st* LoggingNetworkConnection::Server_Certificate() {
    return inner->Server_Certificate();
}

int LoggingNetworkConnection::Logged_Read(const char* text, int count) {
    if (count > 0)
        Log_Read(text, count);
    else if (count < 0)
        Log_Read_Failure();
    return count;
}

int LoggingNetworkConnection::Read(char* buffer, int length, int timeout) {
    return Logged_Read(buffer, inner->Read(buffer, length, timeout));
}

int LoggingNetworkConnection::ReadLine(String& line, int timeout, int size) {
    const int length = inner->ReadLine(line, timeout, size);
    return Logged_Read(line.text(), length);
}

int LoggingNetworkConnection::Write(const char* buffer, int length, int timeout) {
    const int count = inner->Write(buffer, length, timeout);
    if (count > 0)
        Log_Write(buffer, count);
    else if (count < 0)
        Log_Write_Failure();
    return count;
}

const String& LoggingNetworkConnection::error() {
    return inner->error();
}

void LoggingNetworkConnection::Error(const String& text) {
    inner->Error(text);
}

const String& LoggingNetworkConnection::ipaddress() {
    return inner->ipaddress();
}
