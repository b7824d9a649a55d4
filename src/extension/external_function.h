// The records that an extension library exports, by layout.
#ifndef EXTENSION_EXTERNAL_FUNCTION_H
#define EXTENSION_EXTERNAL_FUNCTION_H

#include <cstddef>
#include <span>

class TarnVM;
class Variable;
class VariableHash;

// Bits of a parameter's flags.
enum External_Parameter_Flag { EXTERNAL_PARAMETER_BY_REFERENCE = 1 };

struct _TN_EL_Parameter {
    const char* name;
    int name_length;
    int flags; // External_Parameter_Flag bits
};

// The slot behind data belongs to the function: it starts null and is kept between calls. A last call with
// nothing but data tells the function to release what it keeps there.
using External_Entry_Point = void (*)(TarnVM* vm, VariableHash* parameters, Variable* result, void** data);

struct _TN_EL_Function {
    const char* name; // as the language spells it, in any case; null ends an array of functions
    int name_length;
    int parameter_count;
    const _TN_EL_Parameter* parameters;
    External_Entry_Point function;
};

// A null array is an empty one, whatever the count says.
inline std::span<const _TN_EL_Parameter> Parameters_Of(const _TN_EL_Function& function) {
    const bool some = function.parameters && function.parameter_count > 0;
    return {function.parameters, some ? static_cast<std::size_t>(function.parameter_count) : 0};
}

struct _TN_EL_Descriptor {
    const void* reserved;
    const _TN_EL_Function* functions;
};

// What every extension library exports under this name; a null answer means that it failed.
inline constexpr char function_table_symbol[] = "tarn_function_table";
using External_Function_Table = const _TN_EL_Descriptor* (*)();

static_assert(sizeof(_TN_EL_Parameter) == 16);
static_assert(offsetof(_TN_EL_Parameter, name_length) == 8);
static_assert(offsetof(_TN_EL_Parameter, flags) == 12);
static_assert(sizeof(_TN_EL_Function) == 32);
static_assert(offsetof(_TN_EL_Function, name_length) == 8);
static_assert(offsetof(_TN_EL_Function, parameter_count) == 12);
static_assert(offsetof(_TN_EL_Function, parameters) == 16);
static_assert(offsetof(_TN_EL_Function, function) == 24);
static_assert(offsetof(_TN_EL_Descriptor, functions) == 8);

#endif
