// The steps by which classes and type libraries use the registry. Paths are below
// HKEY_CLASSES_ROOT; all return a system error number.
#pragma once

#include "portable/registry.h"
#include "texts/wide_text.h"

namespace mirolta::runtime {

// SetText makes *text the terminated join of up to five parts; ERROR_OUTOFMEMORY if it cannot.
LONG SetText(WideText* text, LPCWSTR a, LPCWSTR b = u"", LPCWSTR c = u"", LPCWSTR d = u"",
             LPCWSTR e = u"");

// ReadText reads a text value (null name: the default one) with its terminator;
// ERROR_FILE_NOT_FOUND if the key or the value is missing or is no text.
LONG ReadText(LPCWSTR path, LPCWSTR name, WideText* text);

// WriteText makes the key if needed.
LONG WriteText(LPCWSTR path, LPCWSTR name, LPCWSTR text);

// DeleteKeyTree deletes a key with all below it; one that is missing is no error.
LONG DeleteKeyTree(LPCWSTR path);

// SubkeyName gives the name of the subkey with this index; ERROR_NO_MORE_ITEMS after the last.
constexpr DWORD kKeyNameCapacity = 256;
LONG SubkeyName(LPCWSTR path, DWORD index, WCHAR (&name)[kKeyNameCapacity]);

}  // namespace mirolta::runtime
