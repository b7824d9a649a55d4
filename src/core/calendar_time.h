#ifndef CORE_CALENDAR_TIME_H
#define CORE_CALENDAR_TIME_H

#include <ctime>

// A moment taken apart, in local time. The order of the fields is part of the binary interface.
struct TNTIME {
    std::time_t epoch_seconds; // since 1970-01-01 00:00:00 UTC
    long microseconds;         // within the second
    int second;
    int minute;
    int hour;
    int day;                  // of the month, from 1
    int month;                // 1 to 12
    const char* month_name;   // "Jan" to "Dec", static
    int year;                 // in full
    int weekday;              // 1 to 7, Sunday is 1
    const char* weekday_name; // "Sun" to "Sat", static
    int day_of_year;          // from 1
    int daylight_saving;      // above 0 when in force
    const char* zone_name;    // owned by the C library
};

// Fills in the present moment.
void tn_gettimevalues(TNTIME* time);

// The time of a date (year in full, month 1 to 12) read as local time, daylight saving as the zone has it.
// Fields out of range carry into the next one, as with mktime; -1 when there is no such time.
std::time_t tn_mktime_t(int year, int month, int day, int hour, int minute, int second);

// The time of such a date read as universal time. The date goes through the local zone first, so one that the
// zone skips when daylight saving begins comes out as mktime moves it.
std::time_t tn_to_time_t(int year, int month, int day, int hour, int minute, int second);

#endif
