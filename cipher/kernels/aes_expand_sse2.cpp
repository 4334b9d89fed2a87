// The AES key expansion with SSE2 and without look-ups: SubWord is the circuit of the bit slices (FIPS-197, 5.2
// and 5.3.5).
#include "aes_kernels.h"

#if MIROLTA_KERNELS_FOR(X86) && MIROLTA_AES_SSE2

  #include <emmintrin.h>

namespace mirolta {

namespace {

  #define MIROLTA_AES_TARGET __attribute__((target("sse2")))
  #define MIROLTA_AES_STEP __attribute__((target("sse2"), always_inline)) inline
  #define MIROLTA_AES_EXPAND MIROLTA_AES_STEP

using Vector = __m128i;

constexpr int kUnrolledSteps = 1;

MIROLTA_AES_STEP Vector And(Vector a, Vector b) {
  return _mm_and_si128(a, b);
}

MIROLTA_AES_STEP Vector Xor(Vector a, Vector b) {
  return _mm_xor_si128(a, b);
}

  #include "aes_boxes.inc"

// SubBytes of each byte. Of a slice only the lowest bit of each byte counts. Not inlined: the circuit is large.
MIROLTA_AES_TARGET __attribute__((noinline)) void Substitute(Vector* v) {
  Vector x[8];
  #pragma GCC unroll 8
  for (int i = 0; i < 8; ++i) x[i] = _mm_srli_epi32(*v, i);
  SubBytes(x);
  const Vector lowest = _mm_set1_epi8(1);
  Vector result = _mm_set1_epi8(0x63);
  #pragma GCC unroll 8
  for (int i = 0; i < 8; ++i) result = Xor(result, _mm_slli_epi32(And(x[i], lowest), i));
  *v = result;
}

MIROLTA_AES_STEP Vector RotateBytes(Vector v) {
  return _mm_or_si128(_mm_srli_epi32(v, 8), _mm_slli_epi32(v, 24));
}

template <int kWord>
MIROLTA_AES_STEP Vector SubstituteRotated(Vector key, Vector constant) {
  Vector word = RotateBytes(_mm_shuffle_epi32(key, 0x55 * kWord));
  Substitute(&word);
  return Xor(word, constant);
}

MIROLTA_AES_STEP Vector SubstituteLast(Vector key) {
  Vector word = _mm_shuffle_epi32(key, 0xFF);
  Substitute(&word);
  return word;
}

template <uint32_t>
MIROLTA_AES_STEP void StoreRound(AesSchedule* schedule, uint32_t round, Vector key) {
  _mm_storeu_si128(reinterpret_cast<Vector*>(schedule->encryption + 4 * round), key);
}

  #include "aes_expand_vectors.inc"

MIROLTA_AES_STEP Vector DoubleBytes(Vector v) {
  const Vector high = _mm_cmpgt_epi8(_mm_setzero_si128(), v);
  return Xor(_mm_add_epi8(v, v), And(high, _mm_set1_epi8(0x1B)));
}

MIROLTA_AES_STEP Vector ExchangeHalves(Vector v) {
  return _mm_or_si128(_mm_srli_epi32(v, 16), _mm_slli_epi32(v, 16));
}

// MixColumn and UnmixColumn of each word, as in aes_mix.h.
MIROLTA_AES_STEP Vector MixColumns(Vector v) {
  const Vector sum = Xor(DoubleBytes(v), ExchangeHalves(v));
  return Xor(sum, RotateBytes(Xor(sum, v)));
}

MIROLTA_AES_STEP Vector UnmixColumns(Vector v) {
  return MixColumns(Xor(v, DoubleBytes(DoubleBytes(Xor(v, ExchangeHalves(v))))));
}

MIROLTA_AES_STEP Vector LoadRound(const uint32_t* words) {
  return _mm_loadu_si128(reinterpret_cast<const Vector*>(words));
}

}  // namespace

MIROLTA_AES_TARGET void AesExpandSse2(const uint8_t* key, uint32_t byte_length,
                                      AesSchedule* schedule) {
  Expand(key, byte_length, schedule);
  const uint32_t* from = schedule->encryption + 4 * schedule->rounds;
  uint32_t* to = schedule->decryption;
  uint32_t* const last = to + 4 * schedule->rounds;
  for (; to <= last; to += 4, from -= 4) {
    const bool outer = to == schedule->decryption || to == last;
    const Vector round = LoadRound(from);
    _mm_storeu_si128(reinterpret_cast<Vector*>(to), outer ? round : UnmixColumns(round));
  }
}

}  // namespace mirolta

#endif
