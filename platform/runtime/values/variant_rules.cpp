#include "values/variant_rules.h"

#include <cstring>

namespace mirolta::runtime {
namespace {

bool IsAutomationType(VARTYPE base) {
  return base <= VT_UINT && base != 15;
}

}  // namespace

HRESULT CheckType(VARTYPE type) {
  if ((type & ~(VT_TYPEMASK | VT_ARRAY | VT_BYREF)) != 0) return DISP_E_BADVARTYPE;
  const VARTYPE base = BaseType(type);
  if (!IsAutomationType(base)) return DISP_E_BADVARTYPE;
  const bool nothing = base == VT_EMPTY || base == VT_NULL;
  return nothing && base != type ? DISP_E_BADVARTYPE : S_OK;
}

ULONG ElementSize(VARTYPE type) {
  switch (type) {
    case VT_I1:
    case VT_UI1:
      return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      return 2;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_ERROR:
      return 4;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
      return 8;
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_UNKNOWN:
      return sizeof(void*);
    case VT_DECIMAL:
      return sizeof(DECIMAL);
    case VT_VARIANT:
      return sizeof(VARIANT);
    default:
      return 0;
  }
}

HRESULT CopyText(BSTR from, BSTR* to) {
  *to = nullptr;
  if (from == nullptr) return S_OK;
  *to = SysAllocStringByteLen(static_cast<LPCSTR>(static_cast<const void*>(from)),
                              SysStringByteLen(from));
  return *to == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT CopyValueText(BSTR from, BSTR* to) {
  if (from != nullptr) return CopyText(from, to);
  *to = SysAllocString(OLESTR(""));
  return *to == nullptr ? E_OUTOFMEMORY : S_OK;
}

void* ValueAddress(VARIANT* value) {
  return &value->llVal;
}

HRESULT ReplaceValue(VARIANT* to, VARIANT* made) {
  const HRESULT status = VariantClear(to);
  if (FAILED(status)) {
    VariantClear(made);
    return status;
  }
  *to = *made;
  return S_OK;
}

HRESULT ViewReference(const VARIANT* from, VARIANT* to) {
  if (from->byref == nullptr) return E_INVALIDARG;
  const VARTYPE pointed = static_cast<VARTYPE>(from->vt & ~VT_BYREF);
  VariantInit(to);
  if ((pointed & VT_ARRAY) != 0) {
    to->parray = *from->pparray;
    to->vt = pointed;
    return S_OK;
  }
  if (CheckType(from->vt) != S_OK) return E_INVALIDARG;
  if (pointed == VT_VARIANT) {
    const VARIANT* inner = from->pvarVal;
    if (inner->vt == (VT_BYREF | VT_VARIANT)) return E_INVALIDARG;
    if ((inner->vt & VT_BYREF) != 0) return ViewReference(inner, to);
    *to = *inner;
    return S_OK;
  }
  if (pointed == VT_DECIMAL) {
    to->decVal = *from->pdecVal;
  } else {
    memcpy(ValueAddress(to), from->byref, ElementSize(pointed));
  }
  to->vt = pointed;  // last: it shares its place with the decimal's reserved word
  return S_OK;
}

}  // namespace mirolta::runtime
