// ToviStreamCrypt: a stream filter that encrypts or decrypts.
#pragma once

#include "cipher_direction.h"
#include "stream_filter.h"

namespace mirolta {

extern const ClassDescription kToviStreamCryptClass;

// Reading and writing each have their own algorithm, key, operation and pad setting; initially
// reading decrypts and writing encrypts. Each block is transformed independently (ECB), a last
// partial block only by a finalize, and nothing is authenticated. A direction without an algorithm
// passes bytes unchanged; one with an algorithm but no key moves none (E_UNEXPECTED).
//
// The bound stream reads directly from the engine's queue, so members that change an engine return
// E_UNEXPECTED if it calls them from inside a stream operation.
class ToviStreamCrypt final
    : public StreamFilter<kToviStreamCryptClass, IToviStreamCrypt, CipherDirection> {
 public:
  explicit ToviStreamCrypt(IUnknown* outer) : StreamFilter(outer) { read_.SetDecrypts(1); }

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

 private:
  HRESULT PrepareChange(const CipherDirection& direction) override;
  HRESULT Copy(IStream* target, IStream* to, ULONGLONG count, CopyTotals* totals) override;

  // The members, for either direction.
  HRESULT Reset(CipherDirection& direction);
  HRESULT ResetKey(CipherDirection& direction);
  HRESULT GetDecrypt(const CipherDirection& direction, VARIANT_BOOL* value);
  HRESULT PutDecrypt(CipherDirection& direction, VARIANT_BOOL value);
  static HRESULT GetPadType(const CipherDirection& direction, LONG* value);
  static HRESULT PutPadType(CipherDirection& direction, LONG value);

  HRESULT ReadThroughEngine(IStream* target, uint8_t* bytes, ULONG count, ULONG* moved);
  HRESULT CopyThroughEngine(IStream* target, IStream* to, ULONGLONG count, CopyTotals* totals);

  // Set by ReadFinalize: Read then only empties the engine's output queue. Never set without an
  // engine.
  bool read_draining_ = false;
};

// The class's instance creator; outer is the object that aggregates the new one, or null.
HRESULT CreateToviStreamCrypt(IUnknown* outer, REFIID iid, void** out);

}  // namespace mirolta
