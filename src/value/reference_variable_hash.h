#ifndef VALUE_REFERENCE_VARIABLE_HASH_H
#define VALUE_REFERENCE_VARIABLE_HASH_H

#include "value/forwarding_variable_hash.h"

// A view of another table by names that have numbers of their own, in a dictionary of their own. The values
// are the other table's.
class ReferenceVariableHash : public ForwardingVariableHash {
  public:
    // Owns neither. The values are where target's are at the end.
    ReferenceVariableHash(Dictionary* dictionary, VariableHash* target, int bucket_bits, int capacity);
};

#endif
