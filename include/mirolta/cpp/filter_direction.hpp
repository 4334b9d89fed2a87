// SPDX-License-Identifier: MIT
// What a direction of either stream filter has: an algorithm, a key and a message.
#pragma once

#include <string>
#include <utility>

#include "arguments.hpp"
#include "create.hpp"

namespace mirolta {
namespace detail {

// The members of a filter's interface for one direction, as far as both filters have them.
template <typename Filter>
struct DirectionMembers {
  using Interface = Filter;
  template <typename... Parameters>
  using Member = HRESULT (STDMETHODCALLTYPE Filter::*)(Parameters...);

  Member<BSTR*> get_algorithm;
  Member<BSTR> put_algorithm;
  Member<VARIANT*> get_key;
  Member<VARIANT> put_key;
  Member<> reset_key;
  Member<> reset;
  Member<> finalize;
};

// A direction of a filter, which it keeps alive. Members: DirectionMembers, with what only that
// filter has.
template <typename Members>
class FilterDirection {
 public:
  Result<void> TrySetAlgorithm(std::string_view name) {
    const Text text(name);
    return Call(filter_.Get(), members_->put_algorithm, text.Get());
  }
  void SetAlgorithm(std::string_view name) { TrySetAlgorithm(name).Value(); }
  Result<std::string> TryAlgorithm() const {
    const Result<Text> name = GetText(filter_, members_->get_algorithm);
    if (!name) return name.Failure();
    return name->Utf8();
  }
  std::string Algorithm() const { return TryAlgorithm().Value(); }

  Result<void> TrySetKey(ByteSpan key) { return CallWithBytes(filter_, members_->put_key, key); }
  void SetKey(ByteSpan key) { TrySetKey(key).Value(); }
  Result<void> TryClearKey() { return Call(filter_.Get(), members_->reset_key); }
  void ClearKey() { TryClearKey().Value(); }
  Result<Bytes> TryKey() const { return GetBytes(filter_, members_->get_key); }
  Bytes Key() const { return TryKey().Value(); }

  Result<void> TryReset() { return Call(filter_.Get(), members_->reset); }
  void Reset() { TryReset().Value(); }

 protected:
  FilterDirection(Object<typename Members::Interface> filter, const Members& members) noexcept
      : filter_(std::move(filter)), members_(&members) {}

  Object<typename Members::Interface> filter_;
  const Members* members_;
};

}  // namespace detail
}  // namespace mirolta
