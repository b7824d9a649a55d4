// The golden pages and the pages in the documents, which are compared byte for byte too, show every message
// and every instruction, less those listed here with the reason why no page can.

#include "app/services/diagnostics.h"
#include "backend/instructions/opcode.h"

#include <algorithm>
#include <filesystem>
#include <fnmatch.h>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

const std::map<Message, const char*> unseen_messages = {
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
const std::set<std::string_view> unseen_instructions = {"cmp", "jmp_ge", "jmp_gt", "jmp_lt"};

std::vector<std::string> All_Lines(const char* extension) {
    std::vector<std::string> lines;
    for (const char* folder : {GOLDEN_DIRECTORY, GOLDEN_DIRECTORY "/../../docs"}) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            if (entry.path().extension() != extension && entry.path().extension() != ".md")
                continue;
            std::ifstream file(entry.path(), std::ios::binary);
            for (std::string line; std::getline(file, line);)
                lines.push_back(line);
        }
    }
    return lines;
}

// A shell's pattern for the lines that show the message.
std::string Pattern_Of(const Message_Row& row) {
    std::string pattern = (row.code <= LAST_WARNING ? "*: CW_" : "*: CE_") + std::to_string(row.code) + ": ";
    for (const char* at = row.text; *at; ++at)
        if (*at != '%')
            pattern += std::string("\\") + *at;
        else
            pattern += *++at == '%' ? '%' : '*';
    return pattern;
}

TEST(GoldenPages, Show_Every_Message) {
    const std::vector<std::string> lines = All_Lines(".err");
    for (std::size_t row = 0; row < std::size(messages); ++row) {
        const std::string pattern = Pattern_Of(messages[row]);
        const bool shown = std::ranges::any_of(
            lines, [&](const std::string& line) { return fnmatch(pattern.c_str(), line.c_str(), 0) == 0; });
        EXPECT_NE(shown, unseen_messages.contains(static_cast<Message>(row))) << pattern;
    }
}

TEST(GoldenPages, Show_Every_Instruction) {
    std::set<std::string_view> shown;
    const std::vector<std::string> lines = All_Lines(".tna");
    for (const std::string& line : lines)
        if (line.starts_with('\t'))
            shown.insert(std::string_view(line).substr(1, line.find('\t', 1) - 1));
    for (const Opcode_Info& row : opcode_rows)
        if (row.operands != Operand_Form::ENGINE) {
            EXPECT_NE(shown.contains(row.mnemonic), unseen_instructions.contains(row.mnemonic))
                << row.mnemonic;
        }
}

} // namespace
