// A table with a dictionary of its own.

#include "value/user_variable_hash.h"

#include "image/dictionary.h"

UserVariableHash::UserVariableHash() : VariableHash(new Dictionary, 12, 512, 0) {
}

UserVariableHash::~UserVariableHash() {
    delete dictionary();
}
