// Tables by tag, whose rows have a field tag.
#ifndef COMPILER_TAG_ROWS_H
#define COMPILER_TAG_ROWS_H

#include <cassert>
#include <cstddef>

// The row of a tag, null where it has none.
template <typename Row, std::size_t count>
constexpr const Row* Find_Row(const Row (&rows)[count], int tag) {
    for (const Row& row : rows)
        if (row.tag == tag)
            return &row;
    return nullptr;
}

// The row of a tag that has one: tag_dispatch.cpp checks while compiling that the tags it sends on do.
template <typename Row, std::size_t count>
constexpr const Row& Row_Of(const Row (&rows)[count], int tag) {
    const Row* row = Find_Row(rows, tag);
    assert(row);
    return *row;
}

#endif
