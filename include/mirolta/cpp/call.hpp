// SPDX-License-Identifier: MIT
// Calls of interface members whose failures become errors.
#pragma once

#include <utility>

#include "error.hpp"
#include "text.hpp"

namespace mirolta {
namespace detail {

constexpr bool IsFailure(HRESULT status) noexcept {
  return status < 0;
}

// The Error of a status that a member of the object has just returned: with the texts that the
// object published, if it publishes any for the interface.
inline Error ErrorOf(HRESULT status, IUnknown* object, REFIID iid) {
  void* found = nullptr;
  if (IsFailure(object->QueryInterface(IdOf<ISupportErrorInfo>::value, &found)))
    return Error(status);
  auto* const support = static_cast<ISupportErrorInfo*>(found);
  const HRESULT supported = support->InterfaceSupportsErrorInfo(iid);
  support->Release();
  IErrorInfo* info = nullptr;
  if (supported != S_OK || GetErrorInfo(0, &info) != S_OK) return Error(status);
  Text source;
  Text description;
  info->GetSource(source.Put());
  info->GetDescription(description.Put());
  info->Release();
  return Error(status, source.Utf8(), description.Utf8());
}

// Call calls (object->*member)(arguments...). The thread's error object is released first, so that
// what is read after a failure is of this call.
// Errors: the member's; E_POINTER without an object, as one has that was moved from
template <typename Interface, typename Member, typename... Arguments>
Result<void> Call(Interface* object, Member member, Arguments&&... arguments) {
  if (object == nullptr) return Error(E_POINTER);
  SetErrorInfo(0, nullptr);
  const HRESULT status = (object->*member)(std::forward<Arguments>(arguments)...);
  if (IsFailure(status)) return ErrorOf(status, object, IdOf<Interface>::value);
  return {};
}

}  // namespace detail
}  // namespace mirolta
