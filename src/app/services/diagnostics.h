#ifndef APP_DIAGNOSTICS_H
#define APP_DIAGNOSTICS_H

#include "core/string.h"

#include <cstddef>
#include <string_view>
#include <type_traits>

// The number of a diagnostic: 1 to 99 a warning, printed as CW_, and 100 up an error, printed as CE_.
using ErrorCode = int;

inline constexpr ErrorCode LAST_WARNING = 99;

// One enumerator per row of messages.def.
enum class Message : unsigned short {
#define MESSAGE(name, number, text) name,
#include "app/services/messages.def"
};

struct Message_Row {
    ErrorCode code;
    const char* text;
};

// Indexed by Message.
inline constexpr Message_Row messages[] = {
#define MESSAGE(name, number, text) {number, text},
#include "app/services/messages.def"
};

constexpr const Message_Row& Row_Of_Message(Message message) {
    return messages[static_cast<std::size_t>(message)];
}

constexpr ErrorCode Code_Of_Message(Message message) {
    return Row_Of_Message(message).code;
}

// A value for a placeholder: text for %s, an int for %d.
class Message_Argument {
  public:
    Message_Argument(int number) : number(number) {}
    Message_Argument(std::string_view text) : text(text) {}
    Message_Argument(const char* text) : text(text) {}
    Message_Argument(const String& text) : text(text.view()) {}

    std::string_view text;
    int number = 0;
};

// The placeholder that an argument of this type fills, or NUL for a type that fills none.
template <typename Argument>
constexpr char Placeholder_Of() {
    using Value = std::decay_t<Argument>;
    if (std::is_same_v<Value, int>)
        return 'd';
    const bool is_text = std::is_same_v<Value, String> || std::is_convertible_v<Value, std::string_view>;
    return is_text ? 's' : '\0';
}

// Whether the placeholders of the message are as many as the arguments, and of their types.
template <Message message, typename... Arguments>
constexpr bool Message_Takes() {
    constexpr char given[] = {Placeholder_Of<Arguments>()..., '\0'};
    std::size_t used = 0;
    for (const char* text = Row_Of_Message(message).text; *text; ++text) {
        if (*text == '%' && (used == sizeof...(Arguments) || given[used++] != *++text))
            return false;
    }
    return used == sizeof...(Arguments);
}

// The text of the message with its placeholders filled in order.
String Compose_Message(Message message, const Message_Argument* arguments);

// The same, checked by the compiler: another number or other types of arguments than the row's are refused.
template <Message message, typename... Arguments>
String Text_Of_Message(const Arguments&... arguments) {
    static_assert(Message_Takes<message, Arguments...>(),
                  "the arguments don't fit the message's placeholders");
    const Message_Argument list[] = {Message_Argument(arguments)..., Message_Argument(0)};
    return Compose_Message(message, list);
}

#endif
