// Searches: brute force, Boyer-Moore and Rabin-Karp, forwards and backwards, in either case.

#include "core/text_search.h"

#include "core/text_length.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <string.h>
#include <string_view>
#include <strings.h>

namespace {

// The ways a byte may count. The C library's table is fetched once for a search: its function looks it up,
// and checks the range, for every byte.
struct As_It_Stands {
    unsigned char operator()(unsigned char byte) const { return byte; }
};

struct To_Lower {
    const std::int32_t* table = *__ctype_tolower_loc();
    unsigned char operator()(unsigned char byte) const { return static_cast<unsigned char>(table[byte]); }
};

template <typename Fold>
auto Equal_By(Fold fold) {
    return [fold](unsigned char a, unsigned char b) { return a == b || fold(a) == fold(b); };
}

template <typename Fold>
int Boyer_Moore(const char* pattern, int m, const char* text, int n, Fold fold) {
    if (m < 1)
        return 0;
    if (m > n)
        return -1;
    // How far the pattern's last occurrence of a byte is from its end.
    int skip[256];
    std::fill(std::begin(skip), std::end(skip), m);
    for (int k = 0; k < m; ++k)
        skip[fold(pattern[k])] = m - 1 - k;

    std::ptrdiff_t i = m - 1;
    while (i < n) {
        // Only the pattern's last byte has no distance to it.
        if (const int step = skip[fold(text[i])]; step != 0) {
            i += step;
            continue;
        }
        int j = m - 1;
        do {
            if (j == 0)
                return static_cast<int>(i);
            --i;
            --j;
        } while (fold(text[i]) == fold(pattern[j]));
        i += std::max(m - j, skip[fold(text[i])]);
    }
    return -1;
}

template <typename Fold>
int Boyer_Moore_Reverse(const char* pattern, int m, const char* text, int n, Fold fold) {
    if (m < 1 || m > n)
        return -1;
    // How far the pattern's first occurrence of a byte is from its beginning.
    int skip[256];
    std::fill(std::begin(skip), std::end(skip), m);
    for (int k = m - 1; k >= 0; --k)
        skip[fold(pattern[k])] = k;

    int i = n - m;
    int j = 0;
    while (i >= 0) {
        if (fold(text[i]) == fold(pattern[j])) {
            if (++j == m)
                return i - (m - 1);
            ++i;
        } else {
            // Looked up by the byte as it stands in both cases.
            i -= std::max(skip[static_cast<unsigned char>(text[i])], j + 1);
            j = 0;
        }
    }
    return -1;
}

constexpr std::int64_t rabin_karp_modulus = 0x1ffffd9;
constexpr std::int64_t rabin_karp_radix = 32;

std::int64_t Rabin_Karp_Remainder(std::int64_t value) {
    const std::int64_t remainder = value % rabin_karp_modulus;
    return remainder < 0 ? remainder + rabin_karp_modulus : remainder;
}

template <typename Fold>
int Rabin_Karp(const char* pattern, int m, const char* text, int n, Fold fold) {
    if (m < 1 || m > n)
        return -1;
    const auto digit = [fold](char byte) { return static_cast<signed char>(fold(byte)); };
    std::int64_t high = 1; // the weight of a window's first byte
    for (int k = 1; k < m; ++k)
        high = Rabin_Karp_Remainder(high * rabin_karp_radix);
    std::int64_t wanted = 0;
    std::int64_t window = 0;
    for (int k = 0; k < m; ++k) {
        wanted = Rabin_Karp_Remainder(wanted * rabin_karp_radix + digit(pattern[k]));
        window = Rabin_Karp_Remainder(window * rabin_karp_radix + digit(text[k]));
    }
    // The window rolls before it is compared: it never stands at 0, and ends one byte behind the text.
    for (int p = 0; p <= n - m; ++p) {
        window =
            Rabin_Karp_Remainder((window - digit(text[p]) * high) * rabin_karp_radix + digit(text[p + m]));
        if (window == wanted && std::equal(pattern, pattern + m, text + p + 1, Equal_By(fold)))
            return p + 1;
    }
    return -1;
}

} // namespace

int bf_search(const char* pattern, int pattern_length, const char* text, int text_length) {
    if (text_length < 1 || pattern_length > text_length)
        return -1;
    const std::string_view haystack = Slice(text, text_length);
    return static_cast<int>(haystack.find(Slice(pattern, pattern_length))); // npos becomes -1
}

int bf_searchi(const char* pattern, int pattern_length, const char* text, int text_length) {
    if (text_length < 1 || pattern_length > text_length)
        return -1;
    const char* end = text + text_length;
    const char* match = std::search(text, end, pattern, pattern + pattern_length, Equal_By(To_Lower()));
    return match == end ? -1 : static_cast<int>(match - text);
}

int bf_search_reverse(const char* pattern, int pattern_length, const char* text, int text_length) {
    if (pattern_length < 1 || pattern_length > text_length)
        return -1;
    const std::string_view haystack = Slice(text, text_length);
    return static_cast<int>(haystack.rfind(Slice(pattern, pattern_length))); // npos becomes -1
}

int bf_searchi_reverse(const char* pattern, int pattern_length, const char* text, int text_length) {
    if (pattern_length < 1 || pattern_length > text_length)
        return -1;
    const char* end = text + text_length;
    const char* const match =
        std::find_end(text, end, pattern, pattern + pattern_length, Equal_By(To_Lower()));
    return match == end ? -1 : static_cast<int>(match - text);
}

int bm_search(const char* pattern, int pattern_length, const char* text, int text_length) {
    return Boyer_Moore(pattern, pattern_length, text, text_length, As_It_Stands());
}

int bm_searchi(const char* pattern, int pattern_length, const char* text, int text_length) {
    return Boyer_Moore(pattern, pattern_length, text, text_length, To_Lower());
}

int bm_search_reverse(const char* pattern, int pattern_length, const char* text, int text_length) {
    return Boyer_Moore_Reverse(pattern, pattern_length, text, text_length, As_It_Stands());
}

int bm_searchi_reverse(const char* pattern, int pattern_length, const char* text, int text_length) {
    return Boyer_Moore_Reverse(pattern, pattern_length, text, text_length, To_Lower());
}

int rk_search(const char* pattern, int pattern_length, const char* text, int text_length) {
    return Rabin_Karp(pattern, pattern_length, text, text_length, As_It_Stands());
}

int rk_searchi(const char* pattern, int pattern_length, const char* text, int text_length) {
    return Rabin_Karp(pattern, pattern_length, text, text_length, To_Lower());
}

int memcmpi(const void* a, const void* b, std::size_t n) {
    // Most names that are the same are so to the letter.
    if (n == 0 || memcmp(a, b, n) == 0)
        return 0;
    const auto* left = static_cast<const char*>(a);
    const auto* right = static_cast<const char*>(b);
    // The C library's comparison is the fast one, but ends at a NUL in both; there it is taken up again.
    while (n > 0) {
        const int difference = strncasecmp(left, right, n);
        if (difference != 0)
            return difference < 0 ? -1 : 1;
        const std::size_t compared = std::min(strnlen(left, n) + 1, n);
        left += compared;
        right += compared;
        n -= compared;
    }
    return 0;
}

int memcmpi_upper(const void* a, const void* b, std::size_t n) {
    const auto* left = static_cast<const unsigned char*>(a);
    const auto* right = static_cast<const unsigned char*>(b);
    for (std::size_t i = 0; i < n; ++i) {
        const int difference = std::toupper(left[i]) - std::toupper(right[i]);
        if (difference != 0)
            return difference < 0 ? -1 : 1;
    }
    return 0;
}
