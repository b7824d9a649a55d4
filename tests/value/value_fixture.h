#ifndef TESTS_VALUE_VALUE_FIXTURE_H
#define TESTS_VALUE_VALUE_FIXTURE_H

#include "app/services/tarn_application.h"
#include "value/aggregate.h"
#include "value/variable.h"
#include "value/variable_hash.h"

#include <gtest/gtest.h>
#include <mpdecimal.h>
#include <string>

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

// Variables are made by New and given back at the end of the test, which the address sanitizer checks.
class ValueTest : public testing::Test {
  protected:
    static void SetUpTestSuite() { mpd_ieee_context(&Tarn_MPD_Context, MPD_DECIMAL64); }

    static VariableHold New() { return VariableHold(new Variable); }
    static VariableHold New(const char* text) {
        VariableHold variable = New();
        variable->SetValue(text, -1);
        return variable;
    }
    // An array of elements of one letter each, "-" for a gap; or the scalar behind "=".
    static VariableHold Make(const char* text) {
        if (*text == '=')
            return New(text + 1);
        VariableHold array = New();
        for (int number = 1; *text; number++, text++)
            if (*text != '-')
                array->Element(number, 1)->SetValue(text, 1);
        return array;
    }
    static AggregateIndex Name(const char* name) { return {name, -1}; }
    // "1=a 3=c" for an array of a and c.
    static std::string Elements(Variable& array) {
        std::string text;
        for (int i = array.Element(0, 0) ? 0 : array.Next(0); i > 0 || text.empty(); i = array.Next(i)) {
            Variable* element = array.Element(i, 0);
            if (!element)
                break;
            text += (text.empty() ? "" : " ") + std::to_string(i) + "=" + Text(*element);
        }
        return text;
    }
    static std::string Elements(const VariableHold& array) { return Elements(*array); }
};

#endif
