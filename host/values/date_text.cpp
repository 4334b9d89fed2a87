#include "values/date_text.h"

#include <stdint.h>

#include "values/script_dates.h"

namespace mirolta::host {
namespace {

constexpr int64_t kUnset = -1;
constexpr int64_t kMinute = 60000;

enum class WordKind : uint8_t { kDay, kMonth, kAm, kPm, kZone, kAfterChrist, kBeforeChrist };

struct Word {
  std::string_view name;  // in lower case
  WordKind kind;
  int value;  // of a month its number from 1, of a zone its minutes from UTC
};
// A word is the start of a name, at least two letters of it; of several names the last counts.
constexpr Word kNames[] = {
    {"sunday", WordKind::kDay, 0},      {"monday", WordKind::kDay, 0},
    {"tuesday", WordKind::kDay, 0},     {"wednesday", WordKind::kDay, 0},
    {"thursday", WordKind::kDay, 0},    {"friday", WordKind::kDay, 0},
    {"saturday", WordKind::kDay, 0},    {"january", WordKind::kMonth, 1},
    {"february", WordKind::kMonth, 2},  {"march", WordKind::kMonth, 3},
    {"april", WordKind::kMonth, 4},     {"may", WordKind::kMonth, 5},
    {"june", WordKind::kMonth, 6},      {"july", WordKind::kMonth, 7},
    {"august", WordKind::kMonth, 8},    {"september", WordKind::kMonth, 9},
    {"october", WordKind::kMonth, 10},  {"november", WordKind::kMonth, 11},
    {"december", WordKind::kMonth, 12},
};
// These are whole words.
constexpr Word kWords[] = {
    {"am", WordKind::kAm, 0},          {"pm", WordKind::kPm, 0},
    {"ad", WordKind::kAfterChrist, 0}, {"bc", WordKind::kBeforeChrist, 0},
    {"z", WordKind::kZone, 0},         {"gmt", WordKind::kZone, 0},
    {"utc", WordKind::kZone, 0},       {"est", WordKind::kZone, -300},
    {"edt", WordKind::kZone, -240},    {"cst", WordKind::kZone, -360},
    {"cdt", WordKind::kZone, -300},    {"mst", WordKind::kZone, -420},
    {"mdt", WordKind::kZone, -360},    {"pst", WordKind::kZone, -480},
    {"pdt", WordKind::kZone, -420},
};

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}
bool IsLetter(char c) {
  return LowerCase(c) >= 'a' && LowerCase(c) <= 'z';
}

bool StartsWith(std::string_view name, std::string_view word) {
  if (word.size() > name.size()) return false;
  for (size_t i = 0; i < word.size(); ++i) {
    if (LowerCase(word[i]) != name[i]) return false;
  }
  return true;
}

const Word* FindWord(std::string_view text) {
  for (const Word& word : kWords) {
    if (word.name.size() == text.size() && StartsWith(word.name, text)) return &word;
  }
  const Word* found = nullptr;
  for (const Word& name : kNames) {
    if (text.size() >= 2 && StartsWith(name.name, text)) found = &name;
  }
  return found;
}

// Days from 1 January 1970 to the first day of a month in the Gregorian calendar.
// Source: Howard Hinnant, "chrono-Compatible Low-Level Date Algorithms", days_from_civil
int64_t DaysToMonth(int64_t year, int64_t month) {
  const int64_t from_march = month > 2 ? year : year - 1;
  const int64_t era = (from_march >= 0 ? from_march : from_march - 399) / 400;
  const int64_t year_of_era = from_march - era * 400;
  const int64_t day_of_year = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5;
  return era * 146097 + year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year -
         719468;
}

class DateReader {
 public:
  explicit DateReader(std::string_view text) : text_(text) {}

  bool Read(double* milliseconds) {
    while (at_ < text_.size()) {
      if (!ReadPart()) return false;
    }
    return Finish(milliseconds);
  }

 private:
  char Next() const { return at_ < text_.size() ? text_[at_] : '\0'; }

  bool ReadPart() {
    const char c = Next();
    if (c == ' ' || c == '\t' || c == ',') {
      ++at_;
      return true;
    }
    if (c == '(') return SkipComment();
    if (IsDigit(c)) return ReadNumbers();
    if (IsLetter(c)) return ReadWord();
    if (c == '+' || c == '-') return ReadOffset();
    return false;
  }

  bool SkipComment() {
    int depth = 0;
    do {
      if (at_ == text_.size()) return false;
      if (text_[at_] == '(') ++depth;
      if (text_[at_] == ')') --depth;
      ++at_;
    } while (depth > 0);
    return true;
  }

  bool ReadNumber(int64_t* number) {
    constexpr size_t kMostDigits = 6;
    const size_t start = at_;
    *number = 0;
    for (; IsDigit(Next()); ++at_) {
      if (at_ - start == kMostDigits) return false;
      *number = *number * 10 + (text_[at_] - '0');
    }
    return at_ > start;
  }

  bool ReadNumbers() {
    int64_t first = 0;
    if (!ReadNumber(&first)) return false;
    if (Next() == ':') return ReadTime(first);
    // After a time and without a date a sign is the zone's, so the year ends there.
    if (Next() == '/' || (Next() == '-' && month_ == kUnset)) return ReadShortDate(first);
    return TakeDayOrYear(first);
  }

  bool ReadTime(int64_t hour) {
    if (hour_ != kUnset) return false;
    hour_ = hour;
    ++at_;
    if (!ReadNumber(&minute_)) return false;
    if (Next() != ':') return true;
    ++at_;
    return ReadNumber(&second_);
  }

  // month/day/year or year/month/day
  bool ReadShortDate(int64_t first) {
    const char separator = Next();
    int64_t second = 0, third = 0;
    ++at_;
    if (month_ != kUnset || day_ != kUnset || year_ != kUnset || !ReadNumber(&second)) return false;
    if (Next() != separator) return false;
    ++at_;
    if (!ReadNumber(&third)) return false;
    constexpr int64_t kLeastYear = 70;
    const bool is_year_first = first >= kLeastYear;
    year_ = is_year_first ? first : third;
    month_ = is_year_first ? second : first;
    day_ = is_year_first ? third : second;
    return true;
  }

  bool TakeDayOrYear(int64_t number) {
    constexpr int64_t kLeastYear = 70;
    if (day_ == kUnset && number < kLeastYear) {
      day_ = number;
    } else if (year_ == kUnset) {
      year_ = number;
    } else {
      return false;
    }
    return true;
  }

  // The zone: +0100 or -5, after a time or the name of a zone.
  bool ReadOffset() {
    const bool is_west = Next() == '-';
    ++at_;
    int64_t number = 0;
    if (hour_ == kUnset || has_offset_ || !ReadNumber(&number)) return false;
    constexpr int64_t kMostHours = 24;
    const int64_t minutes = number < kMostHours ? number * 60 : number / 100 * 60 + number % 100;
    zone_ += is_west ? -minutes : minutes;
    has_zone_ = has_offset_ = true;
    return true;
  }

  bool ReadWord() {
    const size_t start = at_;
    while (IsLetter(Next())) ++at_;
    const Word* word = FindWord(text_.substr(start, at_ - start));
    if (Next() == '.') ++at_;
    return word != nullptr && TakeWord(*word);
  }

  bool TakeWord(const Word& word) {
    switch (word.kind) {
      case WordKind::kDay:
        return true;
      case WordKind::kMonth:
        if (month_ != kUnset) return false;
        month_ = word.value;
        return true;
      case WordKind::kAm:
      case WordKind::kPm:
        if (hour_ < 1 || hour_ > 12 || has_half_) return false;
        hour_ = hour_ % 12 + (word.kind == WordKind::kPm ? 12 : 0);
        has_half_ = true;
        return true;
      case WordKind::kZone:
        if (has_zone_) return false;
        zone_ = word.value;
        has_zone_ = true;
        return true;
      case WordKind::kAfterChrist:
      case WordKind::kBeforeChrist:
        if (year_ == kUnset || has_era_) return false;
        if (word.kind == WordKind::kBeforeChrist) year_ = 1 - year_;
        has_era_ = true;
        return true;
    }
    return false;
  }

  bool Finish(double* milliseconds) const {
    if (month_ == kUnset || day_ == kUnset || (year_ == kUnset && !has_era_)) return false;
    const int64_t year = !has_era_ && year_ < 100 ? year_ + 1900 : year_;
    const int64_t months = year * 12 + month_ - 1;
    const int64_t whole_years = (months >= 0 ? months : months - 11) / 12;
    const int64_t days = DaysToMonth(whole_years, months - whole_years * 12 + 1) + day_ - 1;
    const int64_t hour = hour_ == kUnset ? 0 : hour_;
    const int64_t minutes = (days * 24 + hour) * 60 + minute_ - (has_zone_ ? zone_ : 0);
    const auto written = static_cast<double>(minutes * kMinute + second_ * 1000);
    *milliseconds = has_zone_ ? written : UtcOfLocal(written);
    constexpr double kMostMilliseconds = 8.64e15;  // the language's range
    return *milliseconds >= -kMostMilliseconds && *milliseconds <= kMostMilliseconds;
  }

  std::string_view text_;
  size_t at_ = 0;
  int64_t year_ = kUnset;
  int64_t month_ = kUnset;
  int64_t day_ = kUnset;
  int64_t hour_ = kUnset;
  int64_t minute_ = 0;
  int64_t second_ = 0;
  int64_t zone_ = 0;  // minutes
  bool has_zone_ = false;
  bool has_offset_ = false;
  bool has_half_ = false;
  bool has_era_ = false;
};

}  // namespace

bool ParseDateText(std::string_view text, double* milliseconds) {
  return DateReader(text).Read(milliseconds);
}

}  // namespace mirolta::host
