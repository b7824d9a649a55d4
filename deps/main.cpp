// The program tnc-deps.

#include "app/driver/run_guard.h"
#include "deps/dependency_application.h"

#include <mpdecimal.h>

int main(int argc, char** argv) {
    Run_Guard::Begin(ConsoleApplication::Base_Name(argv[0]));
    mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);
    Dependency_Application application(argc, argv);
    return application.Go();
}
