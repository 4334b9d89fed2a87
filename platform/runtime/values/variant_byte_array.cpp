#include "values/variant_byte_array.h"

#include <cstring>

namespace mirolta::runtime {

HRESULT TextOfByteArray(SAFEARRAY* bytes, BSTR* text) {
  *text = nullptr;
  if (bytes == nullptr || bytes->cDims != 1) return E_INVALIDARG;
  *text = SysAllocStringByteLen(static_cast<LPCSTR>(bytes->pvData), bytes->rgsabound[0].cElements);
  return *text == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT ByteArrayOfText(BSTR text, SAFEARRAY** bytes) {
  const UINT length = SysStringByteLen(text);
  SAFEARRAYBOUND bound = {length, 0};
  *bytes = SafeArrayCreate(VT_UI1, 1, &bound);
  if (*bytes == nullptr) return E_OUTOFMEMORY;
  if (length != 0) memcpy((*bytes)->pvData, text, length);
  return S_OK;
}

}  // namespace mirolta::runtime
