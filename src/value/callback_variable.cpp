// Structures whose members a callback supplies.

#include "value/callback_variable.h"

#include <utility>

// A variable becomes a callback structure where it stands.
static_assert(sizeof(CallbackStructVariable) == sizeof(Variable));

CallbackVariableCallback::CallbackVariableCallback() = default;

CallbackVariableCallback::~CallbackVariableCallback() {
    if (attached)
        attached->Detach();
}

void CallbackVariableCallback::Attach(CallbackVariable* variable) {
    if (attached && attached != variable)
        attached->Detach();
    attached = variable;
}

// Whichever of the two is detached first takes the other along.
void CallbackVariableCallback::Detach() {
    if (CallbackVariable* variable = std::exchange(attached, nullptr))
        variable->Detach();
}

void CallbackVariableCallback::Discard() {
    delete this;
}

Variable* CallbackVariableCallback::return_value() {
    return result.get();
}

CallbackVariable::CallbackVariable(CallbackVariableCallback* callback) {
    link.callback = callback;
    callback->Attach(this);
}

CallbackVariable::CallbackVariable(Variable&& variable, CallbackVariableCallback* callback)
    : Variable(std::move(variable)) {
    link.callback = callback;
    callback->Attach(this);
}

CallbackVariable::~CallbackVariable() {
    CallbackVariableCallback* callback = link.callback;
    CallbackVariable::Detach();
    if (callback)
        callback->Discard();
}

void CallbackVariable::Make_Reference(Variable*) {
}

void CallbackVariable::Make_CallbackStruct(CallbackVariableCallback* callback) {
    CallbackVariableCallback* old = link.callback;
    if (callback == old)
        return;
    Detach();
    link.callback = callback;
    callback->Attach(this);
    if (old)
        old->Discard();
}

void CallbackVariable::Detach() {
    CallbackVariableCallback* callback = std::exchange(link.callback, nullptr);
    if (callback)
        callback->Detach();
}

CallbackStructVariable::CallbackStructVariable(CallbackVariableCallback* callback)
    : CallbackVariable(callback) {
}

CallbackStructVariable::CallbackStructVariable(Variable&& variable, CallbackVariableCallback* callback)
    : CallbackVariable(std::move(variable), callback) {
}

Variable* CallbackStructVariable::Member(const AggregateIndex& index) {
    return Variable::Element(index, 0);
}

Variable* CallbackStructVariable::Element(const AggregateIndex& index, int create) {
    if (index.Kind() == AGGREGATE_ARRAY)
        return Variable::Element(index, create);
    if (Variable* member = Member(index))
        return member;
    const bool supplied = link.callback && link.callback->Lookup(this, index);
    if (Variable* member = Member(index); member && (supplied || create))
        return member;
    if (!create)
        return supplied && link.callback ? link.callback->return_value() : nullptr;
    if (supplied && link.callback)
        SetElement(index, link.callback->return_value());
    return Variable::Element(index, 1);
}
