// ToviStreamDigest: a stream filter that computes digests.
#pragma once

#include "digest_direction.h"
#include "stream_filter.h"

namespace mirolta {

extern const ClassDescription kToviStreamDigestClass;

// Reading (Read and CopyTo) and writing have separate digests, each with its own algorithm, key and
// switch. Without an algorithm the members of a direction raise "Not initialized.", except the
// name, which is empty, and the digest readers, which return the success status 10104 and leave
// their result unset. Without a bound stream, Write only updates the digest.
class ToviStreamDigest final
    : public StreamFilter<kToviStreamDigestClass, IToviStreamDigest, DigestDirection> {
 public:
  explicit ToviStreamDigest(IUnknown* outer) : StreamFilter(outer) {}

  HRESULT STDMETHODCALLTYPE get_ReadValue(BSTR* value) override;
  HRESULT STDMETHODCALLTYPE get_WriteValue(BSTR* value) override;
  HRESULT STDMETHODCALLTYPE ReadReset() override;
  HRESULT STDMETHODCALLTYPE WriteReset() override;
  HRESULT STDMETHODCALLTYPE get_WriteHashEnable(VARIANT_BOOL* value) override;
  HRESULT STDMETHODCALLTYPE put_WriteHashEnable(VARIANT_BOOL value) override;
  HRESULT STDMETHODCALLTYPE get_ReadHashEnable(VARIANT_BOOL* value) override;
  HRESULT STDMETHODCALLTYPE put_ReadHashEnable(VARIANT_BOOL value) override;
  HRESULT STDMETHODCALLTYPE WriteResetKey() override;
  HRESULT STDMETHODCALLTYPE ReadResetKey() override;
  HRESULT STDMETHODCALLTYPE WriteFinalize() override;
  HRESULT STDMETHODCALLTYPE ReadFinalize() override;
  HRESULT STDMETHODCALLTYPE get_ReadBinaryValue(VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE get_WriteBinaryValue(VARIANT* value) override;

  HRESULT STDMETHODCALLTYPE Read(void* bytes, ULONG count, ULONG* read) override;
  HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG count, ULONG* written) override;

 private:
  HRESULT Copy(IStream* target, IStream* to, ULONGLONG count, CopyTotals* totals) override;

  // The members, for either direction.
  HRESULT GetText(const DigestDirection& direction, BSTR* value);
  HRESULT GetBinary(const DigestDirection& direction, VARIANT* value);
  HRESULT GetEnable(const DigestDirection& direction, VARIANT_BOOL* value);
  HRESULT Reset(const DigestDirection& direction);
  HRESULT ResetKey(const DigestDirection& direction);
  HRESULT Finalize(const DigestDirection& direction);
};

// The class's instance creator; outer is the object that aggregates the new one, or null.
HRESULT CreateToviStreamDigest(IUnknown* outer, REFIID iid, void** out);

}  // namespace mirolta
