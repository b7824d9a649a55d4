// The text of attributes, and what is asked of it.
#ifndef FRONTEND_TEXT_PIECES_H
#define FRONTEND_TEXT_PIECES_H

#include "core/text_length.h"
#include "core/text_words.h"
#include "frontend/values/attribute_value.h"

#include <string_view>

// The plain text of a value, empty when it has none.
inline std::string_view Text_Of(const AttributeValue& value) {
    int length = 0;
    const char* text = value.Get_Simple_Text(&length);
    return Slice(text, length);
}

#endif
