#ifndef COMPILER_VALUE_STACK_H
#define COMPILER_VALUE_STACK_H

#include "core/resized_array.h"

#include <cstddef>

// A stack of small values side by side in one array, for what is pushed by the token. The array grows with
// the values, and shrinks with them: expressions nest as deep as the source likes.
template <class T>
class Value_Stack {
  public:
    // Null when empty; valid until the next other operation.
    T* Top() { return count != 0 ? &values[count - 1] : nullptr; }
    void Push(const T& value) {
        if (count == capacity) [[unlikely]]
            Resize_To(capacity == 0 ? least_capacity : 2 * capacity);
        values[count++] = value;
    }
    // Of a stack that is not empty.
    T Pop() {
        const T top = values[--count];
        if (count < capacity / 4 && capacity > least_capacity) [[unlikely]]
            Resize_To(capacity / 2);
        return top;
    }
    void Clear() {
        while (count != 0)
            (void)Pop();
    }

  private:
    static constexpr std::size_t least_capacity = 64;

    void Resize_To(std::size_t new_capacity) {
        Resize(values, new_capacity);
        capacity = new_capacity;
    }

    Resizable_Array<T> values;
    std::size_t count = 0;
    std::size_t capacity = 0;
};

#endif
