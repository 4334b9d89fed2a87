// The three encodings of text in the host: the script engine stores CESU-8 (each surrogate encoded
// on its own), automation stores 16-bit code units, and the terminal, arguments and file names are
// UTF-8.
//
// System bytes that are not UTF-8 become the lone surrogates U+DC80..U+DCFF and are written as the
// same bytes, so that every file name survives a round trip.
#pragma once

#include <string>
#include <string_view>

#include "platform.h"

namespace mirolta::host {

using Units = std::basic_string<OLECHAR>;
using UnitsView = std::basic_string_view<OLECHAR>;

// EngineByteLength returns the number of bytes that EncodeForEngine writes.
size_t EngineByteLength(const OLECHAR* units, size_t count);
// EncodeForEngine writes the engine's form and returns its length.
size_t EncodeForEngine(const OLECHAR* units, size_t count, char* bytes);

// NarrowAscii is EncodeForEngine for ASCII text; false for other text, for which it writes `count` bytes too.
bool NarrowAscii(const OLECHAR* units, size_t count, char* bytes);

// DecodeFromEngine decodes the engine's form and returns the number of units; `units` may be null
// to count them. A four-byte sequence becomes a surrogate pair, a malformed byte U+FFFD.
size_t DecodeFromEngine(const char* bytes, size_t size, OLECHAR* units);

// ReadSequence decodes the UTF-8 sequence at the start of `bytes` and returns its length, 0 if it is
// malformed. It accepts encoded surrogates, and rejects overlong forms.
// Shapes: bytes are not empty.
size_t ReadSequence(std::string_view bytes, uint32_t* code);
// AppendCode encodes a code point, surrogates included, as UTF-8.
void AppendCode(uint32_t code, std::string* out);

Units UnitsFromEngine(std::string_view bytes);
std::string EngineFromUnits(UnitsView units);
Units UnitsFromSystem(std::string_view bytes);
// Lone surrogates that do not represent a byte become U+FFFD.
std::string SystemFromUnits(UnitsView units);

}  // namespace mirolta::host
