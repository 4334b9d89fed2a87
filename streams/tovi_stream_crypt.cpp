#include "tovi_stream_crypt.h"

#include <cstring>

#include "key_conversion.h"
#include "messages.h"
#include "stream_transfer.h"

namespace mirolta {

namespace {

TypeInfoHolder type_info(IID_IToviStreamCrypt);

}  // namespace

constexpr ClassDescription kToviStreamCryptClass = {&CLSID_ToviStreamCrypt, &type_info};

HRESULT CreateToviStreamCrypt(IUnknown* outer, REFIID iid, void** out) {
  return CreateObject<ToviStreamCrypt>(outer, iid, out);
}

HRESULT ToviStreamCrypt::ChooseAlgorithm(CipherDirection& direction, BSTR name) {
  return direction.SetAlgorithm(name) ? S_OK : Raise(kMessageAlgorithmNotFound);
}

HRESULT ToviStreamCrypt::ChooseKey(const CipherDirection& direction, const VARIANT& key) {
  if (direction.Engine() == nullptr) return Raise(kMessageNotInitialized);
  const PlainKey plain(*direction.Engine(), key, code_page());
  if (direction.Engine() == nullptr) return Raise(kMessageNotInitialized);
  return plain.GiveTo(*direction.Engine());
}

HRESULT ToviStreamCrypt::GetAlgorithm(const CipherDirection& direction, BSTR* name) {
  return PlainFrame(name, [&] { return direction.GetName(name); });
}

HRESULT ToviStreamCrypt::GetKey(const CipherDirection& direction, VARIANT* key) {
  return Frame(key, [&] {
    return direction.Engine() != nullptr ? direction.Engine()->GetKey(key)
                                         : Raise(kMessageNotInitialized);
  });
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

template <typename Work>
HRESULT ToviStreamCrypt::ChangeReading(Work work) {
  return WhenIdle([&]() -> HRESULT {
    read_draining_ = false;
    return work();
  });
}

HRESULT STDMETHODCALLTYPE ToviStreamCrypt::get_ReadAlgorithm(BSTR* name) {
  return GetAlgorithm(read_, name);
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::put_ReadAlgorithm(BSTR name) {
  return ChangeReading([&] { return ChooseAlgorithm(read_, name); });
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::get_WriteAlgorithm(BSTR* name) {
  return GetAlgorithm(write_, name);
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::put_WriteAlgorithm(BSTR name) {
  return WhenIdle([&] { return ChooseAlgorithm(write_, name); });
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::get_ReadKey(VARIANT* key) {
  return GetKey(read_, key);
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::put_ReadKey(VARIANT key) {
  return ChangeReading([&] { return ChooseKey(read_, key); });
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::get_WriteKey(VARIANT* key) {
  return GetKey(write_, key);
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::put_WriteKey(VARIANT key) {
  return WhenIdle([&] { return ChooseKey(write_, key); });
}

HRESULT STDMETHODCALLTYPE ToviStreamCrypt::ReadReset() {
  return ChangeReading([&] {
    read_.Reset();
    return S_OK;
  });
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::WriteReset() {
  return WhenIdle([&] {
    write_.Reset();
    return S_OK;
  });
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::ReadResetKey() {
  return ChangeReading([&] {
    read_.ResetKey();
    return S_OK;
  });
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::WriteResetKey() {
  return WhenIdle([&] {
    write_.ResetKey();
    return S_OK;
  });
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
  return WhenIdle([&] {
    write_.SetDecrypts(value);
    return S_OK;
  });
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::get_ReadDecrypt(VARIANT_BOOL* value) {
  return GetDecrypt(read_, value);
}
HRESULT STDMETHODCALLTYPE ToviStreamCrypt::put_ReadDecrypt(VARIANT_BOOL value) {
  return ChangeReading([&] {
    read_.SetDecrypts(value);
    return S_OK;
  });
}

// The pad settings are used without the lock: a finalize may be waiting for a slow stream.
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

// By way of memory of its own: what a failing stream writes does not reach the caller.
HRESULT ReadPlain(IStream* target, void* bytes, ULONG count, ULONG* moved) {
  PassedBytes taken;
  const HRESULT status = taken.Fill(target, count);
  if (FAILED(status)) return status;
  if (taken.Count() != 0) std::memcpy(bytes, taken.Data(), taken.Count());
  *moved = taken.Count();
  return status;
}

}  // namespace

// Takes up to count bytes into the engine, unless draining, and hands out up to count bytes of what
// has come out of it. A stream without bytes gets its status returned, whatever is still queued.
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
    // All is accepted, also what waits for the rest of its block.
    if (written != nullptr) *written = count;
    return SendQueue(write_.Out(), target);
  });
}

// What was written counts the bytes that the engine took, not those that the stream received.
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

HRESULT STDMETHODCALLTYPE ToviStreamCrypt::CopyTo(IStream* to, ULARGE_INTEGER count,
                                                  ULARGE_INTEGER* read, ULARGE_INTEGER* written) {
  return StreamOperation([&](IStream* target) -> HRESULT {
    if (target == nullptr) return STG_E_REVERTED;
    if (to == nullptr) return STG_E_INVALIDPOINTER;
    if (read_.LacksKey()) return E_UNEXPECTED;
    CopyTotals totals;
    const HRESULT status = read_.Engine() != nullptr
                               ? CopyThroughEngine(target, to, count.QuadPart, &totals)
                               : CopyPieces(target, count.QuadPart, &totals,
                                            [&](const uint8_t* piece, ULONG length, ULONG* put) {
                                              return WriteTo(to, piece, length, put);
                                            });
    if (FAILED(status)) return status;
    totals.Report(read, written);
    return S_OK;
  }, StackUse::kMedium);
}

}  // namespace mirolta
