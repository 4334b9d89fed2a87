// Texts of dates in the forms of the platform's script language, beyond those of ISO 8601.
#pragma once

#include <string_view>

namespace mirolta::host {

// ParseDateText reads dates like
//
//   1/2/2003 4:05:06 PM        month/day/year, also with -, and year/month/day
//   Jan 2, 2003 16:05          and 2 January 2003; names have two letters or more
//   Thu, 2 Jan 2003 16:05:06 UTC+0100
//
// in any order of date and time. A year below 100 counts from 1900; a month, day or hour beyond
// its range continues in the next year, month or day. A time without a zone is local. Text in
// parentheses and names of days are ignored.
// Shapes: *milliseconds are UTC, since 1 January 1970.
// Errors: returns false for other texts.
bool ParseDateText(std::string_view text, double* milliseconds);

}  // namespace mirolta::host
