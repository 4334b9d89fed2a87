// SymmetricCryptObject: AES and DES for scripts.
#pragma once

#include <memory>

#include "cipher_operation.h"
#include "cipher_engine.h"
#include "dispatch_object.h"
#include "mirolta.h"
#include "pad_setting.h"

namespace mirolta {

extern const ClassDescription kSymmetricCryptClass;

// SymmetricCryptObject holds at most one engine. Without one every member but Init and codePage
// raises "Not initialized."; so do Encrypt and Decrypt without a key. All members but PadType hold
// the object's lock.
class SymmetricCryptObject final
    : public DispatchObject<kSymmetricCryptClass, ISymmetricCryptObject> {
 public:
  explicit SymmetricCryptObject(IUnknown* outer) : DispatchObject(outer) {}

  HRESULT STDMETHODCALLTYPE get_Key(VARIANT* key) override;
  HRESULT STDMETHODCALLTYPE put_Key(VARIANT key) override;
  HRESULT STDMETHODCALLTYPE get_BlockSize(LONG* size) override;
  HRESULT STDMETHODCALLTYPE get_codePage(LONG* code_page) override;
  HRESULT STDMETHODCALLTYPE put_codePage(LONG code_page) override;
  HRESULT STDMETHODCALLTYPE Encrypt(VARIANT vData, VARIANT_BOOL bFinalize,
                                    VARIANT* pvResult) override;
  HRESULT STDMETHODCALLTYPE Decrypt(VARIANT vData, VARIANT_BOOL bFinalize,
                                    VARIANT* pvResult) override;
  HRESULT STDMETHODCALLTYPE Reset(LONG lWhat) override;
  HRESULT STDMETHODCALLTYPE ResetKey() override;
  HRESULT STDMETHODCALLTYPE Init(VARIANT vAlg) override;
  HRESULT STDMETHODCALLTYPE get_PadType(LONG* pad_type) override;
  HRESULT STDMETHODCALLTYPE put_PadType(LONG pad_type) override;

 private:
  void DropEngine();
  template <typename Work>
  HRESULT WithEngine(Work work);
  HRESULT Transform(const CipherOperation& operation, const VARIANT& data, bool finalize,
                    VARIANT* result);

  std::unique_ptr<CipherEngine> engine_;
  PadSetting pad_;
  LONG code_page_ = 0;
};

// The class's instance creator; outer is the object that aggregates the new one, or null.
HRESULT CreateSymmetricCryptObject(IUnknown* outer, REFIID iid, void** out);

}  // namespace mirolta
