// The module and its objects, as callers use them.
#pragma once

#include <vector>

#include "array_bytes.h"
#include "bench_bytes.h"
#include "mirolta.h"
#include "owned_value.h"
#include "platform.h"

namespace mirolta::bench {

// CreateFromModule creates an object of the built module, which stays loaded.
template <typename Interface>
std::shared_ptr<Interface> CreateFromModule(REFCLSID id, REFIID iid) {
  using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, LPVOID*);
  static const GetClassObject get_class_object = [] {
    OLECHAR file[1024] = {};
    MultiByteToWideChar(CP_UTF8, 0, MIROLTA_MODULE, -1, file, 1024);
    const HMODULE module = LoadLibraryW(file);
    return reinterpret_cast<GetClassObject>(
        reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
  }();
  OwnedReference<IClassFactory> factory;
  Interface* object = nullptr;
  if (SUCCEEDED(get_class_object(id, IID_IClassFactory, reinterpret_cast<void**>(factory.Put())))) {
    (void)factory->CreateInstance(nullptr, iid, reinterpret_cast<void**>(&object));
  }
  return std::shared_ptr<Interface>(object, [](Interface* held) {
    if (held != nullptr) held->Release();
  });
}

inline std::shared_ptr<IHashObject> NewHashObject(const OLECHAR* algorithm) {
  auto object = CreateFromModule<IHashObject>(CLSID_HashObject, IID_IHashObject);
  const OwnedBstr name(SysAllocString(algorithm));
  (void)object->InitHash(name.Get());
  return object;
}

// The pieces of ByteOperands of that length, each as a byte array.
using ArrayOperands = std::shared_ptr<std::vector<OwnedVariant>>;
inline ArrayOperands Arrays(const ByteOperands& pieces, size_t count) {
  const auto arrays = std::make_shared<std::vector<OwnedVariant>>(count);
  for (size_t i = 0; i < count; ++i) {
    (void)BytesToVariant(pieces.at(i), static_cast<uint32_t>(pieces.Length()), (*arrays)[i].Put());
  }
  return arrays;
}

inline std::string TextOf(const VARIANT& value) {
  if (V_VT(&value) != kByteArrayType) return "value of another type";
  ByteString bytes;
  if (FAILED(SafeArrayToBytes(V_ARRAY(&value), &bytes))) return "";
  return std::string(bytes.Data(), bytes.Data() + bytes.Count());
}

}  // namespace mirolta::bench
