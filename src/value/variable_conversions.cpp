// The cached forms of a scalar: filled in at need, never changing what the variable was last set to.

#include "app/services/tarn_application.h"
#include "value/variable.h"

const String& Variable::value() {
    if (elements) {
        string.assign("", 0);
        Serialize(string);
    } else if (!(valid & HAS_STRING))
        Convert_String();
    return string;
}

int Variable::value_integer() {
    if (elements || !valid)
        return 0;
    if (!(valid & HAS_INTEGER))
        Convert_Integer();
    return integer;
}

mpd_t* Variable::value_mpd() {
    if (elements || !valid)
        decimal = TarnApplication::itompd(decimal, 0);
    else if (!(valid & HAS_DECIMAL))
        Convert_mpd();
    return decimal;
}

// Text is parsed anew even if the decimal is valid, since Convert_mpd takes text that is no number for 0.
mpd_t* Variable::value_compare(int* error) {
    *error = 0;
    if (!elements && valid & HAS_STRING) {
        decimal = TarnApplication::stompd(decimal, string.text(), string.length(), string.capacity(), error);
        if (!*error)
            valid |= HAS_DECIMAL;
        return decimal;
    }
    *error = elements != nullptr;
    return value_mpd();
}

void Variable::Convert_String() {
    int length = 0;
    int size = 0;
    char* text = nullptr;
    if (elements)
        value();
    else if (valid & HAS_DECIMAL)
        text = TarnApplication::mpdtos(decimal, &length, &size);
    else if (valid & HAS_INTEGER)
        text = TarnApplication::itos(integer, &length, &size);
    else
        string.assign("", 0);
    if (text)
        string.assign_nocopy(text, length, size);
    valid |= HAS_STRING;
}

void Variable::Convert_Integer() {
    integer = 0;
    if (!elements && valid & HAS_DECIMAL)
        integer = TarnApplication::mpdtoi(decimal);
    else if (!elements && valid & HAS_STRING) {
        int error = 0;
        integer = TarnApplication::stoi(string.text(), string.length(), &error);
        if (error) {
            Convert_mpd();
            integer = TarnApplication::mpdtoi(decimal);
        }
    }
    valid |= HAS_INTEGER;
}

// Text goes ahead of an integer here: it may have a fraction.
void Variable::Convert_mpd() {
    int error = 0;
    if (!elements && valid & HAS_STRING)
        decimal = TarnApplication::stompd(decimal, string.text(), string.length(), string.capacity(), &error);
    else
        decimal = TarnApplication::itompd(decimal, !elements && valid & HAS_INTEGER ? integer : 0);
    valid |= HAS_DECIMAL;
}
