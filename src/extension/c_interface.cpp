// The C interface of extension libraries. In an execution engine these functions reach into the running
// program; in the compiler they are there so that a library finds every symbol it was linked against. None of
// them does anything, and none looks at its arguments.

#include <cstdint>

namespace {

// Fills the result register, whether the caller expects an int or a pointer there.
using Word = std::intptr_t;

constexpr int stubs = 0
#define STUB(result, name) +1
#include "extension/c_interface.def"
    ;
static_assert(stubs == 194);

} // namespace

#define STUB(result, name) extern "C" result name();
#include "extension/c_interface.def"

#define STUB(result, name)                                                                                   \
    extern "C" result name() {                                                                               \
        return result();                                                                                     \
    }
#include "extension/c_interface.def"
