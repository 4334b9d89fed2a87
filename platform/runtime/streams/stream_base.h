// The common base of memory and file streams: reference count, identity, copying, and operations
// that do nothing.
#pragma once

#include "heap/reference_count.h"
#include "mirolta/stream.h"
#include "mirolta/system.h"

namespace mirolta::runtime {

class StreamBase : public IStream {
 public:
  StreamBase() = default;
  StreamBase(const StreamBase&) = delete;
  StreamBase& operator=(const StreamBase&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override;
  ULONG STDMETHODCALLTYPE Release() override;

  // CopyTo stops at the end of this stream. What was copied before a failure stays copied and is
  // counted.
  // Errors: those of reading and writing; STG_E_MEDIUMFULL if `to` takes less than it is given.
  HRESULT STDMETHODCALLTYPE CopyTo(IStream* to, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                                   ULARGE_INTEGER* written) override;
  HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return S_OK; }  // nothing is buffered
  HRESULT STDMETHODCALLTYPE Revert() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return STG_E_INVALIDFUNCTION;
  }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return STG_E_INVALIDFUNCTION;
  }

 protected:
  ~StreamBase() = default;
  // Checks the arguments of Stat and zeroes *statistics.
  // Errors: STG_E_INVALIDPOINTER, STG_E_INVALIDFLAG.
  static HRESULT BeginStat(STATSTG* statistics, DWORD flags);
  // Destroys the object and frees its memory.
  virtual void Destroy() = 0;
  // The most bytes that a copy may read: a stream that is copied to its own clone grows meanwhile.
  virtual ULONGLONG CopyLimit() = 0;

 private:
  ReferenceCount references_;
};

}  // namespace mirolta::runtime
