// What the tests of variables and their fuzz target share.
#ifndef TESTS_VALUE_VALUE_SUPPORT_H
#define TESTS_VALUE_VALUE_SUPPORT_H

#include "app/services/tarn_application.h"
#include "value/aggregate.h"
#include "value/variable.h"
#include "value/variable_hash.h"

#include <mpdecimal.h>
#include <string>

inline const int decimals_are_set_up = mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64);

inline VariableHold New() {
    return VariableHold(new Variable);
}

inline VariableHold New(const char* text) {
    return VariableHold(new Variable("", 0, text, -1));
}

inline AggregateIndex Name(const char* name) {
    return {name, -1};
}

inline std::string Text(Variable& variable) {
    return std::string(variable.value().view());
}

inline std::string Text(const VariableHold& variable) {
    return Text(*variable);
}

// Of a name: its variable's text, "-" without a variable, "none" without a slot.
inline std::string Look(VariableHash& table, const char* name, int create = 0) {
    Variable* variable = nullptr;
    if (!table.Find(&variable, name, -1, create))
        return "none";
    return variable ? Text(*variable) : "-";
}

// An array of elements of one letter each, "-" for a gap.
inline VariableHold Make(const char* text) {
    VariableHold array = New();
    for (int number = 1; *text; number++, text++)
        if (*text != '-')
            array->Element(number, 1)->SetValue(text, 1);
    return array;
}

// "[1]a[3]c" for an array of a and c.
inline std::string Elements(Variable& array) {
    std::string text;
    for (int i = array.Min(); i > 0; i = array.Next(i))
        text += "[" + std::to_string(i) + "]" + Text(*array.Element(i, 0));
    return text;
}

#endif
