#include "text_bytes.h"

#include "owned_value.h"
#include "utf16_bytes.h"

namespace mirolta {

namespace {

size_t TextLength(const OLECHAR* text) {
  size_t length = 0;
  while (text[length] != 0) ++length;
  return length;
}

// The platform counts in signed 32 bits.
constexpr size_t kMaximumLength = 0x7FFFFFFF;

HRESULT WideToCharacterSet(const OLECHAR* text, INT length, UINT character_set, ByteString* out) {
  const INT needed =
      WideCharToMultiByte(character_set, 0, text, length, nullptr, 0, nullptr, nullptr);
  if (needed <= 0) return S_OK;
  if (!out->Allocate(static_cast<uint32_t>(needed))) return E_OUTOFMEMORY;
  const INT written =
      WideCharToMultiByte(character_set, 0, text, length, reinterpret_cast<LPSTR>(out->Data()),
                          needed, nullptr, nullptr);
  if (written <= 0) {
    out->Clear();
  } else {
    out->Shorten(static_cast<uint32_t>(written));
  }
  return S_OK;
}

HRESULT EmptyText(BSTR* out) {
  *out = SysAllocStringLen(nullptr, 0);
  return *out != nullptr ? S_OK : E_OUTOFMEMORY;
}

// Temporary wide text, wiped and freed by the destructor.
class TextScratch {
 public:
  explicit TextScratch(uint32_t length)
      : text_(NewArray<OLECHAR>(CheckedSize(length) + 1)), length_(length) {}
  ~TextScratch() {
    if (text_ != nullptr) WipeMemory(text_, (size_t{length_} + 1) * sizeof(OLECHAR));
    delete[] text_;
  }
  TextScratch(const TextScratch&) = delete;
  TextScratch& operator=(const TextScratch&) = delete;
  OLECHAR* Get() { return text_; }

  // The text before the first zero character.
  HRESULT MakeText(uint32_t length, BSTR* out) {
    text_[length] = 0;
    *out = SysAllocString(text_);
    return *out != nullptr ? S_OK : E_OUTOFMEMORY;
  }

 private:
  OLECHAR* text_;
  uint32_t length_;
};

}  // namespace

HRESULT WideToBytes(const OLECHAR* text, LONG code_page, ByteString* out) noexcept {
  if (out == nullptr) return E_POINTER;
  out->Clear();
  if (text == nullptr || text[0] == 0) return S_OK;
  const size_t length = TextLength(text);
  if (length > kMaximumLength) return E_OUTOFMEMORY;
  if (code_page >= 0) {
    return WideToCharacterSet(text, static_cast<INT>(length), static_cast<UINT>(code_page), out);
  }
  // Twice the maximum length stays below 2^32.
  if (!out->Allocate(static_cast<uint32_t>(length * 2))) return E_OUTOFMEMORY;
  const auto order =
      code_page == kCodePageUtf16LittleEndian ? UnitOrder::kLowFirst : UnitOrder::kHighFirst;
  WriteUnits(text, length, order, out->Data());
  return S_OK;
}

HRESULT BytesToWide(const uint8_t* bytes, uint32_t count, LONG code_page, BSTR* out) noexcept {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  if (bytes == nullptr || count == 0) return EmptyText(out);
  if (code_page < 0) {
    const uint32_t length = count / 2;
    TextScratch text(length);
    if (text.Get() == nullptr) return E_OUTOFMEMORY;
    const auto order =
        code_page == kCodePageUtf16LittleEndian ? UnitOrder::kLowFirst : UnitOrder::kHighFirst;
    ReadUnits(bytes, length, order, text.Get());
    return text.MakeText(length, out);
  }
  if (count > kMaximumLength) return E_OUTOFMEMORY;
  const UINT character_set = static_cast<UINT>(code_page);
  const LPCSTR source = reinterpret_cast<LPCSTR>(bytes);
  const INT length = static_cast<INT>(count);
  const INT needed = MultiByteToWideChar(character_set, 0, source, length, nullptr, 0);
  if (needed <= 0) return EmptyText(out);
  TextScratch text(static_cast<uint32_t>(needed));
  if (text.Get() == nullptr) return E_OUTOFMEMORY;
  const INT written = MultiByteToWideChar(character_set, 0, source, length, text.Get(), needed);
  return text.MakeText(written > 0 ? static_cast<uint32_t>(written) : 0, out);
}

HRESULT BytesToHex(const uint8_t* bytes, LONG length, OLECHAR* out) noexcept {
  if (bytes == nullptr || out == nullptr) return E_POINTER;
  if (length % 2 != 0 || length < 0) return E_INVALIDARG;
  static constexpr OLECHAR kDigits[] = OLESTR("0123456789ABCDEF");
  for (LONG i = 0; i < length / 2; ++i) {
    *out++ = kDigits[bytes[i] >> 4];
    *out++ = kDigits[bytes[i] & 15];
  }
  *out = 0;
  return S_OK;
}

}  // namespace mirolta
