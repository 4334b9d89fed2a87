// Owners of automation values, texts and interface references.
#pragma once

#include "platform.h"

namespace mirolta {

// WipeAndClear empties *value; the text or byte array that it owns is wiped before it is freed.
void WipeAndClear(VARIANT* value) noexcept;

// WipeAndFreeText wipes and frees text, which may be null.
void WipeAndFreeText(BSTR text) noexcept;

// OwnedVariant owns a VARIANT, wiped and cleared by the destructor.
class OwnedVariant {
 public:
  OwnedVariant() noexcept { VariantInit(&value_); }
  ~OwnedVariant() { WipeAndClear(&value_); }
  OwnedVariant(const OwnedVariant&) = delete;
  OwnedVariant& operator=(const OwnedVariant&) = delete;

  VARIANT* Get() noexcept { return &value_; }
  const VARIANT& Value() const noexcept { return value_; }
  VARTYPE Type() const noexcept { return V_VT(&value_); }

  // Put clears the value and returns its address, for an out-pointer.
  VARIANT* Put() noexcept {
    WipeAndClear(&value_);
    return &value_;
  }
  // MoveTo moves the value to *out, whose old content is overwritten, not cleared.
  void MoveTo(VARIANT* out) noexcept {
    *out = value_;
    VariantInit(&value_);
  }

 private:
  VARIANT value_;
};

// OwnedBstr owns a BSTR, wiped and freed by the destructor.
class OwnedBstr {
 public:
  OwnedBstr() noexcept = default;
  explicit OwnedBstr(BSTR text) noexcept : text_(text) {}
  ~OwnedBstr() { WipeAndFreeText(text_); }
  OwnedBstr(const OwnedBstr&) = delete;
  OwnedBstr& operator=(const OwnedBstr&) = delete;

  BSTR Get() const noexcept { return text_; }
  BSTR* Put() noexcept {
    WipeAndFreeText(text_);
    text_ = nullptr;
    return &text_;
  }
  BSTR Detach() noexcept {
    BSTR text = text_;
    text_ = nullptr;
    return text;
  }

 private:
  BSTR text_ = nullptr;
};

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

  // Reset releases the reference. The owner is already empty when Release runs, which may call it.
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
