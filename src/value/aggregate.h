#ifndef VALUE_AGGREGATE_H
#define VALUE_AGGREGATE_H

#include "core/splay_tree.h"
#include "core/string.h"
#include "value/variable.h"

// The key of an element: a name in a structure, which ignores case, or a number in an array. Arrays count
// from 1, but 0 is a legal key.
class AggregateIndex {
  public:
    AggregateIndex(); // an empty name
    AggregateIndex(const AggregateIndex& other);
    AggregateIndex(const String& name);
    AggregateIndex(const char* name, int name_length);
    AggregateIndex(int number); // negative numbers become 0
    AggregateIndex& operator=(const AggregateIndex&) = delete;

    // The sign of other against this: -1 when other sorts before it. Numbers sort as numbers; names by the
    // text that they have in common, then by length; a name before all numbers.
    [[nodiscard]] int Compare(const AggregateIndex& other) const {
        if (number < 0 && other.number < 0)
            return Compare_Names(other);
        return (other.number > number) - (other.number < number);
    }

    // The kind of aggregate whose elements have such an index.
    [[nodiscard]] AggregateType Kind() const { return number >= 0 ? AGGREGATE_ARRAY : AGGREGATE_STRUCTURE; }
    [[nodiscard]] int Number() const { return number; } // -1 for a name
    // Makes this the index n, negative numbers becoming 0.
    void Renumber(int n);

    // The name, or the digits of a number.
    operator String&();
    // "[" number "]", or ":" name.
    const String& serialized();

  private:
    [[nodiscard]] int Compare_Names(const AggregateIndex& other) const;

    // The order of the fields is part of the binary interface.
    String name;        // of a number its digits, once they were asked for
    int number = -1;    // -1 for a name
    String serialized_; // unassigned until asked for
};

// One element of an aggregate: a key and a counted variable.
class AggregateElement {
  public:
    // Stores variable, with one more count.
    AggregateElement(const AggregateIndex& index, Variable* variable);
    // Makes a new variable.
    explicit AggregateElement(const AggregateIndex& index);
    // Makes a copy of the other's variable.
    AggregateElement(const AggregateElement& other);
    AggregateElement& operator=(const AggregateElement&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~AggregateElement();
    virtual AggregateIndex& index();
    virtual Variable* var();
    // Releases the old variable.
    virtual void SetVariable(Variable* variable);

    friend const AggregateIndex& Splay_Key(const AggregateElement& element) { return element.index_; }

  private:
    // The order of the fields is part of the binary interface.
    AggregateIndex index_;
    VariableHold var_;
};

inline int Splay_Compare(const AggregateIndex& key, const AggregateElement& element) {
    return Splay_Key(element).Compare(key);
}

// The elements of one variable, which it owns, in the order of their keys. Copying copies the variables too.
class AggregateElementTree : public SplayTree<AggregateElement, const AggregateIndex&> {
  public:
    AggregateElementTree();
    AggregateElementTree(const AggregateElementTree&) = default;
    AggregateElementTree& operator=(const AggregateElementTree&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    ~AggregateElementTree() override;
    // Frees what is nested in the elements without recursion: how deep that is, is up to the script.
    void Dump() override;
    // Adds delta to the numbers of all elements from the number from on. Going down, there must be room
    // below; numbers stay within 0 to 2147483647.
    virtual void Displace(int from, int delta);
    virtual void DisplaceRecurse(int delta, SplayTreeNode<AggregateElement>* node);
    virtual void DisplaceStack(int delta, SplayTreeNode<AggregateElement>* node);

    // Inserts every element at the end of the list, in the order in which SplayTree's copy takes them: a copy
    // that is put together otherwise gets the same shape by it.
    void AppendToList_For_Copy(List<AggregateElement>& list) const;

  private:
    Node* Detach();
};

#endif
