// What tnc-view shows: sources, each line with what it became.
#ifndef VIEW_COMPILED_PAGE_H
#define VIEW_COMPILED_PAGE_H

#include "backend/outputs/compiler_output.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

struct Place {
    int section = -1; // none
    int line = 1;
};

// The sources, and the sink of the assembly, which it gives to their lines: an instruction to the line that
// the last lineno tells, a directive to the line that is being read. A file that is read twice is shown
// twice.
class Compiled_Page : public CompilerOutput {
  public:
    Compiled_Page() : CompilerOutput(0) {} // each item comes as it is written

    int errors = 0, warnings = 0;
    int section = -1;  // that is being read
    int text_line = 0; // where the text begins whose code comes; 0: no text
    std::function<int()> line_of_scanner;

    // Answers the section's number.
    int Add_Section(const std::string& file, Place included_at);
    // At the section that was read last under that name, else at the first.
    void Add_Diagnostic(std::string_view file, int line, bool is_error, const std::string& text);
    int DoWrite(const char* text, int length) override;
    // A page that needs nothing from elsewhere. Whatever a source holds is shown and never obeyed.
    String Html();

  private:
    struct Source_Line {
        std::string text;
        std::string remarks{}; // HTML, as is the code
        std::string code{};
    };
    struct Section {
        std::string file;
        Place included_at;
        std::vector<Source_Line> lines{}; // one at least
    };

    std::vector<Section> sections;
    std::string item; // a line of the assembly, as far as it has come
    Place item_start;
    bool item_is_text = false, in_quotes = false;
    int code_line = 1, instructions = 0;
    int part = 0; // of the assembly; odd ones are functions

    Source_Line& At(Place place);
    void End_Item();
    std::string Section_Html(int number) const;
};

#endif
