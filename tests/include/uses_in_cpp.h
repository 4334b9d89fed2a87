// What a C++ program does with mirolta.h, for header_matrix.py. Every compiler must accept it without a
// warning.
#pragma once

static_assert(sizeof(VARIANT) == 8 + 2 * sizeof(void*), "the platform's layout");
static_assert(sizeof(LONG) == 4 && sizeof(OLECHAR) == 2 && sizeof(VARIANT_BOOL) == 2, "its widths");
static_assert(&mirolta::IdOf<IHashObject>::value == &IID_IHashObject, "each its own identifier");
static_assert(&mirolta::IdOf<IToviStreamSource>::value == &IID_IToviStreamSource, "each its own");

template <typename Interface>
HRESULT Create(REFCLSID id, Interface** out) {
  return CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, mirolta::IdOf<Interface>::value,
                          reinterpret_cast<void**>(out));
}

inline HRESULT DigestOfAbc(BSTR* digest) {
  IHashObject* hash = nullptr;
  HRESULT status = Create(CLSID_HashObject, &hash);
  if (FAILED(status)) return status;
  IDispatch* late = nullptr;
  status = hash->QueryInterface(mirolta::IdOf<IDispatch>::value, reinterpret_cast<void**>(&late));
  if (SUCCEEDED(status)) late->Release();
  IStream* stream = nullptr;
  status = hash->QueryInterface(IID_PPV_ARGS(&stream));
  if (status != E_NOINTERFACE) return E_UNEXPECTED;
  const BSTR name = SysAllocString(OLESTR("SHA256"));
  status = hash->InitHash(name);
  SysFreeString(name);
  VARIANT data;
  VariantInit(&data);
  V_VT(&data) = VT_BSTR;
  V_BSTR(&data) = SysAllocString(OLESTR("abc"));
  if (status == S_OK) status = hash->HashData(data, -1);
  VariantClear(&data);
  if (status == S_OK) status = hash->get_Value(digest);
  hash->Release();
  return status;
}

// A class that implements one of the interfaces.
struct NoStream final : IToviStreamSource {
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = iid == IID_IUnknown ? this : nullptr;
    return *out != nullptr ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE GetStream(IStream** stream) override {
    *stream = nullptr;
    return E_NOTIMPL;
  }
};

int main() {
  BSTR digest = nullptr;
  NoStream source;
  IStream* stream = nullptr;
  const HRESULT status = DigestOfAbc(&digest);
  SysFreeString(digest);
  return status == S_OK && source.GetStream(&stream) == E_NOTIMPL ? 0 : 1;
}
