#include "app/unix_compiler_application.h"

#include <csignal>
#include <mpdecimal.h>

// The tables of the compilation go with the process, which takes less time than to free their entries one by
// one. They are no leak as long as this leads to them.
FileCompilerParser* parser_at_exit;

int main(int argc, char** argv) {
    mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);
    std::signal(SIGPIPE, SIG_IGN); // an output that nobody reads any more is a failed write like others
    UNIXCompilerApplication application(argc, argv);
    int status = application.Go();
    parser_at_exit = application.Release_Parser();
    return status;
}
