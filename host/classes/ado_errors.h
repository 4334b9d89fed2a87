// The errors of ADODB.Stream.
#pragma once

#include "classes/host_call.h"

namespace mirolta::host {

inline constexpr HRESULT kAdoBadArgument = MIROLTA_STATUS(0x800A0BB9u);
inline constexpr HRESULT kAdoCannotOpenFile = MIROLTA_STATUS(0x800A0BBAu);
inline constexpr HRESULT kAdoCannotReadFile = MIROLTA_STATUS(0x800A0BBBu);
inline constexpr HRESULT kAdoCannotWriteFile = MIROLTA_STATUS(0x800A0BBCu);
inline constexpr HRESULT kAdoNotInThisContext = MIROLTA_STATUS(0x800A0C93u);
inline constexpr HRESULT kAdoNotCapable = MIROLTA_STATUS(0x800A0CB3u);
inline constexpr HRESULT kAdoClosed = MIROLTA_STATUS(0x800A0E78u);
inline constexpr HRESULT kAdoOpen = MIROLTA_STATUS(0x800A0E79u);

// FailAdo ends a call with one of these errors; its text is followed by the reason, if there is one.
// Shapes: `reason` is UTF-8.
[[noreturn]] void FailAdo(HRESULT number, std::string_view reason = {});

}  // namespace mirolta::host
