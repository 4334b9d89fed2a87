// Values that the sections try, and the conversion that most of them print.
#pragma once

#include <vector>

#include "platform.h"

namespace mirolta::value_parity {

// English (United States): what texts of dates and amounts look like.
constexpr LCID kEnglish = 0x0409;

// A value of the type whose content is zeros.
VARIANT Of(VARTYPE type);
// What the integer, currency or error type keeps of the number.
VARIANT Integer(VARTYPE type, LONGLONG number);
// VT_R4, VT_R8 or VT_DATE.
VARIANT Real(VARTYPE type, double number);
VARIANT Dec(BYTE scale, bool negative, ULONG high, ULONGLONG low);
// A new BSTR.
VARIANT Words(const OLECHAR* text);
// What an operation must overwrite, or leave alone when it fails.
inline VARIANT Sentinel() {
  return Integer(VT_I4, 4711);
}

// Refers to the content of another value.
VARIANT Reference(VARIANT* to);
// Refers to the other value as such: VT_BYREF | VT_VARIANT.
VARIANT ReferenceToVariant(VARIANT* to);

// Converts into a sentinel and prints "value fFLAGS -> type", the status and what is there then.
void Change(VARIANT from, USHORT flags, VARTYPE type);

// Every type that a conversion may have as its target.
inline constexpr VARTYPE kTypes[] = {
    VT_EMPTY,   VT_NULL, VT_I1,   VT_UI1,   VT_I2,       VT_UI2,     VT_I4,     VT_UI4,
    VT_I8,      VT_UI8,  VT_INT,  VT_UINT,  VT_R4,       VT_R8,      VT_BOOL,   VT_CY,
    VT_DECIMAL, VT_DATE, VT_BSTR, VT_ERROR, VT_DISPATCH, VT_UNKNOWN, VT_VARIANT};

// Numbers about the limits of every type, and those at which conversions round.
std::vector<VARIANT> IntegerValues();
std::vector<VARIANT> RealValues();
std::vector<VARIANT> DecimalValues();

}  // namespace mirolta::value_parity
