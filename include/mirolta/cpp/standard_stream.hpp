// SPDX-License-Identifier: MIT
// Automation streams (IStream) over the language's streams.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <istream>
#include <new>
#include <ostream>
#include <streambuf>

#include "object.hpp"

namespace mirolta {
namespace detail {

// StandardStream reads from one stream buffer and writes to another, or the same. Exceptions of the
// buffers become statuses.
class StandardStream final : public IStream {
 public:
  // Shapes: either may be null; both outlive the object
  StandardStream(std::streambuf* in, std::streambuf* out) noexcept : in_(in), out_(out) {}
  StandardStream(const StandardStream&) = delete;
  StandardStream& operator=(const StandardStream&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) noexcept override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (!(iid == IdOf<IUnknown>::value) && !(iid == IdOf<ISequentialStream>::value) &&
        !(iid == IdOf<IStream>::value)) {
      return E_NOINTERFACE;
    }
    AddRef();
    *out = static_cast<IStream*>(this);
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() noexcept override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  HRESULT STDMETHODCALLTYPE Read(void* bytes, ULONG count, ULONG* read) noexcept override {
    if (read != nullptr) *read = 0;
    if (bytes == nullptr) return STG_E_INVALIDPOINTER;
    if (in_ == nullptr) return STG_E_ACCESSDENIED;
    return Guarded(STG_E_READFAULT, [&] {
      // Some buffers return less than there is.
      std::streamsize total = 0;
      std::streamsize got = -1;
      while (got != 0 && total < Size(count)) {
        got = in_->sgetn(static_cast<char*>(bytes) + total, Size(count) - total);
        total += got;
      }
      if (read != nullptr) *read = static_cast<ULONG>(total);
      return total < Size(count) ? S_FALSE : S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG count,
                                  ULONG* written) noexcept override {
    if (written != nullptr) *written = 0;
    if (bytes == nullptr) return STG_E_INVALIDPOINTER;
    if (out_ == nullptr) return STG_E_ACCESSDENIED;
    return Guarded(STG_E_WRITEFAULT, [&] {
      const std::streamsize put = out_->sputn(static_cast<const char*>(bytes), Size(count));
      if (written != nullptr) *written = static_cast<ULONG>(put);
      return put < Size(count) ? STG_E_MEDIUMFULL : S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                 ULARGE_INTEGER* position) noexcept override {
    if (origin > STREAM_SEEK_END) return STG_E_INVALIDFUNCTION;
    return Guarded(STG_E_SEEKERROR, [&] {
      std::streambuf* const first = in_ != nullptr ? in_ : out_;
      const std::ios_base::openmode side = in_ != nullptr ? std::ios_base::in : std::ios_base::out;
      std::streamoff target = first->pubseekoff(static_cast<std::streamoff>(move.QuadPart),
                                                origin == STREAM_SEEK_SET   ? std::ios_base::beg
                                                : origin == STREAM_SEEK_CUR ? std::ios_base::cur
                                                                            : std::ios_base::end,
                                                side);
      const bool is_query = origin == STREAM_SEEK_CUR && move.QuadPart == 0;
      if (target >= 0 && in_ != nullptr && out_ != nullptr && !is_query) {
        target = out_->pubseekoff(target, std::ios_base::beg, std::ios_base::out);
      }
      if (target < 0) return STG_E_SEEKERROR;
      if (position != nullptr) position->QuadPart = static_cast<std::uint64_t>(target);
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE CopyTo(IStream* to, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                                   ULARGE_INTEGER* written) noexcept override {
    std::uint64_t total_read = 0;
    std::uint64_t total_written = 0;
    HRESULT status = to == nullptr ? STG_E_INVALIDPOINTER : S_OK;
    while (!IsFailure(status) && total_read < count.QuadPart) {
      std::uint8_t piece[4096];
      const auto wanted =
          static_cast<ULONG>((std::min<std::uint64_t>)(count.QuadPart - total_read, sizeof piece));
      ULONG got = 0;
      status = Read(piece, wanted, &got);
      if (IsFailure(status) || got == 0) break;
      total_read += got;
      ULONG put = 0;
      status = to->Write(piece, got, &put);
      total_written += put;
    }
    if (read != nullptr) read->QuadPart = total_read;
    if (written != nullptr) written->QuadPart = total_written;
    return IsFailure(status) ? status : S_OK;
  }
  // Commit flushes the buffer that is written to.
  HRESULT STDMETHODCALLTYPE Commit(DWORD) noexcept override {
    if (out_ == nullptr) return S_OK;
    return Guarded(STG_E_WRITEFAULT,
                   [&] { return out_->pubsync() == -1 ? STG_E_WRITEFAULT : S_OK; });
  }
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) noexcept override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Revert() noexcept override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) noexcept override {
    return STG_E_INVALIDFUNCTION;
  }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) noexcept override {
    return STG_E_INVALIDFUNCTION;
  }
  HRESULT STDMETHODCALLTYPE Stat(STATSTG*, DWORD) noexcept override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Clone(IStream** out) noexcept override {
    if (out != nullptr) *out = nullptr;
    return E_NOTIMPL;
  }

 private:
  ~StandardStream() = default;

  static std::streamsize Size(ULONG count) noexcept { return static_cast<std::streamsize>(count); }

  template <typename Work>
  static HRESULT Guarded(HRESULT failure, Work work) noexcept {
#if MIROLTA_HAS_EXCEPTIONS
    try {
      return work();
    } catch (...) {
      return failure;
    }
#else
    (void)failure;
    return work();
#endif
  }

  std::streambuf* in_;
  std::streambuf* out_;
  std::atomic<ULONG> references_{1};
};

inline Result<Object<IStream>> WrapBuffers(std::streambuf* in, std::streambuf* out) {
  auto* const stream = new (std::nothrow) StandardStream(in, out);
  if (stream == nullptr) return Error(E_OUTOFMEMORY);
  return Object<IStream>::Attach(stream);
}

}  // namespace detail

// WrapStream makes an automation stream over a stream of the language, which must outlive it: for
// reading, for writing or for both. What is used is the stream's buffer; its state does not change.
// Shapes: binary streams
// Errors: E_OUTOFMEMORY
inline Result<Object<IStream>> TryWrapStream(std::istream& stream) {
  return detail::WrapBuffers(stream.rdbuf(), nullptr);
}
inline Result<Object<IStream>> TryWrapStream(std::ostream& stream) {
  return detail::WrapBuffers(nullptr, stream.rdbuf());
}
inline Result<Object<IStream>> TryWrapStream(std::iostream& stream) {
  return detail::WrapBuffers(stream.rdbuf(), stream.rdbuf());
}
template <typename Stream>
Object<IStream> WrapStream(Stream& stream) {
  return TryWrapStream(stream).Value();
}

}  // namespace mirolta
