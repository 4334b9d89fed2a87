// The common base of ITypeLib and ITypeInfo objects.
#pragma once

#include "heap/allocation.h"
#include "heap/reference_count.h"
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
  ULONG AddRef() final { return references_.Add(); }
  ULONG Release() final {
    const ULONG left = references_.Remove();
    if (left == 0) {
      ReleaseReference(library_);
      FreeRuntime(this);
    }
    return left;
  }

 protected:
  // Takes over the caller's reference to the library.
  explicit LibraryObject(CopiedLibrary* library) : library_(library) {}
  ~LibraryObject() = default;

  CopiedLibrary* const library_;

 private:
  ReferenceCount references_;
};

}  // namespace mirolta::runtime
