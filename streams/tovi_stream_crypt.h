// ToviStreamCrypt: a stream that encrypts or decrypts what passes through it.
#pragma once

#include "cipher_direction.h"
#include "stream_filter.h"

namespace mirolta {

struct CopyTotals;

extern const ClassDescription kToviStreamCryptClass;

// Reading and writing each have their own algorithm, key, operation and pad setting; at first
// reading decrypts and writing encrypts. Blocks are transformed each by itself, a last partial
// block only by a finalize, and nothing is authenticated. A direction without an algorithm passes
// bytes as they are; one with an algorithm but no key moves none (E_UNEXPECTED).
//
// A bound stream is handed bytes where they are queued, so members that change an engine return
// E_UNEXPECTED when it calls them from inside a stream operation.
class ToviStreamCrypt final : public StreamFilter<kToviStreamCryptClass, IToviStreamCrypt> {
 public:
  explicit ToviStreamCrypt(IUnknown* outer) : StreamFilter(outer) {}

  HRESULT STDMETHODCALLTYPE get_ReadAlgorithm(BSTR* name) override;
  HRESULT STDMETHODCALLTYPE put_ReadAlgorithm(BSTR name) override;
  HRESULT STDMETHODCALLTYPE get_WriteAlgorithm(BSTR* name) override;
  HRESULT STDMETHODCALLTYPE put_WriteAlgorithm(BSTR name) override;
  HRESULT STDMETHODCALLTYPE get_ReadKey(VARIANT* key) override;
  HRESULT STDMETHODCALLTYPE put_ReadKey(VARIANT key) override;
  HRESULT STDMETHODCALLTYPE get_WriteKey(VARIANT* key) override;
  HRESULT STDMETHODCALLTYPE put_WriteKey(VARIANT key) override;
  HRESULT STDMETHODCALLTYPE ReadReset() override;
  HRESULT STDMETHODCALLTYPE WriteReset() override;
  HRESULT STDMETHODCALLTYPE ReadResetKey() override;
  HRESULT STDMETHODCALLTYPE WriteResetKey() override;
  HRESULT STDMETHODCALLTYPE ReadFinalize() override;
  HRESULT STDMETHODCALLTYPE WriteFinalize() override;
  HRESULT STDMETHODCALLTYPE get_WriteDecrypt(VARIANT_BOOL* value) override;
  HRESULT STDMETHODCALLTYPE put_WriteDecrypt(VARIANT_BOOL value) override;
  HRESULT STDMETHODCALLTYPE get_ReadDecrypt(VARIANT_BOOL* value) override;
  HRESULT STDMETHODCALLTYPE put_ReadDecrypt(VARIANT_BOOL value) override;
  HRESULT STDMETHODCALLTYPE get_ReadPadType(LONG* value) override;
  HRESULT STDMETHODCALLTYPE put_ReadPadType(LONG value) override;
  HRESULT STDMETHODCALLTYPE get_WritePadType(LONG* value) override;
  HRESULT STDMETHODCALLTYPE put_WritePadType(LONG value) override;

  HRESULT STDMETHODCALLTYPE Read(void* bytes, ULONG count, ULONG* read) override;
  HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG count, ULONG* written) override;
  HRESULT STDMETHODCALLTYPE CopyTo(IStream* to, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                                   ULARGE_INTEGER* written) override;

 private:
  // The members, for either direction. The first two run under the lock already.
  HRESULT ChooseAlgorithm(CipherDirection& direction, BSTR name);
  HRESULT ChooseKey(const CipherDirection& direction, const VARIANT& key);
  HRESULT GetAlgorithm(const CipherDirection& direction, BSTR* name);
  HRESULT GetKey(const CipherDirection& direction, VARIANT* key);
  HRESULT GetDecrypt(const CipherDirection& direction, VARIANT_BOOL* value);
  static HRESULT GetPadType(const CipherDirection& direction, LONG* value);
  static HRESULT PutPadType(CipherDirection& direction, LONG value);

  // ChangeReading runs work when no stream operation is on the way, with draining ended.
  template <typename Work>
  HRESULT ChangeReading(Work work);
  HRESULT ReadThroughEngine(IStream* target, uint8_t* bytes, ULONG count, ULONG* moved);
  HRESULT CopyThroughEngine(IStream* target, IStream* to, ULONGLONG count, CopyTotals* totals);

  CipherDirection read_{1};
  CipherDirection write_{VARIANT_FALSE};
  // Set by ReadFinalize: reading only hands out what the engine still holds. Never without one.
  bool read_draining_ = false;
};

// The class's instance creator; outer is the object that aggregates the new one, or null.
HRESULT CreateToviStreamCrypt(IUnknown* outer, REFIID iid, void** out);

}  // namespace mirolta
