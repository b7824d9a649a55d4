// Every row of messages.def is shown by some golden page, less those that no page can bring about.

#include "app/diagnostics.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

struct Unseen {
    Message message;
    const char* reason;
};

constexpr Unseen unseen[] = {
    {Message::Assembly_Unterminated, "the text that is left is taken for the passage"},
    {Message::Filter_Invalid, "stored in a value whose report nobody makes"},
    {Message::Internal_Operator_Number, "the operators without an instruction are handled ahead of it"},
    {Message::Internal_Statistic_Stack_Empty, "an operand always stands in a subexpression"},
    {Message::Internal_Call_Without_Function, "the call operator is pushed together with its record"},
    {Message::Internal_Stack_Count_Empty, "an operator always stands in a subexpression"},
    {Message::Internal_Opcode, "generators use opcodes of the table"},
    {Message::Internal_Opcode_Double, "the one opcode with a fraction is there"},
    {Message::Internal_File_Version, "generators ask for versions of the table"},
    {Message::Internal_External_Function, "the state is left ahead of the end of an expression"},
    {Message::Internal_Inline_Call_Dot, "the dot is what begins the state"},
    {Message::While_Unopened, "the opening tag has pushed its record"},
};

// Whether the text is the message with some values in its placeholders.
bool Fits(const char* format, const char* text) {
    if (!*format)
        return !*text;
    if (*format != '%')
        return *format == *text && Fits(format + 1, text + 1);
    bool is_number = format[1] == 'd';
    for (;; ++text) {
        if (Fits(format + 2, text))
            return true;
        if (!*text || (is_number && !isdigit(static_cast<unsigned char>(*text)) && *text != '-'))
            return false;
    }
}

std::vector<std::string> Golden_Error_Lines() {
    std::vector<std::string> lines;
    for (const auto& entry : fs::recursive_directory_iterator(GOLDEN_DIRECTORY)) {
        if (entry.path().extension() != ".err")
            continue;
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);)
            lines.push_back(line);
    }
    return lines;
}

TEST(Messages, Every_Row_Is_Shown_By_A_Golden_Page) {
    std::vector<std::string> lines = Golden_Error_Lines();
    for (size_t row = 0; row < std::size(messages); ++row) {
        auto is_row = [&](const Unseen& entry) { return static_cast<size_t>(entry.message) == row; };
        bool is_expected = std::none_of(std::begin(unseen), std::end(unseen), is_row);
        std::string mark = (messages[row].code <= LAST_WARNING ? ": CW_" : ": CE_") +
                           std::to_string(messages[row].code) + ": ";
        bool is_shown = std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
            size_t at = line.find(mark);
            return at != std::string::npos && Fits(messages[row].text, line.c_str() + at + mark.size());
        });
        EXPECT_EQ(is_shown, is_expected) << mark << messages[row].text;
    }
}

} // namespace
