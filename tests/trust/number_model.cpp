#include "number_model.h"

#include <cmath>
#include <cstdio>

#include "value_model.h"

namespace mirolta::test {

namespace {

constexpr HRESULT kTooMuchData = static_cast<HRESULT>(0x8004277A);

// How many bytes or digits a number has from its first that is not zero, and that one.
struct Magnitude {
  size_t digits = 0;
  int bits_of_digit = 4;
  int first = 0;

  void Append(int digit) {
    if (digits == 0) first = digit;
    if (digits != 0 || digit != 0) ++digits;
  }
  bool IsZero() const { return digits == 0; }
};

Magnitude MagnitudeOfText(const Text& text, bool hexadecimal) {
  Magnitude magnitude;
  for (const OLECHAR c : text) {
    if (c >= '0' && c <= '9') magnitude.Append(c - '0');
    if (hexadecimal && c >= 'a' && c <= 'f') magnitude.Append(c - 'a' + 10);
    if (hexadecimal && c >= 'A' && c <= 'F') magnitude.Append(c - 'A' + 10);
  }
  return magnitude;
}

Result<Magnitude> MagnitudeOf(const VARIANT& value, bool hexadecimal) {
  // References are copied as such, and are no numbers then.
  if (!IsType(V_VT(&value))) return {DISP_E_BADVARTYPE};
  if (IsZeroNumber(value)) return {S_OK};
  const bool is_reference = (V_VT(&value) & VT_BYREF) != 0;
  const Result<VARIANT> plain = is_reference      ? Result<VARIANT>{S_OK, value}
                                : IsObject(value) ? Resolved(value)
                                                  : Copied(value);
  if (plain.failed()) return {plain.status};
  switch (V_VT(&plain.value)) {
    case VT_EMPTY:
    case VT_NULL:
      return {S_OK};
    case VT_ERROR:
      return {plain.value.scode == DISP_E_PARAMNOTFOUND ? S_OK : DISP_E_TYPEMISMATCH};
    case VT_BSTR:
      return {S_OK, MagnitudeOfText(TextIn(plain.value.bstrVal), hexadecimal)};
    case kBytesType: {
      const Result<size_t> count = ArrayByteCount(plain.value.parray, S_OK);
      Magnitude magnitude;
      magnitude.bits_of_digit = 8;
      for (size_t i = 0; i < count.value; ++i) {
        magnitude.Append(static_cast<const uint8_t*>(plain.value.parray->pvData)[i]);
      }
      return {S_OK, magnitude};
    }
    case VT_I1:
    case VT_UI1:
    case VT_I2:
    case VT_UI2:
    case VT_I4:
    case VT_UI4:
    case VT_R4:
    case VT_R8: {
      const double number = NumberIn(plain.value).value;
      if (!(number >= -0.5 && number < 4294967295.5)) return {DISP_E_OVERFLOW};
      char digits[16];
      std::snprintf(digits, sizeof digits, "%X", static_cast<unsigned>(std::nearbyint(number)));
      return {S_OK, MagnitudeOfText(WideOf(digits), true)};
    }
    default:
      return {DISP_E_TYPEMISMATCH};
  }
}

// Against the modulus of a ready object, 0x79... of 127 bits. No value has its very first byte.
bool IsBelowModulus(const Magnitude& m) {
  const size_t bits = m.digits * static_cast<size_t>(m.bits_of_digit);
  if (bits != 128) return bits < 128;
  return m.first < (m.bits_of_digit == 8 ? 0x79 : 0x7);
}

}  // namespace

HRESULT NumberStatus(const VARIANT& value, Rule rule) {
  const bool hexadecimal = rule == Rule::kHexadecimal || rule == Rule::kMessage;
  const Result<Magnitude> magnitude = MagnitudeOf(value, hexadecimal);
  if (magnitude.failed()) return rule == Rule::kNewNumber ? E_OUTOFMEMORY : magnitude.status;
  if (rule == Rule::kDivisor && magnitude.value.IsZero()) return DISP_E_DIVBYZERO;
  if (rule == Rule::kMessage && !IsBelowModulus(magnitude.value)) return kTooMuchData;
  return S_OK;
}

}  // namespace mirolta::test
