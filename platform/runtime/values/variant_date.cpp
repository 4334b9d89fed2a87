#include "values/variant_date.h"

#include <cmath>

#include "values/calendar.h"

namespace mirolta::runtime {
namespace {

constexpr int32_t kSecondsADay = 86400;
// Half a second rounds up even if the precision of the date leaves slightly less.
constexpr double kHalfSecond = 0.5 + 1e-5;

// Writer appends to date text, of which the longest is "12/31/9999 12:59:59 PM".
struct Writer {
  OLECHAR text[40];
  UINT length = 0;

  void Character(OLECHAR c) { text[length++] = c; }
  void Number(int value, int least_digits) {
    OLECHAR reversed[12];
    int count = 0;
    do {
      reversed[count++] = static_cast<OLECHAR>(u'0' + value % 10);
      value /= 10;
    } while (value > 0 || count < least_digits);
    while (count > 0) Character(reversed[--count]);
  }
  void Date(const CalendarDay& day) {
    Number(day.month, 1);
    Character(u'/');
    Number(day.day, 1);
    Character(u'/');
    Number(day.year, 1);
  }
  void Time(int32_t seconds) {
    const int32_t hour = seconds / 3600;
    Number(hour % 12 == 0 ? 12 : hour % 12, 1);
    Character(u':');
    Number(seconds / 60 % 60, 2);
    Character(u':');
    Number(seconds % 60, 2);
    Character(u' ');
    Character(hour < 12 ? u'A' : u'P');
    Character(u'M');
  }
};

}  // namespace

bool IsDateInRange(double date) {
  // The fraction of a negative date lowers the number: -657434.75 is still 1 January 100.
  return date > kLeastDate - 1 && date < kDateLimit;
}

HRESULT TextOfDate(double date, BSTR* text) {
  *text = nullptr;
  if (!IsDateInRange(date)) return E_INVALIDARG;
  const double whole = std::trunc(date);
  const double fraction = std::fabs(date - whole);
  int32_t day = static_cast<int32_t>(whole);
  int32_t seconds = static_cast<int32_t>(std::floor(fraction * kSecondsADay + kHalfSecond));
  if (seconds == kSecondsADay) {
    seconds = 0;
    ++day;
  }
  Writer writer;
  if (whole != 0) writer.Date(DayOfNumber(day));
  if (fraction != 0 || whole == 0) {
    if (writer.length != 0) writer.Character(u' ');
    writer.Time(seconds);
  }
  *text = SysAllocStringLen(writer.text, writer.length);
  return *text == nullptr ? E_OUTOFMEMORY : S_OK;
}

}  // namespace mirolta::runtime
