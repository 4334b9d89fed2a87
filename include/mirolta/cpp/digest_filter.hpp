// SPDX-License-Identifier: MIT
// The stream filter that computes digests (ToviStreamDigest).
#pragma once

#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <utility>

#include "arguments.hpp"
#include "create.hpp"
#include "filter_binding.hpp"
#include "filter_direction.hpp"
#include "stream_buffer.hpp"

namespace mirolta {

namespace detail {

struct DigestMembers : DirectionMembers<IToviStreamDigest> {
  Member<VARIANT_BOOL*> get_enabled;
  Member<VARIANT_BOOL> put_enabled;
  Member<VARIANT*> get_value;
};

inline constexpr DigestMembers kReadingDigest = {
    {&IToviStreamDigest::get_ReadAlgorithm, &IToviStreamDigest::put_ReadAlgorithm,
     &IToviStreamDigest::get_ReadKey, &IToviStreamDigest::put_ReadKey,
     &IToviStreamDigest::ReadResetKey, &IToviStreamDigest::ReadReset,
     &IToviStreamDigest::ReadFinalize},
    &IToviStreamDigest::get_ReadHashEnable,
    &IToviStreamDigest::put_ReadHashEnable,
    &IToviStreamDigest::get_ReadBinaryValue};
inline constexpr DigestMembers kWritingDigest = {
    {&IToviStreamDigest::get_WriteAlgorithm, &IToviStreamDigest::put_WriteAlgorithm,
     &IToviStreamDigest::get_WriteKey, &IToviStreamDigest::put_WriteKey,
     &IToviStreamDigest::WriteResetKey, &IToviStreamDigest::WriteReset,
     &IToviStreamDigest::WriteFinalize},
    &IToviStreamDigest::get_WriteHashEnable,
    &IToviStreamDigest::put_WriteHashEnable,
    &IToviStreamDigest::get_WriteBinaryValue};

}  // namespace detail

// One direction of a digest filter. It refers to the filter, which it keeps alive.
class DigestDirection : private detail::FilterDirection<detail::DigestMembers> {
 public:
  // Chooses "MD5", "SHA1" or "SHA256", without a key, and switches the direction on.
  // Errors: 0x80042777 "Algorithm not found.", after which the direction has none
  using FilterDirection::SetAlgorithm;
  using FilterDirection::TrySetAlgorithm;
  // The name; empty without one.
  using FilterDirection::Algorithm;
  using FilterDirection::TryAlgorithm;

  // Sets the key of an HMAC, or removes it; either begins a new message.
  // Errors: E_UNEXPECTED for an empty key, after which there is none; 0x80042778 "Not initialized."
  using FilterDirection::ClearKey;
  using FilterDirection::Key;
  using FilterDirection::SetKey;
  using FilterDirection::TryClearKey;
  using FilterDirection::TryKey;
  using FilterDirection::TrySetKey;

  // Begins a new message, with the same key.
  using FilterDirection::Reset;
  using FilterDirection::TryReset;

  // Whether the bytes that pass are digested.
  Result<void> TrySetEnabled(bool enabled) {
    return detail::Call(filter_.Get(), members_->put_enabled, detail::ToBoolean(enabled));
  }
  void SetEnabled(bool enabled) { TrySetEnabled(enabled).Value(); }
  Result<bool> TryIsEnabled() const { return detail::GetBoolean(filter_, members_->get_enabled); }
  bool IsEnabled() const { return TryIsEnabled().Value(); }

  // The digest of the bytes that have passed. The next ones begin a new message.
  // Errors: 0x80042778 "Not initialized." without an algorithm
  Result<Bytes> TryFinish() {
    Result<void> done = detail::Call(filter_.Get(), members_->finalize);
    if (!done) return done.Failure();
    Result<Bytes> digest = detail::GetBytes(filter_, members_->get_value);
    if (digest) done = TryReset();
    if (!done) return done.Failure();
    return digest;
  }
  Bytes Finish() { return TryFinish().Value(); }
  // The same in lowercase hexadecimal.
  Result<std::string> TryFinishHex() {
    const Result<Bytes> digest = TryFinish();
    if (!digest) return digest.Failure();
    return ToHex(*digest);
  }
  std::string FinishHex() { return TryFinishHex().Value(); }

 private:
  friend class DigestFilter;

  DigestDirection(Object<IToviStreamDigest> filter, const detail::DigestMembers& members) noexcept
      : FilterDirection(std::move(filter), members) {}
};

// DigestFilter computes digests of what is read from and written to an underlying stream. Without
// one, what is written is digested and discarded.
class DigestFilter : public detail::FilterBinding<IToviStreamDigest> {
 public:
  DigestFilter() : DigestFilter(TryCreate().Value()) {}

  static Result<DigestFilter> TryCreate() {
    Result<Object<IToviStreamDigest>> object =
        TryCreateObject<IToviStreamDigest>(CLSID_ToviStreamDigest);
    if (!object) return object.Failure();
    return DigestFilter(*std::move(object));
  }

  DigestDirection Reading() const { return {Interface(), detail::kReadingDigest}; }
  DigestDirection Writing() const { return {Interface(), detail::kWritingDigest}; }

 private:
  explicit DigestFilter(Object<IToviStreamDigest> object) noexcept
      : FilterBinding(std::move(object)) {}
};

namespace detail {

// A filter one of whose directions has the algorithm and, if it is not empty, the key.
inline Result<DigestFilter> TryDigestFilter(DigestDirection (DigestFilter::*direction)() const,
                                            std::string_view algorithm, ByteSpan key) {
  Result<DigestFilter> filter = DigestFilter::TryCreate();
  if (!filter) return filter;
  DigestDirection side = ((*filter).*direction)();
  Result<void> done = side.TrySetAlgorithm(algorithm);
  if (done && !key.empty()) done = side.TrySetKey(key);
  if (!done) return done.Failure();
  return filter;
}

}  // namespace detail

// DigestInput reads from a source, which must outlive it, and digests what it reads: at the end of
// the source, all of it. Before the end it may have read further than the program.
class DigestInput : public InputStream {
 public:
  // With a key, which must not be empty, it computes an HMAC.
  DigestInput(std::istream& source, std::string_view algorithm, ByteSpan key = {})
      : DigestInput(source,
                    detail::TryDigestFilter(&DigestFilter::Reading, algorithm, key).Value()) {}
  DigestInput(std::istream& source, DigestFilter filter)
      : InputStream(std::make_unique<StreamBuffer>(filter.TryBindTo(TryWrapStream(source)))),
        direction_(filter.Reading()) {}

  Result<Bytes> TryFinish() {
    if (Failure().Number() != S_OK) return Failure();
    return direction_.TryFinish();
  }
  Bytes Finish() { return TryFinish().Value(); }
  std::string FinishHex() { return ToHex(Finish()); }

 private:
  DigestDirection direction_;
};

// DigestOutput writes to a target, which must outlive it, or to none, and digests what it writes.
class DigestOutput : public OutputStream {
 public:
  DigestOutput(std::ostream& target, std::string_view algorithm, ByteSpan key = {})
      : DigestOutput(target,
                     detail::TryDigestFilter(&DigestFilter::Writing, algorithm, key).Value()) {}
  DigestOutput(std::ostream& target, DigestFilter filter)
      : OutputStream(filter.TryBindTo(TryWrapStream(target))), direction_(filter.Writing()) {}
  explicit DigestOutput(std::string_view algorithm, ByteSpan key = {})
      : DigestOutput(detail::TryDigestFilter(&DigestFilter::Writing, algorithm, key).Value()) {}
  // To what the filter is bound to.
  explicit DigestOutput(DigestFilter filter)
      : OutputStream(filter.TryStream()), direction_(filter.Writing()) {}

  // The digest of what was written. What is written next begins a new message.
  Result<Bytes> TryFinish() {
    const Result<void> flushed = Buffer().TryFlush();
    if (!flushed) return flushed.Failure();
    return direction_.TryFinish();
  }
  Bytes Finish() { return TryFinish().Value(); }
  std::string FinishHex() { return ToHex(Finish()); }

 private:
  DigestDirection direction_;
};

}  // namespace mirolta
