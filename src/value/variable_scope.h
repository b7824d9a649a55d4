#ifndef VALUE_VARIABLE_SCOPE_H
#define VALUE_VARIABLE_SCOPE_H

// Which table a variable's name belongs to. VariableHash::Scope reads it off the name's prefix; the numbers
// are those of the variable instructions.
enum Variable_Scope {
    SCOPE_LOCAL = 0,
    SCOPE_GLOBAL = 1,
    SCOPE_SYSTEM = 2,
    SCOPE_DATABASE = 3,
    SCOPE_LOCAL_BY_NAME = 4, // has no prefix: the kind of the attribute says it
    SCOPE_UNSCOPED = 5,      // looked up by name at run time
};

#endif
