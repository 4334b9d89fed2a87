#include "limb_decimal.h"

#include <new>

#include "limb_basics.h"
#include "limb_divide.h"
#include "limb_multiply.h"
#include "limb_scratch.h"

namespace mirolta {

namespace {

// Shorter values are converted chunk by chunk: measured for 64-bit limbs, estimated for 32-bit
// limbs.
constexpr size_t kChunksOut = kLimbBits == 64 ? 44 : 32;
constexpr size_t kChunksIn = kLimbBits == 64 ? 200 : 64;

// PowerTable holds kDecimalPower^(2^i) for i = 0, 1, ... below count.
class PowerTable {
 public:
  ~PowerTable() {
    for (size_t i = 0; i < kMost && powers_[i] != nullptr; ++i) delete powers_[i];
  }
  // Makes all powers with 2^i < chunks.
  bool Make(size_t chunks) {
    for (; size_t{1} << count_ < chunks; ++count_) {
      const size_t i = count_;
      const size_t n = i == 0 ? 1 : 2 * sizes_[i - 1];
      powers_[i] = new (std::nothrow) LimbScratch(n);
      if (powers_[i] == nullptr || powers_[i]->get() == nullptr) return false;
      if (i == 0) {
        powers_[0]->get()[0] = kDecimalPower;
      } else {
        const size_t half = sizes_[i - 1];
        LimbScratch scratch(MultiplyScratch(half, half));
        if (scratch.get() == nullptr) return false;
        MultiplyLimbs(powers_[i]->get(), power(i - 1), half, power(i - 1), half, scratch.get());
      }
      sizes_[i] = SignificantLimbs(powers_[i]->get(), n);
    }
    return true;
  }
  const Limb* power(size_t i) const { return powers_[i]->get(); }
  size_t size(size_t i) const { return sizes_[i]; }

 private:
  static constexpr size_t kMost = 40;
  LimbScratch* powers_[kMost] = {};
  size_t sizes_[kMost] = {};
  size_t count_ = 0;
};

// Writes value below 10^8 as eight digits: pairs of values below 10^4, 10^2 and 10 side by side in
// one number, the upper part of each at the lower bits, where its digits come first.
void EightDigits(char* digits, uint32_t value) {
  const uint64_t fours = value / 10000 | uint64_t{value % 10000} << 32;
  // x * 10486 / 2^20 is x / 100 for x < 10^4, and x * 103 / 2^10 is x / 10 for x < 100.
  const uint64_t hundreds = fours * 10486 >> 20 & 0x0000007F0000007F;
  const uint64_t twos = hundreds | (fours - hundreds * 100) << 16;
  const uint64_t tens = twos * 103 >> 10 & 0x000F000F000F000F;
  const uint64_t ones = (tens | (twos - tens * 10) << 8) + 0x3030303030303030;
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(digits, &ones, sizeof ones);
  } else {
    for (uint32_t i = 0; i < 8; ++i) digits[i] = static_cast<char>(ones >> (8 * i) & 0xFF);
  }
}

void DigitsOfChunk(char* digits, Limb chunk) {
  constexpr uint32_t kEight = 100000000;
  uint32_t left = kDecimalDigits;
  for (; left >= 8; left -= 8) {
    EightDigits(digits + left - 8, static_cast<uint32_t>(chunk % kEight));
    chunk /= kEight;
  }
  for (uint32_t rest = static_cast<uint32_t>(chunk); left-- != 0; rest /= 10) {
    digits[left] = static_cast<char>('0' + static_cast<int>(rest % 10));
  }
}

// Writes x[n] as count chunks; x < kDecimalPower^count.
void WriteChunks(char* digits, Limb* x, size_t n, size_t count) {
  const LimbDivisor divisor = PrepareDivisor(kDecimalPower);
  n = SignificantLimbs(x, n);
  Limb chunks[kRepeatedDivisions];
  while (count != 0) {
    if (n > 1 && count >= kRepeatedDivisions) {
      DivideRepeatedly(chunks, x, n, divisor);
    } else {
      for (Limb& chunk : chunks) {
        chunk = n != 0 ? DivideByLimb(x, x, n, divisor) : Limb{0};
        n = SignificantLimbs(x, n);
      }
    }
    n = SignificantLimbs(x, n);
    for (size_t i = 0; i < kRepeatedDivisions && count != 0; ++i) {
      DigitsOfChunk(digits + --count * kDecimalDigits, chunks[i]);
    }
  }
  WipeMemory(chunks, sizeof chunks);
}

// Splits at the largest power of two of chunks below count.
bool WriteDigits(char* digits, Limb* x, size_t n, size_t count, const PowerTable& powers) {
  n = SignificantLimbs(x, n);
  if (n <= kChunksOut) {
    WriteChunks(digits, x, n, count);
    return true;
  }
  size_t i = 0;
  while (size_t{2} << i < count) ++i;
  const size_t low = size_t{1} << i;
  const size_t pn = powers.size(i);
  char* const low_digits = digits + (count - low) * kDecimalDigits;
  if (n < pn) {
    WriteChunks(digits, x, 0, count - low);
    return WriteDigits(low_digits, x, n, low, powers);
  }
  LimbScratch quotient(n - pn + 1);
  if (quotient.get() == nullptr) return false;
  if (!DivideLimbs(quotient.get(), x, x, n, powers.power(i), pn)) return false;
  return WriteDigits(digits, quotient.get(), n - pn + 1, count - low, powers) &&
         WriteDigits(low_digits, x, pn, low, powers);
}

void ReadFewChunks(Limb* z, const Limb* chunks, size_t n) {
  const LimbKernels& k = CurrentLimbKernels();
  z[0] = chunks[n - 1];
  for (size_t i = 1; i < n; ++i) {
    z[i] = k.mul1(z, z, i, kDecimalPower);
    AddLimb(z, i + 1, chunks[n - 1 - i]);
  }
}

bool ReadChunks(Limb* z, const Limb* chunks, size_t n, const PowerTable& powers) {
  const LimbKernels& k = CurrentLimbKernels();
  if (n <= kChunksIn) {
    ReadFewChunks(z, chunks, n);
    return true;
  }
  size_t i = 0;
  while (size_t{2} << i < n) ++i;
  const size_t low = size_t{1} << i;
  const size_t high = n - low;
  const size_t pn = powers.size(i);
  // The value fits n limbs, so what the product has above them is zero.
  LimbScratch memory(high + high + pn + MultiplyScratch(high, pn));
  if (memory.get() == nullptr) return false;
  Limb* const upper = memory.get();
  Limb* const product = upper + high;
  if (!ReadChunks(upper, chunks + low, high, powers)) return false;
  if (!ReadChunks(z, chunks, low, powers)) return false;
  MultiplyLimbs(product, upper, high, powers.power(i), pn, product + high + pn);
  ZeroLimbs(z + low, high);
  size_t count = high + pn;
  if (count > n) count = n;
  const Limb carry = k.add(z, z, product, count);
  AddLimb(z + count, n - count, carry);
  return true;
}

size_t ChunksRoom(size_t n) {
  // log10(2^64) = 19.27 digits a limb and 19 a chunk; 9.64 and 9 for 32 bits.
  return kLimbBits == 64 ? n + n / 64 + 1 : n + n / 12 + 1;
}

}  // namespace

size_t DecimalDigitsRoom(size_t n) noexcept {
  return ChunksRoom(n) * kDecimalDigits;
}

bool DigitsFromLimbs(char* digits, Limb* x, size_t n) noexcept {
  const size_t count = ChunksRoom(n);
  if (n <= kChunksOut) {
    WriteChunks(digits, x, n, count);
    return true;
  }
  PowerTable powers;
  if (!powers.Make(count)) return false;
  return WriteDigits(digits, x, n, count, powers);
}

bool LimbsFromDecimal(Limb* z, const Limb* chunks, size_t n) noexcept {
  if (n == 0) return true;
  if (n <= kChunksIn) {
    ReadFewChunks(z, chunks, n);
    return true;
  }
  PowerTable powers;
  if (!powers.Make(n)) return false;
  return ReadChunks(z, chunks, n, powers);
}

}  // namespace mirolta
