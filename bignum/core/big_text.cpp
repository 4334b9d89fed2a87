#include "big_text.h"

#include <new>

#include "limb_basics.h"
#include "limb_decimal.h"
#include "limb_scratch.h"

namespace mirolta {

namespace {

constexpr OLECHAR kDigits[] = OLESTR("0123456789abcdef");

// The value of each character below 128 as a hexadecimal digit, or 16.
struct HexValues {
  uint8_t of[128];
};

constexpr HexValues MakeHexValues() {
  HexValues values = {};
  for (int c = 0; c < 128; ++c) {
    uint8_t value = 16;
    if (c >= '0' && c <= '9') value = static_cast<uint8_t>(c - '0');
    if (c >= 'a' && c <= 'f') value = static_cast<uint8_t>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F') value = static_cast<uint8_t>(c - 'A' + 10);
    values.of[c] = value;
  }
  return values;
}

constexpr HexValues kHexValues = MakeHexValues();

uint32_t HexDigit(OLECHAR c) {
  return c < 128 ? kHexValues.of[c] : 16;
}

HRESULT HexText(NumberText& text, const BigInt& n) {
  const uint64_t length = (n.bitLength() + 3) / 4;
  if (length >= UINT32_MAX) return E_OUTOFMEMORY;
  OLECHAR* const out = text.Resize(static_cast<uint32_t>(length));
  if (out == nullptr) return E_OUTOFMEMORY;
  const uint32_t* const digits = n.magnitude().digits();
  // Whole words from the end, then what is left of the top one.
  OLECHAR* end = out + length;
  uint32_t i = 0;
  for (; end - out >= 8; ++i) {
    end -= 8;
    for (uint32_t j = 0; j < 8; ++j) end[j] = kDigits[digits[i] >> (28 - 4 * j) & 15];
  }
  for (uint32_t word = end != out ? digits[i] : 0; end != out; word >>= 4)
    *--end = kDigits[word & 15];
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
uint64_t DecimalBytes(uint32_t length) {
  return (uint64_t{length} * 41524 + 99999) / 100000;
}

}  // namespace

NumberText::~NumberText() {
  Clear();
}

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
  // As many words as the characters could fill; skipped ones leave words zero.
  BigMagnitude* const m = n.Rewrite(length / 8 + (length % 8 != 0 ? 1 : 0));
  if (m == nullptr) return E_OUTOFMEMORY;
  uint32_t* const words = m->digits();
  uint32_t filled = 0;
  uint32_t shift = 0;
  uint32_t word = 0;
  for (uint32_t i = length; i-- != 0;) {
    const uint32_t digit = HexDigit(characters[i]);
    if (digit == 16) continue;
    word |= digit << shift;
    shift += 4;
    if (shift == 32) {
      words[filled++] = word;
      word = 0;
      shift = 0;
    }
  }
  if (shift != 0) words[filled] = word;
  m->normalise();
  return S_OK;
}

}  // namespace mirolta
