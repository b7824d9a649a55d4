// The golden pages show every message and every instruction, less those listed here with the reason why no
// page can.

#include "app/services/diagnostics.h"
#include "backend/instructions/opcode.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>

namespace {

namespace fs = std::filesystem;

struct Unseen_Message {
    Message message;
    const char* reason;
};

constexpr Unseen_Message unseen_messages[] = {
    {Message::Assembly_Unterminated, "the text that is left is taken for the passage"},
    {Message::Elseif_Without_If, "the report of its else part comes first"},
    {Message::File_Not_Reopened, "the including file would have to go while it is included"},
    {Message::Filter_Invalid, "stored in a value whose report nobody makes"},
    {Message::Internal_Call_Without_Function, "the operator of a call is pushed together with its record"},
    {Message::Internal_File_Version, "generators ask for versions of the table"},
    {Message::Internal_Inline_Call_Dot, "the dot was seen ahead of the step"},
    {Message::Internal_Opcode, "generators use instructions of the table"},
    {Message::Internal_Opcode_Double, "only pushf is written with a number"},
    {Message::Internal_Operator_Number, "operators without an instruction are handled ahead of it"},
    {Message::Internal_Operator_Unidentified, "all signs that are read as operators are in the table"},
    {Message::Too_Many_Open_Parentheses, "what leaves one open raises the bias, which is reported first"},
    {Message::While_Unopened, "the opening tag has pushed its record"},
};

// No tag and no operator comes down to these.
constexpr std::string_view unseen_instructions[] = {"cmp", "jmp_ge", "jmp_gt", "jmp_lt"};

std::string Contents(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::string All_Contents(const char* extension) {
    std::string all;
    for (const auto& entry : fs::recursive_directory_iterator(GOLDEN_DIRECTORY)) {
        if (entry.path().extension() == extension)
            all += Contents(entry.path());
    }
    return all;
}

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

TEST(GoldenPages, Show_Every_Message) {
    const std::string all_lines = All_Contents(".err");
    for (std::size_t row = 0; row < std::size(messages); ++row) {
        auto is_row = [&](const Unseen_Message& unseen) {
            return static_cast<std::size_t>(unseen.message) == row;
        };
        bool is_expected = std::none_of(std::begin(unseen_messages), std::end(unseen_messages), is_row);
        std::string mark = (messages[row].code <= LAST_WARNING ? ": CW_" : ": CE_") +
                           std::to_string(messages[row].code) + ": ";
        bool is_shown = false;
        std::istringstream lines(all_lines);
        for (std::string line; !is_shown && std::getline(lines, line);) {
            std::size_t at = line.find(mark);
            is_shown = at != std::string::npos && Fits(messages[row].text, line.c_str() + at + mark.size());
        }
        EXPECT_EQ(is_shown, is_expected) << mark << messages[row].text;
    }
}

TEST(GoldenPages, Show_Every_Instruction) {
    std::set<std::string> shown;
    std::istringstream lines(All_Contents(".tna"));
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('\t'))
            shown.insert(line.substr(1, line.find('\t', 1) - 1));
    }
    for (const Opcode_Info& row : opcode_rows) {
        const std::string mnemonic(row.mnemonic);
        if (row.operands != Operand_Form::ENGINE) {
            const bool is_unseen =
                std::ranges::find(unseen_instructions, mnemonic) != std::end(unseen_instructions);
            EXPECT_NE(shown.count(mnemonic) > 0, is_unseen) << mnemonic;
        }
    }
}

} // namespace
