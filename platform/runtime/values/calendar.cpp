#include "values/calendar.h"

namespace mirolta::runtime {
namespace {

constexpr int32_t kDaysIn400Years = 146097;
// Days from 1 March of year 0 to 30 December 1899.
constexpr int32_t kEpoch = 693899;

bool IsLeapYear(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int DaysInMonth(int year, int month) {
  static constexpr int8_t kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

}  // namespace

bool IsCalendarDay(const CalendarDay& day) {
  return day.year >= 100 && day.year <= 9999 && day.month >= 1 && day.month <= 12 && day.day >= 1 &&
         day.day <= DaysInMonth(day.year, day.month);
}

// Years start in March here, which puts the leap day last and makes month lengths regular:
// (153 * m + 2) / 5 days precede month m = 0 (March) to 11 (February).
int32_t DayNumber(const CalendarDay& day) {
  const int32_t year = day.month <= 2 ? day.year - 1 : day.year;
  const int32_t month = (day.month + 9) % 12;
  return year * 365 + year / 4 - year / 100 + year / 400 + (153 * month + 2) / 5 + day.day - 1 -
         kEpoch;
}

CalendarDay DayOfNumber(int32_t number) {
  const int32_t days = number + kEpoch;  // since 1 March of year 0, not negative from year 100 on
  const int32_t era = days / kDaysIn400Years;
  const int32_t in_era = days % kDaysIn400Years;
  const int32_t year_in_era =
      (in_era - in_era / 1460 + in_era / 36524 - in_era / (kDaysIn400Years - 1)) / 365;
  const int32_t in_year = in_era - (365 * year_in_era + year_in_era / 4 - year_in_era / 100);
  const int32_t month = (5 * in_year + 2) / 153;
  CalendarDay day;
  day.day = in_year - (153 * month + 2) / 5 + 1;
  day.month = month < 10 ? month + 3 : month - 9;
  day.year = era * 400 + year_in_era + (day.month <= 2 ? 1 : 0);
  return day;
}

}  // namespace mirolta::runtime
