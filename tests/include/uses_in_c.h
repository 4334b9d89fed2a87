// What a C program does with mirolta.h, for header_matrix.py. Every compiler must accept it without a
// warning.
#pragma once

_Static_assert(sizeof(VARIANT) == 8 + 2 * sizeof(void*), "the platform's layout");
_Static_assert(sizeof(LONG) == 4 && sizeof(OLECHAR) == 2 && sizeof(VARIANT_BOOL) == 2,
               "its widths");
_Static_assert(offsetof(IHashObjectVtbl, ResetKey) == 20 * sizeof(void*), "the slots of the docs");

static HRESULT DigestOfAbc(BSTR* digest) {
  IHashObject* hash = NULL;
  HRESULT status = CoCreateInstance(&CLSID_HashObject, NULL, CLSCTX_INPROC_SERVER, &IID_IHashObject,
                                    (void**)&hash);
  if (FAILED(status)) return status;
  BSTR name = SysAllocString(OLESTR("SHA256"));
  status = IHashObject_InitHash(hash, name);
  SysFreeString(name);
  VARIANT data;
  VariantInit(&data);
  V_VT(&data) = VT_BSTR;
  V_BSTR(&data) = SysAllocString(OLESTR("abc"));
  if (status == S_OK) status = hash->lpVtbl->HashData(hash, data, -1);
  VariantClear(&data);
  if (status == S_OK) status = IHashObject_get_Value(hash, digest);
  IUnknown_Release((IUnknown*)hash);
  return status;
}

int main(void) {
  BSTR digest = NULL;
  const HRESULT status = DigestOfAbc(&digest);
  SysFreeString(digest);
  switch (status) {
    case S_OK:
      return 0;
    case E_OUTOFMEMORY:
      return 2;
    default:
      return IsEqualGUID(&CLSID_HashObject, &IID_IHashObject) ? 3 : 1;
  }
}
