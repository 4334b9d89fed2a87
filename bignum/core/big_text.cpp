#include "big_text.h"

#include <new>

#include "limb_basics.h"
#include "limb_decimal.h"
#include "limb_scratch.h"

namespace mirolta {

namespace {

constexpr OLECHAR kDigits[] = OLESTR("0123456789abcdef");

// The value of a hexadecimal digit, or 16.
uint32_t HexDigit(OLECHAR c) {
  if (c >= '0' && c <= '9') return static_cast<uint32_t>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<uint32_t>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<uint32_t>(c - 'A' + 10);
  return 16;
}

HRESULT HexText(NumberText& text, const BigInt& n) {
  const uint64_t length = (n.bitLength() + 3) / 4;
  if (length >= UINT32_MAX) return E_OUTOFMEMORY;
  OLECHAR* const out = text.Resize(static_cast<uint32_t>(length));
  if (out == nullptr) return E_OUTOFMEMORY;
  const uint32_t* const digits = n.magnitude().digits();
  for (uint64_t i = 0; i < length; ++i) {
    out[length - 1 - i] = kDigits[digits[i / 8] >> (4 * (i % 8)) & 15];
  }
  return S_OK;
}

HRESULT DecimalText(NumberText& text, const BigInt& n) {
  const size_t limbs = LimbsForWords(n.used());
  const size_t room = DecimalDigitsRoom(limbs);
  LimbScratch value(limbs);
  LimbScratch characters(room / sizeof(Limb) + 1);
  if (value.get() == nullptr || characters.get() == nullptr) return E_OUTOFMEMORY;
  // Memory of limbs may be used as characters.
  char* const digits = reinterpret_cast<char*>(characters.get());
  LimbsFromWords(value.get(), n.magnitude().digits(), n.used());
  if (!DigitsFromLimbs(digits, value.get(), limbs)) return E_OUTOFMEMORY;
  size_t zeros = 0;
  while (digits[zeros] == '0') ++zeros;
  if (room - zeros >= UINT32_MAX) return E_OUTOFMEMORY;
  const uint32_t length = static_cast<uint32_t>(room - zeros);
  OLECHAR* const out = text.Resize(length);
  if (out == nullptr) return E_OUTOFMEMORY;
  for (uint32_t i = 0; i < length; ++i) out[i] = kDigits[digits[zeros + i] - '0'];
  return S_OK;
}

// The bytes that a text of this length may fill: ceil(length * 0.41524).
uint64_t DecimalBytes(uint32_t length) { return (uint64_t{length} * 41524 + 99999) / 100000; }

}  // namespace

NumberText::~NumberText() { Clear(); }

void NumberText::Clear() noexcept {
  if (characters_ != nullptr) WipeMemory(characters_, (size_t{length_} + 1) * sizeof(OLECHAR));
  delete[] characters_;
  characters_ = nullptr;
  length_ = 0;
}

OLECHAR* NumberText::Resize(uint32_t length) noexcept {
  OLECHAR* fresh = nullptr;
  if (length != 0) {
    fresh = new (std::nothrow) OLECHAR[size_t{length} + 1];
    if (fresh == nullptr) return nullptr;
    fresh[length] = 0;
  }
  Clear();
  characters_ = fresh;
  length_ = length;
  return fresh;
}

HRESULT ToText(NumberText& text, const BigInt& n, uint32_t base) noexcept {
  if (base != 10 && base != 16) return E_FAIL;
  if (FAILED(n.status())) return n.status();
  if (n.IsZero()) {
    text.Clear();
    return S_OK;
  }
  return base == 16 ? HexText(text, n) : DecimalText(text, n);
}

HRESULT FromDecimalText(BigInt& n, const OLECHAR* characters, uint32_t length) noexcept {
  uint32_t digits = 0;
  for (uint32_t i = 0; i < length; ++i) {
    if (characters[i] >= '0' && characters[i] <= '9') ++digits;
  }
  const size_t count = (size_t{digits} + kDecimalDigits - 1) / kDecimalDigits;
  LimbScratch memory(2 * count);
  if (memory.get() == nullptr) return E_OUTOFMEMORY;
  Limb* const chunks = memory.get();
  Limb* const value = chunks + count;
  // The first chunk takes what the others leave over.
  uint32_t left = digits;
  Limb chunk = 0;
  for (uint32_t i = 0; left != 0; ++i) {
    if (characters[i] < '0' || characters[i] > '9') continue;
    chunk = static_cast<Limb>(chunk * 10 + static_cast<Limb>(characters[i] - '0'));
    if (--left % kDecimalDigits == 0) {
      chunks[left / kDecimalDigits] = chunk;
      chunk = 0;
    }
  }
  if (!LimbsFromDecimal(value, chunks, count)) return E_OUTOFMEMORY;
  size_t limbs = count;
  const uint64_t bits = DecimalBytes(length) * 8;
  if (bits / kLimbBits < limbs) {
    limbs = static_cast<size_t>(bits / kLimbBits);
    if (bits % kLimbBits != 0) value[limbs++] &= kLimbMax >> (kLimbBits - bits % kLimbBits);
  }
  return n.AssignLimbs(value, limbs);
}

HRESULT FromHexText(BigInt& n, const OLECHAR* characters, uint32_t length) noexcept {
  uint32_t digits = 0;
  for (uint32_t i = 0; i < length; ++i) {
    if (HexDigit(characters[i]) < 16) ++digits;
  }
  BigMagnitude* const m = n.Rewrite(digits / 8 + (digits % 8 != 0 ? 1 : 0));
  if (m == nullptr) return E_OUTOFMEMORY;
  uint32_t* const words = m->digits();
  uint32_t left = digits;
  for (uint32_t i = 0; left != 0; ++i) {
    const uint32_t digit = HexDigit(characters[i]);
    if (digit == 16) continue;
    --left;
    words[left / 8] |= digit << (4 * (left % 8));
  }
  m->normalise();
  return S_OK;
}

}  // namespace mirolta
