// The transforms by AVX2, four pairs of residues at a time.
#include "transform_kernel_tables.h"

#if MIROLTA_KERNELS_FOR(X86_64)

  #include <immintrin.h>

  #define MIROLTA_TRANSFORM_TARGET __attribute__((target("avx2")))
  #include "transform_loops.h"

namespace mirolta {

namespace {

struct FourPairs {
  using Word = __m256i;
  using Loops = TransformLoops<FourPairs>;
  static constexpr size_t kWidth = 4;
  static constexpr bool kHasPairs = true;

  MIROLTA_TRANSFORM_TARGET static inline Word Load(const Limb* x) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i_u*>(x));
  }
  MIROLTA_TRANSFORM_TARGET static inline Word LoadPart(const Limb* x, size_t limbs) {
    const auto at = [=](size_t i) { return static_cast<long long>(i < limbs ? x[i] : 0); };
    return _mm256_setr_epi64x(at(0), at(1), at(2), at(3));
  }
  MIROLTA_TRANSFORM_TARGET static inline Word Broadcast(const Limb* x) { return Set(*x); }
  MIROLTA_TRANSFORM_TARGET static inline void Store(Limb* z, Word x) {
    _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(z), x);
  }
  MIROLTA_TRANSFORM_TARGET static inline Word Set(uint64_t x) {
    return _mm256_set1_epi64x(static_cast<long long>(x));
  }
  MIROLTA_TRANSFORM_TARGET static inline Word Add(Word x, Word y) { return _mm256_add_epi32(x, y); }
  MIROLTA_TRANSFORM_TARGET static inline Word Subtract(Word x, Word y) {
    return _mm256_sub_epi32(x, y);
  }
  MIROLTA_TRANSFORM_TARGET static inline Word Min(Word x, Word y) { return _mm256_min_epu32(x, y); }
  MIROLTA_TRANSFORM_TARGET static inline Word HighHalf(Word x) { return _mm256_srli_epi64(x, 32); }
  MIROLTA_TRANSFORM_TARGET static inline Word LowHalf(Word x) {
    return _mm256_blend_epi32(x, _mm256_setzero_si256(), 0xAA);
  }
  MIROLTA_TRANSFORM_TARGET static inline Word LowTwice(Word x) {
    return _mm256_shuffle_epi32(x, 0xA0);
  }
  MIROLTA_TRANSFORM_TARGET static inline Word HighTwice(Word x) {
    return _mm256_shuffle_epi32(x, 0xF5);
  }
  MIROLTA_TRANSFORM_TARGET static inline Word WideProduct(Word x, Word y) {
    return _mm256_mul_epu32(x, y);
  }
  MIROLTA_TRANSFORM_TARGET static inline Word AddWide(Word x, Word y) {
    return _mm256_add_epi64(x, y);
  }
  MIROLTA_TRANSFORM_TARGET static inline Word Join(Word low, Word high) {
    return _mm256_blend_epi32(low, _mm256_slli_epi64(high, 32), 0xAA);
  }
  MIROLTA_TRANSFORM_TARGET static inline Word LowProducts(Word x, Word y) {
    return _mm256_mullo_epi32(x, y);
  }

  // The upper halves of even - odd multiples: the differences' lower halves are zero.
  MIROLTA_TRANSFORM_TARGET static inline Word JoinDifferences(Word low, Word low_multiple,
                                                              Word high, Word high_multiple) {
    return _mm256_or_si256(HighHalf(_mm256_sub_epi64(low, low_multiple)),
                           _mm256_sub_epi64(high, high_multiple));
  }
  MIROLTA_TRANSFORM_TARGET static inline Word Product(Word x, Word w, Word quotient, Word p, Word) {
    const Word high = HighHalf(x);
    const Word low_multiple = WideProduct(WideProduct(x, quotient), p);
    const Word high_multiple = WideProduct(WideProduct(high, HighHalf(quotient)), HighHalf(p));
    return Add(JoinDifferences(WideProduct(x, w), low_multiple, WideProduct(high, HighHalf(w)),
                               high_multiple),
               p);
  }

  // The four elements that follow kFrom of the eight in x and y.
  template <size_t kFrom>
  MIROLTA_TRANSFORM_TARGET static inline Word Window(Word x, Word y) {
    if constexpr (kFrom == 0) return x;
    if constexpr (kFrom == 1) {
      return _mm256_permute4x64_epi64(_mm256_blend_epi32(x, y, 0x03), 0x39);
    }
    if constexpr (kFrom == 2) return _mm256_permute2x128_si256(x, y, 0x21);
    return _mm256_permute4x64_epi64(_mm256_blend_epi32(x, y, 0x3F), 0x93);
  }

  // Sums of products by both primes, each in 64 bits.
  struct Sums {
    Word low, high;

    MIROLTA_TRANSFORM_TARGET inline void Add(const uint64_t x[2 * kBlock], Word y, Word upper_y) {
      low = AddWide(low, WideProduct(y, Set(x[0])));
      high = AddWide(high, WideProduct(upper_y, Set(x[kBlock])));
    }
    // Montgomery reduction by 2^32, below 2 p.
    MIROLTA_TRANSFORM_TARGET inline Word Reduced(const Loops::Field& f, Word inverse) const {
      const Word upper = Loops::Reduce(_mm256_blend_epi32(HighHalf(low), high, 0xAA), f.two_p);
      const Word low_multiple = WideProduct(WideProduct(low, inverse), f.p);
      const Word high_multiple = WideProduct(WideProduct(high, HighHalf(inverse)), HighHalf(f.p));
      const Word multiple = _mm256_blend_epi32(HighHalf(low_multiple), high_multiple, 0xAA);
      return Loops::Reduce(FourPairs::Add(Subtract(upper, multiple), f.p), f.two_p);
    }
  };

  // Adds the products of the window that starts at element kStart of y R, y.
  template <size_t kStart>
  MIROLTA_TRANSFORM_TARGET static inline void AddWindow(Sums sums[2], const uint64_t* x,
                                                        const Word wrapped[4]) {
    constexpr size_t kNext = kStart % 4 == 0 ? kStart / 4 : kStart / 4 + 1;
    const Word window = Window<kStart % 4>(wrapped[kStart / 4], wrapped[kNext]);
    const Word upper = HighHalf(window);
    if constexpr (kStart <= kBlock) sums[0].Add(x + kBlock - kStart, window, upper);
    if constexpr (kStart >= 5) sums[1].Add(x + kBlock + 4 - kStart, window, upper);
  }
  MIROLTA_TRANSFORM_TARGET static void Multiply(Limb* z, const Limb* x, const Limb* y, size_t n,
                                                size_t node, const TransformTable& table,
                                                TransformFactor scale,
                                                const TransformPrime& prime) {
    const Loops::Field f(prime);
    const Loops::Factor by(scale);
    const Word inverse = Set(prime.inverse);
    for (size_t i = 0; i < n; ++i) {
      const size_t leaf = node * n + i;
      const Loops::Factor root(table, leaf / 2);
      Word wrapped[4];
      uint64_t values[2 * kBlock];  // of x, and their upper halves
      for (size_t k = 0; k < 2; ++k) {
        const size_t at = i * kBlockLimbs + k * 4;
        const Word value = Loops::Reduce(Loops::Product(Load(y + at), by, f), f.p);
        const Word times_root = Loops::Reduce(Loops::Product(value, root, f), f.p);
        wrapped[2 + k] = value;
        wrapped[k] = leaf % 2 == 0 ? times_root : Subtract(f.p, times_root);
        const Word by_x = Loops::Reduce(Load(x + at), f.two_p);
        _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(values + 4 * k), by_x);
        _mm256_storeu_si256(reinterpret_cast<__m256i_u*>(values + kBlock + 4 * k), HighHalf(by_x));
      }
      Sums sums[2] = {{Set(0), Set(0)}, {Set(0), Set(0)}};
      AddWindow<1>(sums, values, wrapped);
      AddWindow<2>(sums, values, wrapped);
      AddWindow<3>(sums, values, wrapped);
      AddWindow<4>(sums, values, wrapped);
      AddWindow<5>(sums, values, wrapped);
      AddWindow<6>(sums, values, wrapped);
      AddWindow<7>(sums, values, wrapped);
      AddWindow<8>(sums, values, wrapped);
      AddWindow<9>(sums, values, wrapped);
      AddWindow<10>(sums, values, wrapped);
      AddWindow<11>(sums, values, wrapped);
      AddWindow<12>(sums, values, wrapped);
      for (size_t k = 0; k < 2; ++k)
        Store(z + i * kBlockLimbs + k * 4, sums[k].Reduced(f, inverse));
    }
  }
};

}  // namespace

constexpr TransformKernels kAvx2Transforms = FourPairs::Loops::Table(500);

}  // namespace mirolta

#endif
