// The rows of the messages, put together with what they speak of.

#include "app/services/diagnostics.h"

#include "core/text_length.h"

#include <cstring>

namespace {

// Checks what a row promises: rows ordered by number, and no percent sign but that of a placeholder.
constexpr bool Messages_Are_Sound() {
    ErrorCode last = 1;
    for (const Message_Row& row : messages) {
        if (row.code < last)
            return false;
        last = row.code;
        for (const char* text = row.text; *text; ++text) {
            if (*text == '%' && *++text != 's' && *text != 'd')
                return false;
        }
    }
    return true;
}
static_assert(Messages_Are_Sound());

} // namespace

String Compose_Message(Message message, const Message_Argument* arguments) {
    const char* format = Row_Of_Message(message).text;
    String text("");
    while (const char* placeholder = strchr(format, '%')) {
        text.cat(format, Length_Of({format, placeholder}));
        if (placeholder[1] == 'd')
            text = text + arguments->number;
        else
            text.cat(arguments->text.data(), Length_Of(arguments->text));
        ++arguments;
        format = placeholder + 2;
    }
    text.cat(format, -1);
    return text;
}
