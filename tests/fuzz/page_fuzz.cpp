// Any text is a page: it compiles or is refused, with each back end, whatever the options. The last byte of
// the input chooses them. Bytes of value 1 part the input into the files that an include may name; the first
// is the page.
#include "app/driver/unix_compiler_application.h"
#include "backend/outputs/compiler_output.h"
#include "backend/writers/coverage_compiler_parser.h"
#include "backend/writers/doxygen_compiler_parser.h"
#include "page_files.h"

#include <cstdint>
#include <memory>
#include <mpdecimal.h>
#include <string_view>
#include <vector>

namespace {

constexpr double engines[] = {4.0, 4.06, 4.99, 5.06, 5.16, 5.52};

// The compiler without a word on its standard error, and with options by number.
class Silent_Application : public UNIXCompilerApplication {
  public:
    Silent_Application(unsigned choice, std::vector<std::string_view> texts)
        : UNIXCompilerApplication(1, arguments), files(this, std::move(texts)) {
        engine_version = engines[choice % 6];
        obfuscate_bytes = static_cast<int>(choice / 6 % 3);
        pedantic_warn = pedantic_error = choice & 64 ? -1 : 0;
        defines.Insert(new String("x", 1));
    }

    FileManager* filemanager() override { return &files; }
    bool CompileError(ErrorCode code, const char*, int, const String&) override {
        return code <= LAST_WARNING;
    }
    bool Error_WillPrint(ErrorCode) override { return false; }

  private:
    Page_Files files;
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

std::vector<std::string_view> Split(std::string_view input) {
    std::vector<std::string_view> texts;
    for (std::size_t end; (end = input.find('\1')) != input.npos; input.remove_prefix(end + 1))
        texts.push_back(input.substr(0, end));
    texts.push_back(input);
    return texts;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > 1 << 16)
        return 0;
    mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);
    const unsigned choice = data[size - 1];
    Silent_Application application(choice, Split({reinterpret_cast<const char*>(data), size}));
    StringOutput output;
    auto* text = new Tokenizer(application.filemanager());
    if (!text->Open("page"))
        __builtin_trap();
    Make_Parser(choice % 5, text, &output, &application)->Start();
    return 0;
}
