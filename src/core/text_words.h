// Small questions about words, and about the lists and names made of them.
#ifndef CORE_TEXT_WORDS_H
#define CORE_TEXT_WORDS_H

#include "core/text_search.h"

#include <string_view>

// What isspace says in the locale of C, which is the one in force.
inline bool Is_Space(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

inline bool Has_Space(std::string_view text) {
    for (const char c : text)
        if (Is_Space(c))
            return true;
    return false;
}

inline bool Is_Digit(char c) {
    return c >= '0' && c <= '9';
}

// A letter, a digit or an underscore.
inline bool Is_Name_Character(char c) {
    const auto letter = static_cast<unsigned char>((c | 0x20) - 'a');
    return letter < 26 || Is_Digit(c) || c == '_';
}

// Whether the text has no other characters.
inline bool Has_Name_Characters_Only(std::string_view text) {
    for (const char c : text)
        if (!Is_Name_Character(c))
            return false;
    return true;
}

// The text without the white space at its ends.
inline std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && Is_Space(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && Is_Space(text.back()))
        text.remove_suffix(1);
    return text;
}

inline bool Same_Word(std::string_view a, std::string_view b) {
    return a.size() == b.size() && memcmpi(a.data(), b.data(), a.size()) == 0;
}

// Calls use(piece) on what stands between the commas, the last piece included; quotes and braces protect
// nothing.
template <typename Use>
void For_Each_Comma_Piece(std::string_view text, Use use) {
    for (;;) {
        const std::size_t comma = text.find(',');
        use(text.substr(0, comma));
        if (comma == std::string_view::npos)
            return;
        text.remove_prefix(comma + 1);
    }
}

#endif
