// Modular exponentiation of numbers of either sign.
#pragma once

#include "big_int.h"

namespace mirolta {

// ModExp: r := base^|e| mod m, 1 mod m for e = 0. r has the sign flag of the power, that of base
// for odd e. If m is negative, r = 0 unless e = 0.
// Alias:  r may be an operand.
// Errors: the status of an operand; DISP_E_DIVBYZERO for m = 0; E_OUTOFMEMORY. r is unchanged.
// Time:   depends on the values.
HRESULT ModExp(BigInt& r, const BigInt& base, const BigInt& e, const BigInt& m) noexcept;

}  // namespace mirolta
