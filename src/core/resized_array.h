#ifndef CORE_RESIZED_ARRAY_H
#define CORE_RESIZED_ARRAY_H

#include "core/large_pages.h"

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <type_traits>

// The array with room for `count` elements, what it held in place and the rest unset. Arrays begin as null
// and end with std::free. Throws std::bad_alloc and leaves the array as it was when there is no memory.
template <class T>
[[nodiscard]] T* Resized_Array(T* array, std::size_t count) {
    static_assert(std::is_trivially_copyable_v<T>);
    void* resized = std::realloc(static_cast<void*>(array), count * sizeof(T));
    if (!resized)
        throw std::bad_alloc();
    return static_cast<T*>(resized);
}

// A new array of zeros, which ends with std::free; of large pages when it is long, since it is looked up at
// random. Throws std::bad_alloc when there is no memory.
template <class T>
[[nodiscard]] T* Zeroed_Array(std::size_t count) {
    static_assert(std::is_trivially_copyable_v<T>);
    void* zeroed = std::calloc(count, sizeof(T));
    if (!zeroed)
        throw std::bad_alloc();
    Use_Large_Pages(zeroed, count * sizeof(T));
    return static_cast<T*>(zeroed);
}

struct Free_Memory {
    void operator()(void* memory) const { std::free(memory); }
};

// The same with an owner.
template <class T>
using Resizable_Array = std::unique_ptr<T[], Free_Memory>;

template <class T>
void Resize(Resizable_Array<T>& array, std::size_t count) {
    T* resized = Resized_Array(array.get(), count);
    (void)array.release(); // moved or not, it is the resized one now
    array.reset(resized);
}

#endif
