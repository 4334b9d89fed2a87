#include "tovi_stream_crypt.h"

#include <cstring>

namespace mirolta {

namespace {

TypeInfoHolder type_info(IID_IToviStreamCrypt);

}  // namespace

constexpr ClassDescription kToviStreamCryptClass = {&CLSID_ToviStreamCrypt, &type_info};

HRESULT CreateToviStreamCrypt(IUnknown* outer, REFIID iid, void** out) {
  return CreateObject<ToviStreamCrypt>(outer, iid, out);
}

HRESULT ToviStreamCrypt::GetDecrypt(const CipherDirection& direction, VARIANT_BOOL* value) {
  return PlainFrame(value, [&] { return Store(value, direction.Decrypts()); });
}

HRESULT ToviStreamCrypt::GetPadType(const CipherDirection& direction, LONG* value) {
  if (value == nullptr) return E_POINTER;
  return Store(value, direction.PadType());
}

HRESULT ToviStreamCrypt::PutPadType(CipherDirection& direction, LONG value) {
  return direction.SetPadType(value) ? S_OK : Raise(kMessageNotInitialized);
}

// Whatever changes reading ends its draining.
HRESULT ToviStreamCrypt::PrepareChange(const CipherDirection& direction) {
  if (IsInStreamOperation()) return E_UNEXPECTED;
  if (&direction == &read_) read_draining_ = false;
  return S_OK;
}

HRESULT ToviStreamCrypt::Reset(CipherDirection& direction) {
  return ChangeDirection(direction, [&] {
    direction.Reset();
    return S_OK;
  });
}

HRESULT ToviStreamCrypt::ResetKey(CipherDirection& direction) {
  return ChangeDirection(direction, [&] {
    direction.ResetKey();
    return S_OK;
  });
}

HRESULT ToviStreamCrypt::PutDecrypt(CipherDirection& direction, VARIANT_BOOL value) {
  return ChangeDirection(direction, [&] {
    direction.SetDecrypts(value);
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE ToviStreamCrypt::ReadReset() {
  return Reset(read_);
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::WriteReset() {
  return Reset(write_);
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::ReadResetKey() {
  return ResetKey(read_);
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::WriteResetKey() {
  return ResetKey(write_);
}

HRESULT STDMETHODCALLTYPE ToviStreamCrypt::ReadFinalize() {
  return WhenIdle([&]() -> HRESULT {
    if (read_.Engine() == nullptr) return S_OK;
    const HRESULT status = read_.Finish();
    if (FAILED(status)) return status;
    read_draining_ = true;
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE ToviStreamCrypt::WriteFinalize() {
  return StreamOperation([&](IStream* target) -> HRESULT {
    if (target == nullptr) return STG_E_CANTSAVE;
    if (write_.Engine() == nullptr) return S_OK;
    const HRESULT status = write_.Finish();
    return FAILED(status) ? status : SendQueue(write_.Out(), target);
  });
}

HRESULT STDMETHODCALLTYPE ToviStreamCrypt::get_WriteDecrypt(VARIANT_BOOL* value) {
  return GetDecrypt(write_, value);
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::put_WriteDecrypt(VARIANT_BOOL value) {
  return PutDecrypt(write_, value);
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::get_ReadDecrypt(VARIANT_BOOL* value) {
  return GetDecrypt(read_, value);
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::put_ReadDecrypt(VARIANT_BOOL value) {
  return PutDecrypt(read_, value);
}

// Without the lock: a finalize that holds it may be waiting for a slow stream.
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::get_ReadPadType(LONG* value) {
  return GetPadType(read_, value);
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::put_ReadPadType(LONG value) {
  return PutPadType(read_, value);
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::get_WritePadType(LONG* value) {
  return GetPadType(write_, value);
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::put_WritePadType(LONG value) {
  return PutPadType(write_, value);
}

namespace {

// Reads into memory of its own: the caller must not see what a failing stream has written.
HRESULT ReadPlain(IStream* target, void* bytes, ULONG count, ULONG* moved) {
  PassedBytes taken;
  const HRESULT status = taken.Fill(target, count);
  if (FAILED(status)) return status;
  if (taken.Count() != 0) std::memcpy(bytes, taken.Data(), taken.Count());
  *moved = taken.Count();
  return status;
}

}  // namespace

// Passes up to count bytes into the engine, unless draining, and takes up to count bytes from its
// output queue. If the stream has no bytes its status is returned, whatever is still queued.
HRESULT ToviStreamCrypt::ReadThroughEngine(IStream* target, uint8_t* bytes, ULONG count,
                                           ULONG* moved) {
  if (!read_draining_) {
    PassedBytes taken;
    HRESULT status = taken.Fill(target, count);
    if (FAILED(status) || taken.Count() == 0) return status;
    status = read_.Update(taken.Data(), taken.Count());
    if (FAILED(status)) return status;
  }
  *moved = read_.Out().Take(bytes, count);
  if (*moved == 0) read_draining_ = false;
  return S_OK;
}

HRESULT STDMETHODCALLTYPE ToviStreamCrypt::Read(void* bytes, ULONG count, ULONG* read) {
  if (bytes == nullptr) return E_POINTER;
  return StreamOperation([&](IStream* target) -> HRESULT {
    ULONG moved = 0;
    HRESULT status = count != 0 ? S_FALSE : S_OK;
    if (target != nullptr) {
      if (read_.Engine() == nullptr) {
        status = ReadPlain(target, bytes, count, &moved);
      } else if (read_.LacksKey()) {
        status = E_UNEXPECTED;
      } else {
        status = ReadThroughEngine(target, static_cast<uint8_t*>(bytes), count, &moved);
      }
    }
    if (read != nullptr) *read = moved;
    return status;
  });
}

HRESULT STDMETHODCALLTYPE ToviStreamCrypt::Write(const void* bytes, ULONG count, ULONG* written) {
  if (bytes == nullptr) return E_POINTER;
  return StreamOperation([&](IStream* target) -> HRESULT {
    if (count == 0) {
      if (written != nullptr) *written = 0;
      return S_OK;
    }
    if (target == nullptr) return STG_E_CANTSAVE;
    if (write_.Engine() == nullptr) return target->Write(bytes, count, written);
    if (write_.LacksKey()) return E_UNEXPECTED;
    const HRESULT status = write_.Update(static_cast<const uint8_t*>(bytes), count);
    if (FAILED(status)) return status;
    // All bytes count, those of an incomplete block too.
    if (written != nullptr) *written = count;
    return SendQueue(write_.Out(), target);
  });
}

// The bytes written are counted as the engine takes them, not as the stream receives them.
HRESULT ToviStreamCrypt::CopyThroughEngine(IStream* target, IStream* to, ULONGLONG count,
                                           CopyTotals* totals) {
  read_.Reset();
  HRESULT status = CopyPieces(target, count, totals,
                              [&](const uint8_t* piece, ULONG length, ULONG* put) -> HRESULT {
                                const HRESULT updated = read_.Update(piece, length);
                                if (FAILED(updated)) return updated;
                                *put = length;
                                return SendQueue(read_.Out(), to);
                              });
  if (SUCCEEDED(status)) status = read_.Finish();
  return FAILED(status) ? status : SendQueue(read_.Out(), to);
}

HRESULT ToviStreamCrypt::Copy(IStream* target, IStream* to, ULONGLONG count, CopyTotals* totals) {
  if (read_.LacksKey()) return E_UNEXPECTED;
  if (read_.Engine() != nullptr) return CopyThroughEngine(target, to, count, totals);
  return CopyPieces(target, count, totals, [&](const uint8_t* piece, ULONG length, ULONG* put) {
    return WriteTo(to, piece, length, put);
  });
}

}  // namespace mirolta
