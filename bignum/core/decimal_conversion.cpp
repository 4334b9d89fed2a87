#include "decimal_conversion.h"

#include <cstring>

#include "divide.h"
#include "limb_basics.h"
#include "limb_scratch.h"
#include "multiply.h"

namespace mirolta {

namespace {

// Up to kChunksOut and kChunksIn chunks, a value is converted chunk by chunk. Longer ones are split
// into leaves of at most kChunksOut and kLeafIn chunks. Measured for 64-bit limbs, estimated for
// 32-bit limbs.
constexpr size_t kChunksOut = kLimbBits == 64 ? 30 : 32;
constexpr size_t kChunksIn = kLimbBits == 64 ? 80 : 64;
constexpr size_t kLeafIn = 40;

// Writes value, below 10^8, as eight digits. Values below 10^4, then 10^2, then 10 are packed in
// one integer, the more significant half of each pair in the lower bits, whose bytes come first.
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

// Writes x as count chunks.
// Shapes: x[n] < kDecimalPower^count, destroyed.
void WriteChunks(char* digits, Limb* x, size_t n, size_t count) {
  const LimbDivisor divisor = PrepareDivisor(kDecimalPower);
  n = SignificantLimbs(x, n);
  Limb chunks[kRepeatedDivisions];
  while (count != 0) {
    if (count >= kRepeatedDivisions) {
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

// LeafWriter writes the leaves of a long number. It converts a leaf x to the fraction x / D and
// multiplies that by kDecimalPower again and again: each product's integer part is the next chunk,
// and the fraction needs a limb less each time.
//
// With c chunks in a leaf, D = kDecimalPower^c and inverse = floor(B^2c / D) + 1, the fraction of x
// is (x * inverse + inverse / 2) / B^2c. It exceeds (x + 1/2) / D by less than D / B^2c, a tenth of
// 1 / D. The chunks are correct while it is in [x / D, (x + 1) / D), so 1/2 is the margin for
// truncation: the upper c + 1 limbs are kept, and a limb less after every chunk. Each truncation
// loses less than 1 / B of the scaled 1 / D.
// Source: Knuth TAOCP 2, 4.4, method 2a.
class LeafWriter {
 public:
  explicit LeafWriter(const DecimalPowers& powers)
      : leaf_(powers.Leaf()),
        inverse_size_(2 * leaf_ + 2 - powers[0].size - powers[0].zeros),
        memory_(3 * CheckedSize(inverse_size_) + CheckedSize(leaf_) +
                MultiplyScratch(inverse_size_, leaf_)) {}

  // Make computes the inverse; false if memory runs out.
  [[nodiscard]] bool Make(const DecimalPower& power) {
    const size_t n = 2 * leaf_ - power.zeros + 1;
    LimbScratch one{CheckedSize(n)};
    if (memory_.Get() == nullptr || one.Get() == nullptr) return false;
    ZeroLimbs(one.Get(), n - 1);
    one.Get()[n - 1] = 1;
    if (!DivideLimbs(Inverse(), nullptr, one.Get(), n, power.limbs, power.size)) return false;
    AddLimb(Inverse(), inverse_size_, 1);
    ShiftRightLimbs(Half(), Inverse(), inverse_size_, 1);
    return true;
  }

  // Write writes x as count chunks.
  // Shapes: x[n] < D.
  void Write(char* digits, const Limb* x, size_t n, size_t count) {
    const LimbKernels& k = CurrentLimbKernels();
    Limb* const product = Half() + inverse_size_;
    const size_t size = leaf_ + inverse_size_;
    ZeroLimbs(product, size);
    if (n != 0) MultiplyLimbs(product, Inverse(), inverse_size_, x, n, product + size);
    const Limb carry = k.add(product, product, Half(), inverse_size_);
    AddLimb(product + inverse_size_, leaf_, carry);
    Limb* fraction = product + leaf_ - 1;
    for (size_t left = leaf_; left != 0; --left, ++fraction) {
      const Limb chunk = k.mul1(fraction, fraction, left + 1, kDecimalPower);
      // A shorter leaf has leading zero chunks, which are not written.
      if (left > count) continue;
      DigitsOfChunk(digits, chunk);
      digits += kDecimalDigits;
    }
  }

 private:
  Limb* Inverse() { return memory_.Get(); }
  Limb* Half() { return memory_.Get() + inverse_size_; }

  size_t leaf_;
  size_t inverse_size_;
  LimbScratch memory_;  // inverse, inverse / 2, product and its scratch
};

// Writes x as count chunks, count <= leaf * 2^level.
// Shapes: x[n], destroyed.
bool WriteDigits(char* digits, Limb* x, size_t n, size_t count, const DecimalPowers& powers,
                 size_t level, LeafWriter& leaves) {
  n = SignificantLimbs(x, n);
  if (level == 0) {
    leaves.Write(digits, x, n, count);
    return true;
  }
  const size_t low = powers.Leaf() << (level - 1);
  if (count <= low) return WriteDigits(digits, x, n, count, powers, level - 1, leaves);
  const DecimalPower& power = powers[level - 1];
  char* const low_digits = digits + (count - low) * kDecimalDigits;
  if (n < power.zeros + power.size) {
    std::memset(digits, '0', (count - low) * kDecimalDigits);
    return WriteDigits(low_digits, x, n, low, powers, level - 1, leaves);
  }
  // The power's trailing zero limbs do not affect those of x.
  Limb* const upper = x + power.zeros;
  const size_t m = n - power.zeros;
  const size_t quotient_size = m - power.size + 1;
  LimbScratch quotient{CheckedSize(quotient_size)};
  if (quotient.Get() == nullptr) return false;
  if (!DivideLimbs(quotient.Get(), upper, upper, m, power.limbs, power.size)) return false;
  return WriteDigits(digits, quotient.Get(), quotient_size, count - low, powers, level - 1,
                     leaves) &&
         WriteDigits(low_digits, x, power.zeros + power.size, low, powers, level - 1, leaves);
}

void ReadFewChunks(Limb* z, const Limb* chunks, size_t n) {
  const LimbKernels& k = CurrentLimbKernels();
  z[0] = chunks[n - 1];
  for (size_t i = 1; i < n; ++i) {
    z[i] = k.mul1(z, z, i, kDecimalPower);
    AddLimb(z, i + 1, chunks[n - 1 - i]);
  }
}

// z[n] := the value of n chunks, n <= leaf * 2^level.
bool ReadChunks(Limb* z, const Limb* chunks, size_t n, const DecimalPowers& powers, size_t level) {
  if (level == 0) {
    ReadFewChunks(z, chunks, n);
    return true;
  }
  const size_t low = powers.Leaf() << (level - 1);
  if (n <= low) return ReadChunks(z, chunks, n, powers, level - 1);
  const DecimalPower& power = powers[level - 1];
  const size_t high = n - low;
  LimbScratch memory(2 * CheckedSize(high) + CheckedSize(power.size) +
                     MultiplyScratch(high, power.size));
  if (memory.Get() == nullptr) return false;
  Limb* const upper = memory.Get();
  Limb* const product = upper + high;
  if (!ReadChunks(upper, chunks + low, high, powers, level - 1)) return false;
  if (!ReadChunks(z, chunks, low, powers, level - 1)) return false;
  MultiplyLimbs(product, upper, high, power.limbs, power.size, product + high + power.size);
  ZeroLimbs(z + low, high);
  // The value fits n limbs, so the product is zero above them.
  Limb* const to = z + power.zeros;
  const size_t room = n - power.zeros;
  const size_t count = high + power.size < room ? high + power.size : room;
  const Limb carry = CurrentLimbKernels().add(to, to, product, count);
  AddLimb(to + count, room - count, carry);
  return true;
}

CheckedSize ChunksRoom(size_t n) {
  // A 64-bit limb has log10(2^64) = 19.27 digits, its chunk 19; a 32-bit limb 9.64, its chunk 9.
  const size_t part = kLimbBits == 64 ? n / 64 : n / 12;
  return CheckedSize(n) + CheckedSize(part) + 1;
}

}  // namespace

CheckedSize DecimalRoom(size_t n) noexcept {
  return ChunksRoom(n) * SizeConstant(kDecimalDigits);
}

bool DecimalFromLimbs(char* digits, Limb* x, size_t n) noexcept {
  const size_t count = ChunksRoom(n).Value();
  if (count <= kChunksOut) {
    WriteChunks(digits, x, n, count);
    return true;
  }
  DecimalPowers powers;
  if (!powers.Make(count, kChunksOut)) return false;
  LeafWriter leaves(powers);
  if (!leaves.Make(powers[0])) return false;
  return WriteDigits(digits, x, n, count, powers, powers.Levels(), leaves);
}

bool LimbsFromDecimal(Limb* z, const Limb* chunks, size_t n) noexcept {
  if (n == 0) return true;
  if (n <= kChunksIn) {
    ReadFewChunks(z, chunks, n);
    return true;
  }
  DecimalPowers powers;
  if (!powers.Make(n, kLeafIn)) return false;
  return ReadChunks(z, chunks, n, powers, powers.Levels());
}

}  // namespace mirolta
