#include "big_code_page_text.h"

#include "big_bytes.h"
#include "byte_string.h"
#include "text_bytes.h"

namespace mirolta {

namespace {

constexpr LONG kHighByteFirst = -1;

OLECHAR Unit(const uint8_t* pair, LONG code_page) {
  const uint8_t high = code_page == kHighByteFirst ? pair[0] : pair[1];
  const uint8_t low = code_page == kHighByteFirst ? pair[1] : pair[0];
  return static_cast<OLECHAR>(high << 8 | low);
}

HRESULT Utf16FromBytes(const ByteString& bytes, LONG code_page, BSTR* out) {
  const uint32_t units = bytes.Count() / 2;
  BSTR text = SysAllocStringLen(nullptr, units);
  if (text == nullptr) return E_OUTOFMEMORY;
  for (uint32_t i = 0; i < units; ++i) text[i] = Unit(bytes.Data() + 2 * i, code_page);
  *out = text;
  return S_OK;
}

bool Utf16ToBytes(BSTR text, LONG code_page, ByteString* out) {
  const uint32_t units = SysStringLen(text);
  if (units > UINT32_MAX / 2) return false;
  if (!out->Allocate(2 * units)) return false;
  for (uint32_t i = 0; i < units; ++i) {
    const uint8_t high = static_cast<uint8_t>(text[i] >> 8);
    const uint8_t low = static_cast<uint8_t>(text[i]);
    out->Data()[2 * i] = code_page == kHighByteFirst ? high : low;
    out->Data()[2 * i + 1] = code_page == kHighByteFirst ? low : high;
  }
  return true;
}

uint32_t LengthToFirstZero(const ByteString& bytes) {
  uint32_t length = 0;
  while (length < bytes.Count() && bytes.Data()[length] != 0) ++length;
  return length;
}

}  // namespace

HRESULT NumberToCodePageText(const BigInt& n, LONG code_page, BSTR* out) noexcept {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  // MultiByteToWideChar takes the length as INT.
  const uint64_t length = ByteLength(n);
  if (length > INT32_MAX) return E_OUTOFMEMORY;
  ByteString bytes;
  if (!bytes.Allocate(static_cast<uint32_t>(length))) return E_OUTOFMEMORY;
  ToBytes(bytes.Data(), n);
  if (code_page < 0) return Utf16FromBytes(bytes, code_page, out);

  const UINT set = static_cast<UINT>(code_page);
  const char* const source = reinterpret_cast<const char*>(bytes.Data());
  const INT size = static_cast<INT>(bytes.Count());
  const INT units = size == 0 ? 0 : MultiByteToWideChar(set, 0, source, size, nullptr, 0);
  BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(units));
  if (text == nullptr) return E_OUTOFMEMORY;
  if (units > 0) MultiByteToWideChar(set, 0, source, size, text, units);
  *out = text;
  return S_OK;
}

HRESULT NumberFromCodePageText(BigInt& n, BSTR text, LONG code_page) noexcept {
  ByteString bytes;
  if (code_page < 0) {
    if (!Utf16ToBytes(text, code_page, &bytes)) return E_OUTOFMEMORY;
    return FromBytes(n, bytes.Data(), bytes.Count());
  }
  const HRESULT status = WideToBytes(text, code_page, &bytes);
  return FAILED(status) ? status : FromBytes(n, bytes.Data(), LengthToFirstZero(bytes));
}

}  // namespace mirolta
