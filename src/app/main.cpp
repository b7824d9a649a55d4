#include "app/unix_compiler_application.h"

#include <csignal>
#include <mpdecimal.h>

int main(int argc, char** argv) {
    mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);
    std::signal(SIGPIPE, SIG_IGN); // an output that nobody reads any more is a failed write like others
    UNIXCompilerApplication application(argc, argv);
    return application.Go();
}
