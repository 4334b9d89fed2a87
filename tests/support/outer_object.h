// An outer object that aggregates.
#pragma once

#include <vector>

#include "owned_value.h"
#include "platform.h"

namespace mirolta::test {

// OuterObject lives on the stack and counts its references. It answers for IUnknown and an
// interface of its own, and offers the interfaces of its inner object, if it holds one.
class OuterObject final : public IUnknown {
 public:
  static constexpr IID kInterface = {0xA1B2C3D4, 5, 6, {7, 8, 9, 10, 11, 12, 13, 14}};

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    asked.push_back(iid);
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (iid != IID_IUnknown && iid != kInterface) {
      return inner ? inner->QueryInterface(iid, out) : E_NOINTERFACE;
    }
    *out = static_cast<IUnknown*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }

  OwnedReference<IUnknown> inner;
  ULONG references = 1;
  std::vector<IID> asked;  // by QueryInterface, in order
};

}  // namespace mirolta::test
