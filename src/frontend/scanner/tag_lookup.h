#ifndef FRONTEND_TAG_LOOKUP_H
#define FRONTEND_TAG_LOOKUP_H

// Ids of the tags, for code that works with plain ints: Tag::If.
namespace Tag {
enum Number : int {
#define TAG(name, id, key, required, optional) name = id,
#include "frontend/scanner/tags.def"
};
} // namespace Tag

// What a tag without an attribute list has for its two counts.
inline constexpr int NO_SLOTS = -1;

inline constexpr int required_slots[] = {
#define TAG(name, id, key, required, optional) required,
#include "frontend/scanner/tags.def"
};
inline constexpr int optional_slots[] = {
#define TAG(name, id, key, required, optional) optional,
#include "frontend/scanner/tags.def"
};

// The attribute slots of a tag that come first and are fixed, by its principal key; NO_SLOTS without a list.
constexpr int Required_Slots(int tag) {
    return required_slots[tag];
}

// All attribute slots of a tag that has an attribute list.
constexpr int Slots(int tag) {
    return required_slots[tag] + optional_slots[tag];
}

// A tag as documents and reports spell it, like TnLOCALIZED-TEXT: its principal key in capitals, but for the
// n.
const char* Tag_Word(int tag);

// A key of the tag table. The order of the fields is part of the binary interface.
struct _TagLookup {
    int id;
    int kind;     // 2 with an attribute list, 0 without
    int required; // attribute slots that are fixed, NO_SLOTS without an attribute list
    int optional; // attribute slots that follow, NO_SLOTS without an attribute list
    int length;   // of the key
    const char* key;
};

class TagLookup {
  public:
    // The record of a name in any case, or null. A length of -1 means up to the NUL.
    const _TagLookup* Lookup(const char* name, int length) const;
};

#endif
