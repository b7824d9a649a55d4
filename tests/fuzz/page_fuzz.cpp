// Any text is a page: it compiles or is refused, with each back end, whatever the options, and twice to the
// same bytes and words. The last byte of the input chooses the options. From 128 on, the bytes ahead of it
// are written as pages by a grammar, and what comes of them is looked at. Below, bytes of value 1 part them
// into the files that an include may name; the first is the page.
#include "app/driver/unix_compiler_application.h"
#include "assembly.h"
#include "backend/outputs/compiler_output.h"
#include "backend/writers/coverage_compiler_parser.h"
#include "backend/writers/doxygen_compiler_parser.h"
#include "page_files.h"
#include "page_grammar.h"

#include <cstdint>
#include <memory>
#include <mpdecimal.h>
#include <string_view>
#include <vector>

namespace {

using Texts = std::vector<std::string_view>;

const char* const pieces[] = {"", "1", "4", "7"}; // values of -O

enum Back_End { DOCUMENTATION, COVERAGE, CODE };

// Each is given with one of so many choices.
const struct {
    char letter;
    unsigned each;
    const char* value;
} switches[] = {{'D', 1, "x"},          {'A', 5, nullptr}, {'f', 5, nullptr}, {'F', 4, nullptr},
                {'b', 2, LIBRARY},      {'w', 3, "6,13"},  {'W', 4, "51"},    {'X', 11, "all"},
                {'p', 2, "lock,scope"}, {'p', 6, "all"},   {'P', 7, "lock"},  {'P', 21, "all"}};

// The compiler with options by number, which keeps what it says to itself.
class Silent_Application : public UNIXCompilerApplication {
  public:
    Silent_Application(unsigned choice, const char* bytes, const Texts& texts)
        : UNIXCompilerApplication(1, arguments), files(this, texts) {
        const char* const engines[] = {"4.0", "4.06", "4.99", "5.06", "5.16", "5.52"};
        CommandLine_Process_Option('C', engines[choice % 6]);
        if (*bytes)
            CommandLine_Process_Option('O', bytes);
        for (const auto& [letter, each, value] : switches)
            if (choice % each == 0)
                CHECK(CommandLine_Process_Option(letter, value));
    }

    FileManager* filemanager() override { return &files; }
    bool Error(const String& text) override { return said += text.view(), true; }

    std::unique_ptr<FileCompilerParser> Make_Parser(Back_End back_end, CompilerOutput* output) {
        ExternalCallManager* const calls = externalcallmanager();
        if (back_end == DOCUMENTATION)
            return std::make_unique<DoxygenCompilerParser>(nullptr, output, calls, this);
        if (back_end == COVERAGE)
            return std::make_unique<CoverageCompilerParser>(nullptr, output, calls, this,
                                                            function_output_default, function_access_default,
                                                            START_FILE, nullptr, nullptr, nullptr);
        return std::make_unique<FileCompilerParser>(nullptr, output, calls, this, function_output_default,
                                                    function_access_default, START_FILE, nullptr, nullptr,
                                                    nullptr);
    }

    std::string said;

  private:
    Page_Files files;
    static inline char name[] = "tnc";
    static inline char* arguments[] = {name, nullptr};
};

struct Result {
    bool whole = true;
    std::string text = {}, said = {};
    bool operator==(const Result&) const = default;
};

// Of one source, or of two.
Result Compile(const Texts& texts, unsigned choice, Back_End back_end, const char* bytes = "") {
    Silent_Application application(choice, bytes, texts);
    StringOutput output;
    Result result;
    {
        const auto parser = application.Make_Parser(back_end, &output);
        const int sources = 1 + (choice % 5 == 0);
        for (int i = 1; i <= sources && result.whole; ++i) {
            auto* const source = new Tokenizer(application.filemanager());
            delete parser->Set_Tokenizer(source);
            if (!source->Open(i == 1 ? "page" : "y"))
                break;
            if (i == sources)
                parser->Last_File();
            result.whole = parser->Start() == 0;
        }
    }
    int length;
    const char* const text = output.Contents(&length);
    result.text.assign(text, length);
    result.said = application.said;
    return result;
}

void Check_Code(const Texts& texts, unsigned choice) {
    const Result whole = Compile(texts, choice, CODE),
                 split = Compile(texts, choice, CODE, pieces[choice % 4]);
    CHECK(whole.whole == split.whole);
    if (!whole.whole)
        return;
    const Assembly code(whole.text);
    CHECK(Assembly(split.text).items == code.items);
    const bool includes = texts[0].find("INCLUDE") != texts[0].npos;
    // Where nothing else is in the list; the last line is that of the end.
    const std::string list = "\n" + Compile(texts, choice, COVERAGE).text;
    if (!includes && list.find_first_not_of("0123456789\n") == list.npos)
        for (std::size_t i = 0; i + 1 < code.lines.size(); ++i)
            CHECK(list.find("\n" + code.lines[i] + "\n") != list.npos);
}

Texts Split(std::string_view input) {
    Texts texts;
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
    std::string pages[3];
    Texts texts = Split({reinterpret_cast<const char*>(data), size});
    if (choice >= 128) {
        Input input(data, size - 1);
        Page_Grammar grammar(input);
        pages[0] = grammar.Page(), pages[1] = grammar.Body(2), pages[2] = grammar.Body(1);
        texts = {pages[0], pages[1], pages[2]};
    }
    const auto back_end = static_cast<Back_End>(choice / 4 % 3);
    CHECK(Compile(texts, choice, back_end, pieces[choice % 4]) ==
          Compile(texts, choice, back_end, pieces[choice % 4]));
    if (choice >= 128)
        Check_Code(texts, choice);
    return 0;
}
