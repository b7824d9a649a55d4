// URL form, entities and NUL bytes: the text encoders that replace single bytes or short sequences.

#include "app/services/tarn_application.h"
#include "core/encoder_result.h"
#include "core/text_words.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

namespace {

struct Entity {
    char character;
    std::string_view name; // between '&' and ';'
};

constexpr Entity entities[] = {{'"', "quot"}, {'&', "amp"}, {'<', "lt"},
                               {'>', "gt"},   {'(', "#40"}, {')', "#41"}};

constexpr auto is_plain_in_attribute = [] {
    std::array<bool, 256> result{};
    for (int byte = 33; byte <= 126; ++byte)
        result[byte] = true;
    for (const unsigned char byte : std::string_view("!\"#$%&'()+,/:;<=>?[\\]^`{|}~"))
        result[byte] = false;
    return result;
}();

constexpr auto is_plain_beside_entities = [] {
    std::array<bool, 256> result{};
    result.fill(true);
    for (const Entity& entity : entities)
        result[static_cast<unsigned char>(entity.character)] = false;
    return result;
}();

// Copies what is plain, run by run. For each byte that isn't, replace(result, at, end) writes what stands for
// it, and answers the place behind what it read.
template <typename Is_Plain, typename Replace>
char* Rewrite(const char* text, int length, int* result_length, int* result_size, Is_Plain is_plain,
              Replace replace) {
    LinkBuffer result(Encoder_First_Size(length), encoder_block_size);
    const char* end = text + length;
    for (const char* at = text; at != end;) {
        const char* run_end = std::find_if_not(at, end, is_plain);
        if (run_end != at)
            result.cat(at, static_cast<int>(run_end - at));
        at = run_end == end ? end : replace(result, run_end, end);
    }
    return Encoder_Result(result, result_length, result_size);
}

// The value of a hexadecimal digit, -1 for any other byte.
int Hex_Value(char digit) {
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    const char letter = static_cast<char>(digit | 0x20);
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

const char* Decode_Attribute_Byte(LinkBuffer& result, const char* at, const char* end) {
    if (*at == '+') {
        result.cat(" ", 1);
        return at + 1;
    }
    const int high = end - at > 2 ? Hex_Value(at[1]) : -1;
    const int low = high >= 0 ? Hex_Value(at[2]) : -1;
    if (low < 0) {
        result.cat(at, 1);
        return at + 1;
    }
    const char byte = static_cast<char>(high << 4 | low);
    result.cat(&byte, 1);
    return at + 3;
}

const Entity* Find_Entity(std::string_view name) {
    const auto* const found =
        std::find_if(std::begin(entities), std::end(entities),
                     [name](const Entity& entity) { return Same_Word(entity.name, name); });
    return found == std::end(entities) ? nullptr : found;
}

// An entity ends at the first ';' or white space, and also at the end of the text. One that white space ends
// is none.
const char* Decode_Entity(LinkBuffer& result, const char* at, const char* end) {
    const char* const stop =
        std::find_if(at + 1, end, [](unsigned char byte) { return byte == ';' || std::isspace(byte) != 0; });
    const char* next = stop == end ? end : stop + 1;
    const Entity* entity = stop == end || *stop == ';' ? Find_Entity({at + 1, stop}) : nullptr;
    if (entity != nullptr)
        result.cat(&entity->character, 1);
    else
        result.cat(at, static_cast<int>(next - at));
    return next;
}

} // namespace

char* TarnApplication::EncodeAttribute(const char* text, int length, int* result_length, int* result_size) {
    return Rewrite(
        text, Text_Length(text, length), result_length, result_size,
        [](unsigned char byte) { return is_plain_in_attribute[byte]; },
        [](LinkBuffer& result, const char* at, const char*) {
            if (*at == ' ') {
                result.cat("+", 1);
            } else {
                result.cat("%", 1);
                result.cat_hex(static_cast<unsigned char>(*at));
            }
            return at + 1;
        });
}

char* TarnApplication::DecodeAttribute(const char* text, int length, int* result_length, int* result_size) {
    return Rewrite(
        text, Text_Length(text, length), result_length, result_size,
        [](char byte) { return byte != '+' && byte != '%'; }, Decode_Attribute_Byte);
}

char* TarnApplication::EncodeEntities(const char* text, int length, int* result_length, int* result_size) {
    return Rewrite(
        text, Text_Length(text, length), result_length, result_size,
        [](unsigned char byte) { return is_plain_beside_entities[byte]; },
        [](LinkBuffer& result, const char* at, const char*) {
            const auto* entity = std::find_if(std::begin(entities), std::end(entities),
                                              [at](const Entity& row) { return row.character == *at; });
            result.cat("&", 1);
            result.cat(entity->name.data(), Length_Of(entity->name));
            result.cat(";", 1);
            return at + 1;
        });
}

String TarnApplication::EncodeEntities(const String& text) {
    int length;
    int size;
    char* encoded = EncodeEntities(text.text(), text.length(), &length, &size);
    return String(encoded, length, size);
}

char* TarnApplication::DecodeEntities(const char* text, int length, int* result_length, int* result_size) {
    return Rewrite(
        text, Text_Length(text, length), result_length, result_size, [](char byte) { return byte != '&'; },
        Decode_Entity);
}

char* TarnApplication::StripNULLs(const char* text, int length, int* result_length, int* result_size) {
    return Rewrite(
        text, std::max(length, 0), result_length, result_size, [](char byte) { return byte != '\0'; },
        [](LinkBuffer&, const char* at, const char*) { return at + 1; });
}
