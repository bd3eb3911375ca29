// Days between a date of the proleptic Gregorian calendar and 1 January 1970, both ways:
// the XML form writes dates as UTC calendar text, our dates count seconds.
#pragma once

#include <cstdint>

namespace cf::plist {

struct CivilDate {
    int64_t year;
    int month;  // 1 to 12
    int day;    // 1 to 31
};

constexpr int64_t DaysFromCivil(CivilDate inDate)
{
    // Counted in 400-year eras from 1 March 0000, so that the leap day ends its year.
    int64_t year = inDate.year - (inDate.month <= 2 ? 1 : 0);
    int64_t era = (year >= 0 ? year : year - 399) / 400;
    int64_t yearOfEra = year - era * 400;
    int64_t dayOfYear = (153 * (inDate.month + (inDate.month > 2 ? -3 : 9)) + 2) / 5 + inDate.day - 1;
    int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

constexpr CivilDate CivilFromDays(int64_t inDays)
{
    inDays += 719468;
    int64_t era = (inDays >= 0 ? inDays : inDays - 146096) / 146097;
    int64_t dayOfEra = inDays - era * 146097;
    int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
    int day = int(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
    int month = int(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
    return {yearOfEra + era * 400 + (month <= 2 ? 1 : 0), month, day};
}

constexpr bool IsLeapYear(int64_t inYear) { return inYear % 4 == 0 && (inYear % 100 != 0 || inYear % 400 == 0); }

constexpr int DaysInMonth(int64_t inYear, int inMonth)
{
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return inMonth == 2 && IsLeapYear(inYear) ? 29 : kDays[inMonth - 1];
}

// Seconds from 1970 to 2001, where our dates count from.
inline constexpr int64_t kSecondsFrom1970To2001 = 978307200;

}  // namespace cf::plist
