// A table of references.

#include "value/reference_variable_hash.h"

ReferenceVariableHash::ReferenceVariableHash(Dictionary* dictionary, VariableHash* target, int bucket_bits,
                                             int capacity)
    : ForwardingVariableHash(dictionary, target, bucket_bits, capacity) {
}
