// The records of the texts, side by side, and the index over them.

#include "compiler/records/constant_table.h"

#include "core/index_hash.h"
#include "core/large_pages.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

int Constant_Table::Number_Of(std::string_view text, int number_if_new) {
    if ((places_used + 1) * 4 > places * 3)
        Grow_Index();
    const std::uint32_t hash = Hash_For_Index(text, string_hash_detail::As_Written());
    std::size_t i = hash & (places - 1);
    for (; index[i].record; i = (i + 1) & (places - 1))
        if (index[i].hash == hash && Is(index[i], text))
            return records[index[i].record - 1].number;
    index[i] = {hash, Add_Record(text, number_if_new)};
    ++places_used;
    return number_if_new;
}

bool Constant_Table::Is(const Place& place, std::string_view text) const {
    const Record* record = &records[place.record - 1];
    return record->length == text.size() && std::memcmp(record + 1, text.data(), text.size()) == 0;
}

std::uint32_t Constant_Table::Add_Record(std::string_view text, int number) {
    const std::size_t first = cells_used;
    const std::size_t needed = first + 1 + (text.size() + sizeof(Record) - 1) / sizeof(Record);
    if (needed > std::numeric_limits<std::uint32_t>::max())
        throw std::bad_alloc();
    if (needed > cells) {
        const std::size_t grown = std::max(needed, 2 * cells);
        Resize(records, grown);
        cells = grown;
    }
    Record* record = &records[first];
    *record = {number, static_cast<std::uint32_t>(text.size())};
    Use_Large_Pages(record + 1, text.size());
    std::copy_n(text.data(), text.size(), reinterpret_cast<char*>(record + 1));
    cells_used = needed;
    return static_cast<std::uint32_t>(first + 1);
}

void Constant_Table::Grow_Index() {
    const std::size_t grown_places = std::max(2 * places, least_places);
    Resizable_Array<Place> grown(Zeroed_Array<Place>(grown_places));
    for (std::size_t old = 0; old < places; ++old) {
        if (!index[old].record)
            continue;
        std::size_t i = index[old].hash & (grown_places - 1);
        while (grown[i].record)
            i = (i + 1) & (grown_places - 1);
        grown[i] = index[old];
    }
    index = std::move(grown);
    places = grown_places;
}
