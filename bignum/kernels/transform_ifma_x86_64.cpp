// The transforms by AVX-512 IFMA, eight residues at a time.
#include "transform_kernel_tables.h"

#if MIROLTA_KERNELS_FOR(X86_64)

// gcc 12 warns of values that its own header leaves undefined on purpose.
  #pragma GCC diagnostic ignored "-Wuninitialized"
  #pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

  #include <immintrin.h>

  #define MIROLTA_TRANSFORM_TARGET __attribute__((target("avx512f,avx512dq,avx512vl,avx512ifma")))
  #include "transform_loops.h"

namespace mirolta {

namespace {

struct EightResidues {
  using Word = __m512i;
  using Loops = TransformLoops<EightResidues>;
  static constexpr size_t kWidth = 8;
  static constexpr bool kHasPairs = false;

  MIROLTA_TRANSFORM_TARGET static inline Word Load(const Limb* x) { return _mm512_loadu_si512(x); }
  MIROLTA_TRANSFORM_TARGET static inline Word LoadPart(const Limb* x, size_t limbs) {
    return _mm512_maskz_loadu_epi64(static_cast<__mmask8>((1u << limbs) - 1), x);
  }
  MIROLTA_TRANSFORM_TARGET static inline Word Broadcast(const Limb* x) { return Set(*x); }
  MIROLTA_TRANSFORM_TARGET static inline void Store(Limb* z, Word x) { _mm512_storeu_si512(z, x); }
  MIROLTA_TRANSFORM_TARGET static inline Word Set(uint64_t x) {
    return _mm512_set1_epi64(static_cast<long long>(x));
  }
  MIROLTA_TRANSFORM_TARGET static inline Word Add(Word x, Word y) { return _mm512_add_epi64(x, y); }
  MIROLTA_TRANSFORM_TARGET static inline Word Subtract(Word x, Word y) {
    return _mm512_sub_epi64(x, y);
  }
  MIROLTA_TRANSFORM_TARGET static inline Word Min(Word x, Word y) { return _mm512_min_epu64(x, y); }
  MIROLTA_TRANSFORM_TARGET static inline Word Or(Word x, Word y) { return _mm512_or_si512(x, y); }
  MIROLTA_TRANSFORM_TARGET static inline Word Mask(Word x) {
    return _mm512_and_si512(x, Set(kResidueMask));
  }
  template <uint32_t kBits>
  MIROLTA_TRANSFORM_TARGET static inline Word ShiftLeft(Word x) {
    return _mm512_slli_epi64(x, kBits);
  }
  template <uint32_t kBits>
  MIROLTA_TRANSFORM_TARGET static inline Word ShiftRight(Word x) {
    return _mm512_srli_epi64(x, kBits);
  }
  MIROLTA_TRANSFORM_TARGET static inline Word AddLow(Word sum, Word x, Word y) {
    return _mm512_madd52lo_epu64(sum, x, y);
  }
  MIROLTA_TRANSFORM_TARGET static inline Word AddHigh(Word sum, Word x, Word y) {
    return _mm512_madd52hi_epu64(sum, x, y);
  }
  MIROLTA_TRANSFORM_TARGET static inline Word AddIfNotLess(Word sum, Word x, Word y) {
    return _mm512_mask_sub_epi64(sum, _mm512_cmpge_epu64_mask(x, y), sum, _mm512_set1_epi64(-1));
  }
  MIROLTA_TRANSFORM_TARGET static inline Word Product(Word x, Word w, Word quotient, Word,
                                                      Word negated_p) {
    const Word zero = _mm512_setzero_si512();
    const Word q = _mm512_madd52hi_epu64(zero, x, quotient);
    const Word low = _mm512_madd52lo_epu64(zero, x, w);
    return Mask(_mm512_madd52lo_epu64(low, q, negated_p));
  }

  // Adds x[kAt] times y, rotated up by kAt lanes; those that wrap are taken from times_root.
  template <int kAt>
  MIROLTA_TRANSFORM_TARGET static inline void AddRow(Word& low, Word& high, const Limb* x, Word y,
                                                     Word times_root) {
    const Word by = Set(x[kAt]);
    const Word row = kAt == 0 ? y : _mm512_alignr_epi64(y, times_root, (8 - kAt) % 8);
    low = _mm512_madd52lo_epu64(low, row, by);
    high = _mm512_madd52hi_epu64(high, row, by);
  }
  MIROLTA_TRANSFORM_TARGET static void Multiply(Limb* z, const Limb* x, const Limb* y, size_t n,
                                                size_t node, const TransformTable& table,
                                                TransformFactor scale,
                                                const TransformPrime& prime) {
    const Loops::Field f(prime);
    const Loops::Factor by(scale);
    const Word negated_inverse = Set(prime.inverse);
    const Word four_p = Add(f.two_p, f.two_p), eight_p = Add(four_p, four_p);
    for (size_t i = 0; i < n; ++i) {
      const size_t leaf = node * n + i;
      const Loops::Factor root(table, leaf / 2);
      const size_t at = i * kBlockLimbs;
      const Word value = Loops::Reduce(Loops::Product(Load(y + at), by, f), f.p);
      Word times_root = Loops::Reduce(Loops::Product(value, root, f), f.p);
      if (leaf % 2 != 0) times_root = Subtract(f.p, times_root);
      Word low = Set(0), high = Set(0);
      AddRow<0>(low, high, x + at, value, times_root);
      AddRow<1>(low, high, x + at, value, times_root);
      AddRow<2>(low, high, x + at, value, times_root);
      AddRow<3>(low, high, x + at, value, times_root);
      AddRow<4>(low, high, x + at, value, times_root);
      AddRow<5>(low, high, x + at, value, times_root);
      AddRow<6>(low, high, x + at, value, times_root);
      AddRow<7>(low, high, x + at, value, times_root);
      // Montgomery reduction by 2^52. The sum is below 8 * 4 p * p, the result below 9 p.
      const Word factor = AddLow(Set(0), low, negated_inverse);
      Word reduced = AddHigh(high, factor, f.p);
      reduced = Add(reduced, ShiftRight<kResidueBits>(AddLow(low, factor, f.p)));
      reduced = Loops::Reduce(reduced, eight_p);
      reduced = Loops::Reduce(reduced, four_p);
      Store(z + at, Loops::Reduce(reduced, f.two_p));
    }
  }
};

}  // namespace

constexpr TransformKernels kIfmaTransforms = EightResidues::Loops::Table(130);

}  // namespace mirolta

#endif
