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

    Variable* Clone(TarnApplication* application) override;
    Variable* NextIdentity() override;
    Variable* RealIdentity() override;
    const String& value() override;
    int value_integer() override;
    mpd_t* value_mpd() override;
    mpd_t* value_compare(int* error) override;
    int type() const override;
    int primary_type() override;
    int preferred_type() override;
    bool IsTrue() override;
    bool IsNULL() override;
    bool SetNULL() override;
    AggregateElementTree* aggregateelements() override;
    AggregateType aggregatetype() override;
    bool SetValue(const char* text, int length) override;
    bool SetValue(Variable& source) override;
    bool SetValue_Nocopy(char* text, int length, int capacity) override;
    bool SetValue_Integer(int number) override;
    bool SetValue_mpd(mpd_t* number) override;
    bool SetValue_mpd_Nocopy(mpd_t* number) override;
    Variable* Element(const AggregateIndex& index, int create) override;
    bool SetElement(const AggregateIndex& index, Variable* variable) override;
    void InsertElement(int position, Variable* variable) override;
    void DeleteElement(const AggregateIndex& index, bool collapse) override;
    void DeleteElements(int start, int count, bool collapse) override;
    void MergeElements(Variable* source, int start, int count, int dest, bool clone) override;
    void CopyElements(Variable* source, int start, int count, int dest, bool clone) override;
    int CollapseElements() override;
    int Max() override;
    int Min() override;
    int Next(int index) override;
    int Previous(int index) override;
    int ElementsUsed() override;
    void IncRefCount() override;
    void DecRefCount() override;
    bool Convert_Aggregate(AggregateType type) override;
    void Serialize(String& out) override;
    // Moves all counts over to another target, unless that is at the end the same variable.
    void Make_Reference(Variable* target) override;
    void Make_CallbackStruct(CallbackVariableCallback* callback) override;

    // The order of the virtual operations is part of the binary interface: add at the end.
    // What the target's type() answers.
    [[nodiscard]] virtual int TypeReferredTo();

  private:
    friend class Variable;

    // For a variable that becomes this reference: one count of the target for each of its own.
    ReferenceVariable(String&& name, int counts, Variable* target);

    // The first variable along the references that is none.
    [[nodiscard]] Variable* Referent() const;
};

#endif
