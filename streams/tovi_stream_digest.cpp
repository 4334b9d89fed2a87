#include "tovi_stream_digest.h"

#include "digest_result.h"

namespace mirolta {

namespace {

TypeInfoHolder type_info(IID_IToviStreamDigest);

}  // namespace

constexpr ClassDescription kToviStreamDigestClass = {&CLSID_ToviStreamDigest, &type_info};

HRESULT CreateToviStreamDigest(IUnknown* outer, REFIID iid, void** out) {
  return CreateObject<ToviStreamDigest>(outer, iid, out);
}

HRESULT ToviStreamDigest::GetText(const DigestDirection& direction, BSTR* value) {
  // A null value is an error only if there is a digest to return.
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
// Without the lock: a caller can switch the digest of a long transfer off while it runs.
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
    // The stream's S_FALSE at its end is replaced by the status of the digest.
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

HRESULT ToviStreamDigest::Copy(IStream* target, IStream* to, ULONGLONG count, CopyTotals* totals) {
  return CopyPieces(target, count, totals,
                    [&](const uint8_t* piece, ULONG length, ULONG* put) -> HRESULT {
                      if (read_.IsDigesting()) {
                        const HRESULT status = read_.Update(piece, length);
                        if (FAILED(status)) return status;
                      }
                      return WriteTo(to, piece, length, put);
                    });
}

}  // namespace mirolta
