// Names that the generated code carries: label families, and how strings are quoted.
#ifndef BACKEND_LABELS_H
#define BACKEND_LABELS_H

#include <iterator>
#include <string_view>

// Family of a generated label. One number serves a whole block: L_start_7, L_loop_7 and L_end_7 belong
// together.
enum ParserLabelType {
    LABEL_END = 0,
    LABEL_START = 1,
    LABEL_LOOP = 2,
    LABEL_VERSIONTEST_A_NEW = 3,
    LABEL_VERSIONTEST_A_LOOP = 4,
    LABEL_VERSIONTEST_B_NEW = 5,
    LABEL_VERSIONTEST_B_LOOP = 6
};

// What stands ahead of the number in a label, by family.
inline constexpr std::string_view label_texts[] = {
    "L_end_",
    "L_start_",
    "L_loop_",
    "L_versiontest_a_new_",
    "L_versiontest_a_loop_",
    "L_versiontest_b_new_",
    "L_versiontest_b_loop_",
};
static_assert(std::size(label_texts) == LABEL_VERSIONTEST_B_LOOP + 1);

// How the backslashes of a string are quoted.
enum ExpressionState {
    EXPRESSION_STATE_TEXT = 0,    // literal text and file names: a backslash is a byte like others
    EXPRESSION_STATE_ESCAPED = 1, // from an expression or attribute: a backslash escapes the byte behind it
    EXPRESSION_STATE_FILTER = 2   // source of an expression that is compiled at run time, kept as it is
};

#endif
