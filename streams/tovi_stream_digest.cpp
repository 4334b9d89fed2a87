#include "tovi_stream_digest.h"

#include "digest_result.h"
#include "key_conversion.h"
#include "messages.h"
#include "stream_transfer.h"

namespace mirolta {

namespace {

TypeInfoHolder type_info(IID_IToviStreamDigest);

}  // namespace

constexpr ClassDescription kToviStreamDigestClass = {&CLSID_ToviStreamDigest, &type_info};

HRESULT CreateToviStreamDigest(IUnknown* outer, REFIID iid, void** out) {
  return CreateObject<ToviStreamDigest>(outer, iid, out);
}

template <typename Work>
HRESULT ToviStreamDigest::WithEngine(const DigestDirection& direction, Work work) {
  HashEngine* const engine = direction.Engine();
  return engine != nullptr ? work(*engine) : Raise(kMessageNotInitialized);
}

HRESULT ToviStreamDigest::GetAlgorithm(const DigestDirection& direction, BSTR* name) {
  return PlainFrame(name, [&] { return direction.GetName(name); });
}

HRESULT ToviStreamDigest::PutAlgorithm(DigestDirection& direction, BSTR name) {
  return Frame(
      [&] { return direction.SetAlgorithm(name) ? S_OK : Raise(kMessageAlgorithmNotFound); });
}

HRESULT ToviStreamDigest::GetKey(const DigestDirection& direction, VARIANT* key) {
  return Frame(key, [&] {
    return WithEngine(direction, [&](HashEngine& engine) { return engine.GetKey(key); });
  });
}

HRESULT ToviStreamDigest::PutKey(const DigestDirection& direction, const VARIANT& key) {
  return Frame([&] {
    return WithEngine(direction, [&](HashEngine& before) {
      const PlainKey plain(before, key, code_page());
      return WithEngine(direction, [&](HashEngine& engine) { return plain.GiveTo(engine); });
    });
  });
}

HRESULT ToviStreamDigest::GetText(const DigestDirection& direction, BSTR* value) {
  // The result's place is looked at only when there is a digest to put there.
  return Frame([&] { return DigestToText(direction.Engine(), value); });
}

HRESULT ToviStreamDigest::GetBinary(const DigestDirection& direction, VARIANT* value) {
  return Frame(value, [&] { return DigestToArray(direction.Engine(), value); });
}

HRESULT ToviStreamDigest::GetEnable(const DigestDirection& direction, VARIANT_BOOL* value) {
  return PlainFrame(value, [&] { return Store(value, direction.Enabled()); });
}

HRESULT ToviStreamDigest::Reset(const DigestDirection& direction) {
  return Frame(
      [&] { return WithEngine(direction, [](HashEngine& engine) { return engine.Start(); }); });
}

HRESULT ToviStreamDigest::ResetKey(const DigestDirection& direction) {
  return Frame(
      [&] { return WithEngine(direction, [](HashEngine& engine) { return engine.ResetKey(); }); });
}

HRESULT ToviStreamDigest::Finalize(const DigestDirection& direction) {
  return Frame(
      [&] { return WithEngine(direction, [](HashEngine& engine) { return engine.Finish(); }); });
}

HRESULT STDMETHODCALLTYPE ToviStreamDigest::get_ReadAlgorithm(BSTR* name) {
  return GetAlgorithm(read_, name);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::put_ReadAlgorithm(BSTR name) {
  return PutAlgorithm(read_, name);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::get_WriteAlgorithm(BSTR* name) {
  return GetAlgorithm(write_, name);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::put_WriteAlgorithm(BSTR name) {
  return PutAlgorithm(write_, name);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::get_WriteKey(VARIANT* key) {
  return GetKey(write_, key);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::put_WriteKey(VARIANT key) {
  return PutKey(write_, key);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::get_ReadKey(VARIANT* key) {
  return GetKey(read_, key);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::put_ReadKey(VARIANT key) {
  return PutKey(read_, key);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::get_ReadValue(BSTR* value) {
  return GetText(read_, value);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::get_WriteValue(BSTR* value) {
  return GetText(write_, value);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::ReadReset() {
  return Reset(read_);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::WriteReset() {
  return Reset(write_);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::get_WriteHashEnable(VARIANT_BOOL* value) {
  return GetEnable(write_, value);
}
// The switches are set without the lock, so that a long transfer does not hold up the caller who
// switches its digest off.
HRESULT STDMETHODCALLTYPE ToviStreamDigest::put_WriteHashEnable(VARIANT_BOOL value) {
  write_.Enable(value);
  return S_OK;
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::get_ReadHashEnable(VARIANT_BOOL* value) {
  return GetEnable(read_, value);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::put_ReadHashEnable(VARIANT_BOOL value) {
  read_.Enable(value);
  return S_OK;
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::WriteResetKey() {
  return ResetKey(write_);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::ReadResetKey() {
  return ResetKey(read_);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::WriteFinalize() {
  return Finalize(write_);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::ReadFinalize() {
  return Finalize(read_);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::get_ReadBinaryValue(VARIANT* value) {
  return GetBinary(read_, value);
}
HRESULT STDMETHODCALLTYPE ToviStreamDigest::get_WriteBinaryValue(VARIANT* value) {
  return GetBinary(write_, value);
}

HRESULT STDMETHODCALLTYPE ToviStreamDigest::Read(void* bytes, ULONG count, ULONG* read) {
  if (bytes == nullptr) return E_POINTER;
  return StreamOperation([&](IStream* target) -> HRESULT {
    ULONG got = 0;
    HRESULT status = count != 0 ? S_FALSE : S_OK;
    if (target != nullptr) status = ReadFrom(target, bytes, count, &got);
    if (read != nullptr) *read = got;
    if (FAILED(status) || got == 0 || !read_.IsDigesting()) return status;
    // Digested bytes are a success whatever the stream says of its end: its S_FALSE is dropped.
    return read_.Update(bytes, got);
  });
}

HRESULT STDMETHODCALLTYPE ToviStreamDigest::Write(const void* bytes, ULONG count, ULONG* written) {
  if (bytes == nullptr) return E_POINTER;
  return StreamOperation([&](IStream* target) -> HRESULT {
    if (target == nullptr) {
      if (!write_.IsDigesting()) return S_OK;
      const HRESULT status = write_.Update(bytes, count);
      if (FAILED(status)) return status;
      // A counter that was 0 stays 0; callers rely on it.
      if (written != nullptr && *written != 0) *written = count;
      return S_OK;
    }
    ULONG put = 0;
    const HRESULT status = WriteTo(target, bytes, count, &put);
    if (written != nullptr) *written = put;
    if (FAILED(status) || put == 0 || !write_.IsDigesting()) return status;
    return write_.Update(bytes, put);
  });
}

HRESULT STDMETHODCALLTYPE ToviStreamDigest::CopyTo(IStream* to, ULARGE_INTEGER count,
                                                   ULARGE_INTEGER* read, ULARGE_INTEGER* written) {
  return StreamOperation([&](IStream* target) -> HRESULT {
    if (target == nullptr) return STG_E_REVERTED;
    if (to == nullptr) return STG_E_INVALIDPOINTER;
    CopyTotals totals;
    const HRESULT status =
        CopyPieces(target, count.QuadPart, &totals,
                   [&](const uint8_t* piece, ULONG length, ULONG* put) -> HRESULT {
                     if (read_.IsDigesting()) {
                       const HRESULT digested = read_.Update(piece, length);
                       if (FAILED(digested)) return digested;
                     }
                     return WriteTo(to, piece, length, put);
                   });
    if (FAILED(status)) return status;
    totals.Report(read, written);
    return S_OK;
  }, StackUse::kMedium);
}

}  // namespace mirolta
