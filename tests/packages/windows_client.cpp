// A program as a user of the archive for developers writes it: early-bound, without registration. The
// import library has the module's entry point.
#include <mirolta.h>
#include <stdio.h>

int main() {
  if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) return 2;
  IClassFactory* factory = nullptr;
  IHashObject* hash = nullptr;
  HRESULT status =
      DllGetClassObject(CLSID_HashObject, IID_IClassFactory, reinterpret_cast<void**>(&factory));
  if (SUCCEEDED(status)) {
    status = factory->CreateInstance(nullptr, IID_IHashObject, reinterpret_cast<void**>(&hash));
    factory->Release();
  }
  if (SUCCEEDED(status)) {
    const BSTR name = SysAllocString(L"SHA256");
    VARIANT data;
    VariantInit(&data);
    data.vt = VT_BSTR;
    data.bstrVal = SysAllocString(L"abc");
    BSTR text = nullptr;
    status = hash->InitHash(name);
    if (SUCCEEDED(status)) status = hash->HashData(data, -1);
    if (SUCCEEDED(status)) status = hash->get_Value(&text);
    if (SUCCEEDED(status)) printf("%ls\n", text);
    SysFreeString(text);
    VariantClear(&data);
    SysFreeString(name);
    hash->Release();
  }
  CoUninitialize();
  if (FAILED(status)) printf("status %08lX\n", static_cast<unsigned long>(status));
  return 0;
}
