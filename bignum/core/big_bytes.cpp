#include "big_bytes.h"

namespace mirolta {

HRESULT FromBytes(BigInt& n, const uint8_t* bytes, uint32_t length) noexcept {
  const uint32_t words = length / 4 + (length % 4 != 0 ? 1 : 0);
  BigMagnitude* const m = n.Rewrite(words);
  if (m == nullptr) return E_OUTOFMEMORY;
  uint32_t* const digits = m->Words();
  uint32_t left = length;
  uint32_t i = 0;
  for (; left >= 4; left -= 4) {
    const uint8_t* const p = bytes + left - 4;
    digits[i++] = uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 8 | p[3];
  }
  uint32_t top = 0;
  for (uint32_t j = 0; j < left; ++j) top = top << 8 | bytes[j];
  if (left != 0) digits[i] = top;
  m->Normalise();
  return S_OK;
}

uint64_t ByteLength(const BigInt& n) noexcept {
  return (n.BitLength() + 7) / 8;
}

void ToBytes(uint8_t* bytes, const BigInt& n) noexcept {
  const uint32_t* const digits = n.Magnitude().Words();
  uint64_t left = ByteLength(n);
  for (uint32_t i = 0; left != 0; ++i) {
    uint32_t word = digits[i];
    for (int j = 0; j < 4 && left != 0; ++j) {
      bytes[--left] = static_cast<uint8_t>(word);
      word >>= 8;
    }
  }
}

}  // namespace mirolta
