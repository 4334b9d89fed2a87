// SPDX-License-Identifier: MIT
// How objects are created, and the thread's place in the object model.
#pragma once

#include <atomic>
#include <cstddef>

#ifdef _WIN32
  #include <string>
#endif

#include "object.hpp"

namespace mirolta {

// Apartment initialises the object model on the thread for its lifetime. This library needs none for
// its own objects; programs that use other components on Windows do, and there one that the thread
// has entered already, of either kind, serves as well.
class Apartment {
 public:
  enum class Threads { kMany, kOne };

  explicit Apartment(Threads threads = Threads::kMany) noexcept
      : status_(CoInitializeEx(
            nullptr, threads == Threads::kOne ? COINIT_APARTMENTTHREADED : COINIT_MULTITHREADED)) {}
  Apartment(const Apartment&) = delete;
  Apartment& operator=(const Apartment&) = delete;
  ~Apartment() {
    if (!detail::IsFailure(status_)) CoUninitialize();
  }

  // S_OK, S_FALSE if it was initialised before, or a failure: RPC_E_CHANGED_MODE if that was of the
  // other kind.
  HRESULT Number() const noexcept { return status_; }

 private:
  HRESULT status_;
};

namespace detail {

using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, LPVOID*);

#ifdef _WIN32
// The module beside the program's file; null if there is none.
inline GetClassObject LoadModule() {
  std::wstring file(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, &file[0], static_cast<DWORD>(file.size()));
    if (length == 0 || file.size() > 0x8000) return nullptr;
    if (length < file.size()) {
      file.resize(length);
      break;
    }
    file.resize(2 * file.size());
  }
  file.resize(file.find_last_of(L'\\') + 1);
  file += L"Mirolta.dll";
  const HMODULE module = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (module == nullptr) return nullptr;
  // Through a plain address: the look-up returns another function type.
  return reinterpret_cast<GetClassObject>(
      reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
}

// The module stays loaded.
inline GetClassObject OwnModule() {
  static std::atomic<GetClassObject> module{nullptr};
  GetClassObject entry = module.load();
  if (entry == nullptr) module.store(entry = LoadModule());
  return entry;
}
#else
inline GetClassObject OwnModule() noexcept {
  return &DllGetClassObject;
}
#endif

// Whether an object has come from the program's own module. All further ones do then.
inline std::atomic<bool>& UsesOwnModule() noexcept {
  static std::atomic<bool> uses{false};
  return uses;
}

inline HRESULT CreateFromOwnModule(REFCLSID id, REFIID iid, void** out) {
  const GetClassObject get_class_object = OwnModule();
  if (get_class_object == nullptr) return REGDB_E_CLASSNOTREG;
  void* found = nullptr;
  HRESULT status = get_class_object(id, IdOf<IClassFactory>::value, &found);
  if (IsFailure(status)) return status;
  auto* const factory = static_cast<IClassFactory*>(found);
  status = factory->CreateInstance(nullptr, iid, out);
  factory->Release();
  return status;
}

}  // namespace detail

// CreateObject creates an object of a class: of the registered module, or, if the class is not
// registered or its module cannot be loaded, of the module that the program is linked with
// (Mirolta.dll in the program's folder on Windows).
// Errors: those of CoCreateInstance; E_NOINTERFACE
template <typename Interface>
Result<Object<Interface>> TryCreateObject(REFCLSID id) {
  const IID& iid = IdOf<Interface>::value;
  void* object = nullptr;
  HRESULT status = REGDB_E_CLASSNOTREG;
  if (!detail::UsesOwnModule().load()) {
    status = CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, iid, &object);
  }
  if (detail::IsFailure(status) && status != E_NOINTERFACE) {
    const HRESULT own = detail::CreateFromOwnModule(id, iid, &object);
    if (!detail::IsFailure(own)) detail::UsesOwnModule().store(true);
    if (!detail::IsFailure(own) || status == REGDB_E_CLASSNOTREG) status = own;
  }
  if (detail::IsFailure(status)) return Error(status);
  return Object<Interface>::Attach(static_cast<Interface*>(object));
}
template <typename Interface>
Object<Interface> CreateObject(REFCLSID id) {
  return TryCreateObject<Interface>(id).Value();
}

}  // namespace mirolta
