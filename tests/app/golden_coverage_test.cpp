// The golden pages show every message, tag, route of an attribute, operator and instruction, less those
// listed here with the reason why no page can.

#include "app/diagnostics.h"
#include "backend/opcode.h"
#include "compiler/attribute_routes.h"
#include "frontend/attribute_lookup.h"
#include "frontend/operator_lookup.h"
#include "frontend/tag_lookup.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>
#include <utility>

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

struct Unseen_Key {
    const char* key;
    const char* reason;
};

constexpr Unseen_Key unseen_tags[] = {
    {"expression", "has no code"},
};

constexpr Unseen_Key unseen_operators[] = {
    {"fmt", "obsolete"},
    {"substr", "obsolete"},
    {"call", "the code generator's own"},
};

constexpr Unseen_Key unseen_instructions[] = {
    {"cmp", "no tag and no operator comes down to it"},
    {"jmp_ge", "no tag and no operator comes down to it"},
    {"jmp_gt", "no tag and no operator comes down to it"},
    {"jmp_lt", "no tag and no operator comes down to it"},
};

template <size_t size>
bool Is_Listed(const Unseen_Key (&list)[size], std::string_view key) {
    return std::any_of(std::begin(list), std::end(list),
                       [&](const Unseen_Key& unseen) { return key == unseen.key; });
}

std::string Lower(std::string text) {
    for (char& c : text)
        c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return text;
}

bool Is_Word(char c) {
    return isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '-';
}

// What the golden pages that compile use, found by a reader that is simpler than the scanner: it knows tags,
// attributes, values in quotes and values in braces.
struct Used {
    std::set<std::string> tags;
    std::set<std::pair<int, int>> attributes; // tag and attribute
    bool tag_error = false;                   // a directive for the errors of one tag
    std::set<std::string> operators;
    std::set<std::string> instructions;

    void Read_Page(const std::string& page) {
        for (size_t at = page.find('<'); at != std::string::npos; at = page.find('<', at)) {
            ++at;
            if (at < page.size() && page[at] == '/')
                ++at;
            std::string name = Read_Word(page, at);
            if (const _TagLookup* tag = tags_by_name.Lookup(name.c_str(), -1)) {
                tags.insert(name);
                Read_Attributes(page, at, tag->id);
            }
        }
        for (size_t open = page.find('{'); open != std::string::npos; open = page.find('{', open + 1))
            Read_Operators(page.substr(open + 1, page.find('}', open) - open - 1));
    }

    static std::string Read_Word(const std::string& page, size_t& at) {
        size_t begin = at;
        while (at < page.size() && Is_Word(page[at]))
            ++at;
        return Lower(page.substr(begin, at - begin));
    }

    void Read_Attributes(const std::string& page, size_t& at, int tag) {
        while (at < page.size() && page[at] != '>') {
            std::string name = Read_Word(page, at);
            if (name.empty()) {
                Skip_Value(page, at);
                continue;
            }
            if (const _AttributeLookup* attribute = attributes_by_name.Lookup(name.c_str(), -1))
                attributes.emplace(tag, attribute->id);
            else if (name.size() > 6 && name.ends_with("_error"))
                tag_error = true;
        }
    }

    // One byte, or a whole quoted value.
    static void Skip_Value(const std::string& page, size_t& at) {
        if (page[at++] != '"')
            return;
        bool is_expression = at < page.size() && page[at] == '{';
        size_t end = page.find(is_expression ? "}\"" : "\"", at);
        at = end == std::string::npos ? page.size() : end + (is_expression ? 2 : 1);
    }

    void Read_Operators(const std::string& expression) {
        size_t at = 0;
        while (at < expression.size()) {
            if (expression[at] == '\'') {
                at = expression.find('\'', at + 1);
                at = at == std::string::npos ? expression.size() : at + 1;
                continue;
            }
            size_t begin = at;
            std::string word =
                isalpha(static_cast<unsigned char>(expression[at])) ? Read_Word(expression, at) : "";
            if (word.empty()) {
                bool is_doubled = at + 1 < expression.size() && expression[at] == expression[at + 1];
                at += is_doubled && (expression[at] == '+' || expression[at] == '-') ? 2 : 1;
                word = expression.substr(begin, at - begin);
            }
            operators.insert(word);
        }
    }

    void Read_Assembly(const std::string& assembly) {
        std::istringstream lines(assembly);
        for (std::string line; std::getline(lines, line);) {
            if (line.size() > 1 && line[0] == '\t')
                instructions.insert(line.substr(1, line.find('\t', 1) - 1));
        }
    }

    TagLookup tags_by_name;
    AttributeLookup attributes_by_name;
};

std::string Contents(const fs::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

const Used& Used_By_Golden_Pages() {
    static const Used all = [] {
        Used used;
        for (const auto& entry : fs::recursive_directory_iterator(GOLDEN_DIRECTORY)) {
            if (entry.path().extension() != ".tna")
                continue;
            used.Read_Assembly(Contents(entry.path()));
            used.Read_Page(Contents(fs::path(entry.path()).replace_extension(".tn")));
        }
        return used;
    }();
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
    std::string all_lines;
    for (const auto& entry : fs::recursive_directory_iterator(GOLDEN_DIRECTORY)) {
        if (entry.path().extension() == ".err")
            all_lines += Contents(entry.path());
    }
    for (size_t row = 0; row < std::size(messages); ++row) {
        auto is_row = [&](const Unseen_Message& unseen) {
            return static_cast<size_t>(unseen.message) == row;
        };
        bool is_expected = std::none_of(std::begin(unseen_messages), std::end(unseen_messages), is_row);
        std::string mark = (messages[row].code <= LAST_WARNING ? ": CW_" : ": CE_") +
                           std::to_string(messages[row].code) + ": ";
        bool is_shown = false;
        std::istringstream lines(all_lines);
        for (std::string line; !is_shown && std::getline(lines, line);) {
            size_t at = line.find(mark);
            is_shown = at != std::string::npos && Fits(messages[row].text, line.c_str() + at + mark.size());
        }
        EXPECT_EQ(is_shown, is_expected) << mark << messages[row].text;
    }
}

TEST(GoldenPages, Use_Every_Tag) {
    for (const char* key : {
#define TAG(name, id, key, required, optional) key,
#define TAG_KEY(name, key, required, optional) key,
#include "frontend/tags.def"
         })
        EXPECT_NE(Used_By_Golden_Pages().tags.count(key) > 0, Is_Listed(unseen_tags, key)) << key;
}

TEST(GoldenPages, Use_Every_Attribute_Of_Every_Tag) {
    constexpr std::pair<int, const char*> all_tags[] = {
#define TAG(name, id, key, required, optional) {id, key},
#include "frontend/tags.def"
    };
    constexpr std::pair<int, const char*> all_attributes[] = {
#define ATTRIBUTE(name, id, key) {id, key},
#include "frontend/attributes.def"
    };
    for (const auto& [tag, tag_key] : all_tags) {
        for (const auto& [attribute, attribute_key] : all_attributes) {
            if (Find_Attribute_Route(tag, attribute) >= ATTRIBUTE_FIRST_ROUTE) {
                bool is_used = Used_By_Golden_Pages().attributes.count({tag, attribute}) > 0;
                EXPECT_TRUE(is_used) << tag_key << " " << attribute_key;
            }
        }
    }
    EXPECT_TRUE(Used_By_Golden_Pages().tag_error);
}

TEST(GoldenPages, Use_Every_Operator) {
    for (const char* key : {
#define OPERATOR(name, id, key, priority, operands, type, opcode) key,
#include "frontend/operators.def"
         })
        EXPECT_NE(Used_By_Golden_Pages().operators.count(key) > 0, Is_Listed(unseen_operators, key)) << key;
}

TEST(GoldenPages, Show_Every_Instruction) {
    for (const Opcode_Info& row : opcode_rows) {
        std::string mnemonic(row.mnemonic);
        if (row.operands != Operand_Form::ENGINE) {
            bool is_shown = Used_By_Golden_Pages().instructions.count(mnemonic) > 0;
            EXPECT_NE(is_shown, Is_Listed(unseen_instructions, mnemonic)) << mnemonic;
        }
    }
}

} // namespace
