// How the records of blocks and functions are made.

#include "compiler/records/resolution_info.h"

#include "core/text_length.h"

#include <utility>

Resolution_Info::Resolution_Info(int label, int line, Shared_Name file)
    : label(label), line(line), file(std::move(file)) {
}

Resolution_Info::~Resolution_Info() = default;

If_Resolution_Info::If_Resolution_Info(int label, int line, Shared_Name file, int chain)
    : Resolution_Info(label, line, std::move(file)), chain(chain), else_used(0) {
}

int If_Resolution_Info::Set_Else_Used() {
    if (else_used)
        return 1;
    else_used = 1;
    return 0;
}

Ifdef_Resolution_Info::Ifdef_Resolution_Info(int line, Shared_Name file, int generating, int negated)
    : Resolution_Info(0, line, std::move(file)), generating(generating), negated(negated) {
}

Capture_Resolution_Info::Capture_Resolution_Info(int label, int line, Shared_Name file, int saved_flags)
    : Resolution_Info(label, line, std::move(file)), saved_flags(saved_flags) {
}

Function_Resolution_Info::Function_Resolution_Info(int line, const char* name, int length, Shared_Name file,
                                                   Function_Resolution_Info* first)
    : Resolution_Info(0, line, std::move(file)), first(first) {
    if (!first || first->own_name.view() != View(name, length))
        own_name.assign(name, length);
}
