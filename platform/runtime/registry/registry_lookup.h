// How classes and type libraries use the registry. Paths are below HKEY_CLASSES_ROOT; all functions
// return a system error number.
#pragma once

#include "mirolta/registry.h"
#include "texts/wide_text.h"

namespace mirolta::runtime {

// SetText sets *text to the terminated concatenation of up to five parts.
// Errors: ERROR_OUTOFMEMORY.
LONG SetText(WideText* text, LPCWSTR a, LPCWSTR b = u"", LPCWSTR c = u"", LPCWSTR d = u"",
             LPCWSTR e = u"");

// ReadText reads a text value with its terminator; a null name is the default value.
// Errors: ERROR_FILE_NOT_FOUND if the key or value is missing or is no text; ERROR_OUTOFMEMORY;
//         those of reading the registry.
LONG ReadText(LPCWSTR path, LPCWSTR name, WideText* text);

// WriteText sets a text value and creates its key if needed.
LONG WriteText(LPCWSTR path, LPCWSTR name, LPCWSTR text);

// DeleteKeyTree deletes a key and everything below it; a missing key is no error.
LONG DeleteKeyTree(LPCWSTR path);

// SubkeyName returns the name of the subkey with this index.
// Errors: ERROR_NO_MORE_ITEMS past the last; ERROR_FILE_NOT_FOUND for a missing key.
constexpr DWORD kKeyNameCapacity = 256;
LONG SubkeyName(LPCWSTR path, DWORD index, WCHAR (&name)[kKeyNameCapacity]);

}  // namespace mirolta::runtime
