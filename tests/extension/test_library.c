/* A library for the tests, in the shapes that a program may meet. Built with NO_SYMBOL it lacks the table, with NO_TABLE it
 * answers null, with NO_FUNCTIONS its table is empty. */

#include <stddef.h>

#define NAME(text) text, (int)sizeof(text) - 1

typedef struct {
    const char* name;
    int name_length, flags;
} Parameter;

typedef struct {
    const char* name;
    int name_length, parameter_count;
    const Parameter* parameters;
    void (*function)(void* vm, void* parameters, void* result, void** data);
} Function;

typedef struct {
    const void* reserved;
    const Function* functions;
} Descriptor;

/* A dozen names of the program that loads this library. */
extern int tnProgram_Compare(void), tnLinkBuffer_Data(void), tnSystemLibrary_Error(void), tnVariable_Value(void),
    tnVariableList_First(void), tnVariableHash_Find(void), tnNetwork_Open_URL(void), tnHTTPResponse_Read(void),
    tnFile_Open(void), tnDirectory_Listing(void), tnConfig_SetValue(void), tnDatabase_data(void);
extern double tnVariable_Value_Double(void);

static int (*const used[])(void) = {
    tnProgram_Compare,  tnLinkBuffer_Data, tnSystemLibrary_Error, tnVariable_Value, tnVariableList_First,
    tnVariableHash_Find, tnNetwork_Open_URL, tnHTTPResponse_Read, tnFile_Open, tnDirectory_Listing, tnConfig_SetValue,
    tnDatabase_data,
};

int calls = 0, releases = 0;
static int kept;

/* Keeps data from its first call on, and notes the call that releases it. */
static void Keeper(void* vm, void* parameters, void* result, void** data) {
    if (!vm && !parameters && !result && *data == &kept) {
        ++releases;
        *data = NULL;
        return;
    }
    ++calls;
    *data = &kept;
}

static const Parameter pair[] = {{NAME("value"), 0}, {NAME("target"), 1}};

static const Function functions[] = {
    {NAME("Keeper"), 0, NULL, Keeper},
    {NAME("swap_in"), 2, pair, NULL},
    {NAME("keeper"), 2, pair, NULL}, /* shadowed by the first */
    {NULL, 0, 0, NULL, NULL},
};

#ifndef NO_SYMBOL
const Descriptor* tarn_function_table(void) {
#ifdef NO_TABLE
    return NULL;
#elif defined NO_FUNCTIONS
    static const Descriptor descriptor = {NULL, NULL};
    return &descriptor;
#else
    static const Descriptor descriptor = {NULL, functions};
    for (size_t i = 0; i < sizeof used / sizeof *used; ++i)
        if (used[i]())
            return NULL;
    return tnVariable_Value_Double() == 0 ? &descriptor : NULL;
#endif
}
#endif
