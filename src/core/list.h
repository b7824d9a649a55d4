#ifndef CORE_LIST_H
#define CORE_LIST_H

// Where in a List an operation acts.
enum ListPosition { LIST_FIRST = 0, LIST_CURRENT = 1, LIST_LAST = 2 };

// The order of the fields is part of the binary interface.
template <class T>
struct ListNode {
    ListNode* previous;
    ListNode* next;
    T* element;
};

// A doubly linked list of element pointers with one built-in cursor. The flag of the constructor says whether
// the list deletes what it still holds when it is dumped or destroyed; taking an element out never deletes
// it.
//
// All walking moves the one cursor, so two walks of a list can't be nested: whoever needs its place again
// saves the element and seeks it. An element may be null, and may be held more than once.
template <class T>
class List {
  public:
    explicit List(int own) : own(own) {}
    List(const List&) = delete;
    List& operator=(const List&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~List();

    // The new node becomes current and is returned. LIST_CURRENT puts it before the current node; into an
    // empty list every position is good. Null when the position names no node: the count has gone up all the
    // same.
    virtual ListNode<T>* Insert(T* e, ListPosition p);
    // Hands the element back, null when the position names no node. The count goes down in any case, to -1
    // for an empty list: ask First or Seek before. A cursor on the node moves to the next one, from the tail
    // to the new tail for LIST_LAST.
    virtual T* Remove(ListPosition p);
    virtual int Entries() const { return entries; }
    // The first node that holds this very pointer becomes current; null, and no current node, when there is
    // none.
    virtual T* Seek(T* e);
    virtual T* First() { return Move_To(head); }
    virtual T* Last() { return Move_To(tail); }
    virtual T* Current() const { return current ? current->element : nullptr; }
    // A walk that fell off either end stays off until First, Last or Seek.
    virtual T* Next() { return current ? Move_To(current->next) : nullptr; }
    virtual T* Previous() { return current ? Move_To(current->previous) : nullptr; }
    // Empties the list; an owning list purges every element.
    virtual void Dump();
    virtual void Purge(T* e) { delete e; }
    // Empties the list without touching the elements, whoever owns them.
    virtual void RemoveAll();

  protected:
    // The order of the fields is part of the binary interface.
    int own;         // Dump purges the elements
    int entries = 0; // -1 and below after taking from an empty list
    ListNode<T>* head = nullptr;
    ListNode<T>* current = nullptr;
    ListNode<T>* tail = nullptr;

  private:
    T* Move_To(ListNode<T>* node) {
        current = node;
        return Current();
    }
    ListNode<T>* Node_At(ListPosition p) const;
    ListNode<T>* Link(T* e, ListNode<T>* previous, ListNode<T>* next);
    void Unlink(ListNode<T>* node);
    ListNode<T>* Detach();
};

template <class T>
List<T>::~List() {
    if (head)
        List::Dump();
}

template <class T>
ListNode<T>* List<T>::Insert(T* e, ListPosition p) {
    ++entries;
    if (!head)
        return Link(e, nullptr, nullptr);
    ListNode<T>* at = Node_At(p);
    if (!at)
        return nullptr;
    return p == LIST_LAST ? Link(e, at, nullptr) : Link(e, at->previous, at);
}

template <class T>
T* List<T>::Remove(ListPosition p) {
    --entries;
    ListNode<T>* node = Node_At(p);
    if (!node)
        return nullptr;
    if (node == current)
        current = p == LIST_LAST ? node->previous : node->next;
    T* e = node->element;
    Unlink(node);
    delete node;
    return e;
}

template <class T>
T* List<T>::Seek(T* e) {
    current = head;
    while (current && current->element != e)
        current = current->next;
    return Current();
}

template <class T>
void List<T>::Dump() {
    for (ListNode<T>* node = Detach(); node;) {
        if (own)
            Purge(node->element);
        ListNode<T>* done = node;
        node = node->next;
        delete done;
    }
}

template <class T>
void List<T>::RemoveAll() {
    for (ListNode<T>* node = Detach(); node;) {
        ListNode<T>* done = node;
        node = node->next;
        delete done;
    }
}

template <class T>
ListNode<T>* List<T>::Node_At(ListPosition p) const {
    switch (p) {
    case LIST_FIRST: return head;
    case LIST_CURRENT: return current;
    case LIST_LAST: return tail;
    }
    return nullptr;
}

template <class T>
ListNode<T>* List<T>::Link(T* e, ListNode<T>* previous, ListNode<T>* next) {
    current = new ListNode<T>{previous, next, e};
    (previous ? previous->next : head) = current;
    (next ? next->previous : tail) = current;
    return current;
}

template <class T>
void List<T>::Unlink(ListNode<T>* node) {
    (node->previous ? node->previous->next : head) = node->next;
    (node->next ? node->next->previous : tail) = node->previous;
}

// Takes the whole chain out and leaves the list empty, so that an element's destructor meets a list in order.
template <class T>
ListNode<T>* List<T>::Detach() {
    ListNode<T>* chain = head;
    head = current = tail = nullptr;
    entries = 0;
    return chain;
}

#endif
