#pragma once
// Calendar time as the controller sees it: local date and time of day.
#include <cstdint>
#include <string>

namespace tlx {

struct DateTime {
    int year = 2000;
    int month = 1;   // 1..12
    int day = 1;     // 1..31
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;

    // Seconds since midnight with the fraction (the classic "Timer" value).
    double secondsSinceMidnight() const {
        return hour * 3600.0 + minute * 60.0 + second + millisecond / 1000.0;
    }
    // Days since 1970-01-01 of the date part (proleptic Gregorian).
    std::int64_t dayNumber() const;
    static DateTime fromDayNumber(std::int64_t days);
    // Whole date and time as milliseconds since 1970-01-01 00:00 (local).
    std::int64_t toMillis() const;
    static DateTime fromMillis(std::int64_t ms);

    DateTime addDays(int days) const;
    DateTime addMillis(std::int64_t ms) const { return fromMillis(toMillis() + ms); }

    bool operator==(const DateTime&) const = default;
};

}  // namespace tlx
