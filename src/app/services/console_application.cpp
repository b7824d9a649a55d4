// The walk over the words of the command line, and what is printed for a user.

#include "app/services/console_application.h"

#include "core/text_length.h"

#include <cstdio>
#include <unistd.h>
#include <utility>

ConsoleOutput::ConsoleOutput(int capacity) : BufferedOutput(capacity) {
}

ConsoleOutput::~ConsoleOutput() {
    Flush();
}

void ConsoleOutput::Write_Error(const char* text, int length) {
    fwrite(text, 1, View(text, length).size(), stderr);
}

int ConsoleOutput::Write(const char* text, int length) {
    const int written = BufferedOutput::Write(text, length);
    if (fill > 0 && View(text, length).find_first_of("\r\n") != std::string_view::npos)
        Flush();
    return written;
}

int ConsoleOutput::DoWrite(const char* text, int length) {
    const int written = printf("%.*s", length, text);
    fflush(stdout);
    return written;
}

ConsoleApplication::ConsoleApplication(int argc, char** argv)
    : output_(std::make_unique<ConsoleOutput>(8192)), basename_(Base_Name(argv[0])), argc(argc), argv(argv) {
    gethostname(hostname_, sizeof hostname_);
    hostname_[sizeof hostname_ - 1] = '\0';
}

ConsoleApplication::~ConsoleApplication() = default;

Output* ConsoleApplication::SetOutput(Output* output) {
    return std::exchange(output_, std::unique_ptr<Output>(output)).release();
}

char* ConsoleApplication::Crypt(const char*, int, const char*, int*, int*) {
    return nullptr;
}

char* ConsoleApplication::MakeSessionID(int*) {
    return nullptr;
}

bool ConsoleApplication::OutputError(const char* text, int length) {
    output()->Write_Error(text, length);
    return false;
}

void ConsoleApplication::Sleep(int) {
}

int ConsoleApplication::BeginAsynchronousTask(TarnVM*, unsigned) {
    return 3;
}

void ConsoleApplication::AsynchronousSleep(long, Tarn_PathType, const char*) {
}

bool ConsoleApplication::SSL_Initialize(String*) {
    return false;
}

void* ConsoleApplication::SSL_GetFunction(const char*) {
    return nullptr;
}

void ConsoleApplication::Log(unsigned, LogParameter*) {
}

void ConsoleApplication::Notify_InputError(const String& text) {
    Error(text);
}

void ConsoleApplication::Notify_FatalError(const String& text) {
    Error(text);
}

void ConsoleApplication::Notify_TimeoutError(const String& text) {
    Error(text);
}

void ConsoleApplication::Notify_RuntimeError(int, const String& text, bool display) {
    if (display)
        Error(text);
}

void ConsoleApplication::ResolveErrorSyslog() {
}

void ConsoleApplication::Notify_Syslog(const String&) {
}

void ConsoleApplication::SetProcessName(const char*, int) {
}

bool ConsoleApplication::ResolvePath(const char* path, String& result, Tarn_PathType, String*) {
    result.assign(path, -1);
    return true;
}

int ConsoleApplication::CommandLine_Parse() {
    for (int index = 1; index < argc; ++index) {
        const char* argument = argv[index];
        if (argument[0] != '-')
            return index;
        const bool is_long = argument[1] == '-';
        if (!(is_long ? Process_Long_Option(index) : Process_Option_Cluster(index)))
            return -1;
    }
    return argc > 1 ? argc : 1;
}

// Both take the option's value from the next argument, and leave the index at the last argument used.
bool ConsoleApplication::Process_Long_Option(int& index) {
    const char* name = argv[index] + 2;
    const char* value = nullptr;
    if (CommandLine_Requires_Argument(name)) {
        if (index + 1 >= argc)
            return ArgumentError(String("Option '--") + name + "' requires an argument");
        value = argv[++index];
    }
    return CommandLine_Process_Option_Long(name, value);
}

// What stands behind a letter that takes a value is dropped: the value is always the next argument.
bool ConsoleApplication::Process_Option_Cluster(int& index) {
    for (const char* letter = argv[index] + 1; *letter; ++letter) {
        if (CommandLine_Requires_Argument(*letter)) {
            if (index + 1 >= argc)
                return ArgumentError(String("Option '-") + *letter + "' requires an argument");
            return CommandLine_Process_Option(*letter, argv[++index]);
        }
        if (!CommandLine_Process_Option(*letter, nullptr))
            return false;
    }
    return true;
}

bool ConsoleApplication::ArgumentError(const String& text) {
    return Error(String(basename()) + ": " + text + "\n");
}

const char* ConsoleApplication::Base_Name(const char* path) {
    const char* name = path ? path : "";
    for (const char* at = name; *at; ++at) {
        if (*at == '/' || *at == '\\')
            name = at + 1;
    }
    return name;
}
