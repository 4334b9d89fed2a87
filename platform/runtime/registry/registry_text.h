// The registry as text, in the form in which the registry editor exports it:
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
// A line of bytes that ends in a backslash goes on in the next. Characters beyond ASCII are UTF-8,
// also inside hex(1), hex(2) and hex(7), which hold texts. Lines beginning with a semicolon are
// kept where they stand; the form's deleting lines are refused.
#pragma once

#include "registry/registry_tree.h"
#include "texts/wide_text.h"

namespace mirolta::runtime {

inline constexpr char kRegistryFirstLine[] = "REGEDIT4";

// ParseRegistry adds what text[0..size) says to the empty key `root`.
// Errors: ERROR_BADDB with the number of the offending line, from 1; ERROR_OUTOFMEMORY.
LONG ParseRegistry(const char* text, size_t size, RegistryKey* root, DWORD* bad_line);

// FormatRegistry appends the whole text; false if memory is short.
[[nodiscard]] bool FormatRegistry(const RegistryKey& root, RuntimeArray<char>* text);

// SurvivesFile tells whether a text is read back from the file as it was written, which unpaired
// surrogates are not (but for those that stand for the odd bytes of a file name).
bool SurvivesFile(WideView text);

}  // namespace mirolta::runtime
