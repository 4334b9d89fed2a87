// Dates: days since 30 December 1899, with the time of day as the fraction. For negative dates the
// fraction still counts forward from midnight: -1.25 is six o'clock on 29 December.
#pragma once

#include "mirolta/variant.h"

namespace mirolta::runtime {

constexpr double kLeastDate = -657434;  // 1 January 100
constexpr double kDateLimit = 2958466;  // 1 January 10000, the first day out of range

bool IsDateInRange(double date);

// TextOfDate formats a date in the English (United States) locale: date, time or both, whichever is
// not zero; midnight of day 0 is a time.
// Errors: E_INVALIDARG for a date out of range; E_OUTOFMEMORY.
HRESULT TextOfDate(double date, BSTR* text);

// ParseDateText reads a date, a time or both, in any order; the order of day, month and year is
// described in the source file.
// Errors: DISP_E_TYPEMISMATCH.
HRESULT ParseDateText(const OLECHAR* text, UINT length, double* date);

}  // namespace mirolta::runtime
