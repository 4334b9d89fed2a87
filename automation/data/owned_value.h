// Owners of automation values and texts.
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

}  // namespace mirolta
