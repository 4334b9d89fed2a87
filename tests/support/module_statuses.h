// The statuses of the module's own.
#pragma once

#include "platform.h"

namespace mirolta::test {

inline constexpr HRESULT kNoStreamInterface = static_cast<HRESULT>(0x80042775);
inline constexpr HRESULT kNoStream = static_cast<HRESULT>(0x80042776);
inline constexpr HRESULT kNotFound = static_cast<HRESULT>(0x80042777);
inline constexpr HRESULT kNotInitialized = static_cast<HRESULT>(0x80042778);
inline constexpr HRESULT kKeyNotSet = static_cast<HRESULT>(0x80042779);
inline constexpr HRESULT kTooMuchData = static_cast<HRESULT>(0x8004277A);

// What members answer without an algorithm where no error is described: the message's number.
inline constexpr HRESULT kBareNotInitializedStatus = 10104;

}  // namespace mirolta::test
