// Conversions of plain values and of texts: every type, every value to every type.
#include <cmath>

#include "printing.h"
#include "sections.h"
#include "texts.h"
#include "values.h"

namespace mirolta::value_parity {

void Tags() {
  Section("tags");
  static BYTE zeros[64];
  for (const unsigned flag : {0u, 0x1000u, 0x2000u, 0x4000u, 0x6000u, 0x8000u, 0xE000u}) {
    for (unsigned base = 0; base < 0x60; ++base) {
      const VARTYPE type = static_cast<VARTYPE>(base | flag);
      std::string result;
      const auto add = [&result](HRESULT status, VARTYPE after) {
        result += (result.empty() ? "" : " ") + Status(status) + "/" + Hex(after, 4);
      };
      VARIANT value = Of(type);
      const HRESULT cleared = VariantClear(&value);
      add(cleared, value.vt);
      value = Of(type);
      if ((type & VT_BYREF) != 0) value.byref = zeros;
      VARIANT copy = Integer(VT_I4, 1);
      const HRESULT copied = VariantCopy(&copy, &value);
      add(copied, copy.vt);
      VARIANT direct = Integer(VT_I4, 1);
      const HRESULT followed = VariantCopyInd(&direct, &value);
      add(followed, direct.vt);
      VARIANT from_this = Integer(VT_I4, 1);
      const HRESULT changed = VariantChangeType(&from_this, &value, 0, VT_I4);
      add(changed, from_this.vt);
      VARIANT to_this = Integer(VT_I4, 1);
      VARIANT one = Integer(VT_I4, 1);
      const HRESULT into = VariantChangeType(&to_this, &one, 0, type);
      add(into, to_this.vt);
      Print(Hex(type, 4), result);
      VariantClear(&to_this);
    }
  }
}

void Conversions() {
  Section("change");
  std::vector<VARIANT> values = {Of(VT_EMPTY),        Of(VT_NULL),    Of(VT_BSTR),
                                 Of(VT_DISPATCH),     Of(VT_UNKNOWN), Of(VT_VARIANT),
                                 Of(VT_I4 | VT_ARRAY)};
  for (const auto& more : {IntegerValues(), RealValues(), DecimalValues()}) {
    values.insert(values.end(), more.begin(), more.end());
  }
  for (const VARIANT& value : values) {
    for (const VARTYPE type : kTypes) Change(value, 0, type);
    Change(value, 0, VT_I4 | VT_ARRAY);
  }
}

namespace {

// Calls `use` with each entry of a list as a BSTR value.
template <class Use>
void ForEachText(const OLECHAR* list, Use use) {
  for (const OLECHAR* end = list;; list = end + 1) {
    for (end = list; *end != 0 && *end != '|';) ++end;
    VARIANT value = Of(VT_BSTR);
    value.bstrVal = SysAllocStringLen(list, static_cast<UINT>(end - list));
    use(value);
    VariantClear(&value);
    if (*end == 0) return;
  }
}

}  // namespace

void Texts() {
  Section("text");
  ForEachText(kNumberTexts, [](const VARIANT& value) {
    for (const VARTYPE type : kTypes) Change(value, 0, type);
  });
  Section("date-text");
  ForEachText(kDateTexts, [](const VARIANT& value) {
    for (const VARTYPE type : {VT_DATE, VT_R8, VT_BOOL}) Change(value, 0, type);
  });
}

void Dates() {
  Section("date");
  const double days[] = {0,       1,       2,      -1,    -2,    59,    60,    61,    365,
                         366,     36525,   36526,  36584, 36585, 36586, 40000, 73050, 109205,
                         2958465, -657434, -36522, -100,  -1.25, -1.75, -0.5};
  const double seconds[] = {0,       21600,      43200, 64800, 1,     1.4,    1.5,   0.4,
                            0.5,     0.6,        59,    59.6,  3599,  3599.6, 86399, 86399.4,
                            86399.6, 86399.9999, 45000, 43199, 43200, 46799};
  for (const double day : days) {
    for (const double second : seconds) {
      const double time = second / 86400;
      Change(Real(VT_DATE, day < 0 ? day - time : day + time), 0, VT_BSTR);
    }
  }
  for (USHORT flags = 1; flags <= 64; flags = static_cast<USHORT>(2 * flags)) {
    Change(Real(VT_DATE, 36526.75), flags, VT_BSTR);
    Change(Real(VT_R8, 1234.5), flags, VT_BSTR);
    Change(Integer(VT_CY, 12345678), flags, VT_BSTR);
    Change(Integer(VT_I4, -1234567), flags, VT_BSTR);
    for (const int truth : {-1, 0, 1}) Change(Integer(VT_BOOL, truth), flags, VT_BSTR);
    VARIANT text = Words(OLESTR("1/2/2000 10:30"));
    Change(text, flags, VT_DATE);
    VariantClear(&text);
  }
}

// Values between the chosen ones.
void RandomValues() {
  Section("random");
  ULONGLONG state = 1;
  const auto next = [&state] {  // a 64-bit linear congruence; its high half is what is used
    state = state * 6364136223846793005u + 1442695040888963407u;
    return static_cast<ULONG>(state >> 32);
  };
  const auto wide = [&next] { return (static_cast<ULONGLONG>(next()) << 32) | next(); };
  for (int i = 0; i < 400; ++i) {
    const double mantissa = static_cast<double>(wide() >> 11) / 4503599627370496.0 - 1;
    const int exponent = static_cast<int>(next() % 120) - 60;
    const double real = std::ldexp(mantissa, exponent);
    for (const VARTYPE type : {VT_R8, VT_R4}) {
      for (const VARTYPE to : {VT_BSTR, VT_I4, VT_UI1, VT_I8, VT_CY, VT_BOOL})
        Change(Real(type, real), 0, to);
    }
    Change(Real(VT_R8, std::ldexp(mantissa, static_cast<int>(next() % 2000) - 1000)), 0, VT_BSTR);
    const double date = std::floor(static_cast<double>(next() % 3600000)) - 650000 +
                        static_cast<double>(next() % 86400) / 86400;
    for (const VARTYPE to : {VT_BSTR, VT_R8, VT_I4}) Change(Real(VT_DATE, date), 0, to);
    const VARIANT decimal =
        Dec(static_cast<BYTE>(next() % 29), next() % 2 != 0, next() >> next() % 32, wide());
    for (const VARTYPE to : {VT_BSTR, VT_I8, VT_UI4, VT_BOOL, VT_R4}) Change(decimal, 0, to);
    const VARIANT currency = Integer(VT_CY, static_cast<LONGLONG>(wide()) >> next() % 64);
    for (const VARTYPE to : {VT_BSTR, VT_R8, VT_DECIMAL, VT_I4, VT_UI2}) Change(currency, 0, to);
    VARIANT text = Of(VT_EMPTY);
    VARIANT source = decimal;
    VariantChangeTypeEx(&text, &source, kEnglish, 0, VT_BSTR);
    for (const VARTYPE to : {VT_DECIMAL, VT_I4, VT_I8, VT_UI8, VT_R4}) Change(text, 0, to);
    VariantClear(&text);
  }
}

}  // namespace mirolta::value_parity
