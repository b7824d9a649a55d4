/* The functions that TnFOREACH calls: tarn_array_max, tarn_array_min, tarn_array_next and tarn_element_exists. */

#include "tarn_extension.h"

#include <stddef.h>

#define NAME(text) text, (int)sizeof(text) - 1

static Variable* Parameter(VariableHash* parameters, const char* name, int name_length) {
    return parameters ? tnVariableHash_Find(parameters, name, name_length) : NULL;
}

static int Index(VariableHash* parameters) {
    return tnVariable_Value_Integer(Parameter(parameters, NAME("index")));
}

static void Array_Max(TarnVM* vm, VariableHash* parameters, Variable* result, void** data) {
    (void)vm, (void)data;
    tnVariable_SetValue_Integer(result, tnVariable_Array_Max(Parameter(parameters, NAME("array"))));
}

static void Array_Min(TarnVM* vm, VariableHash* parameters, Variable* result, void** data) {
    (void)vm, (void)data;
    tnVariable_SetValue_Integer(result, tnVariable_Array_Min(Parameter(parameters, NAME("array"))));
}

static void Array_Next(TarnVM* vm, VariableHash* parameters, Variable* result, void** data) {
    (void)vm, (void)data;
    tnVariable_SetValue_Integer(result, tnVariable_Array_Next(Parameter(parameters, NAME("array")), Index(parameters)));
}

static void Element_Exists(TarnVM* vm, VariableHash* parameters, Variable* result, void** data) {
    (void)vm, (void)data;
    Variable* element = tnVariable_Array_Element(Parameter(parameters, NAME("array")), Index(parameters));
    tnVariable_SetValue_Integer(result, element != NULL);
}

static const tnParameter array_and_index[] = {
    {NAME("array"), TN_EL_BY_REFERENCE},
    {NAME("index"), 0},
};

static const tnFunction functions[] = {
    {NAME("tarn_array_max"), 1, array_and_index, Array_Max},
    {NAME("tarn_array_min"), 1, array_and_index, Array_Min},
    {NAME("tarn_array_next"), 2, array_and_index, Array_Next},
    {NAME("tarn_element_exists"), 2, array_and_index, Element_Exists},
    {NULL, 0, 0, NULL, NULL},
};

static const tnDescriptor descriptor = {NULL, functions};

const tnDescriptor* tarn_function_table(void) {
    return &descriptor;
}
