/* What an extension library of Tarn Script is built against: the records that it exports, by layout, and the
 * type of an entry point. For C from C11 on and for C++ from C++11 on, on 64-bit systems.
 *
 * A library defines tarn_function_table, and that is all that a compiler calls. The functions that the
 * library itself may call, tnVariable_Allocate and kin, are not declared here: their argument lists belong to
 * the execution engine that runs them, and its own header declares them. Their names, and what kind of result
 * each gives, are the rows of c_interface.def, which is beside this file. */
#ifndef EXTENSION_TARN_EXTENSION_H
#define EXTENSION_TARN_EXTENSION_H

#include <assert.h>
#include <stddef.h>

#ifdef __cplusplus
class TarnVM;
class Variable;
class VariableHash;

extern "C" {
#else
typedef struct TarnVM TarnVM;
typedef struct Variable Variable;
typedef struct VariableHash VariableHash;
#endif

/* Bits of a parameter's flags. Without any, the parameter is passed by value. */
enum tnParameterFlag { TN_BY_REFERENCE = 1 };

typedef struct _TN_EL_Parameter {
    const char* name;
    int name_length;
    int flags; /* tnParameterFlag bits */
} tnParameter;

/* Puts what it answers into result. The slot behind data belongs to the function: it starts null and is kept
 * between calls. A last call with nothing but data tells the function to release what it keeps there. */
typedef void (*tnEntryPoint)(TarnVM* vm, VariableHash* parameters, Variable* result, void** data);

typedef struct _TN_EL_Function {
    const char* name; /* as the language spells it, in any case; null ends an array of functions */
    int name_length;
    int parameter_count;
    const tnParameter* parameters;
    tnEntryPoint function;
} tnFunction;

typedef struct _TN_EL_Descriptor {
    const void* reserved;
    const tnFunction* functions;
} tnDescriptor;

/* A name and its length: the first two fields of a record, from a literal. */
#define TN_NAME(literal) literal, (int)sizeof(literal) - 1

/* What every extension library defines; a null answer means that it failed. The records stay where they are
 * as long as the library is loaded. */
#ifdef __GNUC__
__attribute__((visibility("default")))
#endif
const tnDescriptor*
tarn_function_table(void);

#ifdef __cplusplus
}
#endif

static_assert(sizeof(tnParameter) == 16, "a parameter has 16 bytes");
static_assert(offsetof(tnParameter, name_length) == 8, "the length follows the name");
static_assert(offsetof(tnParameter, flags) == 12, "the flags follow the length");
static_assert(sizeof(tnFunction) == 32, "a function has 32 bytes");
static_assert(offsetof(tnFunction, name_length) == 8, "the length follows the name");
static_assert(offsetof(tnFunction, parameter_count) == 12, "the count follows the length");
static_assert(offsetof(tnFunction, parameters) == 16, "the parameters follow their count");
static_assert(offsetof(tnFunction, function) == 24, "the entry point comes last");
static_assert(sizeof(tnEntryPoint) == 8, "an entry point is an address");
static_assert(offsetof(tnDescriptor, functions) == 8, "the functions follow the reserved word");

#endif
