#ifndef VALUE_VARIABLE_LIST_H
#define VALUE_VARIABLE_LIST_H

#include "core/list.h"

class Variable;

// A list of variables, which are counted instead of owned: each place in the list holds one count. What
// Remove and RemoveAll take out keeps it, so the count is then the caller's.
class VariableList : public List<Variable> {
  public:
    VariableList();

    // The order of the virtual operations is part of the binary interface: add at the end.
    ~VariableList() override;
    ListNode<Variable>* Insert(Variable* variable, ListPosition position) override;
    void Purge(Variable* variable) override;
    // Adds a count only if count isn't 0; else the list takes over the caller's.
    virtual ListNode<Variable>* Insert(Variable* variable, ListPosition position, int count);
    // Releases all variables and deletes the list, which stands on the heap.
    virtual void Destroy();
};

#endif
