#ifndef CORE_RESIZED_ARRAY_H
#define CORE_RESIZED_ARRAY_H

#include <cstddef>
#include <cstdlib>
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

#endif
