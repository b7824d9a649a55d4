// Tables by tag, whose rows have a field tag.
#ifndef COMPILER_TAG_ROWS_H
#define COMPILER_TAG_ROWS_H

#include <cassert>
#include <cstddef>

template <typename Row, std::size_t count>
constexpr bool Has_Row(const Row (&rows)[count], int tag) {
    for (const Row& row : rows)
        if (row.tag == tag)
            return true;
    return false;
}

// The row of a tag that has one: tag_dispatch.cpp checks while compiling that the tags it sends on do.
template <typename Row, std::size_t count>
constexpr const Row& Row_Of(const Row (&rows)[count], int tag) {
    assert(Has_Row(rows, tag));
    const Row* row = rows;
    while (row->tag != tag)
        ++row;
    return *row;
}

#endif
