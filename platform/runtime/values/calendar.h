// The Gregorian calendar, and day numbers counted from 30 December 1899.
// Source: Hinnant, chrono-Compatible Low-Level Date Algorithms, days_from_civil and
//         civil_from_days.
#pragma once

#include <cstdint>

namespace mirolta::runtime {

struct CalendarDay {
  int year;
  int month;  // 1 to 12
  int day;    // 1 to 31
};

// IsCalendarDay says whether the day exists in the years 100 to 9999.
bool IsCalendarDay(const CalendarDay& day);

int32_t DayNumber(const CalendarDay& day);
CalendarDay DayOfNumber(int32_t number);

}  // namespace mirolta::runtime
