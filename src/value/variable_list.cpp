// A list that counts in what it holds.

#include "value/variable_list.h"

#include "value/variable.h"

VariableList::VariableList() : List<Variable>(1) {
}

// Here and not in the base, whose Purge would delete instead of count.
VariableList::~VariableList() {
    VariableList::Dump();
}

ListNode<Variable>* VariableList::Insert(Variable* variable, ListPosition position) {
    return VariableList::Insert(variable, position, 1);
}

void VariableList::Purge(Variable* variable) {
    variable->DecRefCount();
}

ListNode<Variable>* VariableList::Insert(Variable* variable, ListPosition position, int count) {
    ListNode<Variable>* node = List<Variable>::Insert(variable, position);
    if (node && count)
        variable->IncRefCount();
    return node;
}

void VariableList::Destroy() {
    Dump();
    delete this;
}
