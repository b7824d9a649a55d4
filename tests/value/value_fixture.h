#ifndef TESTS_VALUE_VALUE_FIXTURE_H
#define TESTS_VALUE_VALUE_FIXTURE_H

#include "app/tarn_application.h"
#include "value/aggregate.h"
#include "value/variable.h"

#include <gtest/gtest.h>
#include <mpdecimal.h>

#include <string>

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
    // An array of these elements from 1 on; an empty text leaves a gap.
    static VariableHold Array(std::initializer_list<const char*> texts) {
        VariableHold array = New();
        int number = 0;
        for (const char* text : texts) {
            number++;
            if (*text)
                array->Element(number, 1)->SetValue(text, -1);
        }
        return array;
    }
    static AggregateIndex Name(const char* name) { return {name, -1}; }
    static std::string Text(Variable& variable) { return std::string(variable.value().view()); }
    static std::string Text(const VariableHold& variable) { return Text(*variable); }
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
