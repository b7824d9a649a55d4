#ifndef APP_CONSOLE_APPLICATION_H
#define APP_CONSOLE_APPLICATION_H

#include "app/services/tarn_application.h"
#include "backend/outputs/output.h"

#include <memory>

// Standard output of a command-line program. A text that holds a line end goes out at once, and error text
// goes to standard error unbuffered.
class ConsoleOutput : public BufferedOutput {
  public:
    explicit ConsoleOutput(int capacity);
    ~ConsoleOutput() override;

    void Write_Error(const char* text, int length) override;
    int Write(const char* text, int length) override;
    int DoWrite(const char* text, int length) override;
};

// A program run from the command line: walks the options, writes to the console, and has none of the engine's
// services but those that a derived class adds.
class ConsoleApplication : public TarnApplication {
  public:
    // Keeps argv, which must outlive the application.
    ConsoleApplication(int argc, char** argv);
    ~ConsoleApplication() override;

    NetworkManager* networkmanager() override { return nullptr; }
    CommerceManager* commercemanager() override { return nullptr; }
    DatabaseManager* databasemanager() override { return nullptr; }
    SystemLibraryManager* systemlibrarymanager() override { return nullptr; }
    Config* config() override { return nullptr; }
    const char* basename() override { return basename_; }
    const char* hostname() override { return hostname_; }
    Output* output() override { return output_.get(); }
    Output* SetOutput(Output* output) override;
    char* Crypt(const char* text, int length, const char* salt, int* result_length,
                int* result_size) override;
    char* MakeSessionID(int* length) override;
    unsigned processid() override { return 0; }
    unsigned threadid() override { return 0; }
    const char* lockhostname() override { return hostname_; }
    int lockexpiration() override { return 60; }
    bool OutputError(const char* text, int length) override;
    void Sleep(int seconds) override;
    int GetUserID() override { return 0; }
    int BeginAsynchronousTask(TarnVM* vm, unsigned flags) override;
    void AsynchronousSleep(long seconds, Tarn_PathType type, const char* path) override;
    bool SSL_Initialize(String* error) override;
    void* SSL_GetFunction(const char* name) override;
    void Log(unsigned event, LogParameter* parameters) override;
    void Notify_InputError(const String& text) override;
    void Notify_FatalError(const String& text) override;
    void Notify_TimeoutError(const String& text) override;
    void Notify_RuntimeError(int code, const String& text, bool display) override;
    void ResolveErrorSyslog() override;
    void Notify_Syslog(const String& text) override;
    const char* process_name() override { return ""; }
    void SetProcessName(const char* text, int length) override;
    bool ResolvePath(const char* path, String& result, Tarn_PathType type, String* error) override;

    // The order of the virtual operations is part of the binary interface: add at the end.
    // Hands each option to the operations below; answers the index of the first argument that is none, or -1
    // after a refused option.
    virtual int CommandLine_Parse();
    virtual bool CommandLine_Requires_Argument(char option) = 0;
    virtual bool CommandLine_Requires_Argument(const char* option) = 0;
    // The value is null for an option that takes none; false ends the walk.
    virtual bool CommandLine_Process_Option(char option, const char* value) = 0;
    virtual bool CommandLine_Process_Option_Long(const char* option, const char* value) = 0;
    // Writes the program's name and the text as a line of error output; answers false.
    virtual bool ArgumentError(const String& text);

    // The tail of a program's path, which may be null.
    static const char* Base_Name(const char* path);

  protected:
    // The order of the fields is part of the binary interface.
    std::unique_ptr<Output> output_;
    const char* basename_; // the tail of argv[0]
    char hostname_[128];
    int argc;
    char** argv;

  private:
    bool Process_Long_Option(int& index);
    bool Process_Option_Cluster(int& index);
};

#endif
