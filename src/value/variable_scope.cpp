// The scope that a name's prefix tells.

#include "value/variable_scope.h"

#include "core/text_search.h"
#include "value/variable_hash.h"

#include <cstring>
#include <string_view>

namespace {

// Whether the word stands at a place of the text, in any case, and a dot behind it.
bool Word_And_Dot(std::string_view text, std::size_t at, std::string_view word) {
    return text.size() > at + word.size() && text[at + word.size()] == '.' &&
           memcmpi(text.data() + at, word.data(), word.size()) == 0;
}

struct Scope_Word {
    std::string_view word;
    Variable_Scope scope;
};

constexpr Scope_Word scope_words[] = {
    {"local", SCOPE_LOCAL},
    {"global", SCOPE_GLOBAL},
    {"system", SCOPE_SYSTEM},
};

// A name split in three: alias, scope prefix, and the rest that begins at name. Without an alias its length
// is -1, and nothing is said about it.
struct Split_Name {
    Variable_Scope scope;
    std::size_t name = 0;
    int alias_length = -1;
};

Split_Name Database(std::size_t alias_length, std::size_t name) {
    return {SCOPE_DATABASE, name, static_cast<int>(alias_length)};
}

// "x.": one byte in front of the first dot, which may itself be the alias of a database field.
Split_Name Split_One_Letter(std::string_view text) {
    if (text.size() >= 5 && Word_And_Dot(text, 2, "d"))
        return Database(1, 4);
    if (text.size() >= 12 && Word_And_Dot(text, 2, "database"))
        return Database(1, 11);
    switch (text[0]) {
    case 'l':
    case 'L': return {SCOPE_LOCAL, 2};
    case 's':
    case 'S': return {SCOPE_SYSTEM, 2};
    case 'g':
    case 'G': return {SCOPE_GLOBAL, 2};
    case 'd':
    case 'D': return Database(0, 2);
    default: return {SCOPE_UNSCOPED};
    }
}

Split_Name Split(std::string_view text) {
    if (text.size() >= 2 && text[1] == '.')
        return Split_One_Letter(text);
    const std::size_t dot = text.find('.');
    if (dot == std::string_view::npos)
        return {SCOPE_UNSCOPED};
    for (const Scope_Word& row : scope_words)
        if (Word_And_Dot(text, 0, row.word))
            return {row.scope, dot + 1};
    if (Word_And_Dot(text, dot + 1, "d"))
        return Database(dot, dot + 3);
    if (Word_And_Dot(text, dot + 1, "database"))
        return Database(dot, dot + 10);
    // A lone "database." or one with a single byte behind it is no prefix.
    if (dot == 8 && text.size() - dot > 2 && Word_And_Dot(text, 0, "database"))
        return Database(0, 9);
    return {SCOPE_UNSCOPED};
}

} // namespace

Variable_Scope VariableHash::Scope(const char* text, int length, const char** name, int* name_length,
                                   const char** alias, int* alias_length) {
    const std::string_view whole(text, length < 0 ? strlen(text) : static_cast<std::size_t>(length));
    const Split_Name split = Split(whole);
    *name = text + split.name;
    *name_length = static_cast<int>(whole.size() - split.name);
    if (split.alias_length >= 0) {
        *alias = text;
        *alias_length = split.alias_length;
    }
    return split.scope;
}
