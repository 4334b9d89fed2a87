// The owner of a reference to an interface.
#pragma once

#include "system_headers.h"

namespace mirolta {

// OwnedReference owns one reference to an interface.
template <typename Interface>
class OwnedReference {
 public:
  OwnedReference() noexcept = default;
  ~OwnedReference() { Reset(); }
  OwnedReference(const OwnedReference&) = delete;
  OwnedReference& operator=(const OwnedReference&) = delete;
  OwnedReference(OwnedReference&& other) noexcept : pointer_(other.Detach()) {}
  OwnedReference& operator=(OwnedReference&& other) noexcept {
    if (this != &other) Attach(other.Detach());
    return *this;
  }

  Interface* Get() const noexcept { return pointer_; }
  Interface* operator->() const noexcept { return pointer_; }
  explicit operator bool() const noexcept { return pointer_ != nullptr; }

  // Reset releases the reference. The owner is already empty when Release runs, which may re-enter.
  void Reset() noexcept { Attach(nullptr); }
  // Attach takes ownership of the caller's reference.
  void Attach(Interface* pointer) noexcept {
    Interface* const old = pointer_;
    pointer_ = pointer;
    if (old != nullptr) old->Release();
  }
  // Assign adds a reference.
  void Assign(Interface* pointer) noexcept {
    if (pointer != nullptr) pointer->AddRef();
    Attach(pointer);
  }
  Interface* Detach() noexcept {
    Interface* const pointer = pointer_;
    pointer_ = nullptr;
    return pointer;
  }
  // Put releases the reference and returns the address of the pointer, for an out-pointer.
  Interface** Put() noexcept {
    Reset();
    return &pointer_;
  }
  // Query queries an object for Interface; on failure the owner is empty.
  HRESULT Query(IUnknown* object, REFIID iid) noexcept {
    void* found = nullptr;
    const HRESULT status = object->QueryInterface(iid, &found);
    Attach(SUCCEEDED(status) ? static_cast<Interface*>(found) : nullptr);
    return status;
  }

 private:
  Interface* pointer_ = nullptr;
};

}  // namespace mirolta
