/* An extension library for the tests, which asks for all C names of the program that loads it, and for some of its classes. */

#include "extension/tarn_extension.h"

typedef size_t Word;
#define STUB(result, name) result name(void);
#include "extension/c_interface.def"
extern char _ZN6String6assignEPKci[], _ZN19ExternalCallManager11RegisterDSOEPKc[], _ZTV8Variable[], _ZTV11FileManager[];
char* const classes[] = {_ZN6String6assignEPKci, _ZN19ExternalCallManager11RegisterDSOEPKc, _ZTV8Variable, _ZTV11FileManager};

int calls = 0;
void (*on_release)(void) = NULL;
static int kept;

/* Keeps data from its first call on, and tells of the call that releases it. */
static void Keep(TarnVM* vm, VariableHash* parameters, Variable* result, void** data) {
    if (vm || parameters || result) {
        ++calls;
        *data = &kept;
    } else if (*data == &kept) {
        *data = NULL;
        on_release();
    }
}

static const tnParameter pair[] = {{TN_NAME("value"), 0}, {TN_NAME("target"), 3}};

static const tnFunction functions[] = {
    {TN_NAME("Keeper"), 0, NULL, Keep}, {TN_NAME("swap_in"), 2, pair, Keep}, {TN_NAME("keeper"), 2, pair, NULL}, /* shadowed */
    {TN_NAME("blank"), 2, NULL, NULL}, /* an empty array, whatever the count */ {NULL, 0, 0, NULL, NULL},
};

const tnDescriptor whole = {NULL, functions}, functionless = {NULL, NULL}, *answer = &whole;

const tnDescriptor* tarn_function_table(void) {
#define ANSWER_Word(name) if (name() != 0) return NULL;
#define ANSWER_double(name) ANSWER_Word(name)
#define ANSWER_void(name) name();
#define STUB(result, name) ANSWER_##result(name)
#include "extension/c_interface.def"
    return answer;
}
