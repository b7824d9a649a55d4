// How the records of blocks and functions are made.

#include "compiler/records/resolution_info.h"

#include "core/text_length.h"

Resolution_Info::Resolution_Info(int label, int line, const String* file)
    : label(label), line(line), file(file) {
}

Resolution_Info::~Resolution_Info() = default;

If_Resolution_Info::If_Resolution_Info(int label, int line, const String* file, int chain)
    : Resolution_Info(label, line, file), chain(chain) {
}

int If_Resolution_Info::Set_Else_Used() {
    if (else_used)
        return 1;
    else_used = 1;
    return 0;
}

Ifdef_Resolution_Info::Ifdef_Resolution_Info(int line, const String* file, int generating, int negated)
    : Resolution_Info(0, line, file), generating(generating), negated(negated) {
}

Capture_Resolution_Info::Capture_Resolution_Info(int label, int line, const String* file, int saved_flags)
    : Resolution_Info(label, line, file), saved_flags(saved_flags) {
}

Function_Resolution_Info::Function_Resolution_Info(int line, const char* name, int length, const String* file)
    : Resolution_Info(0, line, file), name(View(name, length)) {
}
