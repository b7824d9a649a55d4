// Any text is a page: it compiles or is refused, with each back end, whatever the options. The first byte of
// the input chooses them.
#include "app/unix_compiler_application.h"
#include "backend/compiler_output.h"
#include "backend/coverage_compiler_parser.h"
#include "backend/doxygen_compiler_parser.h"
#include "files/file_manager.h"

#include <mpdecimal.h>

#include <cstdint>
#include <memory>

namespace {

constexpr double engines[] = {4.0, 4.06, 4.99, 5.06, 5.16, 5.52};

// The compiler without a word on its standard error, and with options by number.
class Silent_Application : public UNIXCompilerApplication {
  public:
    explicit Silent_Application(unsigned choice) : UNIXCompilerApplication(1, arguments) {
        engine_version = engines[choice % 6];
        obfuscate_bytes = static_cast<int>(choice / 6 % 3);
        pedantic_warn = pedantic_error = choice & 64 ? -1 : 0;
        defines.Insert(new String("x", 1));
    }

    bool CompileError(ErrorCode code, const char*, int, const String&) override {
        return code <= LAST_WARNING;
    }
    bool Error_WillPrint(ErrorCode) override { return false; }

  private:
    static inline char name[] = "tnc";
    static inline char* arguments[] = {name, nullptr};
};

std::unique_ptr<Parser> Make_Parser(unsigned kind, Tokenizer* text, CompilerOutput* output,
                                    CompilerApplication* application) {
    ExternalCallManager* const calls = application->externalcallmanager();
    if (kind == 0)
        return std::make_unique<DoxygenCompilerParser>(text, output, calls, application);
    if (kind == 1)
        return std::make_unique<CoverageCompilerParser>(text, output, calls, application, -1, -1, START_FILE,
                                                        nullptr, nullptr, nullptr);
    auto parser = std::make_unique<FileCompilerParser>(text, output, calls, application, -1, -1, START_FILE,
                                                       nullptr, nullptr, nullptr);
    parser->Last_File();
    return parser;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > 1 << 16)
        return 0;
    mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);
    Silent_Application application(data[0]);
    StringOutput output;
    auto* text = new Tokenizer(reinterpret_cast<const char*>(data), static_cast<int>(size), 0);
    Make_Parser(data[0] % 5, text, &output, &application)->Start();
    return 0;
}
