// What the runtime's own streams share: counting, identity, and the operations that neither a
// memory nor a file stream has anything to do for.
#pragma once

#include "portable/stream.h"
#include "portable/system.h"

namespace mirolta::runtime {

class StreamBase : public IStream {
 public:
  StreamBase() = default;
  StreamBase(const StreamBase&) = delete;
  StreamBase& operator=(const StreamBase&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;

  // CopyTo stops at the end of this stream or when `to` takes less than it is given, which is
  // STG_E_MEDIUMFULL. What was copied until a failure stays copied and is counted.
  HRESULT STDMETHODCALLTYPE CopyTo(IStream* to, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                                   ULARGE_INTEGER* written) override;
  HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return S_OK; }  // nothing is held back
  HRESULT STDMETHODCALLTYPE Revert() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return STG_E_INVALIDFUNCTION;
  }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return STG_E_INVALIDFUNCTION;
  }

 protected:
  ~StreamBase() = default;
  // Ends the object and gives its memory back.
  virtual void Destroy() = 0;
  // At most how many bytes a copy that starts now may take: a stream that is copied to a clone of
  // itself grows while it is read.
  virtual ULONGLONG CopyLimit() = 0;

 private:
  LONG volatile references_ = 1;
};

}  // namespace mirolta::runtime
