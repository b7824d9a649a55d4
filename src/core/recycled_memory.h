#ifndef CORE_RECYCLED_MEMORY_H
#define CORE_RECYCLED_MEMORY_H

#include <cstddef>
#include <new>
#include <utility>

// The memory of small objects that come and go by the tag: it is taken from the system in blocks of many, and
// what is given back is kept for the next object. A class has it by an operator new and an operator delete of
// its own:
//
//     static void* operator new(std::size_t) { return Recycled_Memory<Block>::Take(); }
//     static void operator delete(void* memory) { Recycled_Memory<Block>::Give_Back(memory); }
//
// For classes that one thread at a time uses. One with descendants names a type that is as large as any of
// them. Nothing goes back to the system.
//
// Without it a page of code takes 0.5 % more instructions:
//     bench/gen_pages.py code 200K > code.tn; valgrind --tool=callgrind tnc -o /dev/null code.tn
// and in time: tnc_bench --benchmark_filter=Compile_Page/code
template <class T>
class Recycled_Memory {
  public:
    static void* Take() {
        if (kept)
            return std::exchange(kept, kept->next);
        if (fresh == fresh_end)
            Take_Block();
        return fresh++;
    }
    static void Give_Back(void* memory) {
        if (memory)
            kept = ::new (memory) Cell{kept};
    }

  private:
    union Cell {
        Cell* next;
        alignas(T) std::byte object[sizeof(T)];
    };
    static constexpr int cells_of_block = 256;
    static inline Cell* kept = nullptr;
    static inline Cell* fresh = nullptr; // the rest of the last block, not touched yet
    static inline Cell* fresh_end = nullptr;

    static void Take_Block() {
        fresh = static_cast<Cell*>(::operator new(cells_of_block * sizeof(Cell)));
        fresh_end = fresh + cells_of_block;
    }
};

#endif
