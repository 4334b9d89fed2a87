// The numeric types of a VARIANT: reading and storing them.
#pragma once

#include "values/variant_decimal.h"

namespace mirolta::runtime {

// A number of one of three kinds.
struct Number {
  enum class Kind : uint8_t {
    kDigits,  // exact
    kReal,    // a floating point value of `significant` decimal digits
    kBits,    // a bit pattern: stored to integers it is cut to their width, whatever the sign
  };
  Kind kind = Kind::kDigits;
  Digits digits;
  double real = 0;
  int significant = 15;
  ULONGLONG bits = 0;
};

constexpr int kSingleDigits = 7;
constexpr int kDoubleDigits = 15;

// IsNumeric says whether the tag is that of an integer, real, currency, decimal, date or boolean.
bool IsNumeric(VARTYPE type);

// ReadNumber reads *from, whose type is numeric, for storing to `type`.
Number ReadNumber(const VARIANT& from, VARTYPE type);

// StoreNumber stores to a numeric type; reals and digits round halves to even. *to is not cleared
// and is written only on success.
// Errors: DISP_E_OVERFLOW if the type cannot hold the number; DISP_E_BADVARTYPE for a NaN as
//         VT_DECIMAL.
HRESULT StoreNumber(const Number& number, VARTYPE type, VARIANT* to);

}  // namespace mirolta::runtime
