// Settings, deadlines, log filters and the names of log events.

#include "app/services/tarn_application.h"

#include "app/services/config.h"
#include "core/text_words.h"

#include <climits>
#include <cstring>
#include <mpdecimal.h>

mpd_context_t Tarn_MPD_Context;

namespace {

struct Log_Event {
    unsigned event;
    const char* name;
};

constexpr Log_Event log_events[] = {
    {1u << 4, "Function Call"},
    {1u << 5, "Function Parameter"},
    {1u << 6, "Function Return Value"},
    {1u << 7, "Function Return"},
    {1u << 8, "External Function Call"},
    {1u << 9, "External Function Parameter"},
    {1u << 10, "External Function Return Value"},
    {1u << 11, "External Function Return"},
    {1u << 12, "TnDO Enter"},
    {1u << 13, "TnDO Exit"},
    {1u << 20, "TnCALL"},
    {1u << 21, "TnSMTP"},
    {1u << 25, "Request Start"},
    {1u << 26, "Request End"},
    {1u << 27, "Application Timed Out"},
    {1u << 28, "Runtime Error"},
    {1u << 29, "Fatal Error"},
    {1u << 30, "Trace"},
};

// The moment at which a timeout of the engine's settings ends, 0 when there is none.
time_t Deadline(Config* config, Config_Setting setting) {
    const int seconds = config ? config->Integer(setting) : 0;
    return seconds ? time(nullptr) + seconds : 0;
}

bool Is_Past(time_t deadline, long now) {
    return deadline > 0 && deadline < now;
}

const char* Skip_Spaces(const char* text) {
    while (Is_Space(*text))
        ++text;
    return text;
}

// Reads the mark and the number behind it, if the mark is there, and the white space behind both. Answers the
// number, 0 without one; a number that doesn't fit stays at the greatest int.
int Read_Marked_Number(const char*& text, char mark) {
    if (*text != mark)
        return 0;
    text = Skip_Spaces(text + 1);
    long long number = 0;
    for (; *text >= '0' && *text <= '9'; ++text) {
        number = number * 10 + (*text - '0');
        if (number > INT_MAX)
            number = INT_MAX;
    }
    text = Skip_Spaces(text);
    return static_cast<int>(number);
}

} // namespace

LogFilterEntry::LogFilterEntry(const char* name, int name_length, int low, int high)
    : name(std::make_unique<char[]>(static_cast<std::size_t>(name_length) + 1)), name_length(name_length),
      low(low), high(high) {
    memcpy(this->name.get(), name, static_cast<std::size_t>(name_length));
}

LogFilterEntry::~LogFilterEntry() = default;

TarnApplication::TarnApplication() = default;

TarnApplication::~TarnApplication() = default;

void TarnApplication::ResetGlobalTimeout() {
    global_deadline = Deadline(config(), CONFIG_TIMEOUT);
    cancelled_ = 0;
}

void TarnApplication::ResetPOSTTimeout() {
    post_deadline = Deadline(config(), CONFIG_POST_TIMEOUT);
    post_timed_out = 0;
}

void TarnApplication::ClearPOSTTimeout() {
    post_deadline = 0;
}

bool TarnApplication::cancelled() {
    return cancelled_ != 0;
}

bool TarnApplication::Error(const String& text) {
    return OutputError(text.text(), text.length());
}

bool TarnApplication::Error(const char* text) {
    return OutputError(text, -1);
}

bool TarnApplication::Error(const char* text, int length) {
    return OutputError(text, length);
}

void TarnApplication::Heartbeat(long now) {
    heartbeats = static_cast<int>(static_cast<unsigned>(heartbeats) + 1);
    if (Is_Past(global_deadline, now))
        cancelled_ = 1;
    if (Is_Past(post_deadline, now))
        post_timed_out = 1;
}

long TarnApplication::TimeRemaining() {
    if (global_deadline == 0)
        return -1;
    const time_t now = time(nullptr);
    return now > global_deadline ? 0 : global_deadline - now;
}

String& TarnApplication::language() {
    return language_;
}

String& TarnApplication::defaultlanguage() {
    return default_language;
}

String& TarnApplication::defaultdatabase() {
    return default_database;
}

String& TarnApplication::charset() {
    return charset_;
}

int TarnApplication::languagecount() {
    return language_changes;
}

int TarnApplication::defaultlanguagecount() {
    return default_language_changes;
}

int TarnApplication::defaultdatabasecount() {
    return default_database_changes;
}

int TarnApplication::charsetcount() {
    return charset_changes;
}

const char* TarnApplication::GetCharacterSet() {
    return charset_.text();
}

bool TarnApplication::CharacterSetIsUTF8() {
    return charset_is_utf8;
}

void TarnApplication::SetLanguage(const char* text, int length) {
    language_.assign(text, length);
    ++language_changes;
}

void TarnApplication::SetDefaultLanguage(const char* text, int length) {
    default_language.assign(text, length);
    ++default_language_changes;
}

void TarnApplication::SetDefaultDatabase(const char* text, int length) {
    default_database.assign(text, length);
    ++default_database_changes;
}

void TarnApplication::SetCharacterSet(const char* text, int length) {
    charset_.assign(text, length);
    ++charset_changes;
    charset_is_utf8 = Same_Word(charset_.view(), "utf-8");
}

bool TarnApplication::SSL_Available(String* error) {
    return ssl_state_ != nullptr || SSL_Initialize(error);
}

void TarnApplication::ParseLogFilter(const char* text) {
    log_include.Dump();
    log_exclude.Dump();
    while (text && *text) {
        text = Skip_Spaces(text);
        const bool exclude = *text == '!';
        if (exclude)
            text = Skip_Spaces(text + 1);
        const char* name = text;
        while (*text && !Is_Space(*text) && *text != ':' && *text != ',')
            ++text;
        const int name_length = static_cast<int>(text - name);
        text = Skip_Spaces(text);
        const bool has_levels = *text == ':';
        const int low = Read_Marked_Number(text, ':');
        const int high = has_levels ? Read_Marked_Number(text, '-') : 0;
        if (name_length > 0)
            (exclude ? log_exclude : log_include)
                .Insert(new LogFilterEntry(name, name_length, low, high), LIST_LAST);
        text = strchr(text, ',');
        text = text ? text + 1 : nullptr;
    }
}

const char* TarnApplication::Log_Description(unsigned event) {
    for (const Log_Event& row : log_events) {
        if (row.event == event)
            return row.name;
    }
    return "Unknown";
}
