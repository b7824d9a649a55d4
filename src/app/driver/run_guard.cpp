// What a run does when it is ended from outside: by a signal, by a page of a source that is gone, or for want
// of memory. Handlers keep to what is allowed in a handler.

#include "app/driver/run_guard.h"

#include "app/services/console_application.h"
#include "files/descriptor.h"
#include "files/unix_file_manager.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <exception>
#include <initializer_list>
#include <string_view>

namespace {

const char* program_name = "";
UNIXFileManager* sources = nullptr;
std::atomic<const char*> output_path = nullptr; // set ahead of the opening, forgotten behind the descriptor
std::atomic<int> output_descriptor = -1;
std::atomic<bool> output_is_regular = false; // valid with the descriptor

// The machine's own links to open descriptors: the superuser could remove them for everybody.
bool Names_A_Descriptor(std::string_view path) {
    return path == "/dev/stdout" || path == "/dev/stderr";
}

void Print_Last_Words(std::initializer_list<const char*> words) {
    for (const char* word : words) {
        if (!Write_All(STDERR_FILENO, word, strlen(word)))
            return;
    }
}

void Discard_Output() {
    if (Run_Guard::Cut_Output())
        unlink(output_path);
}

void End_By_Signal(int signal) {
    Discard_Output();
    std::signal(signal, SIG_DFL);
    raise(signal);
}

// The page behind an address can't be read: the file that is mapped there has become shorter.
void End_By_Lost_Page(int signal, siginfo_t* info, void*) {
    const char* path = sources && info->si_code == BUS_ADRERR ? sources->Mapped_Path(info->si_addr) : nullptr;
    if (!path)
        return End_By_Signal(signal);
    Discard_Output();
    Print_Last_Words({program_name, ": Unable to read '", path, "': The file was shortened\n"});
    _exit(1);
}

// What is thrown here is the allocator's, out of a place that nothing may be thrown out of.
[[noreturn]] void End_Without_Memory() {
    Discard_Output();
    Print_Last_Words({program_name, ": ", strerror(ENOMEM), "\n"});
    _exit(1);
}

void Open_Standard_Descriptors() {
    int descriptor;
    do
        descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    close(descriptor);
}

void Set_Handlers() {
    struct sigaction action = {};
    sigfillset(&action.sa_mask);
    action.sa_handler = End_By_Signal;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM, SIGXCPU}) {
        struct sigaction earlier;
        if (sigaction(signal, nullptr, &earlier) == 0 && earlier.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
    action.sa_sigaction = End_By_Lost_Page;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGBUS, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::set_terminate(End_Without_Memory);
}

} // namespace

void Run_Guard::Begin(const char* program) {
    program_name = program;
    Open_Standard_Descriptors();
    Set_Handlers();
}

void Run_Guard::Watch_Sources(UNIXFileManager* manager) {
    sources = manager;
}

void Run_Guard::Expect_Output(const char* path) {
    output_path = path;
}

bool Run_Guard::Watch_Output(int descriptor) {
    struct stat status;
    if (fstat(descriptor, &status) != 0)
        return false;
    output_is_regular = S_ISREG(status.st_mode);
    output_descriptor = Uninterrupted([&] { return fcntl(descriptor, F_DUPFD_CLOEXEC, 0); });
    return output_descriptor >= 0;
}

bool Run_Guard::Cut_Output() {
    if (!output_path)
        return false;
    struct stat status;
    const bool is_known = output_descriptor >= 0;
    if (is_known ? !output_is_regular
                 : stat(output_path, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size != 0)
        return false;
    if (is_known)
        (void)Uninterrupted([] { return ftruncate(output_descriptor, 0); }); // the name goes all the same
    return !Names_A_Descriptor(output_path.load());
}

void Run_Guard::Forget_Output() {
    const int descriptor = output_descriptor.exchange(-1);
    if (descriptor >= 0)
        close(descriptor);
    output_path = nullptr;
}
