// The tag table.

#include "frontend/scanner/tag_lookup.h"

#include "core/text_length.h"
#include "frontend/scanner/perfect_hash.h"

#include <string_view>

namespace {

constexpr _TagLookup Row(int id, std::string_view key, int required, int optional) {
    return {id, required == NO_SLOTS ? 0 : 2, required, optional, Length_Of(key), key.data()};
}

constexpr std::array rows{
#define TAG(name, id, key, required, optional) Row(id, key, required, optional),
#define TAG_KEY(name, key, required, optional) Row(Tag::name, key, required, optional),
#include "frontend/scanner/tags.def"
};

constexpr Perfect_Hash<_TagLookup, rows.size(), 7, 6> tags(rows);

// Slots and words are found by the place of the tag's row.
constexpr bool Rows_Are_Sound() {
    int next_id = 0;
    for (const _TagLookup& row : rows) {
        if ((row.required == NO_SLOTS) != (row.optional == NO_SLOTS))
            return false;
    }
    for (const int id : {
#define TAG(name, id, key, required, optional) id,
#include "frontend/scanner/tags.def"
         })
        if (id != next_id++)
            return false;
    return true;
}
static_assert(Rows_Are_Sound());

using Word = std::array<char, 24>;

constexpr Word Spelled(std::string_view key) {
    Word word{};
    for (std::size_t i = 0; i < key.size(); ++i)
        word[i] = key[i] >= 'a' && key[i] <= 'z' ? static_cast<char>(key[i] - 'a' + 'A') : key[i];
    if (key.substr(0, 2) == "tn")
        word[1] = 'n';
    return word;
}

constexpr Word words[] = {
#define TAG(name, id, key, required, optional) Spelled(key),
#include "frontend/scanner/tags.def"
};

} // namespace

const char* Tag_Word(int tag) {
    return words[tag].data();
}

const _TagLookup* TagLookup::Lookup(const char* name, int length) const {
    return tags.Find(name, length);
}
