// IUnknown for the host's own automation objects.
#pragma once

#include <atomic>

#include "platform.h"

namespace mirolta::host {

// CountedObject implements IUnknown for Derived, a final class that starts with one reference, has
// `static bool Implements(REFIID)` for its interfaces beside IUnknown, and makes this class its
// friend if its destructor is private. All its interfaces are reached by one pointer.
template <typename Derived, typename Interface>
class CountedObject : public Interface {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) final {
    if (out == nullptr) return E_POINTER;
    const bool known = iid == IID_IUnknown || Derived::Implements(iid);
    *out = known ? static_cast<Interface*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() final { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() final {
    const ULONG left = --references_;
    if (left == 0) delete static_cast<Derived*>(this);
    return left;
  }

 private:
  friend Derived;
  CountedObject() = default;
  ~CountedObject() = default;

  std::atomic<ULONG> references_{1};
};

}  // namespace mirolta::host
