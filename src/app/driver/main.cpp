// The program. What has to be set up ahead of all else is set up here.

#include "app/driver/run_guard.h"
#include "app/driver/unix_compiler_application.h"

#include <mpdecimal.h>

// The tables of the compilation go with the process, which takes less time than to free their entries one by
// one. They are no leak as long as this leads to them.
FileCompilerParser* parser_at_exit;

int main(int argc, char** argv) {
    Run_Guard::Begin(ConsoleApplication::Base_Name(argv[0]));
    mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);
    UNIXCompilerApplication application(argc, argv);
    const int status = application.Go();
    parser_at_exit = application.Release_Parser();
    return status;
}
