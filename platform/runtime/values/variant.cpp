// Lifetime of a VARIANT: initialised, cleared, copied with what it owns.
#include <cstring>

#include "mirolta/dispatch.h"
#include "values/variant_rules.h"

namespace mirolta::runtime {
namespace {

// OwnCopy turns the shallow view *value into an owned copy.
// Errors: those of copying; *value is then VT_EMPTY.
HRESULT OwnCopy(VARIANT* value) {
  HRESULT status = S_OK;
  if ((value->vt & VT_BYREF) != 0) return S_OK;
  if ((value->vt & VT_ARRAY) != 0) {
    SAFEARRAY* from = value->parray;
    value->parray = nullptr;
    if (from != nullptr) status = SafeArrayCopy(from, &value->parray);
  } else if (value->vt == VT_BSTR) {
    status = CopyValueText(value->bstrVal, &value->bstrVal);
  } else if (value->vt == VT_DISPATCH) {
    if (value->pdispVal != nullptr) value->pdispVal->AddRef();
  } else if (value->vt == VT_UNKNOWN) {
    if (value->punkVal != nullptr) value->punkVal->AddRef();
  }
  if (FAILED(status)) VariantInit(value);
  return status;
}

}  // namespace
}  // namespace mirolta::runtime

using namespace mirolta::runtime;

extern "C" {

void VariantInit(VARIANT* value) {
  // All members, so that no copy ever reads an indeterminate byte.
  memset(static_cast<void*>(value), 0, sizeof *value);
}

HRESULT VariantClear(VARIANT* value) {
  const HRESULT valid = CheckType(value->vt);
  if (FAILED(valid)) return valid;
  if ((value->vt & VT_BYREF) == 0) {
    if ((value->vt & VT_ARRAY) != 0) {
      if (value->parray != nullptr) {
        const HRESULT status = SafeArrayDestroy(value->parray);
        if (FAILED(status)) return status;
      }
    } else if (value->vt == VT_BSTR) {
      SysFreeString(value->bstrVal);
    } else if (value->vt == VT_DISPATCH) {
      if (value->pdispVal != nullptr) value->pdispVal->Release();
    } else if (value->vt == VT_UNKNOWN) {
      if (value->punkVal != nullptr) value->punkVal->Release();
    }
  }
  VariantInit(value);
  return S_OK;
}

HRESULT VariantCopy(VARIANT* to, const VARIANT* from) {
  const HRESULT valid = CheckType(from->vt);
  if (FAILED(valid)) return valid;
  if (to == from) return S_OK;
  const HRESULT cleared = VariantClear(to);
  if (FAILED(cleared)) return cleared;
  *to = *from;
  return OwnCopy(to);
}

HRESULT VariantCopyInd(VARIANT* to, const VARIANT* from) {
  if ((from->vt & VT_BYREF) == 0) return VariantCopy(to, from);
  VARIANT made;
  HRESULT status = ViewReference(from, &made);
  if (SUCCEEDED(status)) status = CheckType(made.vt);
  if (SUCCEEDED(status)) status = OwnCopy(&made);
  return FAILED(status) ? status : ReplaceValue(to, &made);
}
}
