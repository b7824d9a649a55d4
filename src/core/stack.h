#ifndef CORE_STACK_H
#define CORE_STACK_H

#include <memory>

// The order of the fields is part of the binary interface.
template <class T>
struct StackNode {
    StackNode* next; // the one below
    T* element;
};

// A singly linked stack of element pointers with a peek cursor that walks from the top down. The flag of the
// constructor says whether the stack deletes what it discards: what Pop skips, and all that is left at Dump
// or destruction.
template <class T>
class Stack {
  public:
    explicit Stack(int own) : own(own) {}
    Stack(const Stack&) = delete;
    Stack& operator=(const Stack&) = delete;

    // The order of the virtual operations is part of the binary interface: add at the end.
    virtual ~Stack();
    virtual int Entries() const { return entries; }
    // The new top, where the peek cursor then stands.
    virtual StackNode<T>* Push(T* e);
    // Takes out the element at the peek cursor and hands it over; everything above it is discarded. After
    // Top, or without a Peek since the last Push or Pop, that is the top. Null on an empty stack.
    virtual T* Pop();
    // Moves the peek cursor to the top and answers its element, null when empty.
    virtual T* Top();
    // Moves the peek cursor one down and answers that element; null below the bottom, and from there on until
    // Top.
    virtual T* Peek();
    // Discards everything. The count stays as it was: this is meant for the end of the stack's life.
    virtual void Dump();

  protected:
    // The order of the fields is part of the binary interface.
    int own;
    int entries = 0;
    StackNode<T>* top = nullptr;
    StackNode<T>* peek = nullptr;

  private:
    T* Peeked() const { return peek ? peek->element : nullptr; }
    T* Unlink_Top();
    void Discard_Top();
};

template <class T>
Stack<T>::~Stack() {
    if (top)
        Stack::Dump();
}

template <class T>
StackNode<T>* Stack<T>::Push(T* e) {
    top = peek = new StackNode<T>{top, e};
    ++entries;
    return top;
}

template <class T>
T* Stack<T>::Pop() {
    if (!top)
        return nullptr;
    while (peek && top != peek) {
        Discard_Top();
        --entries;
    }
    T* e = Unlink_Top();
    --entries;
    peek = top;
    return e;
}

template <class T>
T* Stack<T>::Top() {
    peek = top;
    return Peeked();
}

template <class T>
T* Stack<T>::Peek() {
    if (peek)
        peek = peek->next;
    return Peeked();
}

template <class T>
void Stack<T>::Dump() {
    peek = nullptr;
    while (top)
        Discard_Top();
}

template <class T>
T* Stack<T>::Unlink_Top() {
    const std::unique_ptr<StackNode<T>> node(top);
    top = node->next;
    return node->element;
}

template <class T>
void Stack<T>::Discard_Top() {
    T* e = Unlink_Top();
    if (own)
        delete e;
}

#endif
