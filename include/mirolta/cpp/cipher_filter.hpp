// SPDX-License-Identifier: MIT
// The stream filter that encrypts and decrypts (ToviStreamCrypt).
#pragma once

#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <utility>

#include "arguments.hpp"
#include "cipher.hpp"
#include "create.hpp"
#include "filter_binding.hpp"
#include "filter_direction.hpp"
#include "stream_buffer.hpp"

namespace mirolta {

namespace detail {

struct CipherMembers : DirectionMembers<IToviStreamCrypt> {
  Member<VARIANT_BOOL*> get_decrypt;
  Member<VARIANT_BOOL> put_decrypt;
  Member<LONG> put_pad;
};

inline constexpr CipherMembers kReadingCipher = {
    {&IToviStreamCrypt::get_ReadAlgorithm, &IToviStreamCrypt::put_ReadAlgorithm,
     &IToviStreamCrypt::get_ReadKey, &IToviStreamCrypt::put_ReadKey,
     &IToviStreamCrypt::ReadResetKey, &IToviStreamCrypt::ReadReset,
     &IToviStreamCrypt::ReadFinalize},
    &IToviStreamCrypt::get_ReadDecrypt,
    &IToviStreamCrypt::put_ReadDecrypt,
    &IToviStreamCrypt::put_ReadPadType};
inline constexpr CipherMembers kWritingCipher = {
    {&IToviStreamCrypt::get_WriteAlgorithm, &IToviStreamCrypt::put_WriteAlgorithm,
     &IToviStreamCrypt::get_WriteKey, &IToviStreamCrypt::put_WriteKey,
     &IToviStreamCrypt::WriteResetKey, &IToviStreamCrypt::WriteReset,
     &IToviStreamCrypt::WriteFinalize},
    &IToviStreamCrypt::get_WriteDecrypt,
    &IToviStreamCrypt::put_WriteDecrypt,
    &IToviStreamCrypt::put_WritePadType};

}  // namespace detail

// One direction of a cipher filter. It refers to the filter, which it keeps alive.
class CipherDirection : private detail::FilterDirection<detail::CipherMembers> {
 public:
  // Chooses "AES" or "DES", without a key.
  // Errors: 0x80042777 "Algorithm not found.", after which the direction has none
  using FilterDirection::SetAlgorithm;
  using FilterDirection::TrySetAlgorithm;
  // The name; empty without one, when bytes pass unchanged.
  using FilterDirection::Algorithm;
  using FilterDirection::TryAlgorithm;

  // Replaces or discards the key, and pending data.
  // Errors: E_INVALIDARG for a key of another length, after which there is none; 0x80042778 "Not
  //         initialized."
  using FilterDirection::ClearKey;
  using FilterDirection::Key;
  using FilterDirection::SetKey;
  using FilterDirection::TryClearKey;
  using FilterDirection::TryKey;
  using FilterDirection::TrySetKey;

  // Whether the direction decrypts; initially reading does, and writing encrypts.
  Result<void> TrySetDecrypting(bool decrypting) {
    return detail::Call(filter_.Get(), members_->put_decrypt, detail::ToBoolean(decrypting));
  }
  void SetDecrypting(bool decrypting) { TrySetDecrypting(decrypting).Value(); }
  Result<bool> TryIsDecrypting() const {
    return detail::GetBoolean(filter_, members_->get_decrypt);
  }
  bool IsDecrypting() const { return TryIsDecrypting().Value(); }

  // Errors: 0x80042778 "Not initialized." without an algorithm
  Result<void> TrySetPad(Pad pad) {
    return detail::Call(filter_.Get(), members_->put_pad, LONG{pad.Type()});
  }
  void SetPad(Pad pad) { TrySetPad(pad).Value(); }

  // Discards pending data.
  using FilterDirection::Reset;
  using FilterDirection::TryReset;

  // Ends the data: pads an incomplete block. Writing writes it; reading returns it next.
  // Errors: those of the underlying stream; 0x80030103 for writing without one
  Result<void> TryFinish() { return detail::Call(filter_.Get(), members_->finalize); }
  void Finish() { TryFinish().Value(); }

 private:
  friend class CipherFilter;

  CipherDirection(Object<IToviStreamCrypt> filter, const detail::CipherMembers& members) noexcept
      : FilterDirection(std::move(filter), members) {}
};

// CipherFilter encrypts or decrypts what is read from and written to an underlying stream.
class CipherFilter : public detail::FilterBinding<IToviStreamCrypt> {
 public:
  CipherFilter() : CipherFilter(TryCreate().Value()) {}

  static Result<CipherFilter> TryCreate() {
    Result<Object<IToviStreamCrypt>> object =
        TryCreateObject<IToviStreamCrypt>(CLSID_ToviStreamCrypt);
    if (!object) return object.Failure();
    return CipherFilter(*std::move(object));
  }

  CipherDirection Reading() const { return {Interface(), detail::kReadingCipher}; }
  CipherDirection Writing() const { return {Interface(), detail::kWritingCipher}; }

 private:
  explicit CipherFilter(Object<IToviStreamCrypt> object) noexcept
      : FilterBinding(std::move(object)) {}
};

// What a cipher does with the data.
enum class CipherOperation { kEncrypt, kDecrypt };

namespace detail {

inline Result<CipherFilter> TryCipherFilter(CipherDirection (CipherFilter::*direction)() const,
                                            CipherOperation operation, std::string_view algorithm,
                                            ByteSpan key, Pad pad) {
  Result<CipherFilter> filter = CipherFilter::TryCreate();
  if (!filter) return filter;
  CipherDirection side = ((*filter).*direction)();
  Result<void> done = side.TrySetAlgorithm(algorithm);
  if (done) done = side.TrySetKey(key);
  if (done) done = side.TrySetPad(pad);
  if (done) done = side.TrySetDecrypting(operation == CipherOperation::kDecrypt);
  if (!done) return done.Failure();
  return filter;
}

// CipherReadBuffer finalizes the filter when the source has no more bytes, and reads what is left.
class CipherReadBuffer final : public StreamBuffer {
 public:
  CipherReadBuffer(const CipherFilter& filter, Result<Object<IStream>> stream)
      : StreamBuffer(std::move(stream)), direction_(filter.Reading()) {}

 protected:
  HRESULT ReadSome(void* bytes, ULONG count, ULONG* read) override {
    const HRESULT status = StreamBuffer::ReadSome(bytes, count, read);
    // A wrapped source reads as much as there is: more than a block, unless it is at its end.
    if (IsFailure(status) || *read != 0 || finished_) return status;
    finished_ = true;
    const Result<void> done = direction_.TryFinish();
    return done ? StreamBuffer::ReadSome(bytes, count, read) : done.Failure().Number();
  }

 private:
  CipherDirection direction_;
  bool finished_ = false;
};

}  // namespace detail

// CipherInput reads from a source, which must outlive it, and decrypts or encrypts what it reads. The
// pad of an encryption is part of what is read, and not removed by a decryption.
class CipherInput : public InputStream {
 public:
  CipherInput(std::istream& source, CipherOperation operation, std::string_view algorithm,
              ByteSpan key, Pad pad = Pad())
      : CipherInput(source,
                    detail::TryCipherFilter(&CipherFilter::Reading, operation, algorithm, key, pad)
                        .Value()) {}
  CipherInput(std::istream& source, CipherFilter filter)
      : InputStream(std::make_unique<detail::CipherReadBuffer>(
            filter, filter.TryBindTo(TryWrapStream(source)))) {}
};

// CipherOutput encrypts or decrypts what it writes to a target, which must outlive it. Finish writes
// the last block: without it, an incomplete block is lost.
class CipherOutput : public OutputStream {
 public:
  CipherOutput(std::ostream& target, CipherOperation operation, std::string_view algorithm,
               ByteSpan key, Pad pad = Pad())
      : CipherOutput(target,
                     detail::TryCipherFilter(&CipherFilter::Writing, operation, algorithm, key, pad)
                         .Value()) {}
  CipherOutput(std::ostream& target, CipherFilter filter)
      : OutputStream(filter.TryBindTo(TryWrapStream(target))), direction_(filter.Writing()) {}

  // Errors: those of the target
  Result<void> TryFinish() {
    const Result<void> flushed = Buffer().TryFlush();
    if (!flushed) return flushed;
    return direction_.TryFinish();
  }
  void Finish() { TryFinish().Value(); }

 private:
  CipherDirection direction_;
};

}  // namespace mirolta
