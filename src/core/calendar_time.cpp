// Seconds since 1970 as dates and back.

#include "core/calendar_time.h"

#include <sys/time.h>

namespace {

constexpr const char* month_names[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr const char* weekday_names[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

constexpr int first_year = 1900; // of struct tm

// Reads the fields as local time and leaves them as mktime normalises them.
std::time_t Local_Time(int year, int month, int day, int hour, int minute, int second, std::tm& fields) {
    const std::time_t now = std::time(nullptr);
    localtime_r(&now, &fields);
    if (__builtin_sub_overflow(year, first_year, &fields.tm_year) ||
        __builtin_sub_overflow(month, 1, &fields.tm_mon))
        return -1;
    fields.tm_mday = day;
    fields.tm_hour = hour;
    fields.tm_min = minute;
    fields.tm_sec = second;
    fields.tm_isdst = -1;
    return std::mktime(&fields);
}

} // namespace

void tn_gettimevalues(TNTIME* time) {
    timeval now;
    gettimeofday(&now, nullptr);
    std::tm fields;
    localtime_r(&now.tv_sec, &fields);
    time->epoch_seconds = now.tv_sec;
    time->microseconds = now.tv_usec;
    time->second = fields.tm_sec;
    time->minute = fields.tm_min;
    time->hour = fields.tm_hour;
    time->day = fields.tm_mday;
    time->month = fields.tm_mon + 1;
    time->month_name = month_names[fields.tm_mon];
    time->year = fields.tm_year + first_year;
    time->weekday = fields.tm_wday + 1;
    time->weekday_name = weekday_names[fields.tm_wday];
    time->day_of_year = fields.tm_yday + 1;
    time->daylight_saving = fields.tm_isdst;
    time->zone_name = tzname[fields.tm_isdst > 0 ? 1 : 0];
}

std::time_t tn_mktime_t(int year, int month, int day, int hour, int minute, int second) {
    std::tm fields;
    return Local_Time(year, month, day, hour, minute, second, fields);
}

std::time_t tn_to_time_t(int year, int month, int day, int hour, int minute, int second) {
    std::tm fields;
    const std::time_t local = Local_Time(year, month, day, hour, minute, second, fields);
    if (local == -1)
        return -1;
    return local - timezone + (fields.tm_isdst > 0 ? 3600 : 0);
}
