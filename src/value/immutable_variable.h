#ifndef VALUE_IMMUTABLE_VARIABLE_H
#define VALUE_IMMUTABLE_VARIABLE_H

#include "core/list.h"
#include "value/variable.h"

// The read-only form of a value. While it is locked every write is ignored, though it answers true and frees
// what was handed over; while it isn't, values can be set and elements stored, which are immutable too, all
// the way down. What inserts, deletes, merges or copies elements, or changes what the variable is, never
// applies.
//
// Counted as every Variable is. Its elements may belong to other variables, too: those that were immutable
// already when they were stored are shared, and with them what Lock and Unlock set.
class ImmutableVariable : public Variable {
  public:
    // Unlocked. The last form is a deep copy, which leaves the source to the caller and shares nothing.
    ImmutableVariable();
    ImmutableVariable(const char* name, int name_length);
    explicit ImmutableVariable(Variable* source);
    ImmutableVariable(const ImmutableVariable&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    ~ImmutableVariable() override;
    // An ImmutableVariable, locked if this is.
    Variable* Clone(TarnApplication* application) override;
    bool SetNULL() override { return locked || Variable::SetNULL(); }
    bool SetValue(const char* text, int length) override {
        return locked || Variable::SetValue(text, length);
    }
    // Elements of the source that are immutable already are shared.
    bool SetValue(Variable& source) override;
    bool SetValue_Nocopy(char* text, int length, int capacity) override;
    bool SetValue_Integer(int number) override { return locked || Variable::SetValue_Integer(number); }
    bool SetValue_mpd(mpd_t* number) override { return locked || Variable::SetValue_mpd(number); }
    bool SetValue_mpd_Nocopy(mpd_t* number) override;
    // A missing element is, with create, while locked a NULLVariable that all such requests share. It
    // belongs to this variable and goes with it, unless the caller adds a count.
    Variable* Element(const AggregateIndex& index, int create) override;
    // Stores a deep immutable copy, unless variable is immutable already.
    bool SetElement(const AggregateIndex& index, Variable* variable) override;
    void InsertElement(int, Variable*) override {}
    void DeleteElement(const AggregateIndex&, bool) override {}
    void DeleteElements(int, int, bool) override {}
    void MergeElements(Variable*, int, int, int, bool) override {}
    void CopyElements(Variable*, int, int, int, bool) override {}
    // While locked nothing is renumbered.
    int CollapseElements() override;
    bool Convert_Aggregate(AggregateType type) override {
        return locked || Variable::Convert_Aggregate(type);
    }
    void Make_Reference(Variable*) override {}
    // Discards callback.
    void Make_CallbackStruct(CallbackVariableCallback* callback) override;
    ImmutableVariable* AsImmutable() override;

    // For the variable and all immutable elements in it, however deep.
    virtual void Lock();
    virtual void Unlock();

  protected:
    // The order of the fields is part of the binary interface.
    bool locked = false;
    VariableHold null_element; // a NULLVariable, made on demand

  private:
    void Set_Locked(bool flag);
};

// An immutable value that is computed on first need: every reading operation calls Load, unless IsLoaded.
// Load unlocks the variable, sets it and locks it again. It makes IsLoaded true before anything else: what it
// calls on the variable may be a reading operation, as Element is, and would call Load again.
class DynamicImmutableVariable : public ImmutableVariable {
  public:
    // Locked.
    DynamicImmutableVariable(const char* name, int name_length);

    // The order of the virtual operations is part of the binary interface: add at the end.
    const String& value() override { return Loaded().ImmutableVariable::value(); }
    int value_integer() override { return Loaded().ImmutableVariable::value_integer(); }
    mpd_t* value_mpd() override { return Loaded().ImmutableVariable::value_mpd(); }
    mpd_t* value_compare(int* error) override { return Loaded().ImmutableVariable::value_compare(error); }
    int primary_type() override { return Loaded().ImmutableVariable::primary_type(); }
    bool IsTrue() override { return Loaded().ImmutableVariable::IsTrue(); }
    bool IsNULL() override { return Loaded().ImmutableVariable::IsNULL(); }
    AggregateElementTree* aggregateelements() override {
        return Loaded().ImmutableVariable::aggregateelements();
    }
    AggregateType aggregatetype() override { return Loaded().ImmutableVariable::aggregatetype(); }
    Variable* Element(const AggregateIndex& index, int create) override {
        return Loaded().ImmutableVariable::Element(index, create);
    }
    int CollapseElements() override { return Loaded().ImmutableVariable::CollapseElements(); }
    int Max() override { return Loaded().ImmutableVariable::Max(); }
    int Min() override { return Loaded().ImmutableVariable::Min(); }
    int Next(int index) override { return Loaded().ImmutableVariable::Next(index); }
    int Previous(int index) override { return Loaded().ImmutableVariable::Previous(index); }
    int ElementsUsed() override { return Loaded().ImmutableVariable::ElementsUsed(); }
    void Convert_String() override { Loaded().ImmutableVariable::Convert_String(); }
    void Convert_Integer() override { Loaded().ImmutableVariable::Convert_Integer(); }
    void Convert_mpd() override { Loaded().ImmutableVariable::Convert_mpd(); }
    void Serialize(String& out) override { Loaded().ImmutableVariable::Serialize(out); }

    virtual bool IsLoaded() = 0;
    // The value is the variable's from then on; where it comes from stays the descendant's own.
    virtual void Load() = 0;
    // Forgets the value, so that the next reading loads it again. For engines; nothing here calls it.
    virtual void Unload() = 0;

  private:
    // This variable, with its value in place.
    DynamicImmutableVariable& Loaded();
};

// The variable that is always NULL, and whose elements are itself.
class NULLVariable : public ImmutableVariable {
  public:
    NULLVariable();

    // The order of the virtual operations is part of the binary interface: add at the end.
    Variable* Clone(TarnApplication*) override { return new NULLVariable; }
    const String& value() override { return string; }
    int value_integer() override { return 0; }
    mpd_t* value_mpd() override;
    mpd_t* value_compare(int* error) override;
    int type() const override { return VARIABLE_NULL; }
    bool IsTrue() override { return false; }
    bool IsNULL() override { return true; }
    // The variable itself with create, else null.
    Variable* Element(const AggregateIndex&, int create) override { return create ? this : nullptr; }
    int CollapseElements() override { return 0; }
    virtual Variable* Element(List<AggregateIndex>*, int create) { return create ? this : nullptr; }
};

#endif
