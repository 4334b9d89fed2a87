#include "texts/guid_text.h"

#include <iterator>

#include "texts/characters.h"

namespace mirolta::runtime {
namespace {

constexpr WCHAR kDigits[] = u"0123456789ABCDEF";

// The text of an identifier, with 0 for its digits.
constexpr WCHAR kForm[] = u"{00000000-0000-0000-0000-000000000000}";
static_assert(std::size(kForm) == kGuidTextLength + 1);

// The 16 bytes in the order in which the text shows them.
void BytesInTextOrder(REFGUID id, BYTE bytes[16]) {
  for (unsigned i = 0; i < 4; ++i) bytes[i] = static_cast<BYTE>(id.Data1 >> (24 - 8 * i));
  for (unsigned i = 0; i < 2; ++i) bytes[4 + i] = static_cast<BYTE>(id.Data2 >> (8 - 8 * i));
  for (unsigned i = 0; i < 2; ++i) bytes[6 + i] = static_cast<BYTE>(id.Data3 >> (8 - 8 * i));
  for (unsigned i = 0; i < 8; ++i) bytes[8 + i] = id.Data4[i];
}

GUID GuidFromBytes(const BYTE bytes[16]) {
  GUID id = {};
  for (unsigned i = 0; i < 4; ++i) id.Data1 = id.Data1 << 8 | bytes[i];
  id.Data2 = static_cast<WORD>(bytes[4] << 8 | bytes[5]);
  id.Data3 = static_cast<WORD>(bytes[6] << 8 | bytes[7]);
  for (unsigned i = 0; i < 8; ++i) id.Data4[i] = bytes[8 + i];
  return id;
}

bool ParseGuid(LPCOLESTR text, GUID* id) {
  BYTE bytes[16] = {};
  unsigned digits = 0;
  for (const WCHAR form : kForm) {
    const WCHAR c = *text++;
    if (form != u'0') {
      if (c != form) return false;
      continue;
    }
    const int value = HexDigitValue(c);
    if (value < 0) return false;
    bytes[digits / 2] = static_cast<BYTE>(bytes[digits / 2] << 4 | value);
    ++digits;
  }
  *id = GuidFromBytes(bytes);
  return true;
}

}  // namespace
}  // namespace mirolta::runtime

using namespace mirolta::runtime;

extern "C" INT StringFromGUID2(REFGUID id, LPOLESTR text, INT capacity) {
  if (text == nullptr || capacity < kGuidTextLength + 1) return 0;
  BYTE bytes[16];
  BytesInTextOrder(id, bytes);
  unsigned digits = 0;
  for (const WCHAR form : kForm) {
    if (form != u'0') {
      *text++ = form;
      continue;
    }
    *text++ = kDigits[digits % 2 == 0 ? bytes[digits / 2] >> 4 : bytes[digits / 2] & 15];
    ++digits;
  }
  return kGuidTextLength + 1;
}

extern "C" HRESULT StringFromCLSID(REFCLSID id, LPOLESTR* text) {
  if (text == nullptr) return E_INVALIDARG;
  constexpr INT kCapacity = kGuidTextLength + 1;
  *text = static_cast<LPOLESTR>(CoTaskMemAlloc(kCapacity * sizeof(OLECHAR)));
  if (*text == nullptr) return E_OUTOFMEMORY;
  StringFromGUID2(id, *text, kCapacity);
  return S_OK;
}

extern "C" HRESULT CLSIDFromString(LPCOLESTR text, CLSID* id) {
  if (id == nullptr) return E_INVALIDARG;
  *id = CLSID_NULL;
  if (text == nullptr) return S_OK;  // as on the platform, null reads as GUID_NULL
  return ParseGuid(text, id) ? S_OK : CO_E_CLASSSTRING;
}
