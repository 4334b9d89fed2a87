// Text at the host's three borders: the script engine keeps one to three bytes for every 16-bit
// unit (surrogates each on their own), automation keeps the units, and terminal, arguments and file
// names are UTF-8.
//
// Bytes of the system that are not UTF-8 become the lone surrogates U+DC80..U+DCFF and go out as
// the same bytes, so that any file name survives the way through a script.
#pragma once

#include <string>
#include <string_view>

#include "platform.h"

namespace mirolta::host {

using Units = std::basic_string<OLECHAR>;
using UnitsView = std::basic_string_view<OLECHAR>;

// The most bytes one unit takes in the engine's form.
inline constexpr size_t kMaxEngineBytesPerUnit = 3;

// EngineByteLength returns the bytes that EncodeForEngine writes for the units.
size_t EngineByteLength(const OLECHAR* units, size_t count);
// EncodeForEngine writes the engine's form and returns its length.
size_t EncodeForEngine(const OLECHAR* units, size_t count, char* bytes);

// DecodeFromEngine writes the units of the engine's form and returns their number; units may be
// null to count only. A four-byte sequence gives a surrogate pair, anything malformed U+FFFD.
size_t DecodeFromEngine(const char* bytes, size_t size, OLECHAR* units);

Units UnitsFromEngine(std::string_view bytes);
std::string EngineFromUnits(UnitsView units);
Units UnitsFromSystem(std::string_view bytes);
// Lone surrogates that stand for no byte go out as U+FFFD.
std::string SystemFromUnits(UnitsView units);

}  // namespace mirolta::host
