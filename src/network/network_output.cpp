// An output that ends in a connection.

#include "network/network_output.h"

#include "network/network_connection.h"

NetworkOutput::NetworkOutput(Output* inner, NetworkConnection* connection, int timeout, int capacity)
    : BufferedOutput(capacity), inner(inner), timeout(timeout), connection(connection) {
}

NetworkOutput::~NetworkOutput() {
    Flush();
}

void NetworkOutput::Write_Error(const char* text, int length) {
    if (inner)
        inner->Write_Error(text, length);
}

void NetworkOutput::Header(const char* name, const char* value) {
    if (inner)
        inner->Header(name, value);
}

void NetworkOutput::Header(const char* name, int name_length, int name_owned, const char* value,
                           int value_length, int value_owned) {
    if (inner)
        inner->Header(name, name_length, name_owned, value, value_length, value_owned);
    else
        Output::Header(name, name_length, name_owned, value, value_length, value_owned);
}

int NetworkOutput::DoWrite(const char* text, int length) {
    return connection ? connection->Write(text, length, timeout) : -1;
}

String NetworkOutput::error() const {
    return connection ? connection->error() : String();
}
