// The bytes of an input, read as the choices that a target makes, and the check of what it leads to.
#ifndef FUZZ_INPUT_H
#define FUZZ_INPUT_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

// Ends the run with the place of what should have held.
#define CHECK(condition)                                                                                     \
    ((condition) ? void()                                                                                    \
                 : (std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition), std::abort()))

// Every choice takes a byte, two where a byte is too small; the first is made when there are no more.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : left(reinterpret_cast<const char*>(data), size) {}

    bool More() const { return !left.empty(); }
    // 0 up to below the limit, which is 65536 at most.
    unsigned Below(unsigned limit) {
        const unsigned high = limit > 256 ? Byte() : 0;
        return (high << 8 | Byte()) % limit;
    }
    int Between(int low, int high) { return low + static_cast<int>(Below(high - low + 1)); }
    template <class Table>
    auto& One_Of(Table& table) {
        return table[Below(static_cast<unsigned>(std::size(table)))];
    }
    // Of up to `longest` bytes, of the alphabet or of any.
    std::string Text(unsigned longest, std::string_view alphabet = {}) {
        std::string text(Below(longest + 1), '\0');
        for (char& c : text)
            c = alphabet.empty() ? static_cast<char>(Byte()) : One_Of(alphabet);
        return text;
    }
    // One of the pieces that bars part, and up to so many of them.
    std::string Piece(std::string_view pieces) {
        for (auto skip = Below(1 + static_cast<unsigned>(std::ranges::count(pieces, '|'))); skip > 0; --skip)
            pieces.remove_prefix(pieces.find('|') + 1);
        return std::string(pieces.substr(0, pieces.find('|')));
    }
    std::string Pieces(unsigned most, std::string_view pieces) {
        std::string text;
        for (unsigned left = Below(most + 1); left > 0 && More(); --left)
            text += Piece(pieces);
        return text;
    }

  private:
    std::uint8_t Byte() {
        if (left.empty())
            return 0;
        const auto byte = static_cast<std::uint8_t>(left.front());
        left.remove_prefix(1);
        return byte;
    }

    std::string_view left;
};

#endif
