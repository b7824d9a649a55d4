// Strings as the assembly quotes them.

#include "backend/outputs/quoted_text.h"

#include "backend/outputs/compiler_output.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

// Text is the bulk of what a compilation writes, so that it is copied and searched in one step of sixteen
// bytes.

namespace {

constexpr int step = sizeof(__m128i);

// Bytes of source quoted between two looks at the output's buffer, and the room that they take at worst:
// three bytes for each, an escape that reaches beyond, and the overhang of a whole step.
constexpr int piece_length = 1024;
constexpr int piece_room = 3 * (piece_length + 2) + step;

// The first length bytes of a vector, the others 0. Nothing beyond the text is read.
__m128i Load(const char* text, std::ptrdiff_t length) {
    if (length >= step)
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    alignas(step) char bytes[step] = {};
    std::memcpy(bytes, text, static_cast<std::size_t>(length));
    return _mm_load_si128(reinterpret_cast<const __m128i*>(bytes));
}

// One bit for each quote and backslash.
unsigned Special_Bytes(__m128i bytes) {
    const __m128i quotes = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('"'));
    const __m128i backslashes = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(quotes, backslashes)));
}

class Quoter {
  public:
    Quoter(const char* text, int length, ExpressionState state)
        : text(text), end(text + length), state(state) {}

    bool Finished() const { return text == end; }

    // Quotes the next piece; answers the end of what it has written. The target has piece_room.
    char* Quote_Piece(char* target) {
        const char* stop = text + std::min<std::ptrdiff_t>(piece_length, end - text);
        while (text < stop) {
            const std::ptrdiff_t length = std::min<std::ptrdiff_t>(step, stop - text);
            const __m128i bytes = Load(text, length);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(target), bytes);
            const unsigned special = Special_Bytes(bytes);
            const std::ptrdiff_t plain = special ? std::countr_zero(special) : length;
            text += plain;
            target += plain;
            if (special)
                target = *text == '"' ? Escape(target, "\\22") : Quote_Backslash(target);
        }
        return target;
    }

  private:
    // Writes three bytes for the next one of the text.
    char* Escape(char* target, const char* code) {
        ++text;
        return std::copy_n(code, 3, target);
    }

    char* Quote_Backslash(char* target) {
        switch (state) {
        case EXPRESSION_STATE_TEXT:
        case EXPRESSION_STATE_FILTER: return Escape(target, "\\5c");
        case EXPRESSION_STATE_ESCAPED:
            ++text;
            return text != end && *text == '\\' ? Escape(target, "\\5c") : target;
        }
        ++text;
        return target;
    }

    const char* text;
    const char* const end;
    const ExpressionState state;
};

} // namespace

void Write_Quoted_Text(CompilerOutput* output, const char* text, int length, ExpressionState state) {
    Quoter quoter(text, length, state);
    while (!quoter.Finished()) {
        if (output->Can_Reserve(piece_room)) {
            output->Commit(quoter.Quote_Piece(output->Reserve(piece_room)));
        } else {
            char piece[piece_room];
            output->Write(piece, static_cast<int>(quoter.Quote_Piece(piece) - piece));
        }
    }
}
