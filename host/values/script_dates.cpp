#include "values/script_dates.h"

#include <math.h>
#include <time.h>

namespace mirolta::host {
namespace {

constexpr double kMillisecondsPerDay = 86400000.0;
constexpr double kEpochDay = 25569.0;  // 1 January 1970 as an automation date

// The offset of local time from UTC in milliseconds, at a time given in UTC or in local time.
double LocalOffset(double milliseconds, bool is_local) {
  const double seconds = floor(milliseconds / 1000);
  // No offset is known for times that time_t cannot hold.
  constexpr double kMostSeconds = sizeof(time_t) > 4 ? 1e12 : 2147483647;
  if (!(fabs(seconds) < kMostSeconds)) return 0;
  const time_t moment = static_cast<time_t>(seconds);
  tm parts = {};
  if (!is_local) {
    return localtime_r(&moment, &parts) == nullptr ? 0
                                                   : 1000.0 * static_cast<double>(parts.tm_gmtoff);
  }
  if (gmtime_r(&moment, &parts) == nullptr) return 0;
  parts.tm_isdst = -1;
  const time_t utc = mktime(&parts);
  return 1000.0 * (seconds - static_cast<double>(utc));
}

}  // namespace

double UtcOfLocal(double local_milliseconds) {
  return local_milliseconds - LocalOffset(local_milliseconds, true);
}

double AutomationDate(double script_milliseconds) {
  const double local = script_milliseconds + LocalOffset(script_milliseconds, false);
  const double days = local / kMillisecondsPerDay + kEpochDay;
  if (days >= 0) return days;
  const double day = floor(days);
  return day - (days - day);
}

bool IsAutomationDate(double script_milliseconds) {
  constexpr double kFirstDay = -657434;  // 1 January 100
  constexpr double kEndDay = 2958466;    // 1 January 10000
  const double days = AutomationDate(script_milliseconds);
  return days >= kFirstDay && days < kEndDay;
}

double ScriptMilliseconds(double automation_date) {
  double days = automation_date;
  if (days < 0) {
    const double day = ceil(days);
    days = day + (day - days);
  }
  return UtcOfLocal(round((days - kEpochDay) * kMillisecondsPerDay));
}

}  // namespace mirolta::host
