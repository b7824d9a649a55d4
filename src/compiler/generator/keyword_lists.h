// The word lists of attributes such as STANDARDOUTPUTLEVEL="html text".
#ifndef COMPILER_KEYWORD_LISTS_H
#define COMPILER_KEYWORD_LISTS_H

#include <span>
#include <string_view>

// One word of a list.
struct _String_To_Bitmap_Entry {
    std::string_view name; // lower case
    int mask;
    bool set;               // sets the bits of the mask, else clears them
    bool no_effect = false; // known, but without meaning in compiled code
};

struct Keyword_List {
    const char* attribute; // as the reports call it
    std::span<const _String_To_Bitmap_Entry> entries;
};

// Bits of the masks, list by list. Those of STANDARDOUTPUTLEVEL are Output_Flag.
enum Error_Output_Flag { ERROR_OUTPUT_RUNTIME = 1 };
enum Interpret_Flag { INTERPRET_EXPRESSIONS = 1 };
enum Tag_Error_Flag { TAG_ERROR_DISPLAY = 1, TAG_ERROR_FATAL = 2 };

extern const Keyword_List standard_output_words;
extern const Keyword_List error_output_words;
extern const Keyword_List interpret_words;
extern const Keyword_List tag_error_words;

#endif
