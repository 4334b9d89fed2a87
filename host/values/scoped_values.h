// Owners of automation values for the host. The host links the platform only and holds no secrets
// of its own, so its VARIANT is cleared; OwnedVariant, which the module uses, also wipes.
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

// A counted reference.
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

  // Where a callee puts a reference that this owner then holds.
  Interface** Out() {
    Reset();
    return &pointer_;
  }
  // Takes over the reference that a callee put into a place of no type.
  void Take(void* pointer) { *Out() = static_cast<Interface*>(pointer); }
  // Adds a reference of its own.
  void Share(Interface* pointer) {
    if (pointer != nullptr) pointer->AddRef();
    Reset();
    pointer_ = pointer;
  }
  Interface* Release() { return std::exchange(pointer_, nullptr); }
  void Reset() {
    Interface* old = std::exchange(pointer_, nullptr);
    if (old != nullptr) old->Release();
  }

 private:
  Interface* pointer_ = nullptr;
};

}  // namespace mirolta::host
