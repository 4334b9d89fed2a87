#include "streams/stream_base.h"

#include <algorithm>

#include "seam/memory.h"
#include "seam/wiped_work.h"

namespace mirolta::runtime {

HRESULT STDMETHODCALLTYPE StreamBase::QueryInterface(REFIID iid, void** out) {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  if (iid != IID_IUnknown && iid != IID_ISequentialStream && iid != IID_IStream) {
    return E_NOINTERFACE;
  }
  *out = static_cast<IStream*>(this);
  AddRef();
  return S_OK;
}

ULONG STDMETHODCALLTYPE StreamBase::AddRef() {
  return references_.Add();
}

ULONG STDMETHODCALLTYPE StreamBase::Release() {
  const ULONG left = references_.Remove();
  if (left == 0) Destroy();
  return left;
}

HRESULT StreamBase::BeginStat(STATSTG* statistics, DWORD flags) {
  if (statistics == nullptr) return STG_E_INVALIDPOINTER;
  if (flags > STATFLAG_NONAME) return STG_E_INVALIDFLAG;
  *statistics = {};
  return S_OK;
}

HRESULT STDMETHODCALLTYPE StreamBase::CopyTo(IStream* to, ULARGE_INTEGER count,
                                             ULARGE_INTEGER* read, ULARGE_INTEGER* written) {
  ULONGLONG taken = 0;
  ULONGLONG given = 0;
  HRESULT status = to == nullptr ? STG_E_INVALIDPOINTER : S_OK;
  ULONGLONG left = std::min<ULONGLONG>(count.QuadPart, CopyLimit());
  BYTE block[16384];
  auto copy_block = [&]() -> HRESULT {
    const ULONG wanted = static_cast<ULONG>(std::min<ULONGLONG>(left, sizeof(block)));
    ULONG got = 0;
    status = Read(block, wanted, &got);
    taken += got;
    left -= got;
    if (got == 0) {
      left = 0;
      return status;
    }
    ULONG put = 0;
    const HRESULT write_status = to->Write(block, got, &put);
    given += put;
    if (FAILED(write_status)) {
      status = write_status;
    } else if (put < got) {
      status = STG_E_MEDIUMFULL;
    }
    return status;
  };
  // Copying leaves the bytes in registers.
  while (SUCCEEDED(status) && left != 0) (void)RunWiped(copy_block);
  WipeMemory(block, static_cast<size_t>(std::min<ULONGLONG>(taken, sizeof(block))));
  if (read != nullptr) read->QuadPart = taken;
  if (written != nullptr) written->QuadPart = given;
  return FAILED(status) ? status : S_OK;
}

}  // namespace mirolta::runtime
