// The body of a quoted string of the assembly text.
#ifndef BACKEND_QUOTED_TEXT_H
#define BACKEND_QUOTED_TEXT_H

#include "backend/instructions/labels.h"

class CompilerOutput;

// Writes the text as it stands between quotes, without these. A quote becomes \22. A backslash becomes \5c in
// text and filters; in escaped text two of them become one \5c and a single one is dropped; in any other
// state all are dropped. All other bytes go out as they are.
void Write_Quoted_Text(CompilerOutput* output, const char* text, int length, ExpressionState state);

#endif
