#ifndef VALUE_CLONED_VARIABLE_HASH_H
#define VALUE_CLONED_VARIABLE_HASH_H

#include "value/forwarding_variable_hash.h"

#include <memory>

// A private version of a table for one execution. A clone of an ordinary table holds its variables itself; a
// clone of a table that looks through to another one has a private version of that one too, which it owns and
// looks through to; so has a clone of a SystemVariableHash.
class ClonedVariableHash : public ForwardingVariableHash {
  public:
    // Doesn't own dictionary. With clone set the variables are cloned, else made when they are needed.
    ClonedVariableHash(TarnApplication* application, Dictionary* dictionary, VariableHash& source,
                       bool clone);
    ClonedVariableHash(const ClonedVariableHash&) = delete;
    ~ClonedVariableHash() override;

  private:
    // Of the private version; null if that has ours or there is none.
    std::unique_ptr<Dictionary> target_dictionary;
};

#endif
