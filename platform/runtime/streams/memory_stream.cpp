#include <algorithm>
#include <cstring>
#include <mutex>

#include "heap/reference_count.h"
#include "heap/runtime_array.h"
#include "mirolta/bool.h"
#include "streams/stream_base.h"

namespace mirolta::runtime {
namespace {

// The bytes that a stream shares with its clones, which other threads may use.
struct SharedBytes {
  ReferenceCount references;
  std::mutex lock;
  RuntimeArray<BYTE> bytes;

  static void Release(SharedBytes* shared) {
    if (shared->references.Remove() == 0) DeleteRuntime(shared);
  }
};

// A stream over memory. As on the platform, a read that reaches the end succeeds with fewer bytes,
// the position may lie beyond the end, and a write there fills the gap with zeros.
class MemoryStream final : public StreamBase {
 public:
  // Takes over one reference to `shared`.
  MemoryStream(SharedBytes* shared, ULONGLONG position) : shared_(shared), position_(position) {}

  HRESULT STDMETHODCALLTYPE Read(void* bytes, ULONG count, ULONG* read) override {
    if (read != nullptr) *read = 0;
    if (bytes == nullptr) return STG_E_INVALIDPOINTER;
    const std::lock_guard<std::mutex> lock(shared_->lock);
    const ULONG taken = static_cast<ULONG>(std::min<ULONGLONG>(count, BytesAhead()));
    if (taken != 0) std::memcpy(bytes, shared_->bytes.Data() + position_, taken);
    position_ += taken;
    if (read != nullptr) *read = taken;
    return S_OK;
  }

  // Writes all bytes, or none if memory is short.
  HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG count, ULONG* written) override {
    if (written != nullptr) *written = 0;
    if (bytes == nullptr) return STG_E_INVALIDPOINTER;
    if (count == 0) return S_OK;
    const std::lock_guard<std::mutex> lock(shared_->lock);
    if (position_ > SIZE_MAX - count) return E_OUTOFMEMORY;
    const size_t end = static_cast<size_t>(position_) + count;
    if (end > shared_->bytes.Size() && !shared_->bytes.Resize(end)) return E_OUTOFMEMORY;
    std::memcpy(shared_->bytes.Data() + position_, bytes, count);
    position_ = end;
    if (written != nullptr) *written = count;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                 ULARGE_INTEGER* position) override {
    const std::lock_guard<std::mutex> lock(shared_->lock);
    HRESULT status = S_OK;
    ULONGLONG from = 0;
    if (origin == STREAM_SEEK_CUR) {
      from = position_;
    } else if (origin == STREAM_SEEK_END) {
      from = shared_->bytes.Size();
    } else if (origin != STREAM_SEEK_SET) {
      status = STG_E_SEEKERROR;
    }
    const ULONGLONG to = from + static_cast<ULONGLONG>(move.QuadPart);
    // Positions are 0..2^63-1, so every wrong result, below 0 or above, has the top bit.
    if (to >> 63 != 0) status = STG_E_SEEKERROR;
    if (SUCCEEDED(status)) position_ = to;
    if (position != nullptr) position->QuadPart = position_;
    return status;
  }

  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override {
    const std::lock_guard<std::mutex> lock(shared_->lock);
    if (size.QuadPart > SIZE_MAX) return E_OUTOFMEMORY;
    return shared_->bytes.Resize(static_cast<size_t>(size.QuadPart)) ? S_OK : E_OUTOFMEMORY;
  }

  HRESULT STDMETHODCALLTYPE Stat(STATSTG* statistics, DWORD flags) override {
    const HRESULT status = BeginStat(statistics, flags);
    if (FAILED(status)) return status;
    const std::lock_guard<std::mutex> lock(shared_->lock);
    statistics->type = STGTY_STREAM;  // without a name
    statistics->cbSize.QuadPart = shared_->bytes.Size();
    statistics->grfMode = STGM_READWRITE;
    return S_OK;
  }

  // The clone shares the bytes and starts at the same position.
  HRESULT STDMETHODCALLTYPE Clone(IStream** out) override {
    if (out == nullptr) return STG_E_INVALIDPOINTER;
    const std::lock_guard<std::mutex> lock(shared_->lock);
    *out = NewRuntime<MemoryStream>(shared_, position_);
    if (*out == nullptr) return E_OUTOFMEMORY;
    shared_->references.Add();
    return S_OK;
  }

 private:
  ~MemoryStream() { SharedBytes::Release(shared_); }
  void Destroy() override {
    this->~MemoryStream();
    FreeRuntime(this);
  }
  ULONGLONG CopyLimit() override {
    const std::lock_guard<std::mutex> lock(shared_->lock);
    return BytesAhead();
  }
  ULONGLONG BytesAhead() const {
    const size_t size = shared_->bytes.Size();
    return position_ < size ? size - position_ : 0;
  }

  SharedBytes* const shared_;
  ULONGLONG position_;  // under the shared lock
};

}  // namespace
}  // namespace mirolta::runtime

using namespace mirolta::runtime;

extern "C" HRESULT CreateStreamOnHGlobal(HGLOBAL memory, BOOL, IStream** out) {
  if (out == nullptr) return E_INVALIDARG;
  *out = nullptr;
  if (memory != nullptr) return E_INVALIDARG;
  SharedBytes* shared = NewRuntime<SharedBytes>();
  if (shared == nullptr) return E_OUTOFMEMORY;
  *out = NewRuntime<MemoryStream>(shared, 0u);
  if (*out == nullptr) {
    SharedBytes::Release(shared);
    return E_OUTOFMEMORY;
  }
  return S_OK;
}
