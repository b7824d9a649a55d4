#ifndef CORE_TEXT_SEARCH_H
#define CORE_TEXT_SEARCH_H

#include <cstddef>

// Substring searches. All take (pattern, pattern length, text, text length), neither of which need be
// NUL-terminated, and answer the offset of the match in the text, or -1. A pattern longer than the text is
// never found. The forms that end in i ignore case, as the C library's tolower sees it; bytes compare
// unsigned. None allocates.
//
// Which one to take: Boyer-Moore has to fill a table of 1 KB first, which pays when some hundred bytes remain
// to be searched. Callers here take bm_searchi for more bytes than these, bf_searchi otherwise.
inline constexpr int longest_brute_force = 300;

// Brute force, first match. An empty pattern is found at 0, but not in an empty text.
int bf_search(const char* pattern, int pattern_length, const char* text, int text_length);
int bf_searchi(const char* pattern, int pattern_length, const char* text, int text_length);

// Brute force, last match. An empty pattern is not found.
int bf_search_reverse(const char* pattern, int pattern_length, const char* text, int text_length);
int bf_searchi_reverse(const char* pattern, int pattern_length, const char* text, int text_length);

// Boyer-Moore with the bad-character rule alone, first match. An empty pattern is found at 0.
int bm_search(const char* pattern, int pattern_length, const char* text, int text_length);
int bm_searchi(const char* pattern, int pattern_length, const char* text, int text_length);

// Boyer-Moore from the end, last match. An empty pattern is not found. bm_searchi_reverse looks up how far to
// move by the byte of the text as it stands, not by its folded form, so an upper-case letter counts as absent
// from the pattern and a match that holds one may be passed over.
int bm_search_reverse(const char* pattern, int pattern_length, const char* text, int text_length);
int bm_searchi_reverse(const char* pattern, int pattern_length, const char* text, int text_length);

// Rabin-Karp, first match from offset 1 on: a match at offset 0 is not seen. The byte behind the text must be
// readable, and takes part: a match that ends with it is answered too. An empty pattern is not found.
int rk_search(const char* pattern, int pattern_length, const char* text, int text_length);
int rk_searchi(const char* pattern, int pattern_length, const char* text, int text_length);

// Compare n bytes without regard to case: -1, 0 or 1. The first folds to lower case and the second to upper,
// so the two differ on the characters between the letter ranges: '_' sorts before a letter in memcmpi and
// behind it in memcmpi_upper.
[[nodiscard]] int memcmpi(const void* a, const void* b, std::size_t n);
[[nodiscard]] int memcmpi_upper(const void* a, const void* b, std::size_t n);

#endif
