#ifndef VALUE_IMMUTABLE_VARIABLE_H
#define VALUE_IMMUTABLE_VARIABLE_H

#include "core/list.h"
#include "value/variable.h"

class NULLVariable;

// The read-only form of a value. While it is locked every write is ignored, though it answers true and frees
// what was handed over; while it isn't, values can be set and elements stored, which are immutable too, all
// the way down. What inserts, deletes, merges or copies elements, or changes what the variable is, never
// applies.
class ImmutableVariable : public Variable {
  public:
    // Unlocked. The last form is a deep copy.
    ImmutableVariable();
    ImmutableVariable(const char* name, int name_length);
    explicit ImmutableVariable(Variable* source);
    ImmutableVariable(const ImmutableVariable&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    ~ImmutableVariable() override;
    // An ImmutableVariable, locked if this is.
    Variable* Clone(TarnApplication* application) override;
    bool SetNULL() override;
    bool SetValue(const char* text, int length) override;
    // Elements of the source that are immutable already are shared.
    bool SetValue(Variable& source) override;
    bool SetValue_Nocopy(char* text, int length, int capacity) override;
    bool SetValue_Integer(int number) override;
    bool SetValue_mpd(mpd_t* number) override;
    bool SetValue_mpd_Nocopy(mpd_t* number) override;
    // A missing element is, with create, while locked a NULLVariable that all such requests share.
    Variable* Element(const AggregateIndex& index, int create) override;
    // Stores a deep immutable copy, unless variable is immutable already.
    bool SetElement(const AggregateIndex& index, Variable* variable) override;
    void InsertElement(int position, Variable* variable) override;
    void DeleteElement(const AggregateIndex& index, bool collapse) override;
    void DeleteElements(int start, int count, bool collapse) override;
    void MergeElements(Variable* source, int start, int count, int dest, bool clone) override;
    void CopyElements(Variable* source, int start, int count, int dest, bool clone) override;
    // While locked nothing is renumbered.
    int CollapseElements() override;
    bool Convert_Aggregate(AggregateType type) override;
    void Make_Reference(Variable* target) override;
    // Discards callback.
    void Make_CallbackStruct(CallbackVariableCallback* callback) override;
    ImmutableVariable* AsImmutable() override;

    // For the variable and all immutable elements in it, however deep.
    virtual void Lock();
    virtual void Unlock();

  protected:
    // The order of the members is part of the binary interface.
    bool locked = false;
    NULLVariable* null_element = nullptr; // counted; made on demand

  private:
    void Set_Locked(bool flag);
};

// An immutable value that is computed on first need: every reading operation calls Load, unless IsLoaded.
// Load unlocks the variable to set it.
class DynamicImmutableVariable : public ImmutableVariable {
  public:
    // Locked.
    DynamicImmutableVariable(const char* name, int name_length);

    // The order of the virtual operations is part of the binary interface: add at the end.
    const String& value() override;
    int value_integer() override;
    mpd_t* value_mpd() override;
    mpd_t* value_compare(int* error) override;
    int primary_type() override;
    bool IsTrue() override;
    bool IsNULL() override;
    AggregateElementTree* aggregateelements() override;
    AggregateType aggregatetype() override;
    Variable* Element(const AggregateIndex& index, int create) override;
    int CollapseElements() override;
    int Max() override;
    int Min() override;
    int Next(int index) override;
    int Previous(int index) override;
    int ElementsUsed() override;
    void Convert_String() override;
    void Convert_Integer() override;
    void Convert_mpd() override;
    void Serialize(String& out) override;

    virtual bool IsLoaded() = 0;
    virtual void Load() = 0;
    // Forgets the value, so that the next reading loads it again. For engines; nothing here calls it.
    virtual void Unload() = 0;

  private:
    void Load_If_Needed();
};

// The variable that is always NULL, and whose elements are itself.
class NULLVariable : public ImmutableVariable {
  public:
    NULLVariable();

    // The order of the virtual operations is part of the binary interface: add at the end.
    Variable* Clone(TarnApplication* application) override;
    const String& value() override;
    int value_integer() override;
    mpd_t* value_mpd() override;
    mpd_t* value_compare(int* error) override;
    int type() const override;
    bool IsTrue() override;
    bool IsNULL() override;
    // The variable itself with create, else null.
    Variable* Element(const AggregateIndex& index, int create) override;
    int CollapseElements() override;
    virtual Variable* Element(List<AggregateIndex>* path, int create);
};

#endif
