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
    for (int i = 0; i < counts; i++)
        target->IncRefCount();
}

Variable* ReferenceVariable::Referent() const {
    Variable* variable = link.target;
    while (variable->type() == VARIABLE_REFERENCE)
        variable = variable->NextIdentity();
    return variable;
}

Variable* ReferenceVariable::Clone(TarnApplication*) {
    return new Variable(*this);
}

Variable* ReferenceVariable::NextIdentity() {
    return link.target;
}

Variable* ReferenceVariable::RealIdentity() {
    return Referent()->RealIdentity();
}

const String& ReferenceVariable::value() {
    return Referent()->value();
}

int ReferenceVariable::value_integer() {
    return Referent()->value_integer();
}

mpd_t* ReferenceVariable::value_mpd() {
    return Referent()->value_mpd();
}

mpd_t* ReferenceVariable::value_compare(int* error) {
    return Referent()->value_compare(error);
}

int ReferenceVariable::type() const {
    return VARIABLE_REFERENCE;
}

int ReferenceVariable::primary_type() {
    return Referent()->primary_type();
}

int ReferenceVariable::preferred_type() {
    return Referent()->preferred_type();
}

bool ReferenceVariable::IsTrue() {
    return Referent()->IsTrue();
}

bool ReferenceVariable::IsNULL() {
    return Referent()->IsNULL();
}

bool ReferenceVariable::SetNULL() {
    return Referent()->SetNULL();
}

AggregateElementTree* ReferenceVariable::aggregateelements() {
    return Referent()->aggregateelements();
}

AggregateType ReferenceVariable::aggregatetype() {
    return Referent()->aggregatetype();
}

bool ReferenceVariable::SetValue(const char* text, int length) {
    return Referent()->SetValue(text, length);
}

bool ReferenceVariable::SetValue(Variable& source) {
    return Referent()->SetValue(source);
}

bool ReferenceVariable::SetValue_Nocopy(char* text, int length, int capacity) {
    return Referent()->SetValue_Nocopy(text, length, capacity);
}

bool ReferenceVariable::SetValue_Integer(int number) {
    return Referent()->SetValue_Integer(number);
}

bool ReferenceVariable::SetValue_mpd(mpd_t* number) {
    return Referent()->SetValue_mpd(number);
}

bool ReferenceVariable::SetValue_mpd_Nocopy(mpd_t* number) {
    return Referent()->SetValue_mpd_Nocopy(number);
}

Variable* ReferenceVariable::Element(const AggregateIndex& index, int create) {
    return Referent()->Element(index, create);
}

bool ReferenceVariable::SetElement(const AggregateIndex& index, Variable* variable) {
    return Referent()->SetElement(index, variable);
}

void ReferenceVariable::InsertElement(int position, Variable* variable) {
    Referent()->InsertElement(position, variable);
}

void ReferenceVariable::DeleteElement(const AggregateIndex& index, bool collapse) {
    Referent()->DeleteElement(index, collapse);
}

void ReferenceVariable::DeleteElements(int start, int count, bool collapse) {
    Referent()->DeleteElements(start, count, collapse);
}

void ReferenceVariable::MergeElements(Variable* source, int start, int count, int dest, bool clone) {
    Referent()->MergeElements(source, start, count, dest, clone);
}

void ReferenceVariable::CopyElements(Variable* source, int start, int count, int dest, bool clone) {
    Referent()->CopyElements(source, start, count, dest, clone);
}

int ReferenceVariable::CollapseElements() {
    return Referent()->CollapseElements();
}

int ReferenceVariable::Max() {
    return Referent()->Max();
}

int ReferenceVariable::Min() {
    return Referent()->Min();
}

int ReferenceVariable::Next(int index) {
    return Referent()->Next(index);
}

int ReferenceVariable::Previous(int index) {
    return Referent()->Previous(index);
}

int ReferenceVariable::ElementsUsed() {
    return Referent()->ElementsUsed();
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

bool ReferenceVariable::Convert_Aggregate(AggregateType type) {
    return Referent()->Convert_Aggregate(type);
}

void ReferenceVariable::Serialize(String& out) {
    Referent()->Serialize(out);
}

void ReferenceVariable::Make_Reference(Variable* target) {
    Variable* old = link.target;
    if (target == this || target == old || target->RealIdentity() == RealIdentity())
        return;
    const int counts = refcount_;
    for (int i = 0; i < counts; i++)
        target->IncRefCount();
    link.target = target;
    for (int i = 0; i < counts; i++)
        old->DecRefCount();
}

void ReferenceVariable::Make_CallbackStruct(CallbackVariableCallback* callback) {
    Referent()->Make_CallbackStruct(callback);
}

int ReferenceVariable::TypeReferredTo() {
    return link.target->type();
}
