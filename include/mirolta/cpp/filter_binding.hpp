// SPDX-License-Identifier: MIT
// What the two stream filters share: the stream they are bound to, and their own.
#pragma once

#include <istream>
#include <ostream>
#include <utility>

#include "arguments.hpp"
#include "standard_stream.hpp"

namespace mirolta {
namespace detail {

template <typename Filter>
class FilterBinding {
 public:
  FilterBinding(FilterBinding&&) noexcept = default;
  FilterBinding& operator=(FilterBinding&&) noexcept = default;

  // Binds the filter to a stream, which it keeps; the streams of the language must outlive it.
  // Errors: 0x80042775 for an object that supplies no stream; E_OUTOFMEMORY
  Result<void> TryBind(IUnknown* stream) {
    return Call(object_.Get(), &Filter::putref_Stream, stream);
  }
  void Bind(IUnknown* stream) { TryBind(stream).Value(); }
  template <typename Stream>
  Result<void> TryBind(const Object<Stream>& stream) {
    return TryBind(stream.Get());
  }
  template <typename Stream>
  void Bind(const Object<Stream>& stream) {
    TryBind(stream).Value();
  }
  template <typename Stream, std::enable_if_t<std::is_base_of_v<std::ios_base, Stream>, int> = 0>
  Result<void> TryBind(Stream& stream) {
    const Result<Object<IStream>> wrapped = TryWrapStream(stream);
    if (!wrapped) return wrapped.Failure();
    return TryBind(*wrapped);
  }
  template <typename Stream, std::enable_if_t<std::is_base_of_v<std::ios_base, Stream>, int> = 0>
  void Bind(Stream& stream) {
    TryBind(stream).Value();
  }
  // Binds the filter and returns its own stream.
  Result<Object<IStream>> TryBindTo(const Result<Object<IStream>>& stream) {
    if (!stream) return stream.Failure();
    const Result<void> bound = TryBind(*stream);
    if (!bound) return bound.Failure();
    return TryStream();
  }

  // The filter as a stream.
  Result<Object<IStream>> TryStream() const { return object_.template TryAs<IStream>(); }
  Object<IStream> Stream() const { return TryStream().Value(); }

  // Whether Seek moves the underlying stream's position; not initially.
  Result<void> TryAllowSeeking(bool allowed) {
    return Call(object_.Get(), &Filter::put_SeekingForbidden, ToBoolean(!allowed));
  }
  void AllowSeeking(bool allowed) { TryAllowSeeking(allowed).Value(); }

  // The object itself, for callers of its interface.
  const Object<Filter>& Interface() const noexcept { return object_; }

 protected:
  explicit FilterBinding(Object<Filter> object) noexcept : object_(std::move(object)) {}
  ~FilterBinding() = default;

 private:
  Object<Filter> object_;
};

}  // namespace detail
}  // namespace mirolta
