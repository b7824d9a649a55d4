// Attributes that hold a list of words, each of which sets or clears bits.

#include "compiler/generator/keyword_lists.h"

#include "compiler/generator/compiler_parser.h"
#include "core/text_length.h"
#include "frontend/values/text_pieces.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr _String_To_Bitmap_Entry standard_output_entries[] = {
    {"html", OUTPUT_HTML, true},
    {"text", OUTPUT_TEXT, true},
    {"compresswhitespace", OUTPUT_COMPRESS, true},
};

constexpr _String_To_Bitmap_Entry error_output_entries[] = {
    {"runtime", ERROR_OUTPUT_RUNTIME, true},
    {"expression", 0, true, true},
    {"syntax", 0, true, true},
};

constexpr _String_To_Bitmap_Entry interpret_entries[] = {
    {"html_expressions", INTERPRET_EXPRESSIONS, true},
    {"tags", 0, true, true},
    {"macros", 0, true, true},
};

constexpr _String_To_Bitmap_Entry tag_error_entries[] = {
    {"fatal", TAG_ERROR_FATAL, true},
    {"nonfatal", TAG_ERROR_FATAL, false},
    {"display", TAG_ERROR_DISPLAY, true},
    {"nodisplay", TAG_ERROR_DISPLAY, false},
};

constexpr std::size_t longest_list =
    std::max({std::size(standard_output_entries), std::size(error_output_entries),
              std::size(interpret_entries), std::size(tag_error_entries)});

bool Is_Separator(char byte) {
    return byte == ',' || Is_Space(byte);
}

// Takes the next word off the front of the list; empty when there is none, or when a quote stands where one
// should begin.
std::string_view Next_Word(std::string_view& list) {
    while (!list.empty() && Is_Separator(list.front()))
        list.remove_prefix(1);
    std::size_t length = 0;
    while (length < list.size() && !Is_Separator(list[length]) && list[length] != '"')
        ++length;
    const std::string_view word = list.substr(0, length);
    list.remove_prefix(length);
    return word;
}

const _String_To_Bitmap_Entry* Find_Entry(const Keyword_List& list, std::string_view word) {
    for (const _String_To_Bitmap_Entry& entry : list.entries)
        if (Same_Word(entry.name, word))
            return &entry;
    return nullptr;
}

} // namespace

constexpr Keyword_List standard_output_words = {"STANDARDOUTPUTLEVEL", standard_output_entries};
constexpr Keyword_List error_output_words = {"ERROROUTPUTLEVEL", error_output_entries};
constexpr Keyword_List interpret_words = {"INTERPRET", interpret_entries};
constexpr Keyword_List tag_error_words = {"TARN Tn(tagname)_ERROR", tag_error_entries};

ParserStatus CompilerParser::String_To_Bitmap(int* result, const char* text, int length,
                                              const Keyword_List& list) {
    std::string_view rest = Slice(text, length);
    int uses[longest_list] = {};
    ParserStatus status = PARSER_OK;
    *result = 0;
    for (std::string_view word = Next_Word(rest); !word.empty(); word = Next_Word(rest)) {
        const _String_To_Bitmap_Entry* entry = Find_Entry(list, word);
        if (entry)
            *result = entry->set ? *result | entry->mask : *result & ~entry->mask;
        if (status != PARSER_OK)
            continue; // the words behind a failure still take effect
        status = entry ? Check_Keyword(list, *entry, word, ++uses[entry - list.entries.data()])
                       : Report<Message::Keyword_Unknown>(word, list.attribute);
    }
    return status;
}

// Reports the second use of a word, and a word that does nothing.
ParserStatus CompilerParser::Check_Keyword(const Keyword_List& list, const _String_To_Bitmap_Entry& entry,
                                           std::string_view word, int uses) {
    ParserStatus status = PARSER_OK;
    if (uses == 2)
        status = Report<Message::Keyword_Repeated>(word, list.attribute);
    if (status == PARSER_OK && entry.no_effect)
        status = Report<Message::Keyword_No_Effect>(word, list.attribute);
    return status;
}
