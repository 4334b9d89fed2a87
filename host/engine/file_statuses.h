// The numbers that the automation classes for files report, and those of the system's errors.
#pragma once

#include "platform.h"

namespace mirolta::host {

inline constexpr HRESULT kBadFileName = MIROLTA_STATUS(0x800A0034u);
inline constexpr HRESULT kFileNotFound = MIROLTA_STATUS(0x800A0035u);
inline constexpr HRESULT kBadFileMode = MIROLTA_STATUS(0x800A0036u);
inline constexpr HRESULT kFileAlreadyOpen = MIROLTA_STATUS(0x800A0037u);
inline constexpr HRESULT kDeviceFault = MIROLTA_STATUS(0x800A0039u);
inline constexpr HRESULT kFileExists = MIROLTA_STATUS(0x800A003Au);
inline constexpr HRESULT kDiskFull = MIROLTA_STATUS(0x800A003Du);
inline constexpr HRESULT kPastEndOfFile = MIROLTA_STATUS(0x800A003Eu);
inline constexpr HRESULT kTooManyFiles = MIROLTA_STATUS(0x800A0043u);
inline constexpr HRESULT kNoSuchDevice = MIROLTA_STATUS(0x800A0044u);
inline constexpr HRESULT kPermissionDenied = MIROLTA_STATUS(0x800A0046u);
inline constexpr HRESULT kPathFault = MIROLTA_STATUS(0x800A004Bu);
inline constexpr HRESULT kPathNotFound = MIROLTA_STATUS(0x800A004Cu);
inline constexpr HRESULT kStreamGone = MIROLTA_STATUS(0x800A005Bu);
inline constexpr HRESULT kNoStandardHandle = MIROLTA_STATUS(0x80070006u);

// FileStatusOf returns the number for a value of errno, kDeviceFault if it has none of its own.
HRESULT FileStatusOf(int error);
// The same for a status of the system's streams; other statuses stay.
HRESULT FileStatusOfStream(HRESULT status);

}  // namespace mirolta::host
