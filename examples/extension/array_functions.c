/* Tells the compiler of the functions that TnFOREACH calls: tarn_array_max, tarn_array_min, tarn_array_next
 * and tarn_element_exists. */

#include <tarn_extension.h>

/* A compilation needs the table alone. An engine has these four built in; a library of functions that it
 * lacks includes the engine's own header besides, for what reads the parameters and sets the result. */
static void Built_In(TarnVM* vm, VariableHash* parameters, Variable* result, void** data) {
    (void)vm, (void)parameters, (void)result, (void)data;
}

static const tnParameter array_and_index[] = {
    {TN_NAME("array"), TN_BY_REFERENCE},
    {TN_NAME("index"), 0},
};

static const tnFunction functions[] = {
    {TN_NAME("tarn_array_max"), 1, array_and_index, Built_In},
    {TN_NAME("tarn_array_min"), 1, array_and_index, Built_In},
    {TN_NAME("tarn_array_next"), 2, array_and_index, Built_In},
    {TN_NAME("tarn_element_exists"), 2, array_and_index, Built_In},
    {NULL, 0, 0, NULL, NULL},
};

static const tnDescriptor descriptor = {NULL, functions};

const tnDescriptor* tarn_function_table(void) {
    return &descriptor;
}
