// HashObject: digests and HMAC for scripts.
#pragma once

#include <memory>

#include "dispatch_object.h"
#include "hash_engine.h"
#include "mirolta.h"

namespace mirolta {

extern const ClassDescription kHashObjectClass;

// HashObject holds at most one engine. Without one every member but InitHash and codePage raises
// "Not initialized.", except Value and BinaryValue: they return kBareNotInitialized and leave their
// result unset.
class HashObject final : public DispatchObject<kHashObjectClass, IHashObject> {
 public:
  explicit HashObject(IUnknown* outer) : DispatchObject(outer) {}

  HRESULT STDMETHODCALLTYPE get_Value(BSTR* value) override;
  HRESULT STDMETHODCALLTYPE get_HashSize(LONG* size) override;
  HRESULT STDMETHODCALLTYPE get_BlockSize(LONG* size) override;
  HRESULT STDMETHODCALLTYPE InitHash(BSTR bstrAlg) override;
  HRESULT STDMETHODCALLTYPE HashData(VARIANT vData, LONG lCP) override;
  HRESULT STDMETHODCALLTYPE get_BinaryValue(VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE HashUpdate(VARIANT vData, LONG lCP) override;
  HRESULT STDMETHODCALLTYPE HashFinalize() override;
  HRESULT STDMETHODCALLTYPE get_codePage(LONG* code_page) override;
  HRESULT STDMETHODCALLTYPE put_codePage(LONG code_page) override;
  HRESULT STDMETHODCALLTYPE get_Key(VARIANT* key) override;
  HRESULT STDMETHODCALLTYPE put_Key(VARIANT key) override;
  HRESULT STDMETHODCALLTYPE Reset() override;
  HRESULT STDMETHODCALLTYPE ResetKey() override;

 private:
  template <typename Work>
  HRESULT WithEngine(Work work);

  LONG CodePageFor(LONG argument) const { return argument == -1 ? code_page_ : argument; }

  std::unique_ptr<HashEngine> engine_;
  LONG code_page_ = 0;
};

// The class's instance creator; outer is the object that aggregates the new one, or null.
HRESULT CreateHashObject(IUnknown* outer, REFIID iid, void** out);

}  // namespace mirolta
