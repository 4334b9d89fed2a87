// A program of a user of libmirolta-dev: a digest by a registered class.
#include <mirolta.h>

#include <cstdio>

int main() {
  if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) return 1;
  CLSID id;
  IUnknown* object = nullptr;
  HRESULT status = CLSIDFromProgID(u"Vardeko.crypt.HashObject", &id);
  if (SUCCEEDED(status)) {
    status = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                              reinterpret_cast<void**>(&object));
  }
  if (FAILED(status)) return 2;
  object->Release();
  CoUninitialize();
  std::puts("created");
  return 0;
}
