#ifndef VALUE_REFERENCE_VARIABLE_H
#define VALUE_REFERENCE_VARIABLE_H

#include "value/variable.h"

// Another name for a variable: what is read, set or stored goes to the target. The reference has a name and a
// count of its own, and each of its counts is one of the target's too, so a reference is given back by
// DecRefCount and never by delete. A target may be a reference itself; circles can't be made.
class ReferenceVariable : public Variable {
  public:
    ReferenceVariable(const char* name, int name_length, Variable* target);
    ReferenceVariable(const ReferenceVariable&) = delete;

    Variable* Clone(TarnApplication*) override { return new Variable(*this); }
    Variable* NextIdentity() override { return link.target; }
    Variable* RealIdentity() override { return Referent()->RealIdentity(); }
    const String& value() override { return Referent()->value(); }
    int value_integer() override { return Referent()->value_integer(); }
    mpd_t* value_mpd() override { return Referent()->value_mpd(); }
    mpd_t* value_compare(int* error) override { return Referent()->value_compare(error); }
    int type() const override { return VARIABLE_REFERENCE; }
    int primary_type() override { return Referent()->primary_type(); }
    int preferred_type() override { return Referent()->preferred_type(); }
    bool IsTrue() override { return Referent()->IsTrue(); }
    bool IsNULL() override { return Referent()->IsNULL(); }
    bool SetNULL() override { return Referent()->SetNULL(); }
    AggregateElementTree* aggregateelements() override { return Referent()->aggregateelements(); }
    AggregateType aggregatetype() override { return Referent()->aggregatetype(); }
    bool SetValue(const char* text, int length) override { return Referent()->SetValue(text, length); }
    bool SetValue(Variable& source) override { return Referent()->SetValue(source); }
    bool SetValue_Nocopy(char* text, int length, int capacity) override {
        return Referent()->SetValue_Nocopy(text, length, capacity);
    }
    bool SetValue_Integer(int number) override { return Referent()->SetValue_Integer(number); }
    bool SetValue_mpd(mpd_t* number) override { return Referent()->SetValue_mpd(number); }
    bool SetValue_mpd_Nocopy(mpd_t* number) override { return Referent()->SetValue_mpd_Nocopy(number); }
    Variable* Element(const AggregateIndex& index, int create) override {
        return Referent()->Element(index, create);
    }
    bool SetElement(const AggregateIndex& index, Variable* variable) override {
        return Referent()->SetElement(index, variable);
    }
    void InsertElement(int position, Variable* variable) override {
        Referent()->InsertElement(position, variable);
    }
    void DeleteElement(const AggregateIndex& index, bool collapse) override {
        Referent()->DeleteElement(index, collapse);
    }
    void DeleteElements(int start, int count, bool collapse) override {
        Referent()->DeleteElements(start, count, collapse);
    }
    void MergeElements(Variable* source, int start, int count, int dest, bool clone) override {
        Referent()->MergeElements(source, start, count, dest, clone);
    }
    void CopyElements(Variable* source, int start, int count, int dest, bool clone) override {
        Referent()->CopyElements(source, start, count, dest, clone);
    }
    int CollapseElements() override { return Referent()->CollapseElements(); }
    int Max() override { return Referent()->Max(); }
    int Min() override { return Referent()->Min(); }
    int Next(int index) override { return Referent()->Next(index); }
    int Previous(int index) override { return Referent()->Previous(index); }
    int ElementsUsed() override { return Referent()->ElementsUsed(); }
    void IncRefCount() override;
    void DecRefCount() override;
    bool Convert_Aggregate(AggregateType type) override { return Referent()->Convert_Aggregate(type); }
    void Serialize(String& out) override { Referent()->Serialize(out); }
    // Moves all counts over to another target, unless that is at the end the same variable.
    void Make_Reference(Variable* target) override;
    void Make_CallbackStruct(CallbackVariableCallback* callback) override {
        Referent()->Make_CallbackStruct(callback);
    }

    // The order of the virtual operations is part of the binary interface: add at the end.
    // What the target's type() answers.
    [[nodiscard]] virtual int TypeReferredTo() { return link.target->type(); }

  private:
    friend class Variable;

    // For a variable that becomes this reference: one count of the target for each of its own.
    ReferenceVariable(String&& name, int counts, Variable* target);

    // The first variable along the references that is none.
    [[nodiscard]] Variable* Referent() const;
};

#endif
