// Reading date text. Numbers of a date are taken in the first order that gives an existing day:
//   three numbers             month day year, year month day, year day month, day month year
//   two                       month day and day month of this year, month year, year month
//   month name, one number    day of this year, year
//   month name, then two      day year
//   two numbers, name later   year day, day year
#include "mirolta/system.h"
#include "texts/characters.h"
#include "values/calendar.h"
#include "values/variant_date.h"

namespace mirolta::runtime {
namespace {

constexpr int kNone = -1;
constexpr int kTooLarge = 100000;  // larger than any number a date or time may have

struct Name {
  const char* full;
  UINT short_length;
};
constexpr Name kMonths[12] = {{"january", 3},   {"february", 3}, {"march", 3},    {"april", 3},
                              {"may", 3},       {"june", 3},     {"july", 3},     {"august", 3},
                              {"september", 3}, {"october", 3},  {"november", 3}, {"december", 3}};
constexpr Name kWeekdays[7] = {{"sunday", 3},   {"monday", 3}, {"tuesday", 3}, {"wednesday", 3},
                               {"thursday", 3}, {"friday", 3}, {"saturday", 3}};
constexpr Name kHalves[2] = {{"am", 1}, {"pm", 1}};

// FindName returns the index of the name that the word is, in full or short; kNone if none.
template <size_t count>
int FindName(const Name (&names)[count], const OLECHAR* word, UINT length) {
  for (size_t i = 0; i < count; ++i) {
    UINT same = 0;
    while (same < length && names[i].full[same] != 0 &&
           LowerAscii(word[same]) == static_cast<OLECHAR>(names[i].full[same])) {
      ++same;
    }
    if (same == length && (length == names[i].short_length || names[i].full[length] == 0)) {
      return static_cast<int>(i);
    }
  }
  return kNone;
}

int FullYear(int year) {
  if (year < 50) return year + 2000;
  return year < 100 ? year + 1900 : year;
}

class DateReader {
 public:
  DateReader(const OLECHAR* text, UINT length) : at_(text), end_(text + length) {}

  bool Read(double* date) {
    if (!ReadTokens()) return false;
    const bool has_date = count_ > 0 || month_ != kNone;
    if (!has_date && hour_ == kNone) return false;
    double days = 0;
    if (has_date) {
      CalendarDay day;
      if (!Resolve(&day)) return false;
      days = DayNumber(day);
    }
    if (hour_ != kNone) {
      if (!CheckTime()) return false;
      // This order of operations gives the platform's result to the last bit.
      const double sign = days < 0 ? -1 : 1;
      days += sign * hour_ / 24;
      days += sign * minute_ / 1440;
      days += sign * second_ / 86400;
    }
    *date = days;
    return true;
  }

 private:
  OLECHAR Peek() const { return at_ == end_ ? OLECHAR{0} : *at_; }
  void SkipSpaces() {
    while (at_ != end_ && IsSpaceCharacter(*at_)) ++at_;
  }
  static bool IsTimeSeparator(OLECHAR c) { return c == u':' || c == u'.'; }

  bool ReadTokens() {
    bool joined = false;  // after "/" or "-" a date must go on
    for (;;) {
      SkipSpaces();
      if (at_ == end_) return !joined;
      const OLECHAR c = *at_;
      if (IsDecimalDigit(c)) {
        const int parts = hour_parts_;
        if (!ReadNumber()) return false;
        if (joined && parts != hour_parts_) return false;
        joined = false;
      } else if (IsAsciiLetter(c)) {
        if (!ReadWord()) return false;
        joined = false;
      } else if (c == u'/' || c == u'-') {
        if (count_ == 0 && month_ == kNone) return false;
        joined = true;
        ++at_;
      } else if (c == u',') {
        if (!started_) return false;
        ++at_;
      } else {
        return false;
      }
      started_ = true;
    }
  }

  int ReadDigits() {
    int value = 0;
    for (; IsDecimalDigit(Peek()); ++at_) {
      if (value < kTooLarge) value = value * 10 + (*at_ - u'0');
    }
    return value;
  }

  // A number is an hour if a time separator or AM or PM follows, else part of a date.
  bool ReadNumber() {
    const int value = ReadDigits();
    SkipSpaces();
    if (at_ != end_ && IsTimeSeparator(*at_)) return ReadTime(value);
    UINT length = WordLength();
    if (length > 0 && FindName(kHalves, at_, length) != kNone) {
      if (hour_ != kNone) return false;
      hour_ = value;
      hour_parts_ = 1;
      return true;
    }
    if (count_ == 3) return false;
    numbers_[count_++] = value;
    return true;
  }

  bool ReadTime(int hour) {
    if (hour_ != kNone) return false;
    hour_ = hour;
    hour_parts_ = 1;
    int* const parts[2] = {&minute_, &second_};
    while (at_ != end_ && IsTimeSeparator(*at_)) {
      while (at_ != end_ && (IsTimeSeparator(*at_) || IsSpaceCharacter(*at_))) ++at_;
      if (hour_parts_ == 3 || !IsDecimalDigit(Peek())) return false;
      *parts[hour_parts_ - 1] = ReadDigits();
      ++hour_parts_;
      const OLECHAR* const after = at_;
      SkipSpaces();
      if (at_ == end_ || !IsTimeSeparator(*at_)) at_ = after;
    }
    return true;
  }

  UINT WordLength() const {
    UINT length = 0;
    while (at_ + length != end_ && IsAsciiLetter(at_[length])) ++length;
    return length;
  }

  bool ReadWord() {
    const UINT length = WordLength();
    const OLECHAR* word = at_;
    at_ += length;
    const int half = FindName(kHalves, word, length);
    if (half != kNone) {
      if (hour_ == kNone || half_ != kNone) return false;
      half_ = half;
      return true;
    }
    const int month = FindName(kMonths, word, length);
    if (month != kNone) {
      if (month_ != kNone) return false;
      month_ = month + 1;
      numbers_before_month_ = count_;
      return true;
    }
    return FindName(kWeekdays, word, length) != kNone;
  }

  bool CheckTime() {
    if (hour_ > 23 || minute_ > 59 || second_ > 59) return false;
    // The platform takes an hour past 12 as it is, whatever the half.
    if (half_ == 0 && hour_ == 12) hour_ = 0;
    if (half_ == 1 && hour_ < 12) hour_ += 12;
    return true;
  }

  static bool Try(int year, int month, int day, CalendarDay* out) {
    if (year >= kTooLarge || month >= kTooLarge || day >= kTooLarge) return false;
    const CalendarDay tried = {FullYear(year), month, day};
    if (!IsCalendarDay(tried)) return false;
    *out = tried;
    return true;
  }

  bool Resolve(CalendarDay* day) const {
    const int a = numbers_[0];
    const int b = numbers_[1];
    const int c = numbers_[2];
    if (month_ != kNone) {
      if (count_ == 1) return Try(ThisYear(), month_, a, day) || Try(a, month_, 1, day);
      if (count_ != 2) return false;
      if (numbers_before_month_ == 0) return Try(b, month_, a, day);
      return Try(a, month_, b, day) || Try(b, month_, a, day);
    }
    if (count_ == 3) {
      return Try(c, a, b, day) || Try(a, b, c, day) || Try(a, c, b, day) || Try(c, b, a, day);
    }
    if (count_ != 2) return false;
    return Try(ThisYear(), a, b, day) || Try(ThisYear(), b, a, day) || Try(b, a, 1, day) ||
           Try(a, b, 1, day);
  }

  static int ThisYear() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    return now.wYear;
  }

  const OLECHAR* at_;
  const OLECHAR* end_;
  bool started_ = false;
  int numbers_[3] = {0, 0, 0};
  int count_ = 0;
  int month_ = kNone;
  int numbers_before_month_ = 0;
  int hour_ = kNone;
  int minute_ = 0;
  int second_ = 0;
  int hour_parts_ = 0;
  int half_ = kNone;  // 0 before noon, 1 after
};

}  // namespace

HRESULT ParseDateText(const OLECHAR* text, UINT length, double* date) {
  return DateReader(text, length).Read(date) ? S_OK : DISP_E_TYPEMISMATCH;
}

}  // namespace mirolta::runtime
