#ifndef VALUE_USER_VARIABLE_HASH_H
#define VALUE_USER_VARIABLE_HASH_H

#include "value/variable_hash.h"

// A table that stands alone, with a dictionary of its own.
class UserVariableHash : public VariableHash {
  public:
    UserVariableHash();
    UserVariableHash(const UserVariableHash&) = delete;
    ~UserVariableHash() override;
};

#endif
