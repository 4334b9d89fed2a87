// Owners of automation values and references. The host links the platform only, so it cannot use
// the module's owned_value.h, whose OwnedVariant also wipes: the host keeps no secrets of its own.
#pragma once

#include <utility>

#include "platform.h"

namespace mirolta::host {

// A VARIANT that is cleared at the end of its scope.
struct ScopedVariant : VARIANT {
  ScopedVariant() { VariantInit(this); }
  ScopedVariant(const ScopedVariant&) = delete;
  ScopedVariant& operator=(const ScopedVariant&) = delete;
  ~ScopedVariant() { VariantClear(this); }
};

// Owns one counted reference; its operations are those of the module's OwnedReference.
template <typename Interface>
class Reference {
 public:
  Reference() = default;
  Reference(const Reference&) = delete;
  Reference& operator=(const Reference&) = delete;
  ~Reference() { Reset(); }

  Interface* Get() const { return pointer_; }
  Interface* operator->() const { return pointer_; }
  explicit operator bool() const { return pointer_ != nullptr; }

  // Reset releases the reference. The owner is empty before Release runs, which may re-enter.
  void Reset() { Attach(nullptr); }
  // Attach takes ownership of the caller's reference.
  void Attach(Interface* pointer) {
    Interface* const old = std::exchange(pointer_, pointer);
    if (old != nullptr) old->Release();
  }
  // Assign adds a reference of its own.
  void Assign(Interface* pointer) {
    if (pointer != nullptr) pointer->AddRef();
    Attach(pointer);
  }
  // Detach gives the reference to the caller.
  Interface* Detach() { return std::exchange(pointer_, nullptr); }
  // Put empties the owner and returns the place for an out-pointer.
  Interface** Put() {
    Reset();
    return &pointer_;
  }
  // Query asks an object for Interface; the owner is empty after a failure.
  // Errors: the object's status.
  HRESULT Query(IUnknown* object, REFIID iid) {
    void* found = nullptr;
    const HRESULT status = object->QueryInterface(iid, &found);
    Attach(SUCCEEDED(status) ? static_cast<Interface*>(found) : nullptr);
    return status;
  }

 private:
  Interface* pointer_ = nullptr;
};

}  // namespace mirolta::host
