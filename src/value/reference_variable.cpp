// Variables that stand for another variable.

#include "value/reference_variable.h"

#include <utility>

// A variable becomes a reference where it stands.
static_assert(sizeof(ReferenceVariable) == sizeof(Variable));

ReferenceVariable::ReferenceVariable(const char* name, int name_length, Variable* target)
    : Variable(name, name_length) {
    link.target = target;
    target->IncRefCount();
}

ReferenceVariable::ReferenceVariable(String&& name, int counts, Variable* target) {
    name_ = std::move(name);
    refcount_ = counts;
    link.target = target;
    for (int i = 0; i < counts; ++i)
        target->IncRefCount();
}

Variable* ReferenceVariable::Referent() const {
    Variable* variable = link.target;
    while (variable->type() == VARIABLE_REFERENCE)
        variable = variable->NextIdentity();
    return variable;
}

// Both walk the whole chain of references, which may be too long for recursion, once its end has been
// counted.
void ReferenceVariable::IncRefCount() {
    Referent()->IncRefCount();
    for (Variable* variable = this; variable->type() == VARIABLE_REFERENCE;
         variable = variable->NextIdentity())
        variable->Variable::IncRefCount();
}

void ReferenceVariable::DecRefCount() {
    Variable* end = Referent();
    end->DecRefCount();
    for (Variable *variable = this, *next; variable != end; variable = next) {
        next = variable->NextIdentity();
        variable->Variable::DecRefCount();
    }
}

void ReferenceVariable::Make_Reference(Variable* target) {
    Variable* old = link.target;
    if (target == this || target == old || target->RealIdentity() == RealIdentity())
        return;
    const int counts = refcount_;
    for (int i = 0; i < counts; ++i)
        target->IncRefCount();
    link.target = target;
    for (int i = 0; i < counts; ++i)
        old->DecRefCount();
}
