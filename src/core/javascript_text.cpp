// The body of a script's string literal.

#include "app/services/tarn_application.h"
#include "core/encoder_result.h"
#include "core/text_length.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

namespace {

// How a byte is written: as it is, in hexadecimal, or else as a backslash and the character given here.
constexpr char as_hexadecimal = 0;
constexpr char as_it_is = 1;

constexpr std::array<char, 256> forms = [] {
    std::array<char, 256> result{};
    for (const unsigned char byte :
         std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
                          " $+,-.:@_"))
        result[byte] = as_it_is;
    for (const unsigned char byte : std::string_view("\"/\\"))
        result[byte] = static_cast<char>(byte);
    result['\b'] = 'b';
    result['\t'] = 't';
    result['\n'] = 'n';
    result['\f'] = 'f';
    result['\r'] = 'r';
    return result;
}();

char Form(char byte) {
    return forms[static_cast<unsigned char>(byte)];
}

// One UTF-16 unit from its two bytes. Excess bits of what is passed fall away.
void Write_Unit(LinkBuffer& out, unsigned high, unsigned low) {
    out.cat("\\u", 2);
    out.cat_hex(static_cast<unsigned char>(high));
    out.cat_hex(static_cast<unsigned char>(low));
}

// Writes the UTF-8 sequence at the beginning of the text and answers its length; 0 when none begins there or
// the text ends within it. The bytes behind the first are not checked. Supplementary characters are split
// without taking 0x10000 off first, so the pair is right for the first supplementary plane only.
int Write_Sequence(LinkBuffer& out, std::string_view text) {
    const auto byte = [text](int i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    if (lead >= 0xC2 && lead <= 0xDF && text.size() >= 2) {
        Write_Unit(out, (lead >> 2) & 7, (byte(1) & 63) | (lead << 6));
        return 2;
    }
    if (lead >= 0xE0 && lead <= 0xEF && text.size() >= 3) {
        Write_Unit(out, ((byte(1) >> 2) & 15) | (lead << 4), (byte(1) << 6) | (byte(2) & 63));
        return 3;
    }
    if (lead >= 0xF0 && lead <= 0xF7 && text.size() >= 4) {
        Write_Unit(out, (lead & 3) | 0xD8, ((byte(1) << 2) & 60) | ((byte(2) >> 4) & 3));
        Write_Unit(out, ((byte(2) >> 2) & 3) | 0xDC, (byte(2) << 6) | (byte(3) & 63));
        return 4;
    }
    return 0;
}

void Write_Script_Text(LinkBuffer& out, std::string_view text, bool is_utf8) {
    while (!text.empty()) {
        const auto run_end =
            std::find_if(text.begin(), text.end(), [](char byte) { return Form(byte) != as_it_is; });
        if (run_end != text.begin()) {
            out.cat(text.data(), static_cast<int>(run_end - text.begin()));
            text.remove_prefix(run_end - text.begin());
            continue;
        }
        int done = 1;
        if (const char form = Form(text[0]); form != as_hexadecimal) {
            const char escape[] = {'\\', form};
            out.cat(escape, sizeof escape);
        } else if (const int sequence = is_utf8 ? Write_Sequence(out, text) : 0; sequence != 0) {
            done = sequence;
        } else {
            Write_Unit(out, 0, static_cast<unsigned char>(text[0]));
        }
        text.remove_prefix(done);
    }
}

} // namespace

LinkBuffer* TarnApplication::EncodeJavaScriptString(TarnApplication* application, const char* text,
                                                    int length, LinkBuffer* buffer) {
    length = Text_Length(text, length);
    std::unique_ptr<LinkBuffer> made;
    if (buffer == nullptr) {
        made = std::make_unique<LinkBuffer>(Encoder_First_Size(length), encoder_block_size);
        buffer = made.get();
    }
    Write_Script_Text(*buffer, Slice(text, length), application->CharacterSetIsUTF8());
    (void)made.release(); // the caller's now
    return buffer;
}

char* TarnApplication::EncodeJavaScriptString(const char* text, int length, int* result_length,
                                              int* result_size) {
    length = Text_Length(text, length);
    LinkBuffer result(Encoder_First_Size(length), encoder_block_size);
    Write_Script_Text(result, Slice(text, length), CharacterSetIsUTF8());
    return Encoder_Result(result, result_length, result_size);
}
