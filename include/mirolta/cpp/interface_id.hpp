// SPDX-License-Identifier: MIT
// Identifiers by interface.
#pragma once

#include "../../mirolta.h"

namespace mirolta {
namespace detail {

template <typename Interface>
struct InterfaceId;

#define MIROLTA_NAMED_ID(name)                              \
  template <>                                               \
  struct InterfaceId<name> {                                \
    static const IID& Get() noexcept { return IID_##name; } \
  };
MIROLTA_NAMED_ID(IUnknown)
MIROLTA_NAMED_ID(IDispatch)
MIROLTA_NAMED_ID(ISequentialStream)
MIROLTA_NAMED_ID(IStream)
MIROLTA_NAMED_ID(IClassFactory)
MIROLTA_NAMED_ID(ISupportErrorInfo)
MIROLTA_NAMED_ID(IHashObject)
MIROLTA_NAMED_ID(ISymmetricCryptObject)
MIROLTA_NAMED_ID(IPexBigNumber)
MIROLTA_NAMED_ID(IRSACrypt)
MIROLTA_NAMED_ID(IToviStreamDigest)
MIROLTA_NAMED_ID(IToviStreamCrypt)
#undef MIROLTA_NAMED_ID

template <typename Interface>
const IID& IidOf() noexcept {
  return InterfaceId<Interface>::Get();
}

}  // namespace detail
}  // namespace mirolta
