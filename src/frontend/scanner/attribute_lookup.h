#ifndef FRONTEND_ATTRIBUTE_LOOKUP_H
#define FRONTEND_ATTRIBUTE_LOOKUP_H

// Ids of the attributes, for code that works with plain ints: Attribute::Name. What an attribute means inside
// a given tag is for the tag compiler to say.
namespace Attribute {
enum Number : int {
#define ATTRIBUTE(name, id, key) name = id,
#include "frontend/scanner/attributes.def"
};
} // namespace Attribute

// A key of the attribute table. The order of the fields is part of the binary interface.
struct _AttributeLookup {
    int id;
    int kind;     // 0
    int required; // -1
    int optional; // -1
    int length;   // of the key
    const char* key;
};

class AttributeLookup {
  public:
    // The record of a name in any case, or null. A length of -1 means up to the NUL.
    const _AttributeLookup* Lookup(const char* name, int length) const;
};

#endif
