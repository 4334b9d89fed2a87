#include "big_text.h"

#include "decimal_conversion.h"
#include "hex_kernels.h"
#include "limb_basics.h"
#include "limb_scratch.h"

namespace mirolta {

namespace {

HRESULT HexText(NumberText& text, const BigInt& n) {
  const uint64_t length = (n.BitLength() + 3) / 4;
  if (length >= UINT32_MAX) return E_OUTOFMEMORY;
  OLECHAR* out = text.Resize(static_cast<uint32_t>(length));
  if (out == nullptr) return E_OUTOFMEMORY;
  const uint32_t* const words = n.Magnitude().Words();
  const uint32_t whole = static_cast<uint32_t>(length / 8);
  // The top word may have fewer than eight digits.
  const uint32_t part = static_cast<uint32_t>(length % 8);
  if (part != 0) {
    OLECHAR digits[8];
    CurrentHexKernels().write(digits, words + whole, 1);
    for (uint32_t i = 0; i < part; ++i) *out++ = digits[8 - part + i];
    WipeMemory(digits, sizeof digits);
  }
  CurrentHexKernels().write(out, words, whole);
  return S_OK;
}

HRESULT DecimalText(NumberText& text, const BigInt& n) {
  const size_t limbs = LimbsForWords(n.Used());
  const CheckedSize digits_room = DecimalRoom(limbs);
  if (digits_room.Value() == CheckedSize::kTooLarge) return E_OUTOFMEMORY;
  const size_t room = digits_room.Value();
  const size_t room_limbs = room / sizeof(Limb) + 1;
  LimbScratch value{CheckedSize(limbs)};
  LimbScratch characters{CheckedSize(room_limbs)};
  if (value.Get() == nullptr || characters.Get() == nullptr) return E_OUTOFMEMORY;
  // char may alias limbs.
  char* const digits = reinterpret_cast<char*>(characters.Get());
  LimbsFromWords(value.Get(), n.Magnitude().Words(), n.Used());
  if (!DecimalFromLimbs(digits, value.Get(), limbs)) return E_OUTOFMEMORY;
  size_t zeros = 0;
  while (digits[zeros] == '0') ++zeros;
  if (room - zeros >= UINT32_MAX) return E_OUTOFMEMORY;
  const uint32_t length = static_cast<uint32_t>(room - zeros);
  OLECHAR* const out = text.Resize(length);
  if (out == nullptr) return E_OUTOFMEMORY;
  // Digits have the same values in char and OLECHAR.
  for (uint32_t i = 0; i < length; ++i) out[i] = static_cast<OLECHAR>(digits[zeros + i]);
  return S_OK;
}

// The bytes that a text of this length is truncated to: ceil(length * 0.41524).
uint64_t DecimalBytes(uint32_t length) {
  return (uint64_t{length} * 41524 + 99999) / 100000;
}

// The number of digits among the characters.
uint32_t CountDigits(const OLECHAR* characters, uint32_t length) {
  // Usually there are only digits, and checking that is faster than counting.
  uint16_t others = 0;
  for (uint32_t i = 0; i < length; ++i) {
    others = static_cast<uint16_t>(others | (static_cast<uint16_t>(characters[i] - '0') > 9));
  }
  if (others == 0) return length;
  uint32_t digits = 0;
  for (uint32_t i = 0; i < length; ++i) {
    if (characters[i] >= '0' && characters[i] <= '9') ++digits;
  }
  return digits;
}

// The value of count digits.
Limb DigitsValue(const OLECHAR* characters, uint32_t count) {
  Limb value = 0;
  // Eight at a time, in pairs, for a short dependency chain.
  for (; count >= 8; count -= 8, characters += 8) {
    uint32_t pairs[4];
    for (uint32_t i = 0; i < 4; ++i) {
      pairs[i] = uint32_t{characters[2 * i]} * 10 + characters[2 * i + 1] - 11 * uint32_t{'0'};
    }
    const uint32_t high = pairs[0] * 100 + pairs[1];
    const uint32_t low = pairs[2] * 100 + pairs[3];
    value = static_cast<Limb>(value * 100000000 + (high * 10000 + low));
  }
  for (; count != 0; --count) {
    value = static_cast<Limb>(value * 10 + static_cast<Limb>(*characters++ - '0'));
  }
  return value;
}

// Converts count digits to chunks, least significant first. The most significant chunk may be
// shorter.
void ReadDigits(Limb* chunks, const OLECHAR* characters, uint32_t count) {
  uint32_t take = count % kDecimalDigits != 0 ? count % kDecimalDigits : kDecimalDigits;
  for (uint32_t left = count; left != 0; take = kDecimalDigits) {
    left -= take;
    chunks[left / kDecimalDigits] = DigitsValue(characters, take);
    characters += take;
  }
}

// The same for count digits among other characters.
void ReadSpreadDigits(Limb* chunks, const OLECHAR* characters, uint32_t count) {
  Limb chunk = 0;
  for (uint32_t left = count; left != 0; ++characters) {
    if (*characters < '0' || *characters > '9') continue;
    chunk = static_cast<Limb>(chunk * 10 + static_cast<Limb>(*characters - '0'));
    if (--left % kDecimalDigits == 0) {
      chunks[left / kDecimalDigits] = chunk;
      chunk = 0;
    }
  }
}

}  // namespace

NumberText::~NumberText() {
  Clear();
}

void NumberText::Clear() noexcept {
  if (characters_ != nullptr) WipeMemory(characters_, (size_t{capacity_} + 1) * sizeof(OLECHAR));
  delete[] characters_;
  characters_ = nullptr;
  length_ = 0;
  capacity_ = 0;
}

OLECHAR* NumberText::Resize(uint32_t length) noexcept {
  if (length > capacity_) {
    OLECHAR* const fresh = NewArray<OLECHAR>(CheckedSize(length) + 1);
    if (fresh == nullptr) return nullptr;
    Clear();
    characters_ = fresh;
    capacity_ = length;
  }
  characters_[length] = 0;
  length_ = length;
  return characters_;
}

HRESULT ToText(NumberText& text, const BigInt& n, uint32_t base) noexcept {
  if (base != 10 && base != 16) return E_FAIL;
  if (FAILED(n.Status())) return n.Status();
  if (n.IsZero()) {
    text.Clear();
    return S_OK;
  }
  return base == 16 ? HexText(text, n) : DecimalText(text, n);
}

HRESULT FromDecimalText(BigInt& n, const OLECHAR* characters, uint32_t length) noexcept {
  const uint32_t digits = CountDigits(characters, length);
  const size_t count = (size_t{digits} + kDecimalDigits - 1) / kDecimalDigits;
  LimbScratch memory(2 * CheckedSize(count));
  if (memory.Get() == nullptr) return E_OUTOFMEMORY;
  Limb* const chunks = memory.Get();
  Limb* const value = chunks + count;
  if (digits == length) {
    ReadDigits(chunks, characters, digits);
  } else {
    ReadSpreadDigits(chunks, characters, digits);
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
  const HexKernels& kernels = CurrentHexKernels();
  uint32_t* const words = m->Words();
  uint32_t filled = 0;
  uint32_t shift = 0;
  uint32_t word = 0;
  for (uint32_t left = length; left != 0;) {
    if (shift == 0 && left >= 8) {
      const size_t made = kernels.read(words + filled, characters + left, left / 8);
      filled += static_cast<uint32_t>(made);
      left -= static_cast<uint32_t>(made) * 8;
      if (left == 0) break;
    }
    // A character that is no digit is skipped, also within a word.
    const uint32_t digit = HexDigitValue(characters[--left]);
    if (digit == kNoHexDigit) continue;
    word |= digit << shift;
    shift += 4;
    if (shift == 32) {
      words[filled++] = word;
      word = 0;
      shift = 0;
    }
  }
  if (shift != 0) words[filled] = word;
  m->Normalise();
  return S_OK;
}

}  // namespace mirolta
