#include "core/calendar_time.h"

#include <climits>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace {

// Puts a zone in force; the form that needs no zone files.
void Set_Zone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
}

TEST(CalendarTime, Reads_Dates_As_Local_And_As_Universal_Time) {
    Set_Zone("EST5EDT,M3.2.0,M11.1.0");
    const struct {
        int year, month, day, hour, minute, second;
        std::time_t local, universal;
    } cases[] = {
        {2001, 1, 1, 0, 0, 0, 978325200, 978307200},
        {2001, 7, 1, 12, 0, 0, 994003200, 993988800}, // daylight saving
        {2000, 13, 0, 23, 59, 60, 978325200, 978307200},
        {1969, 12, 31, 18, 59, 59, -1, -1}, // the moment that looks like a failure comes back unchanged
        {INT_MIN, INT_MIN, 1, 0, 0, 0, -1, -1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(tn_mktime_t(c.year, c.month, c.day, c.hour, c.minute, c.second), c.local);
        EXPECT_EQ(tn_to_time_t(c.year, c.month, c.day, c.hour, c.minute, c.second), c.universal);
    }
}

TEST(CalendarTime, Takes_The_Present_Moment_Apart) {
    for (const bool daylight_saving : {true, false}) {
        Set_Zone(daylight_saving ? "EST5EDT,0/0,J365/25" : "EDT4"); // both are four hours behind
        TNTIME now;
        tn_gettimevalues(&now);
        const std::time_t epoch = now.epoch_seconds;
        EXPECT_LE(std::time(nullptr) - epoch, 60);
        EXPECT_EQ(tn_mktime_t(now.year, now.month, now.day, now.hour, now.minute, now.second), epoch);
        EXPECT_EQ(tn_mktime_t(now.year, 1, now.day_of_year, now.hour, now.minute, now.second), epoch);
        EXPECT_EQ(now.weekday, ((epoch / 3600 - 4) / 24 + 4) % 7 + 1); // the epoch began on a Thursday
        EXPECT_EQ(std::string(std::ctime(&epoch), 7), std::string(now.weekday_name) + " " + now.month_name);
        EXPECT_EQ(now.daylight_saving > 0, daylight_saving);
        EXPECT_STREQ(now.zone_name, "EDT");
    }
}

} // namespace
