#ifndef VALUE_VARIABLE_H
#define VALUE_VARIABLE_H

#include "core/string.h"

#include <memory>
#include <string_view>

class AggregateElementTree;
class AggregateIndex;
class CallbackVariableCallback;
class ImmutableVariable;
class TarnApplication;
struct mpd_t;

enum AggregateType {
    AGGREGATE_STRUCTURE = 0, // elements by name
    AGGREGATE_ARRAY = 1,     // elements by number, from 1
    AGGREGATE_NONE = 2,      // a scalar
};

// What a variable was last set to: its primary type.
enum VariableValueType {
    VALUE_NONE = 0, // nothing, or an aggregate
    VALUE_STRING = 1,
    VALUE_INTEGER = 2,
    VALUE_DECIMAL = 3,
};

// What type() answers. The last three are kinds that an engine adds.
enum VariableKind {
    VARIABLE_PLAIN = 0,
    VARIABLE_REFERENCE = 1,
    VARIABLE_NULL = 2,
    VARIABLE_INTEGER = 3, // always presents an integer
    VARIABLE_TEXT = 4,    // always presents text
    VARIABLE_FIELDS = 5,  // presents its fields, with a preferred type where none is set
};

// A value of the language: text, a 32-bit integer or a decimal, or an array or structure of further
// variables, or NULL. The representations are cached side by side, so that a value is converted once however
// often it is read; reading may therefore change the object, though never the value.
//
// Variables are counted: one is made with a count of 1, that of its maker, and deletes itself when
// DecRefCount takes the last one. Tables, lists and aggregates that are given a variable add a count of their
// own.
//
// Tarn_MPD_Context has to be set up before the first decimal is made, by mpd_ieee_context: all decimals,
// those that text and comparisons take along included, are computed in it.
//
// No operation fails: text that is no number reads as 0, and element operations that make no sense for the
// variable do nothing or answer 0 or null. Lengths of -1 mean up to the NUL.
class Variable {
  public:
    Variable();
    Variable(const char* name, int name_length);
    Variable(const char* name, int name_length, const char* value, int value_length);
    // Takes value, an array allocated with new[].
    Variable(const char* name, int name_length, char* value, int value_length, int value_capacity);
    Variable(const char* name, int name_length, int value);
    Variable(const char* name, int name_length, unsigned value);
    Variable(const char* name, int name_length, mpd_t* value);
    Variable(const String& name, const String& value);
    Variable(const Variable& other);
    Variable& operator=(const Variable&) = delete;

    // Truth of a text: false for zeros with at most one point among them, and for the empty text.
    [[nodiscard]] static bool IsTrue(const char* text, int length);

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~Variable();
    // A copy that shares nothing with this one. The caller has its count.
    [[nodiscard]] virtual Variable* Clone(TarnApplication* application);
    // Unassigned for anonymous variables. References have a name of their own.
    [[nodiscard]] virtual const String& name() const;
    // What a reference refers to directly, and at the end of all references. Other variables answer
    // themselves.
    [[nodiscard]] virtual Variable* NextIdentity();
    [[nodiscard]] virtual Variable* RealIdentity();

    // The value as text, integer and decimal. Of an aggregate the text is Serialize's, made anew at each
    // reading; its numbers are 0. The results belong to the variable and stay until it is read or set again.
    virtual const String& value();
    virtual int value_integer();
    virtual mpd_t* value_mpd();
    // The decimal to compare by. Sets *error when the value is no number and has to be compared as text.
    virtual mpd_t* value_compare(int* error);

    [[nodiscard]] virtual int type() const;     // VariableKind
    [[nodiscard]] virtual int primary_type();   // VariableValueType
    [[nodiscard]] virtual int preferred_type(); // VariableValueType
    [[nodiscard]] virtual bool IsTrue();
    [[nodiscard]] virtual bool IsNULL(); // also of an empty text
    virtual bool SetNULL();
    [[nodiscard]] virtual AggregateElementTree* aggregateelements(); // null for a scalar
    [[nodiscard]] virtual AggregateType aggregatetype();
    [[nodiscard]] virtual int refcount() const;

    virtual bool SetName(const String& name);
    // Setting a value drops all elements; what is given may hang on them. All of these answer true.
    virtual bool SetValue(const char* text, int length);
    // A deep copy, elements included.
    virtual bool SetValue(Variable& source);
    // Takes text, an array allocated with new[].
    virtual bool SetValue_Nocopy(char* text, int length, int capacity);
    virtual bool SetValue_Integer(int number);
    virtual bool SetValue_mpd(mpd_t* number);
    // Takes number, made by mpd_new.
    virtual bool SetValue_mpd_Nocopy(mpd_t* number);

    // The element's variable, not counted for the caller; null when there is none and create is 0. With
    // create a variable that isn't an aggregate of the index's kind becomes an empty one first, and loses its
    // value.
    virtual Variable* Element(const AggregateIndex& index, int create);
    // Stores variable itself, which gets one more count. Answers true.
    virtual bool SetElement(const AggregateIndex& index, Variable* variable);
    // Stores variable at position and moves what is there and behind up by one. A position below 1 appends.
    // Nothing happens when an element would have to go beyond the highest index, 2147483647.
    virtual void InsertElement(int position, Variable* variable);
    // collapse moves the elements of an array behind the deleted ones down. A count of -1 means all from
    // start on.
    virtual void DeleteElement(const AggregateIndex& index, bool collapse);
    virtual void DeleteElements(int start, int count, bool collapse);
    // Put count elements of source's array, from start on, at dest: Merge moves what is there out of the way,
    // Copy replaces it. start below 1 is source's first element, a negative count means all, dest below 1 is
    // behind this array's last element. clone stores copies, else the variables themselves are shared. source
    // may be this variable.
    virtual void MergeElements(Variable* source, int start, int count, int dest, bool clone);
    virtual void CopyElements(Variable* source, int start, int count, int dest, bool clone);
    // Renumbers the elements of an array from 1. Their number, 0 for anything but an array.
    virtual int CollapseElements();
    // Last and first index in use, 0 without elements. Of a structure -1.
    [[nodiscard]] virtual int Max();
    [[nodiscard]] virtual int Min();
    // The next index in use above or below index, 0 when there is none or this is a scalar, -1 for a
    // structure.
    [[nodiscard]] virtual int Next(int index);
    [[nodiscard]] virtual int Previous(int index);
    [[nodiscard]] virtual int ElementsUsed();

    virtual void IncRefCount();
    virtual void DecRefCount();

    // Make a representation valid, out of the others; the primary type stays. What the value has only in the
    // form asked for is lost: text becomes "", a number 0. The readings above call these only at need.
    virtual void Convert_String();
    virtual void Convert_Integer();
    virtual void Convert_mpd();
    // Makes an empty aggregate of the type, or NULL, unless it is of that type already. Answers true.
    virtual bool Convert_Aggregate(AggregateType type);
    // Appends the texts of all leaves in key order, separated by commas.
    virtual void Serialize(String& out);

    // Turn this variable, in place, into a ReferenceVariable to target, or into a CallbackStructVariable that
    // owns callback. Only objects whose very class is Variable can change so, and only those on the heap;
    // descendants override both.
    virtual void Make_Reference(Variable* target);
    virtual void Make_CallbackStruct(CallbackVariableCallback* callback);

    // The variable itself if it is an ImmutableVariable, else null.
    [[nodiscard]] virtual ImmutableVariable* AsImmutable();

    friend std::string_view Hash_Key(const Variable& variable) { return variable.name_.view(); }

  protected:
    friend class AggregateElementTree;

    // Bits of valid.
    enum { HAS_STRING = 1, HAS_INTEGER = 2, HAS_DECIMAL = 4 };

    // Which variables a deep copy of elements is made of.
    enum class ElementCopies {
        Plain,
        Immutable,
        Immutable_Shared, // elements that are immutable already are not copied
    };

    // Takes everything from other, its count included.
    Variable(Variable&& other) noexcept;

    // A copy of what the source has at the end of its references.
    void Set_From(Variable& source, ElementCopies copies);
    // The variable becomes that aggregate without a value, or NULL.
    void Replace_Elements(std::unique_ptr<AggregateElementTree> tree, AggregateType type);
    // The variable becomes a scalar with this one representation.
    void Set_Scalar(unsigned char representation, int type);
    // The elements that go when one more count of this variable does, at the end of references if it is one;
    // else null.
    [[nodiscard]] AggregateElementTree* Dying_Elements();

    // The order of the fields is part of the binary interface.
    String name_;
    String string;
    int integer = 0;
    mpd_t* decimal = nullptr; // owned; null until needed, kept for reuse when not valid
    unsigned char valid = 0;
    int primary = VALUE_NONE;
    AggregateType aggregate = AGGREGATE_NONE;
    std::unique_ptr<AggregateElementTree> elements; // null exactly for AGGREGATE_NONE
    int refcount_ = 1;
    union {
        Variable* target;                   // of a ReferenceVariable
        CallbackVariableCallback* callback; // of a CallbackVariable, owned
    } link{};

  private:
    [[nodiscard]] static std::unique_ptr<AggregateElementTree> Copy_Tree(AggregateElementTree& source,
                                                                         ElementCopies copies);
    void Copy_Scalar(Variable& source);
    void Copy_Representations(Variable& source);
    void Copy_Preferred(Variable& source);
};

// A count of a variable, given back at the end of the scope.
struct VariableRelease {
    void operator()(Variable* variable) const { variable->DecRefCount(); }
};
using VariableHold = std::unique_ptr<Variable, VariableRelease>;

// One more count of the variable.
[[nodiscard]] inline VariableHold Hold(Variable* variable) {
    variable->IncRefCount();
    return VariableHold(variable);
}

#endif
