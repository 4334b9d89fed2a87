// 16-bit text of any bytes: file names, and the registry's file. Bytes that are not UTF-8 become
// unpaired surrogates U+DC80 to U+DCFF and turn back into themselves, so that every byte string
// survives the conversion to text and back.
// Source: PEP 383, "surrogateescape".
#pragma once

#include "texts/wide_text.h"

namespace mirolta::runtime {

// Both append, without a terminator.
// Errors: false if memory is short; part of the text may have been appended.
[[nodiscard]] bool AppendWideFromUtf8(const char* bytes, size_t size, WideText* text);
[[nodiscard]] bool AppendUtf8FromWide(WideView text, RuntimeArray<char>* bytes);

}  // namespace mirolta::runtime
