// The row of values of a tag.

#include "frontend/values/attribute_value_array.h"

#include <algorithm>
#include <utility>

AttributeValueArray::AttributeValueArray(CompilerParser* parser, int capacity, int grow_by)
    : parser(parser), capacity(capacity),
      values(std::make_unique<AttributeValue[]>(static_cast<std::size_t>(capacity))), grow_by(grow_by) {
}

AttributeValueArray::~AttributeValueArray() = default;

void AttributeValueArray::Reset(int count) {
    if (count >= capacity)
        Extend_Array(count);
    for (int i = 0; i < count; ++i)
        values[i].Reset();
    last_used = -1;
}

// A long row grows by half its size, so that blocks of any number of dimensions are read in linear time.
void AttributeValueArray::Extend_Array(int index) {
    const int extended = index + std::max(grow_by, capacity / 2);
    auto moved = std::make_unique<AttributeValue[]>(static_cast<std::size_t>(extended));
    for (int i = 0; i < capacity; ++i)
        moved[i].Replace(values[i]);
    values = std::move(moved);
    capacity = extended;
}

int AttributeValueArray::Check_Complete(int count) const {
    if (count > capacity)
        return 1;
    return !std::all_of(values.get(), values.get() + count,
                        [](const AttributeValue& value) { return value.Is_Set(); });
}

void AttributeValueArray::Output(int end, int first) {
    if (end == -1)
        end = last_used + 1;
    if (end > capacity)
        Extend_Array(end);
    for (int i = first; i < end; ++i)
        values[i].Output(parser, 0, 0, 0);
}
