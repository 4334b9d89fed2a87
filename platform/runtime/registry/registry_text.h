// The registry as text, in the registry editor's export format:
//
//   REGEDIT4
//
//   [HKEY_CLASSES_ROOT\CLSID\{...}]
//   @="default value"
//   "name"="text with \\ and \""
//   "number"=dword:0000002a
//   "bytes"=hex:01,02,03
//   "other"=hex(2):25,00
//
// A backslash at the end of a line of bytes continues it on the next line. Characters beyond ASCII
// are UTF-8, also inside hex(1), hex(2) and hex(7), which hold texts. Lines beginning with a
// semicolon are kept in place; lines that delete keys or values are refused.
#pragma once

#include "registry/registry_tree.h"
#include "texts/wide_text.h"

namespace mirolta::runtime {

inline constexpr char kRegistryFirstLine[] = "REGEDIT4";

// ParseRegistry adds the content of text[0..size) to the empty key `root`.
// Errors: ERROR_BADDB with the number of the malformed line, from 1; ERROR_OUTOFMEMORY.
LONG ParseRegistry(const char* text, size_t size, RegistryKey* root, DWORD* bad_line);

// FormatRegistry appends the whole text.
// Errors: false if memory is short.
[[nodiscard]] bool FormatRegistry(const RegistryKey& root, RuntimeArray<char>* text);

// SurvivesFile tells whether a text is read back as it was written. Texts with unpaired surrogates
// are not, except those of escaped bytes (escaped_utf8.h).
bool SurvivesFile(WideView text);

}  // namespace mirolta::runtime
