// The transforms in plain C++, a residue at a time.
#define MIROLTA_TRANSFORM_TARGET
#include "transform_kernel_tables.h"
#include "transform_loops.h"
#include "transform_words.h"

namespace mirolta {

namespace {

// A sum of products of 128 bits.
struct ProductSum {
  uint64_t low = 0;
  uint64_t high = 0;

  void Add(uint64_t a, uint64_t b) {
    const uint64_t product = a * b;
    low += product;
    high += HighProduct(a, b) + (low < product ? 1 : 0);
  }
};

struct SingleResidue : SingleWord {
  using Loops = TransformLoops<SingleResidue>;
  static constexpr bool kHasPairs = false;

  static Word Add(Word x, Word y) { return x + y; }
  static Word Subtract(Word x, Word y) { return x - y; }
  static Word Min(Word x, Word y) { return x < y ? x : y; }
  static Word Or(Word x, Word y) { return x | y; }
  static Word Mask(Word x) { return x & kResidueMask; }
  template <uint32_t kBits>
  static Word ShiftLeft(Word x) {
    return x << kBits;
  }
  template <uint32_t kBits>
  static Word ShiftRight(Word x) {
    return x >> kBits;
  }
  // sum + the lower, or the upper, 52 bits of x * y, both below 2^52.
  static Word AddLow(Word sum, Word x, Word y) { return sum + Mask(x * y); }
  static Word AddHigh(Word sum, Word x, Word y) { return sum + HighProduct(x << 12, y); }
  // sum + 1 where x >= y.
  static Word AddIfNotLess(Word sum, Word x, Word y) { return sum + (x < y ? 0 : 1); }
  static Word Product(Word x, Word w, Word quotient, Word p, Word) {
    return x * w - HighProduct(x << 12, quotient) * p;
  }

  static void Multiply(Limb* z, const Limb* x, const Limb* y, size_t n, size_t node,
                       const TransformTable& table, TransformFactor scale,
                       const TransformPrime& prime) {
    const Loops::Field f(prime);
    const Loops::Factor by(scale);
    for (size_t i = 0; i < n; ++i) {
      const size_t leaf = node * n + i;
      const Loops::Factor root(table, leaf / 2);
      // y R, then y from element kBlock - 1 on: x times y modulo x^8 - R is a convolution with it.
      Word wrapped[2 * kBlock - 1];
      for (size_t k = 0; k < kBlock; ++k) {
        const Word value = Loops::Reduce(
            Loops::Product(Load(y + i * kBlockLimbs + k * kElementLimbs), by, f), f.p);
        wrapped[kBlock - 1 + k] = value;
        if (k == 0) continue;
        const Word times_root = Loops::Reduce(Loops::Product(value, root, f), f.p);
        wrapped[k - 1] = leaf % 2 == 0 ? times_root : f.p - times_root;
      }
      Word values[kBlock];
      for (size_t k = 0; k < kBlock; ++k) {
        values[k] = Load(x + i * kBlockLimbs + k * kElementLimbs);
      }
      for (size_t k = 0; k < kBlock; ++k) {
        ProductSum sum;
        for (size_t j = 0; j < kBlock; ++j) sum.Add(values[j], wrapped[kBlock - 1 + k - j]);
        // Montgomery reduction by 2^52. The sum is below 8 * 4 p * p, the result below 9 p.
        const Word low = Mask(sum.low);
        const Word factor = Mask(low * prime.inverse);
        Word value = (sum.high << 12 | sum.low >> kResidueBits) + (low != 0 ? 1 : 0);
        value = AddHigh(value, factor, f.p);
        value = Loops::Reduce(value, 4 * f.two_p);
        value = Loops::Reduce(value, 2 * f.two_p);
        Store(z + i * kBlockLimbs + k * kElementLimbs, Loops::Reduce(value, f.two_p));
      }
    }
  }
};

}  // namespace

// Measured.
constexpr TransformKernels kPortableTransforms = SingleResidue::Loops::Table(3900);

}  // namespace mirolta
