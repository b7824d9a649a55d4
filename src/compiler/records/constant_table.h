// Texts with numbers: those of the string constants, and what tells scratch variables apart.
#ifndef COMPILER_CONSTANT_TABLE_H
#define COMPILER_CONSTANT_TABLE_H

#include "core/resized_array.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

// A page may have a million of them, met once each or again and again: a text costs its length and about 25
// bytes, a new one a single jump through memory and a known one two.
class Constant_Table {
  public:
    // The number under which the text is known; if it is new, the one that is given, under which it is known
    // from now on.
    int Number_Of(std::string_view text, int number_if_new);
    // Forgets all texts.
    void Clear() {
        if (places_used)
            *this = Constant_Table();
    }

  private:
    // A place of the index, which is filled by open addressing. Free while the record is 0.
    struct Place {
        std::uint32_t hash;
        std::uint32_t record; // its first cell in records, plus 1
    };
    struct Record {
        int number;
        std::uint32_t length; // of the text, which follows
    };

    bool Is(const Place& place, std::string_view text) const;
    std::uint32_t Add_Record(std::string_view text, int number);
    void Grow_Index();

    static constexpr std::size_t least_places = 64;

    Resizable_Array<Place> index;
    std::size_t places = 0; // a power of two
    std::size_t places_used = 0;
    Resizable_Array<Record> records; // cells: a record with its text takes as many as it needs
    std::size_t cells = 0;
    std::size_t cells_used = 0;
};

#endif
