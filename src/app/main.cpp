#include "app/unix_compiler_application.h"

#include <mpdecimal.h>

int main(int argc, char** argv) {
    mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);
    UNIXCompilerApplication application(argc, argv);
    return application.Go();
}
