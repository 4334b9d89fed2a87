#include "values/variant_numbers.h"

#include <cfloat>
#include <cmath>

#include "values/variant_date.h"

namespace mirolta::runtime {
namespace {

struct IntegerType {
  VARTYPE type;
  bool is_signed;
  int bits;
};
constexpr IntegerType kIntegerTypes[] = {
    {VT_I1, true, 8},   {VT_UI1, false, 8},  {VT_I2, true, 16}, {VT_UI2, false, 16},
    {VT_I4, true, 32},  {VT_UI4, false, 32}, {VT_I8, true, 64}, {VT_UI8, false, 64},
    {VT_INT, true, 32}, {VT_UINT, false, 32}};

const IntegerType* FindInteger(VARTYPE type) {
  for (const IntegerType& row : kIntegerTypes) {
    if (row.type == type) return &row;
  }
  return nullptr;
}

// LoadInteger returns the value, in two's complement for signed types, of an integer or boolean.
LONGLONG LoadInteger(const VARIANT& from) {
  switch (from.vt) {
    case VT_I1:
      return static_cast<signed char>(from.cVal);
    case VT_UI1:
      return from.bVal;
    case VT_I2:
      return from.iVal;
    case VT_UI2:
      return from.uiVal;
    case VT_I4:
      return from.lVal;
    case VT_UI4:
      return from.ulVal;
    case VT_INT:
      return from.intVal;
    case VT_UINT:
      return from.uintVal;
    case VT_BOOL:
      return from.boolVal;
    case VT_UI8:
      return static_cast<LONGLONG>(from.ullVal);
    default:
      return from.llVal;
  }
}

// SaveBits stores the low bits that the type has room for.
void SaveBits(ULONGLONG bits, VARTYPE type, VARIANT* to) {
  VariantInit(to);
  to->vt = type;
  switch (type) {
    case VT_I1:
      to->cVal = static_cast<CHAR>(bits);
      break;
    case VT_UI1:
      to->bVal = static_cast<BYTE>(bits);
      break;
    case VT_I2:
      to->iVal = static_cast<SHORT>(bits);
      break;
    case VT_UI2:
      to->uiVal = static_cast<USHORT>(bits);
      break;
    case VT_I4:
      to->lVal = static_cast<LONG>(bits);
      break;
    case VT_UI4:
      to->ulVal = static_cast<ULONG>(bits);
      break;
    case VT_INT:
      to->intVal = static_cast<INT>(bits);
      break;
    case VT_UINT:
      to->uintVal = static_cast<UINT>(bits);
      break;
    case VT_UI8:
      to->ullVal = bits;
      break;
    default:
      to->llVal = static_cast<LONGLONG>(bits);
      break;
  }
}

ULONGLONG Negated(ULONGLONG value) {
  return ~value + 1;
}

HRESULT StoreMagnitude(bool negative, ULONGLONG magnitude, const IntegerType& row, VARIANT* to) {
  const ULONGLONG half = ULONGLONG{1} << (row.bits - 1);
  ULONGLONG greatest = half - 1;
  if (row.is_signed && negative) greatest = half;
  if (!row.is_signed) greatest = negative ? 0 : half + (half - 1);
  if (magnitude > greatest) return DISP_E_OVERFLOW;
  SaveBits(negative ? Negated(magnitude) : magnitude, row.type, to);
  return S_OK;
}

// Independent of the processor's rounding mode. Reals of 2^52 and more are whole.
double RoundHalfToEven(double value) {
  const double below = std::floor(value);
  const double rest = value - below;
  if (rest < 0.5) return below;
  if (rest > 0.5) return below + 1;
  return std::fmod(below, 2) == 0 ? below : below + 1;
}

HRESULT StoreRealAsInteger(double value, const IntegerType& row, VARIANT* to) {
  const double rounded = RoundHalfToEven(value);
  if (!(std::fabs(rounded) < std::ldexp(1.0, 64))) return DISP_E_OVERFLOW;  // NaN too
  return StoreMagnitude(rounded < 0, static_cast<ULONGLONG>(std::fabs(rounded)), row, to);
}

HRESULT StoreRealAsCurrency(double value, VARIANT* to) {
  // Enough digits to round correctly; a product with 10000 would be rounded twice.
  constexpr int kSignificant = 40;
  CY made;
  if (!std::isfinite(value) || !DigitsToCurrency(DigitsOfReal(value, kSignificant), &made)) {
    return DISP_E_OVERFLOW;
  }
  VariantInit(to);
  to->vt = VT_CY;
  to->cyVal = made;
  return S_OK;
}

void StoreReal(double value, VARTYPE type, VARIANT* to) {
  VariantInit(to);
  to->vt = type;
  if (type == VT_DATE) {
    to->date = value;
  } else {
    to->dblVal = value;
  }
}

HRESULT StoreSingle(double value, VARIANT* to) {
  if (std::fabs(value) > double{FLT_MAX}) return DISP_E_OVERFLOW;
  VariantInit(to);
  to->vt = VT_R4;
  to->fltVal = static_cast<FLOAT>(value);
  return S_OK;
}

void StoreBoolean(bool value, VARIANT* to) {
  VariantInit(to);
  to->vt = VT_BOOL;
  to->boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
}

HRESULT StoreDigits(const Digits& digits, VARTYPE type, VARIANT* to) {
  if (const IntegerType* row = FindInteger(type)) {
    ULONGLONG magnitude = 0;
    if (!DigitsToInteger(digits, &magnitude)) return DISP_E_OVERFLOW;
    return StoreMagnitude(digits.negative && magnitude != 0, magnitude, *row, to);
  }
  if (type == VT_BOOL) {
    StoreBoolean(!digits.IsZero(), to);
    return S_OK;
  }
  VARIANT made;
  VariantInit(&made);
  if (type == VT_CY) {
    if (!DigitsToCurrency(digits, &made.cyVal)) return DISP_E_OVERFLOW;
  } else if (type == VT_DECIMAL) {
    if (!DigitsToDecimal(digits, &made.decVal)) return DISP_E_OVERFLOW;
  } else {
    double value = 0;
    if (!DigitsToReal(digits, &value)) return DISP_E_OVERFLOW;
    if (type == VT_R4) return StoreSingle(value, to);
    StoreReal(value, type, &made);
  }
  made.vt = type;  // a decimal's reserved word is the tag
  *to = made;
  return S_OK;
}

HRESULT StoreRealNumber(const Number& number, VARTYPE type, VARIANT* to) {
  if (const IntegerType* row = FindInteger(type)) return StoreRealAsInteger(number.real, *row, to);
  switch (type) {
    case VT_BOOL:
      StoreBoolean(number.real != 0, to);
      return S_OK;
    case VT_R4:
      return StoreSingle(number.real, to);
    case VT_CY:
      return StoreRealAsCurrency(number.real, to);
    case VT_DECIMAL:
      if (std::isnan(number.real)) return DISP_E_BADVARTYPE;
      if (std::isinf(number.real)) return DISP_E_OVERFLOW;
      return StoreDigits(DigitsOfReal(number.real, number.significant), type, to);
    default:
      StoreReal(number.real, type, to);
      return S_OK;
  }
}

}  // namespace

bool IsNumeric(VARTYPE type) {
  switch (type) {
    case VT_R4:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
    case VT_BOOL:
    case VT_DECIMAL:
      return true;
    default:
      return FindInteger(type) != nullptr;
  }
}

Number ReadNumber(const VARIANT& from, VARTYPE type) {
  Number number;
  switch (from.vt) {
    case VT_R4:
      number.kind = Number::Kind::kReal;
      number.real = double{from.fltVal};
      number.significant = kSingleDigits;
      return number;
    case VT_R8:
      number.kind = Number::Kind::kReal;
      number.real = from.dblVal;
      return number;
    case VT_DATE:
      number.kind = Number::Kind::kReal;
      number.real = from.date;
      return number;
    case VT_CY:
      number.digits = DigitsOfCurrency(from.cyVal);
      return number;
    case VT_DECIMAL:
      number.digits = DigitsOfDecimal(from.decVal);
      return number;
    default:
      break;
  }
  const LONGLONG value = LoadInteger(from);
  const bool negative = value < 0 && from.vt != VT_UI8;
  const ULONGLONG bits = static_cast<ULONGLONG>(value);
  number.digits = DigitsOfInteger(negative, negative ? Negated(bits) : bits);
  // Between signed and unsigned types of one width the platform keeps the bits; so it does for
  // booleans to every integer type.
  const IntegerType* to = FindInteger(type);
  const IntegerType* row = FindInteger(from.vt);
  if (to != nullptr && (row == nullptr || row->bits == to->bits)) {
    number.kind = Number::Kind::kBits;
    number.bits = bits;
  }
  // As a decimal, true is 1.
  if (from.vt == VT_BOOL && type == VT_DECIMAL) number.digits = DigitsOfInteger(false, value != 0);
  return number;
}

HRESULT StoreNumber(const Number& number, VARTYPE type, VARIANT* to) {
  switch (number.kind) {
    case Number::Kind::kReal:
      return StoreRealNumber(number, type, to);
    case Number::Kind::kBits:
      SaveBits(number.bits, type, to);
      return S_OK;
    default:
      return StoreDigits(number.digits, type, to);
  }
}

}  // namespace mirolta::runtime
