// The transforms modulo pairs of primes in plain C++, a pair of residues at a time.
#define MIROLTA_TRANSFORM_TARGET
#include "transform_kernel_tables.h"
#include "transform_loops.h"
#include "transform_words.h"

namespace mirolta {

namespace {

struct SinglePair : SingleWord {
  using Loops = TransformLoops<SinglePair>;
  static constexpr bool kHasPairs = true;

  static uint32_t Low(Word x) { return static_cast<uint32_t>(x); }
  static uint32_t High(Word x) { return static_cast<uint32_t>(x >> 32); }
  static uint32_t Lesser(uint32_t x, uint32_t y) { return x < y ? x : y; }

  static Word Add(Word x, Word y) { return JoinHalves(Low(x) + Low(y), High(x) + High(y)); }
  static Word Subtract(Word x, Word y) { return JoinHalves(Low(x) - Low(y), High(x) - High(y)); }
  static Word Min(Word x, Word y) {
    return JoinHalves(Lesser(Low(x), Low(y)), Lesser(High(x), High(y)));
  }
  static uint32_t HalfProduct(uint32_t x, uint32_t w, uint32_t quotient, uint32_t p) {
    const uint64_t multiple = uint64_t{x * quotient} * p;
    return static_cast<uint32_t>(static_cast<uint64_t>(x) * w >> 32) -
           static_cast<uint32_t>(multiple >> 32) + p;
  }
  static Word Product(Word x, Word w, Word quotient, Word p, Word) {
    return JoinHalves(HalfProduct(Low(x), Low(w), Low(quotient), Low(p)),
                      HalfProduct(High(x), High(w), High(quotient), High(p)));
  }
  // The lower halves of the halves' products.
  static Word LowProducts(Word x, Word y) { return JoinHalves(Low(x) * Low(y), High(x) * High(y)); }
  // One half twice, and one half as 64 bits.
  static Word LowTwice(Word x) { return JoinHalves(Low(x), Low(x)); }
  static Word HighTwice(Word x) { return JoinHalves(High(x), High(x)); }
  static Word LowHalf(Word x) { return Low(x); }
  static Word HighHalf(Word x) { return High(x); }
  // Of 64 bits: the product of the lower halves, and a sum.
  static Word WideProduct(Word x, Word y) { return uint64_t{Low(x)} * Low(y); }
  static Word AddWide(Word x, Word y) { return x + y; }
  static Word Join(Word low, Word high) { return JoinHalves(Low(low), Low(high)); }

  static uint32_t ReduceSum(uint64_t sum, uint32_t p, uint32_t inverse) {
    const uint64_t multiple = uint64_t{Low(sum) * inverse} * p;
    const uint32_t high = Lesser(High(sum), High(sum) - 2 * p);
    const uint32_t r = high - High(multiple) + p;
    return Lesser(r, r - 2 * p);
  }
  static void Multiply(Limb* z, const Limb* x, const Limb* y, size_t n, size_t node,
                       const TransformTable& table, TransformFactor scale,
                       const TransformPrime& prime) {
    const Loops::Field f(prime);
    const Loops::Factor by(scale);
    for (size_t i = 0; i < n; ++i) {
      const size_t leaf = node * n + i;
      const Loops::Factor root(table, leaf / 2);
      // y R, then y from element kBlock on: x times y modulo x^8 - R is a convolution with it.
      Word wrapped[2 * kBlock], values[kBlock];
      for (size_t k = 0; k < kBlock; ++k) {
        const size_t at = i * kBlockLimbs + k * kElementLimbs;
        const Word value = Loops::Reduce(Loops::Product(Load(y + at), by, f), f.p);
        const Word times_root = Loops::Reduce(Loops::Product(value, root, f), f.p);
        wrapped[kBlock + k] = value;
        wrapped[k] = leaf % 2 == 0 ? times_root : Subtract(f.p, times_root);
        values[k] = Loops::Reduce(Load(x + at), f.two_p);
      }
      for (size_t k = 0; k < kBlock; ++k) {
        // Below 8 * 2 p * p < 2^64.
        uint64_t low = 0, high = 0;
        for (size_t j = 0; j < kBlock; ++j) {
          const Word other = wrapped[kBlock + k - j];
          low += uint64_t{Low(values[j])} * Low(other);
          high += uint64_t{High(values[j])} * High(other);
        }
        Store(z + i * kBlockLimbs + k * kElementLimbs,
              JoinHalves(ReduceSum(low, Low(f.p), Low(prime.inverse)),
                         ReduceSum(high, High(f.p), High(prime.inverse))));
      }
    }
  }
};

}  // namespace

// By instruction counts for 32-bit limbs.
constexpr TransformKernels kPairTransforms = SinglePair::Loops::Table(4000);

}  // namespace mirolta
