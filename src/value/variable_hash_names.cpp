// Compound names: a base name, then any number of ":member" and "[index]".

#include "value/aggregate.h"
#include "value/variable_hash.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstring>

namespace {

const char* Part_End(const char* text, const char* end) {
    return std::find_if(text, end, [](char c) { return c == ':' || c == '['; });
}

// The number between "[", where text begins, and "]"; text moves behind it. -1 for what is no such index.
// White space and digits are all that may stand there, and what strtol makes of them is the number, so
// nothing at all is 0.
int Take_Index(const char*& text, const char* end) {
    const char* digits = text + 1;
    const char* close =
        std::find_if_not(digits, end, [](unsigned char c) { return std::isspace(c) || std::isdigit(c); });
    if (close == end || *close != ']')
        return -1;
    const long number = std::strtol(digits, nullptr, 10);
    text = close + 1;
    return number <= INT_MAX ? static_cast<int>(number) : -1;
}

} // namespace

bool VariableHash::LookupVariable_Fancy(Variable** variable, const char* name, int name_length, int create) {
    *variable = nullptr;
    const char* end = name + (name_length < 0 ? static_cast<int>(std::strlen(name)) : name_length);
    const char* text = Part_End(name, end);
    Variable* found = Base_Variable(name, static_cast<int>(text - name), create);
    while (found && text < end) {
        if (*text == ':') {
            const char* member = text + 1;
            text = Part_End(member, end);
            found = found->Element(AggregateIndex(member, static_cast<int>(text - member)), create);
            continue;
        }
        const int index = *text == '[' ? Take_Index(text, end) : -1;
        if (index < 0)
            return Error("Array index must be positive integer");
        found = found->Element(index, create);
    }
    *variable = found;
    return true;
}

Variable* VariableHash::Base_Variable(const char* name, int name_length, int create) {
    Variable* variable = nullptr;
    if ((Find(&variable, name, name_length, create) && variable) || !create)
        return variable;
    variable = new Variable(name, name_length);
    Insert(variable);
    return variable;
}

int VariableHash::SetVariable_Fancy(const char* name, int name_length, const char* value, int value_length,
                                    int append) {
    Variable* variable = nullptr;
    if (!LookupVariable_Fancy(&variable, name, name_length, 1) || !variable)
        return 0;
    if (append && !variable->IsNULL()) {
        if (variable->aggregatetype() == AGGREGATE_NONE) {
            Variable first(*variable);
            variable->Element(1, 1)->SetValue(first);
        }
        variable = variable->Element(variable->ElementsUsed() + 1, 1);
    }
    variable->SetValue(value, value_length);
    return 0;
}
