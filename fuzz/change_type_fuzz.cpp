// Conversions of texts and values to every type and back.
#include <cstring>

#include "fuzz_values.h"

using namespace mirolta::fuzz;

namespace {

// Bytes of an integer's value, or zero: a copied value may have other bytes beside it.
size_t IntegerSize(VARTYPE type) {
  switch (type) {
    case VT_UI1:
      return 1;
    case VT_I2:
      return 2;
    case VT_I4:
    case VT_UI4:
      return 4;
    case VT_I8:
    case VT_UI8:
      return 8;
    default:
      return 0;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  constexpr VARTYPE kTypes[] = {VT_EMPTY,
                                VT_NULL,
                                VT_I1,
                                VT_I2,
                                VT_I4,
                                VT_I8,
                                VT_INT,
                                VT_UI1,
                                VT_UI2,
                                VT_UI4,
                                VT_UI8,
                                VT_UINT,
                                VT_R4,
                                VT_R8,
                                VT_CY,
                                VT_DATE,
                                VT_BOOL,
                                VT_BSTR,
                                VT_DECIMAL,
                                VT_ERROR,
                                VT_UNKNOWN,
                                VT_DISPATCH,
                                VT_ARRAY | VT_UI1,
                                99};
  const VARTYPE wanted = kTypes[in.Byte() % (sizeof kTypes / sizeof kTypes[0])];
  const USHORT flags = static_cast<USHORT>(in.Byte() % 8);
  FuzzValues values;
  VARIANT source;
  VariantInit(&source);
  bool owned = false;
  if (in.Byte() % 4 == 0) {
    source = values.Next(in);
  } else {
    const auto text = in.Text(80);
    V_VT(&source) = VT_BSTR;
    source.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    owned = true;
  }
  VARIANT made;
  VariantInit(&made);
  if (SUCCEEDED(VariantChangeType(&made, &source, flags, wanted))) {
    FUZZ_CHECK(V_VT(&made) == wanted);
    VARIANT text;
    VariantInit(&text);
    if (SUCCEEDED(VariantChangeType(&text, &made, flags, VT_BSTR))) {
      // Integers survive conversion to text and back.
      VARIANT again;
      VariantInit(&again);
      if (const size_t width = IntegerSize(wanted)) {
        FUZZ_CHECK(VariantChangeType(&again, &text, 0, wanted) == S_OK);
        FUZZ_CHECK(V_VT(&again) == wanted && std::memcmp(&again.ullVal, &made.ullVal, width) == 0);
      } else {
        VariantChangeType(&again, &text, flags, wanted);
      }
      VariantClear(&again);
    }
    VariantClear(&text);
  } else {
    FUZZ_CHECK(V_VT(&made) == VT_EMPTY);
  }
  VariantClear(&made);
  if (owned) VariantClear(&source);
  return 0;
}
