/* An extension library for the tests, which asks for all C names of the program that loads it, and for some of its classes. */

#include <stddef.h>

typedef size_t Word;
#define STUB(result, name) result name(void);
#include "extension/c_interface.def"
extern char _ZN6String6assignEPKci[], _ZN19ExternalCallManager11RegisterDSOEPKc[], _ZTV8Variable[], _ZTV11FileManager[];
char* const classes[] = {_ZN6String6assignEPKci, _ZN19ExternalCallManager11RegisterDSOEPKc, _ZTV8Variable, _ZTV11FileManager};

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

int calls = 0;
void (*on_release)(void) = NULL;
static int kept;

/* Keeps data from its first call on, and tells of the call that releases it. */
static void Keep(void* vm, void* parameters, void* result, void** data) {
    if (vm || parameters || result) {
        ++calls;
        *data = &kept;
    } else if (*data == &kept) {
        *data = NULL;
        on_release();
    }
}

static const Parameter pair[] = {{NAME("value"), 0}, {NAME("target"), 3}};

static const Function functions[] = {
    {NAME("Keeper"), 0, NULL, Keep}, {NAME("swap_in"), 2, pair, Keep}, {NAME("keeper"), 2, pair, NULL}, /* shadowed */
    {NAME("blank"), 2, NULL, NULL},  {NULL, 0, 0, NULL, NULL},
};

const Descriptor whole = {NULL, functions}, functionless = {NULL, NULL}, *answer = &whole;

const Descriptor* tarn_function_table(void) {
#define ANSWER_Word(name) if (name() != 0) return NULL;
#define ANSWER_double(name) ANSWER_Word(name)
#define ANSWER_void(name) name();
#define STUB(result, name) ANSWER_##result(name)
#include "extension/c_interface.def"
    return answer;
}
