// tnc-view: takes the options of tnc and writes, instead of assembly, a page of HTML that shows it beside the
// source. A source with errors is shown, too.

#include "app/driver/run_guard.h"
#include "app/driver/unix_compiler_application.h"
#include "backend/writers/file_compiler_parser.h"
#include "core/text_words.h"
#include "view/compiled_page.h"

#include <algorithm>
#include <mpdecimal.h>

// The assembly back end over a page, which it tells what is being read.
class View_Parser : public FileCompilerParser {
  public:
    View_Parser(Compiled_Page& page, ExternalCallManager* calls, CompilerApplication* application,
                int function_stdout_default, int function_access_default)
        : FileCompilerParser(nullptr, &page, calls, application, function_stdout_default,
                             function_access_default, START_FILE, nullptr, nullptr, nullptr),
          page(page) {
        page.line_of_scanner = [this] { return Linenumber(); };
    }

    // Comes at the start of a file and of each function, and behind an include.
    ParserStatus Start_Of_File() override {
        const auto depth = static_cast<std::size_t>(tokenizer_stack.Entries());
        const bool is_known = depth < open_files.size() && open_files[depth].first == tokenizer.get();
        open_files.resize(std::min(depth + is_known, open_files.size()));
        if (!is_known) {
            const Place from = depth == 0 ? Place() : Place{page.section, open_files.back().first->line + 1};
            open_files.emplace_back(tokenizer.get(), page.Add_Section(tokenizer->filename.text(), from));
        }
        page.section = open_files.back().second;
        return FileCompilerParser::Start_Of_File();
    }

    // A text, which moves no line number, is given to the line of its first visible byte.
    ParserStatus Unknown_Common(const char* text, int length, int opcode) override {
        const char* const end = text + length;
        const char* const visible = std::find_if_not(text, end, Is_Space);
        const auto line_feeds = std::count(visible == end ? text : visible, end, '\n');
        page.text_line = Linenumber() - static_cast<int>(line_feeds);
        const ParserStatus status = FileCompilerParser::Unknown_Common(text, length, opcode);
        page.text_line = 0;
        return status;
    }

  private:
    Compiled_Page& page;
    std::vector<std::pair<const Tokenizer*, int>> open_files; // with their sections, the innermost last
};

class View_Application : public UNIXCompilerApplication {
  public:
    View_Application(int argc, char** argv) : UNIXCompilerApplication(argc, argv) {
        output_path = "output.html";
    }
    ~View_Application() override { End_Run(); }
    int Go() override { return UNIXCompilerApplication::Go() != 0 || page.errors != 0; }

    bool CompileError(ErrorCode code, const char* file, int line, const String& message) override {
        const bool goes_on = UNIXCompilerApplication::CompileError(code, file, line, message);
        const char* const prefix = code <= LAST_WARNING ? "CW_" : "CE_";
        if (Error_WillPrint(code))
            page.Add_Diagnostic(file, line, !goes_on, prefix + std::to_string(code) + ": " + message.text());
        return goes_on;
    }

  protected:
    bool Compile() override {
        if (doxygen_output || coverage_output)
            return ArgumentError("-d and -L make no assembly that could be shown");
        parser = std::make_unique<View_Parser>(page, externalcallmanager(), this, function_output_default,
                                               function_access_default);
        if (!Compile_Files() && page.errors == 0)
            return false;
        const String html = page.Html();
        assembly->Write(html.text(), html.length());
        return true;
    }

  private:
    Compiled_Page page;
};

int main(int argc, char** argv) {
    Run_Guard::Begin(ConsoleApplication::Base_Name(argv[0]));
    mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);
    return View_Application(argc, argv).Go();
}
