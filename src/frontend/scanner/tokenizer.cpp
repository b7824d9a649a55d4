// Tokens: where each ends, and the text behind a file.

#include "frontend/scanner/tokenizer.h"

#include "core/text_search.h"
#include "files/file.h"
#include "files/file_manager.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <climits>
#include <cstring>
#include <emmintrin.h>

namespace {

enum Byte_Trait : unsigned char {
    TAG_NAME_BYTE = 1,        // goes on in an identifier inside a tag
    EXPRESSION_NAME_BYTE = 2, // goes on in an identifier inside an expression
    DIGIT = 4,
    HEX_DIGIT = 8,
    WHITE_SPACE = 16,
};

using Byte_Table = std::array<unsigned char, 256>;

constexpr unsigned char white_space[] = {'\t', '\v', '\f', '\r', ' ', '\n'};

constexpr Byte_Table first_bytes = [] {
    Byte_Table table{};
    table.fill(TOKEN_OTHER);
    for (const unsigned char byte : white_space)
        table[byte] = TOKEN_SPACE | VARYING_LENGTH;
    for (const unsigned char byte : {'$', '*', ',', '/', ':', '[', ']'})
        table[byte] = TOKEN_OPERATOR;
    for (const unsigned char byte : {'+', '-'})
        table[byte] = TOKEN_OPERATOR | VARYING_LENGTH;
    for (unsigned char byte = '0'; byte <= '9'; ++byte)
        table[byte] = TOKEN_NUMBER | VARYING_LENGTH;
    for (unsigned char byte = 'a'; byte <= 'z'; ++byte)
        table[byte] = table[byte - 'a' + 'A'] = TOKEN_IDENT | VARYING_LENGTH;
    table['_'] = TOKEN_IDENT | VARYING_LENGTH;
    table['\0'] = TOKEN_EOF | VARYING_LENGTH;
    table['>'] = TOKEN_GT;
    table['<'] = TOKEN_LT;
    table['!'] = TOKEN_BANG;
    table['='] = TOKEN_EQUALS;
    table['"'] = TOKEN_DQUOTE;
    table['\''] = TOKEN_SQUOTE;
    table['{'] = TOKEN_LBRACE;
    table['}'] = TOKEN_RBRACE;
    table['('] = TOKEN_LPAREN;
    table[')'] = TOKEN_RPAREN;
    table['.'] = TOKEN_DOT;
    table['\\'] = TOKEN_BACKSLASH;
    return table;
}();

constexpr Byte_Table byte_traits = [] {
    Byte_Table table{};
    for (const unsigned char byte : white_space)
        table[byte] = WHITE_SPACE;
    for (unsigned char byte = '0'; byte <= '9'; ++byte)
        table[byte] = TAG_NAME_BYTE | EXPRESSION_NAME_BYTE | DIGIT | HEX_DIGIT;
    for (unsigned char byte = 'a'; byte <= 'z'; ++byte) {
        const unsigned char traits = TAG_NAME_BYTE | EXPRESSION_NAME_BYTE | (byte <= 'f' ? HEX_DIGIT : 0);
        table[byte] = table[byte - 'a' + 'A'] = traits;
    }
    table['_'] = TAG_NAME_BYTE | EXPRESSION_NAME_BYTE;
    for (const unsigned char byte : {'-', ':', '\\'})
        table[byte] = TAG_NAME_BYTE;
    return table;
}();

bool Has_Trait(char byte, Byte_Trait trait) {
    return byte_traits[static_cast<unsigned char>(byte)] & trait;
}

struct Text_Run {
    const char* end;
    int line_feeds;
};

// The bytes up to the first '<' or zero byte. Long texts are the bulk of many sources, so the search and the
// count are one pass over 16 bytes at a time; what is left at the end of the text is looked at byte by byte.
Text_Run Find_End_Of_Text(const char* at, const char* end) {
    int line_feeds = 0;
    const __m128i zero = _mm_setzero_si128();
    __m128i feed_counts = zero; // two sums
    auto count = [&] {
        return line_feeds + _mm_cvtsi128_si32(feed_counts) +
               _mm_cvtsi128_si32(_mm_srli_si128(feed_counts, 8));
    };
    for (; end - at >= 16; at += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const __m128i stops =
            _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('<')), _mm_cmpeq_epi8(bytes, zero));
        const __m128i feeds = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\n'));
        if (const unsigned stop_bits = static_cast<unsigned>(_mm_movemask_epi8(stops))) {
            const int length = __builtin_ctz(stop_bits);
            unsigned feed_bits = static_cast<unsigned>(_mm_movemask_epi8(feeds)) & ((1U << length) - 1);
            for (; feed_bits; feed_bits &= feed_bits - 1)
                ++line_feeds;
            return {at + length, count()};
        }
        feed_counts = _mm_add_epi64(feed_counts, _mm_sad_epu8(_mm_sub_epi8(zero, feeds), zero));
    }
    line_feeds = count();
    for (; at < end && *at != '<' && *at != '\0'; ++at)
        line_feeds += *at == '\n';
    return {at, line_feeds};
}

// The places of kinds of bytes in sixteen of them, in which nearly every name ends. Places are whole bytes of
// a vector, or a bit each.
class Name_Window {
  public:
    static constexpr int size = 16;

    explicit Name_Window(const char* text) : bytes(_mm_loadu_si128(reinterpret_cast<const __m128i*>(text))) {}

    __m128i Of(char byte) const { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(byte)); }
    __m128i From(char first, char last) const { return In_Range(bytes, first, last); }
    __m128i Starts() const { // of identifiers
        return _mm_or_si128(In_Range(_mm_or_si128(bytes, _mm_set1_epi8(0x20)), 'a', 'z'), Of('_'));
    }

    template <typename... Places>
    static unsigned Bits(Places... places) {
        __m128i all = _mm_setzero_si128();
        ((all = _mm_or_si128(all, places)), ...);
        return static_cast<unsigned>(_mm_movemask_epi8(all));
    }

  private:
    // Moves the range to the end of the signed bytes.
    static __m128i In_Range(__m128i in, char first, char last) {
        const int shift = SCHAR_MAX - last;
        return _mm_cmpgt_epi8(_mm_add_epi8(in, _mm_set1_epi8(static_cast<char>(shift))),
                              _mm_set1_epi8(static_cast<char>(first + shift - 1)));
    }

    __m128i bytes;
};

// Behind the bytes that go on in an identifier, by the rule of tags or that of expressions.
const char* End_Of_Name_Bytes(const char* at, const char* end, bool in_expression) {
    for (; end - at >= Name_Window::size; at += Name_Window::size) {
        const Name_Window window(at);
        const unsigned places = in_expression ? Name_Window::Bits(window.Starts(), window.From('0', '9'))
                                              : Name_Window::Bits(window.Starts(), window.From('0', ':'),
                                                                  window.Of('-'), window.Of('\\'));
        if (const int length = std::countr_one(places); length < Name_Window::size)
            return at + length;
    }
    const Byte_Trait name_byte = in_expression ? EXPRESSION_NAME_BYTE : TAG_NAME_BYTE;
    while (at < end && Has_Trait(*at, name_byte))
        ++at;
    return at;
}

const char* Behind_Last_Line_Feed(const char* begin, const char* end) {
    if (end[-1] == '\n')
        return end;
    return static_cast<const char*>(memrchr(begin, '\n', static_cast<std::size_t>(end - begin))) + 1;
}

} // namespace

constinit const Byte_Table token_first_bytes = first_bytes;

Tokenizer::Tokenizer(FileManager* filemanager) : filemanager(filemanager) {
}

Tokenizer::Tokenizer(const char* text, int length, int bare_expression)
    : buffer(text), length(length), bare_expression(bare_expression), identifier_limit(length) {
}

Tokenizer::~Tokenizer() = default;

bool Tokenizer::Open(const String& path) {
    bool is_directory = false;
    if (!filemanager->IsDirectory(path.text(), &is_directory)) {
        lasterror = filemanager->error();
        return false;
    }
    if (is_directory) {
        lasterror = "Is a directory";
        return false;
    }
    opened = File_Stamp(path.text());
    if (opened.Is_Stream()) {
        lasterror = std::strerror(ESPIPE);
        return false;
    }
    file.reset(filemanager->Open(path.text(), FILE_MODE_READ));
    if (!file) {
        lasterror = filemanager->error();
        return false;
    }
    filename = path;
    position = 0;
    return Map_File();
}

// A text that was given stays where it is.
bool Tokenizer::File_Activate() {
    if (!file)
        return true;
    if (!file->Activate(lasterror)) {
        Use_No_Text();
        return false;
    }
    if (!Map_File())
        return false;
    struct stat now;
    if (!file->Stat(&now) || !opened.Is_Changed(now))
        return true;
    lasterror = file_changed;
    Use_No_Text();
    return false;
}

void Tokenizer::File_Deactivate() {
    if (!file)
        return;
    file->Release();
    buffer = line_start = peek_text = nullptr;
    file->Deactivate();
}

// Positions are ints, so a text of 2 GiB is refused.
bool Tokenizer::Map_File() {
    const long size = file->Length();
    if (size > INT_MAX)
        lasterror = std::strerror(EFBIG);
    else if (size == 0)
        buffer = "";
    else if (size < 0 || !(buffer = file->Map(0, size)))
        lasterror = file->error();
    if (size > INT_MAX || !buffer) {
        Use_No_Text();
        return false;
    }
    length = identifier_limit = static_cast<int>(size);
    position = std::min(position, length);
    return true;
}

void Tokenizer::Use_No_Text() {
    buffer = "";
    length = identifier_limit = position = 0;
    opened = File_Stamp(); // of what is not read, no change counts
}

// One that was held back, one that a bare expression has or may have of its own, and the end.
Tokenizer_TokenType Tokenizer::Get_Rare_Token(const char** text, int& token_length) {
    if (peek_text) {
        *text = peek_text;
        token_length = peek_length;
        peek_text = nullptr;
        return peek_type;
    }
    *text = buffer + position;
    token_length = 0;
    if (bare_expression && open_pending) {
        open_pending = 0;
        return TOKEN_LBRACE;
    }
    Tokenizer_TokenType type;
    return Check_Buffer_Fullness(type) ? type : Scan_Token(text, token_length);
}

// Of a token that may have another length than 1. A zero byte is passed, but does not belong to the token.
int Tokenizer::Token_Length(Tokenizer_TokenType type, const char* start) {
    const char* end = start + 1;
    if (type == TOKEN_IDENT)
        end = End_Of_Identifier(end);
    else if (type == TOKEN_SPACE)
        end = End_Of_Space(start);
    else if (type == TOKEN_NUMBER)
        end = End_Of_Number(start);
    else if (type == TOKEN_OPERATOR)
        end += end < buffer + length && *end == *start;
    else {
        ++position;
        end = start;
    }
    return static_cast<int>(end - start);
}

Tokenizer_TokenType Tokenizer::Get_Next_Text(const char** text, int& token_length) {
    if (in_expression || bare_expression || peek_text || position >= length || buffer[position] == '<')
        return Get_Next_Token(text, token_length);
    const char* start = buffer + position;
    const Text_Run run = Find_End_Of_Text(start, buffer + length);
    if (run.end == start)
        return Scan_Token(text, token_length);
    if (run.line_feeds) {
        line += run.line_feeds;
        line_start = Behind_Last_Line_Feed(start, run.end);
    }
    *text = start;
    token_length = static_cast<int>(run.end - start);
    position += token_length;
    return TOKEN_OTHER;
}

Tokenizer::Dotted_Name Tokenizer::Short_Name(const char* text) {
    const Name_Window window(text);
    const __m128i starts = window.Starts();
    const unsigned identifiers = Name_Window::Bits(starts, window.From('0', '9'));
    const unsigned dots = Name_Window::Bits(window.Of('.')) & Name_Window::Bits(starts) >> 1;
    const int length = std::countr_one(identifiers | dots);
    if (length >= name_window - 1 || text[length] == '\\')
        return {};
    return {text, std::countr_one(identifiers), length};
}

void Tokenizer::Read_Dotted_Name(int& token_length) {
    while (!peek_text && length - position > 1 && buffer[position] == '.' &&
           Starts_Name(buffer[position + 1])) {
        const int end = static_cast<int>(End_Of_Identifier(buffer + position + 2) - buffer);
        token_length += end - position;
        position = end;
    }
}

Tokenizer_TokenType Tokenizer::Peek(const char** text, int& token_length) {
    const Tokenizer_TokenType type = Get_Next_Token(text, token_length);
    peek_text = *text;
    peek_length = token_length;
    return peek_type = type;
}

Tokenizer_TokenType Tokenizer::Read_Until(const char** text, int& token_length, char terminator,
                                          char escape) {
    const char* start = buffer + position;
    *text = start;
    token_length = 0;
    Tokenizer_TokenType type;
    if (Check_Buffer_Fullness(type))
        return type;
    const char* end = buffer + length;
    const char* at = start;
    while (at < end) {
        while (at < end && *at == escape)
            at += std::min<long>(2, end - at);
        if (at == end)
            break;
        const char byte = *at++;
        if (byte == '\n')
            Note_Line_Feed(at);
        if (byte == terminator)
            break;
    }
    token_length = static_cast<int>(at - start);
    position += token_length;
    return at < end || at[-1] == terminator ? TOKEN_OTHER : TOKEN_UNTERMINATED;
}

Tokenizer_TokenType Tokenizer::Read_Until(const char** text, int& token_length, const char* pattern,
                                          int pattern_length) {
    const char* start = buffer + position;
    *text = start;
    Tokenizer_TokenType type;
    if (Check_Buffer_Fullness(type))
        return type;
    const int rest = length - position;
    const int found = rest > longest_brute_force ? bm_searchi(pattern, pattern_length, start, rest)
                                                 : bf_searchi(pattern, pattern_length, start, rest);
    if (found < 0 && bare_expression) {
        bare_expression = 0;
        return TOKEN_RBRACE;
    }
    token_length = found < 0 ? rest : found + pattern_length;
    position += token_length;
    line += static_cast<int>(std::count(start, start + token_length, '\n'));
    return found < 0 ? TOKEN_UNTERMINATED : TOKEN_OTHER;
}

void Tokenizer::Note_Line_Feed(const char* behind) {
    ++line;
    line_start = behind;
}

const char* Tokenizer::End_Of_Space(const char* at) {
    for (const char* end = buffer + length; at < end && Has_Trait(*at, WHITE_SPACE); ++at) {
        if (*at == '\n')
            Note_Line_Feed(at + 1);
    }
    return at;
}

const char* Tokenizer::End_Of_Number(const char* at) const {
    const char* end = buffer + length;
    Byte_Trait digit = DIGIT;
    if (end - at > 2 && at[0] == '0' && (at[1] == 'x' || at[1] == 'X') && Has_Trait(at[2], HEX_DIGIT)) {
        digit = HEX_DIGIT;
        at += 2;
    }
    for (bool dotted = false; at < end; ++at) {
        if (*at == '.' && !dotted)
            dotted = true;
        else if (!Has_Trait(*at, digit))
            break;
    }
    return at;
}

// In an expression a backslash takes the byte behind it, whatever that is.
inline const char* Tokenizer::End_Of_Identifier(const char* at) const {
    const char* end = buffer + identifier_limit;
    for (;;) {
        at = End_Of_Name_Bytes(at, end, in_expression);
        if (!in_expression || at == end || *at != '\\')
            return at;
        at += std::min<long>(2, end - at);
    }
}
