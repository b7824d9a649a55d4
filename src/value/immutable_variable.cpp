// Values that can't be changed, and those that are loaded when they are first read.

#include "value/immutable_variable.h"

#include "app/services/tarn_application.h"
#include "value/aggregate.h"
#include "value/callback_variable.h"
#include "value/element_walk.h"

#include <mpdecimal.h>

ImmutableVariable::ImmutableVariable() = default;

ImmutableVariable::ImmutableVariable(const char* name, int name_length) : Variable(name, name_length) {
}

ImmutableVariable::ImmutableVariable(Variable* source) {
    name_ = source->name();
    Set_From(*source, ElementCopies::Immutable);
}

ImmutableVariable::~ImmutableVariable() = default;

Variable* ImmutableVariable::Clone(TarnApplication*) {
    auto* copy = new ImmutableVariable(this);
    if (locked)
        copy->Lock();
    return copy;
}

bool ImmutableVariable::SetValue(Variable& source) {
    if (!locked)
        Set_From(source, ElementCopies::Immutable_Shared);
    return true;
}

bool ImmutableVariable::SetValue_Nocopy(char* text, int length, int capacity) {
    if (!locked)
        return Variable::SetValue_Nocopy(text, length, capacity);
    delete[] text;
    return true;
}

bool ImmutableVariable::SetValue_mpd_Nocopy(mpd_t* number) {
    if (!locked)
        return Variable::SetValue_mpd_Nocopy(number);
    mpd_del(number);
    return true;
}

Variable* ImmutableVariable::Element(const AggregateIndex& index, int create) {
    Variable* found = Variable::Element(index, 0);
    if (found || !create)
        return found;
    if (locked) {
        if (!null_element)
            null_element.reset(new NULLVariable);
        return null_element.get();
    }
    Variable* made = new ImmutableVariable;
    const VariableHold hold(made);
    Variable::SetElement(index, made);
    return made;
}

bool ImmutableVariable::SetElement(const AggregateIndex& index, Variable* variable) {
    if (locked)
        return true;
    const VariableHold stored =
        variable->AsImmutable() ? Hold(variable) : VariableHold(new ImmutableVariable(variable));
    return Variable::SetElement(index, stored.get());
}

int ImmutableVariable::CollapseElements() {
    if (!locked)
        return Variable::CollapseElements();
    return aggregate == AGGREGATE_ARRAY ? elements->Entries() : 0;
}

void ImmutableVariable::Make_CallbackStruct(CallbackVariableCallback* callback) {
    callback->Discard();
}

ImmutableVariable* ImmutableVariable::AsImmutable() {
    return this;
}

void ImmutableVariable::Lock() {
    Set_Locked(true);
}

void ImmutableVariable::Unlock() {
    Set_Locked(false);
}

void ImmutableVariable::Set_Locked(bool flag) {
    ElementWalk walk;
    int depth = 0;
    auto set = [&](ImmutableVariable* variable) {
        variable->locked = flag || variable->type() == VARIABLE_NULL;
        if (variable->elements && walk.Enter(variable->elements.get()))
            ++depth;
    };
    set(this);
    while (depth) {
        AggregateElement* element = walk.Next();
        if (!element)
            --depth;
        else if (ImmutableVariable* immutable = element->var()->AsImmutable())
            set(immutable);
    }
}

DynamicImmutableVariable::DynamicImmutableVariable(const char* name, int name_length)
    : ImmutableVariable(name, name_length) {
    locked = true;
}

DynamicImmutableVariable& DynamicImmutableVariable::Loaded() {
    if (!IsLoaded())
        Load();
    return *this;
}

NULLVariable::NULLVariable() {
    locked = true;
}

mpd_t* NULLVariable::value_mpd() {
    if (!decimal)
        decimal = TarnApplication::itompd(nullptr, 0);
    return decimal;
}

mpd_t* NULLVariable::value_compare(int* error) {
    *error = 0;
    return value_mpd();
}
