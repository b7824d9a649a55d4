#ifndef NETWORK_NETWORK_OUTPUT_H
#define NETWORK_NETWORK_OUTPUT_H

#include "backend/outputs/output.h"
#include "core/string.h"

class NetworkConnection;

// Writes to a connection; headers and errors go to another output. It owns neither, and both outlive it:
// what is still buffered is written when it goes.
class NetworkOutput : public BufferedOutput {
  public:
    // Either may be null. The timeout, in seconds, is that of each write.
    NetworkOutput(Output* inner, NetworkConnection* connection, int timeout, int capacity);
    ~NetworkOutput() override;

    void Write_Error(const char* text, int length) override;
    void Header(const char* name, const char* value) override;
    void Header(const char* name, int name_length, int name_owned, const char* value, int value_length,
                int value_owned) override;
    int DoWrite(const char* text, int length) override;

    // The connection's; empty without one.
    String error() const;

  protected:
    Output* inner;
    int timeout;
    NetworkConnection* connection;
};

#endif
