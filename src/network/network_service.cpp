// A service of a host: its name, port and protocol.

#include "network/network_service.h"

#include "app/services/tarn_application.h"
#include "core/text_length.h"
#include "network/network_connection.h"
#include "network/network_manager.h"

NetworkService::NetworkService(TarnApplication* application, char* host, int host_length, int host_size,
                               int* host_owned, int port, int timeout)
    : application(application), port(port), timeout(timeout) {
    const int length = Text_Length(host, host_length);
    if (host_owned && *host_owned) {
        this->host.assign_nocopy(host, length, host_size);
        *host_owned = 0;
    } else {
        this->host.assign(host, length);
    }
}

NetworkService::~NetworkService() = default;

NetworkConnection* NetworkService::Connection() {
    return connection.get();
}

int NetworkService::Connect() {
    connection.reset();
    NetworkManager* manager = application->networkmanager();
    if (manager)
        connection.reset(manager->Connect(host.text(), port, timeout));
    if (connection)
        return Open_Exchange();
    Error("Error connecting to '" + host + "': " + (manager ? manager->error() : String()));
    return 0;
}

const String& NetworkService::error() {
    return error_;
}

void NetworkService::Error(const String& text) {
    error_ = text;
}
