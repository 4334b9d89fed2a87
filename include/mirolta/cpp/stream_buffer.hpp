// SPDX-License-Identifier: MIT
// Streams of the language over automation streams (IStream).
#pragma once

#include <istream>
#include <memory>
#include <ostream>
#include <streambuf>
#include <utility>
#include <vector>

#include "byte_span.hpp"
#include "object.hpp"

namespace mirolta {

// StreamBuffer is a stream buffer over an automation stream. An operation that fails throws an
// Error, for which a std::istream or std::ostream sets its badbit; the Error is kept. Its memory is
// wiped when it is destroyed, after what was not yet written has been.
class StreamBuffer : public std::streambuf {
 public:
  explicit StreamBuffer(Object<IStream> stream)
      : StreamBuffer(Result<Object<IStream>>(std::move(stream))) {}
  // Of a failure, every operation fails with it.
  explicit StreamBuffer(Result<Object<IStream>> stream)
      : stream_(stream ? *std::move(stream) : Object<IStream>()) {
    if (!stream) {
      failure_ = stream.Failure();
    } else if (!stream_) {
      failure_ = Error(E_POINTER);
    }
  }
  StreamBuffer(const StreamBuffer&) = delete;
  StreamBuffer& operator=(const StreamBuffer&) = delete;
  ~StreamBuffer() override {
    if (!HasFailed()) (void)TryFlush();
    detail::WipeBytes(get_area_.data(), get_area_.size());
    detail::WipeBytes(put_area_.data(), put_area_.size());
  }

  const Object<IStream>& Stream() const noexcept { return stream_; }
  // The first failure, after which every operation fails; the number is S_OK before.
  const Error& Failure() const noexcept { return failure_; }

  // Writes what is buffered.
  Result<void> TryFlush() {
    if (HasFailed()) return failure_;
    const char* next = pbase();
    while (next != pptr()) {
      const auto count = static_cast<ULONG>(pptr() - next);
      // Streams that set the count only if it was not zero exist.
      ULONG written = count;
      HRESULT status = stream_->Write(next, count, &written);
      if (!detail::IsFailure(status) && written == 0) status = STG_E_MEDIUMFULL;
      if (detail::IsFailure(status)) return Keep(status);
      next += written;
    }
    setp(put_area_.data(), put_area_.data() + put_area_.size());
    return {};
  }

 protected:
  // Reads at most `count` bytes; none at the end only.
  virtual HRESULT ReadSome(void* bytes, ULONG count, ULONG* read) {
    return stream_->Read(bytes, count, read);
  }

  int_type underflow() override {
    if (!TryFlush()) return Fail();
    get_area_.resize(kAreaSize);
    ULONG read = 0;
    const HRESULT status = ReadSome(get_area_.data(), static_cast<ULONG>(kAreaSize), &read);
    if (detail::IsFailure(status)) {
      (void)Keep(status);
      return Fail();
    }
    setg(get_area_.data(), get_area_.data(), get_area_.data() + read);
    return read == 0 ? traits_type::eof() : traits_type::to_int_type(get_area_[0]);
  }

  int_type overflow(int_type next) override {
    put_area_.resize(kAreaSize);
    if (!TryFlush()) return Fail();
    setp(put_area_.data(), put_area_.data() + put_area_.size());
    if (!traits_type::eq_int_type(next, traits_type::eof())) sputc(traits_type::to_char_type(next));
    return traits_type::not_eof(next);
  }

  int sync() override {
    if (TryFlush()) return 0;
    (void)Fail();
    return -1;
  }

  pos_type seekoff(off_type move, std::ios_base::seekdir direction,
                   std::ios_base::openmode) override {
    if (!TryFlush()) {
      (void)Fail();
      return pos_type(off_type(-1));
    }
    const bool is_query = direction == std::ios_base::cur && move == 0;
    const auto ahead = static_cast<off_type>(egptr() - gptr());
    LARGE_INTEGER distance = {};
    distance.QuadPart = direction == std::ios_base::cur && !is_query ? move - ahead : move;
    ULARGE_INTEGER position = {};
    const HRESULT status = stream_->Seek(distance,
                                         direction == std::ios_base::beg   ? STREAM_SEEK_SET
                                         : direction == std::ios_base::cur ? STREAM_SEEK_CUR
                                                                           : STREAM_SEEK_END,
                                         &position);
    if (detail::IsFailure(status)) return pos_type(off_type(-1));
    const auto at = static_cast<off_type>(position.QuadPart);
    if (is_query) return pos_type(at - ahead);
    setg(nullptr, nullptr, nullptr);
    return pos_type(at);
  }
  pos_type seekpos(pos_type position, std::ios_base::openmode which) override {
    return seekoff(off_type(position), std::ios_base::beg, which);
  }

 private:
  static constexpr std::size_t kAreaSize = 16384;

  bool HasFailed() const noexcept { return failure_.Number() != S_OK; }
  Error Keep(HRESULT status) {
    failure_ = Error(status);
    return failure_;
  }
  // A program without exceptions sees the end of the file, and Failure().
  int_type Fail() const {
#if MIROLTA_HAS_EXCEPTIONS
    throw failure_;
#else
    return traits_type::eof();
#endif
  }

  Object<IStream> stream_;
  Error failure_{S_OK};
  std::vector<char> get_area_;
  std::vector<char> put_area_;
};

// InputStream reads from an automation stream.
class InputStream : public std::istream {
 public:
  explicit InputStream(Object<IStream> stream)
      : InputStream(std::make_unique<StreamBuffer>(std::move(stream))) {}

  // The failure that set the badbit; its number is S_OK if there was none.
  const Error& Failure() const noexcept { return buffer_->Failure(); }

 protected:
  explicit InputStream(std::unique_ptr<StreamBuffer> buffer)
      : std::istream(nullptr), buffer_(std::move(buffer)) {
    rdbuf(buffer_.get());
    if (Failure().Number() != S_OK) setstate(std::ios_base::badbit);
  }

 private:
  std::unique_ptr<StreamBuffer> buffer_;
};

// OutputStream writes to an automation stream, at the latest when it is destroyed.
class OutputStream : public std::ostream {
 public:
  explicit OutputStream(Object<IStream> stream)
      : OutputStream(Result<Object<IStream>>(std::move(stream))) {}

  // The failure that set the badbit; its number is S_OK if there was none.
  const Error& Failure() const noexcept { return buffer_->Failure(); }

 protected:
  explicit OutputStream(Result<Object<IStream>> stream)
      : std::ostream(nullptr), buffer_(std::make_unique<StreamBuffer>(std::move(stream))) {
    rdbuf(buffer_.get());
    if (Failure().Number() != S_OK) setstate(std::ios_base::badbit);
  }

  StreamBuffer& Buffer() noexcept { return *buffer_; }

 private:
  std::unique_ptr<StreamBuffer> buffer_;
};

}  // namespace mirolta
