#include "value/immutable_variable.h"

#include "app/tarn_application.h"
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

ImmutableVariable::~ImmutableVariable() {
    if (null_element)
        null_element->DecRefCount();
}

Variable* ImmutableVariable::Clone(TarnApplication*) {
    auto* copy = new ImmutableVariable(this);
    if (locked)
        copy->Lock();
    return copy;
}

bool ImmutableVariable::SetNULL() {
    return locked || Variable::SetNULL();
}

bool ImmutableVariable::SetValue(const char* text, int length) {
    return locked || Variable::SetValue(text, length);
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

bool ImmutableVariable::SetValue_Integer(int number) {
    return locked || Variable::SetValue_Integer(number);
}

bool ImmutableVariable::SetValue_mpd(mpd_t* number) {
    return locked || Variable::SetValue_mpd(number);
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
            null_element = new NULLVariable;
        return null_element;
    }
    auto* made = new ImmutableVariable;
    Variable::SetElement(index, made);
    made->DecRefCount();
    return made;
}

bool ImmutableVariable::SetElement(const AggregateIndex& index, Variable* variable) {
    if (locked)
        return true;
    VariableHold stored =
        variable->AsImmutable() ? Hold(variable) : VariableHold(new ImmutableVariable(variable));
    return Variable::SetElement(index, stored.get());
}

void ImmutableVariable::InsertElement(int, Variable*) {
}

void ImmutableVariable::DeleteElement(const AggregateIndex&, bool) {
}

void ImmutableVariable::DeleteElements(int, int, bool) {
}

void ImmutableVariable::MergeElements(Variable*, int, int, int, bool) {
}

void ImmutableVariable::CopyElements(Variable*, int, int, int, bool) {
}

int ImmutableVariable::CollapseElements() {
    if (!locked)
        return Variable::CollapseElements();
    return aggregate == AGGREGATE_ARRAY ? elements->Entries() : 0;
}

bool ImmutableVariable::Convert_Aggregate(AggregateType type) {
    return locked || Variable::Convert_Aggregate(type);
}

void ImmutableVariable::Make_Reference(Variable*) {
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
        if (variable->elements && walk.Enter(variable->elements))
            depth++;
    };
    set(this);
    while (depth) {
        AggregateElement* element = walk.Next();
        if (!element)
            depth--;
        else if (ImmutableVariable* immutable = element->var()->AsImmutable())
            set(immutable);
    }
}

DynamicImmutableVariable::DynamicImmutableVariable(const char* name, int name_length)
    : ImmutableVariable(name, name_length) {
    locked = true;
}

void DynamicImmutableVariable::Load_If_Needed() {
    if (!IsLoaded())
        Load();
}

const String& DynamicImmutableVariable::value() {
    Load_If_Needed();
    return ImmutableVariable::value();
}

int DynamicImmutableVariable::value_integer() {
    Load_If_Needed();
    return ImmutableVariable::value_integer();
}

mpd_t* DynamicImmutableVariable::value_mpd() {
    Load_If_Needed();
    return ImmutableVariable::value_mpd();
}

mpd_t* DynamicImmutableVariable::value_compare(int* error) {
    Load_If_Needed();
    return ImmutableVariable::value_compare(error);
}

int DynamicImmutableVariable::primary_type() {
    Load_If_Needed();
    return ImmutableVariable::primary_type();
}

bool DynamicImmutableVariable::IsTrue() {
    Load_If_Needed();
    return ImmutableVariable::IsTrue();
}

bool DynamicImmutableVariable::IsNULL() {
    Load_If_Needed();
    return ImmutableVariable::IsNULL();
}

AggregateElementTree* DynamicImmutableVariable::aggregateelements() {
    Load_If_Needed();
    return ImmutableVariable::aggregateelements();
}

AggregateType DynamicImmutableVariable::aggregatetype() {
    Load_If_Needed();
    return ImmutableVariable::aggregatetype();
}

Variable* DynamicImmutableVariable::Element(const AggregateIndex& index, int create) {
    Load_If_Needed();
    return ImmutableVariable::Element(index, create);
}

int DynamicImmutableVariable::CollapseElements() {
    Load_If_Needed();
    return ImmutableVariable::CollapseElements();
}

int DynamicImmutableVariable::Max() {
    Load_If_Needed();
    return ImmutableVariable::Max();
}

int DynamicImmutableVariable::Min() {
    Load_If_Needed();
    return ImmutableVariable::Min();
}

int DynamicImmutableVariable::Next(int index) {
    Load_If_Needed();
    return ImmutableVariable::Next(index);
}

int DynamicImmutableVariable::Previous(int index) {
    Load_If_Needed();
    return ImmutableVariable::Previous(index);
}

int DynamicImmutableVariable::ElementsUsed() {
    Load_If_Needed();
    return ImmutableVariable::ElementsUsed();
}

void DynamicImmutableVariable::Convert_String() {
    Load_If_Needed();
    ImmutableVariable::Convert_String();
}

void DynamicImmutableVariable::Convert_Integer() {
    Load_If_Needed();
    ImmutableVariable::Convert_Integer();
}

void DynamicImmutableVariable::Convert_mpd() {
    Load_If_Needed();
    ImmutableVariable::Convert_mpd();
}

void DynamicImmutableVariable::Serialize(String& out) {
    Load_If_Needed();
    ImmutableVariable::Serialize(out);
}

NULLVariable::NULLVariable() {
    locked = true;
}

Variable* NULLVariable::Clone(TarnApplication*) {
    return new NULLVariable;
}

const String& NULLVariable::value() {
    return string;
}

int NULLVariable::value_integer() {
    return 0;
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

int NULLVariable::type() const {
    return VARIABLE_NULL;
}

bool NULLVariable::IsTrue() {
    return false;
}

bool NULLVariable::IsNULL() {
    return true;
}

Variable* NULLVariable::Element(const AggregateIndex&, int create) {
    return create ? this : nullptr;
}

int NULLVariable::CollapseElements() {
    return 0;
}

Variable* NULLVariable::Element(List<AggregateIndex>*, int create) {
    return create ? this : nullptr;
}
