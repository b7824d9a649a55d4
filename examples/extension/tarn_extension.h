/* What an extension library of Tarn Script is built against: the records that it exports, and those functions
 * of the program that the array functions use. The program that loads the library supplies the functions. */
#ifndef TARN_EXTENSION_H
#define TARN_EXTENSION_H

#ifdef __cplusplus
extern "C" {
#endif

typedef struct TarnVM TarnVM;
typedef struct Variable Variable;
typedef struct VariableHash VariableHash;

enum { TN_EL_BY_REFERENCE = 1 };

typedef struct {
    const char* name;
    int name_length;
    int flags; /* TN_EL_BY_REFERENCE */
} tnParameter;

/* Stores its answer in result. The slot behind data belongs to the function: it starts null and is kept
 * between calls. A last call, with nothing but data, tells the function to release what it keeps there. */
typedef void (*tnEntryPoint)(TarnVM* vm, VariableHash* parameters, Variable* result, void** data);

typedef struct {
    const char* name; /* null ends the array of functions */
    int name_length;
    int parameter_count;
    const tnParameter* parameters;
    tnEntryPoint function;
} tnFunction;

typedef struct {
    const void* reserved;
    const tnFunction* functions;
} tnDescriptor;

/* Every library defines this one. */
const tnDescriptor* tarn_function_table(void);

/* A variable of a table, null when it has none of that name. */
Variable* tnVariableHash_Find(VariableHash* table, const char* name, int name_length);

int tnVariable_Value_Integer(Variable* variable);
int tnVariable_SetValue_Integer(Variable* variable, int value);

/* Indices of an array: the highest, the lowest, and the next one behind an index; 0 for none. */
int tnVariable_Array_Max(Variable* array);
int tnVariable_Array_Min(Variable* array);
int tnVariable_Array_Next(Variable* array, int index);
Variable* tnVariable_Array_Element(Variable* array, int index);

#ifdef __cplusplus
}
#endif

#endif
