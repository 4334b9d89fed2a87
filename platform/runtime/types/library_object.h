// The common base of ITypeLib and ITypeInfo objects.
#pragma once

#include "heap/allocation.h"
#include "portable/system.h"
#include "types/type_objects.h"

namespace mirolta::runtime {

// LibraryObject implements IUnknown for an object with one interface over a copied library, to
// which it owns a reference. Derived classes add only trivially destructible members.
template <typename Interface, const IID& kIid>
class LibraryObject : public Interface {
 public:
  HRESULT QueryInterface(REFIID iid, void** out) final {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (iid != IID_IUnknown && iid != kIid) return E_NOINTERFACE;
    AddRef();
    *out = static_cast<Interface*>(this);
    return S_OK;
  }
  ULONG AddRef() final { return static_cast<ULONG>(InterlockedIncrement(&references_)); }
  ULONG Release() final {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) {
      ReleaseReference(library_);
      FreeRuntime(this);
    }
    return static_cast<ULONG>(left);
  }

 protected:
  // Takes over the caller's reference to the library.
  explicit LibraryObject(CopiedLibrary* library) : library_(library) {}
  ~LibraryObject() = default;

  CopiedLibrary* const library_;

 private:
  LONG volatile references_ = 1;
};

}  // namespace mirolta::runtime
