#include "classes/dictionary_key.h"

#include <locale.h>
#include <wctype.h>

#include <bit>
#include <cmath>

#include "classes/host_call.h"
#include "engine/host_errors.h"

namespace mirolta::host {
namespace {

// The first unit of a comparison form.
enum class KeyKind : OLECHAR {
  kEmpty,
  kNull,
  kTruth,
  kInteger,
  kHuge,
  kReal,
  kDate,
  kText,
  kObject,
  kError
};

Units FormOf(KeyKind kind) {
  return Units(1, static_cast<OLECHAR>(kind));
}

Units FormOf(KeyKind kind, uint64_t bits) {
  Units form = FormOf(kind);
  for (unsigned shift = 0; shift < 64; shift += 16) {
    form.push_back(static_cast<OLECHAR>((bits >> shift) & 0xFFFF));
  }
  return form;
}

constexpr double kTwo63 = 9223372036854775808.0;

Units FormOfNumber(double number) {
  if (std::isnan(number)) Fail(kInvalidCall, "A key cannot be NaN");
  if (number == std::trunc(number) && number >= -kTwo63 && number < 2 * kTwo63) {
    if (number >= kTwo63) return FormOf(KeyKind::kHuge, static_cast<uint64_t>(number));
    return FormOf(KeyKind::kInteger, static_cast<uint64_t>(static_cast<int64_t>(number)));
  }
  return FormOf(KeyKind::kReal, std::bit_cast<uint64_t>(number));
}

Units FormOfNumber(const VARIANT& number) {
  if (number.vt == VT_I8) return FormOf(KeyKind::kInteger, static_cast<uint64_t>(number.llVal));
  if (number.vt == VT_UI8) {
    const bool is_huge = number.ullVal > static_cast<uint64_t>(INT64_MAX);
    return FormOf(is_huge ? KeyKind::kHuge : KeyKind::kInteger, number.ullVal);
  }
  return FormOfNumber(HostCall::NumberOf(number));
}

// The letter case of the whole of Unicode, whatever the locale of the process.
OLECHAR Folded(OLECHAR unit) {
  if (unit < 0x80) {
    return unit >= OLECHAR{'A'} && unit <= OLECHAR{'Z'} ? static_cast<OLECHAR>(unit + 32) : unit;
  }
  static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  if (unicode == nullptr) return unit;
  // To upper case first: letters such as the two small sigmas have one capital.
  return static_cast<OLECHAR>(towlower_l(towupper_l(unit, unicode), unicode));
}

Units FormOfText(UnitsView text, bool ignores_case) {
  Units form = FormOf(KeyKind::kText);
  form += text;
  if (ignores_case) {
    for (OLECHAR& unit : form) unit = Folded(unit);
  }
  return form;
}

Units FormOfObject(IUnknown* object) {
  OwnedReference<IUnknown> identity;
  if (object != nullptr) {
    const HRESULT status = identity.Query(object, IID_IUnknown);
    if (FAILED(status)) Fail(status);
  }
  return FormOf(KeyKind::kObject, reinterpret_cast<uintptr_t>(identity.Get()));
}

}  // namespace

Units ComparisonForm(const VARIANT& key, bool ignores_case) {
  if ((key.vt & VT_ARRAY) != 0) Fail(kInvalidCall, "A key cannot be an array");
  switch (key.vt) {
    case VT_EMPTY:
      return FormOf(KeyKind::kEmpty);
    case VT_NULL:
      return FormOf(KeyKind::kNull);
    case VT_BOOL:
      return FormOf(KeyKind::kTruth, key.boolVal != VARIANT_FALSE ? 1 : 0);
    case VT_DATE:
      // -0 and 0 are the same date.
      return FormOf(KeyKind::kDate, std::bit_cast<uint64_t>(key.date + 0.0));
    case VT_BSTR:
      return FormOfText({key.bstrVal, SysStringLen(key.bstrVal)}, ignores_case);
    case VT_DISPATCH:
    case VT_UNKNOWN:
      return FormOfObject(key.punkVal);
    case VT_ERROR:
    case VT_HRESULT:
      return FormOf(KeyKind::kError, static_cast<uint32_t>(key.scode));
    default:
      return FormOfNumber(key);
  }
}

}  // namespace mirolta::host
