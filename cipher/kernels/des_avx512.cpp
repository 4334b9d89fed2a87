// DES bit-sliced over 512 blocks, with AVX-512 and its three-input gates (Biham 1997).
#include <new>
#include <utility>

#include "des_kernels.h"
#include "seam/small_stack.h"

#if MIROLTA_KERNELS_FOR(X86)

  #include <immintrin.h>

  #include "seam/x86_vectors.h"

namespace mirolta {

namespace {

  #define MIROLTA_DES_TARGET __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,gfni")))
  #define MIROLTA_DES_BOX \
    __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,gfni"), always_inline)) inline
  #define MIROLTA_DES_BOXES "des_boxes_ternary.inc"

using Vector = __m512i;

constexpr uint32_t kRowBlocks = 8;
constexpr uint32_t kStates = 1;
// Break-even block counts of a pass against the kernel that takes what passes leave, for single and
// for triple DES. A pass costs the same however few of its blocks are there.
constexpr uint32_t kLeastBlocks = 35;
constexpr uint32_t kLeastTripleBlocks = 36;
constexpr bool kSpillsMuch = kVectorRegisters == 8;

  #if MIROLTA_KERNELS_FOR(X86_64)
constexpr DesTransform kEncryptRest = DesEncryptGfni;
constexpr DesTransform kDecryptRest = DesDecryptGfni;
  #else
constexpr DesTransform kEncryptRest = DesEncryptPortable;
constexpr DesTransform kDecryptRest = DesDecryptPortable;
  #endif

// Where the transposition leaves bit n.
constexpr int Slot(int n) {
  return 8 * (n % 8) + n / 8;
}

template <int kTable>
MIROLTA_DES_BOX Vector Ternary(Vector a, Vector b, Vector c) {
  return _mm512_ternarylogic_epi64(a, b, c, kTable);
}

MIROLTA_DES_BOX Vector Xor(Vector a, Vector b) {
  return _mm512_xor_si512(a, b);
}

struct RoundMasks {};

MIROLTA_DES_BOX void XorKeys(Vector (&in)[6], const uint32_t* masks) {
  #pragma GCC unroll 6
  for (int i = 0; i < 6; ++i) {
    in[i] = _mm512_xor_si512(in[i], _mm512_set1_epi32(static_cast<int>(masks[5 - i])));
  }
}

// Nothing is hidden: operands in memory cost no instruction.
MIROLTA_DES_BOX void BeginBox(Vector*, const uint32_t*) {}

  #include "des_passes.inc"

MIROLTA_DES_BOX void MakeMasks(const uint32_t* words, uint32_t rounds, uint32_t* masks) {
  for (uint32_t i = 0; i < 2 * rounds; ++i, masks += 32) {
    const uint32_t word = RoundWord(words, i);
    const __mmask16 low = static_cast<__mmask16>(word & 0xFFFF);
    const __mmask16 high = static_cast<__mmask16>(word >> 16);
    _mm512_storeu_si512(masks, _mm512_movm_epi32(low));
    _mm512_storeu_si512(masks + 16, _mm512_movm_epi32(high));
  }
}

// Transposes eight vectors: exchanges byte j of each 64-bit lane of vector i with byte i of the
// same lane of vector j.
MIROLTA_DES_BOX void ExchangeBytes(Vector* v) {
  const Vector down2 = _mm512_set_epi64(0x0D0C0D0C09080908, 0x0504050401000100, 0x0D0C0D0C09080908,
                                        0x0504050401000100, 0x0D0C0D0C09080908, 0x0504050401000100,
                                        0x0D0C0D0C09080908, 0x0504050401000100);
  const Vector up2 = _mm512_set_epi64(0x0F0E0F0E0B0A0B0A, 0x0706070603020302, 0x0F0E0F0E0B0A0B0A,
                                      0x0706070603020302, 0x0F0E0F0E0B0A0B0A, 0x0706070603020302,
                                      0x0F0E0F0E0B0A0B0A, 0x0706070603020302);
  const Vector down1 = _mm512_set_epi64(0x0E0E0C0C0A0A0808, 0x0606040402020000, 0x0E0E0C0C0A0A0808,
                                        0x0606040402020000, 0x0E0E0C0C0A0A0808, 0x0606040402020000,
                                        0x0E0E0C0C0A0A0808, 0x0606040402020000);
  const Vector up1 = _mm512_set_epi64(0x0F0F0D0D0B0B0909, 0x0707050503030101, 0x0F0F0D0D0B0B0909,
                                      0x0707050503030101, 0x0F0F0D0D0B0B0909, 0x0707050503030101,
                                      0x0F0F0D0D0B0B0909, 0x0707050503030101);
  #pragma GCC unroll 4
  for (int i = 0; i < 4; ++i) {
    const Vector a = v[i];
    const Vector b = v[i + 4];
    v[i] = _mm512_mask_shuffle_epi32(a, 0xAAAA, b, _MM_PERM_CCAA);
    v[i + 4] = _mm512_mask_shuffle_epi32(b, 0x5555, a, _MM_PERM_DDBB);
  }
  #pragma GCC unroll 4
  for (int pair = 0; pair < 4; ++pair) {
    const int i = pair / 2 * 4 + pair % 2;
    const Vector a = v[i];
    const Vector b = v[i + 2];
    v[i] = _mm512_mask_shuffle_epi8(a, 0xCCCCCCCCCCCCCCCC, b, down2);
    v[i + 2] = _mm512_mask_shuffle_epi8(b, 0x3333333333333333, a, up2);
  }
  #pragma GCC unroll 4
  for (int i = 0; i < 8; i += 2) {
    const Vector a = v[i];
    const Vector b = v[i + 1];
    v[i] = _mm512_mask_shuffle_epi8(a, 0xAAAAAAAAAAAAAAAA, b, down1);
    v[i + 1] = _mm512_mask_shuffle_epi8(b, 0x5555555555555555, a, up1);
  }
}

// Exchanges bit i of byte j with bit 7 - j of byte 7 - i in each 64-bit lane.
MIROLTA_DES_BOX void ExchangeBits(Vector* v) {
  const Vector unit = _mm512_set1_epi64(0x0102040810204080);
  #pragma GCC unroll 8
  for (int i = 0; i < 8; ++i) v[i] = _mm512_gf2p8affine_epi64_epi8(unit, v[i], 0);
}

// The mask of a row's blocks, and the row's offset in bytes. A row without blocks has the offset 0:
// a masked access to an unmapped page does nothing, but takes hundreds of cycles.
struct Row {
  __mmask8 mask;
  uint32_t offset;
};
template <bool kFull>
MIROLTA_DES_BOX Row PlaceRow(uint32_t row, uint32_t block_count) {
  const uint32_t before = row * kRowBlocks;
  if (kFull) return {0xFF, before * kDesBlockSize};
  if (block_count <= before) return {0, 0};
  const uint32_t left = block_count - before;
  const uint32_t mask = left >= kRowBlocks ? 0xFFu : (1u << left) - 1;
  return {static_cast<__mmask8>(mask), before * kDesBlockSize};
}

// A row of input is eight blocks. Transposing the bytes of eight rows gives vectors with the same
// byte of 64 blocks; then the bits of each byte are transposed, and then the bytes of the vectors
// with the same byte of all rows.
template <bool kFull>
MIROLTA_DES_BOX void Slice(const uint8_t* in, uint32_t block_count, Vector* state) {
  for (uint32_t group = 0; group < 8; ++group) {
    Vector v[8];
  #pragma GCC unroll 8
    for (uint32_t i = 0; i < 8; ++i) {
      const Row row = PlaceRow<kFull>(8 * group + i, block_count);
      v[i] = _mm512_maskz_loadu_epi64(row.mask, in + row.offset);
    }
    ExchangeBytes(v);
    ExchangeBits(v);
  #pragma GCC unroll 8
    for (uint32_t i = 0; i < 8; ++i) state[8 * group + i] = v[i];
  }
  for (uint32_t byte = 0; byte < 8; ++byte) {
    Vector v[8];
  #pragma GCC unroll 8
    for (uint32_t i = 0; i < 8; ++i) v[i] = state[8 * i + byte];
    ExchangeBytes(v);
  #pragma GCC unroll 8
    for (uint32_t i = 0; i < 8; ++i) state[8 * i + byte] = v[i];
  }
}

// The steps of Slice in reverse, with the two vectors of each pair exchanged (see AllRounds).
template <bool kFull>
MIROLTA_DES_BOX void Join(Vector* state, uint32_t block_count, uint8_t* out) {
  for (uint32_t byte = 0; byte < 8; ++byte) {
    Vector v[8];
  #pragma GCC unroll 8
    for (uint32_t i = 0; i < 8; ++i) v[i] = state[8 * (i ^ 1) + byte];
    ExchangeBytes(v);
  #pragma GCC unroll 8
    for (uint32_t i = 0; i < 8; ++i) state[8 * i + byte] = v[i];
  }
  for (uint32_t group = 0; group < 8; ++group) {
    Vector v[8];
  #pragma GCC unroll 8
    for (uint32_t i = 0; i < 8; ++i) v[i] = state[8 * group + i];
    ExchangeBits(v);
    ExchangeBytes(v);
  #pragma GCC unroll 8
    for (uint32_t i = 0; i < 8; ++i) {
      const Row row = PlaceRow<kFull>(8 * group + i, block_count);
      _mm512_mask_storeu_epi64(out + row.offset, row.mask, v[i]);
    }
  }
}

// Not inlined: one copy of the rounds serves full and partial passes.
MIROLTA_DES_TARGET __attribute__((noinline)) void RunRounds(Work* work, uint32_t rounds) {
  AllRounds(work->state, kStates, work->masks, rounds);
}

MIROLTA_DES_TARGET HRESULT RunPasses(void* context) {
  Passes& passes = *static_cast<Passes*>(context);
  Work* const work = passes.work;
  const uint32_t rounds = passes.rounds;
  const uint32_t block_count = passes.block_count;
  MakeMasks(passes.words, rounds, work->masks);
  uint32_t done = 0;
  for (; block_count - done >= kMostBlocks; done += kMostBlocks) {
    Slice<true>(passes.in + kDesBlockSize * done, kMostBlocks, work->state);
    RunRounds(work, rounds);
    Join<true>(work->state, kMostBlocks, passes.out + kDesBlockSize * done);
  }
  if (block_count - done >= passes.least) {
    Slice<false>(passes.in + kDesBlockSize * done, block_count - done, work->state);
    RunRounds(work, rounds);
    Join<false>(work->state, block_count - done, passes.out + kDesBlockSize * done);
    done = block_count;
  }
  passes.done = done;
  return S_OK;
}

}  // namespace

void DesEncryptAvx512(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                      uint32_t block_count) {
  Transform<kEncryptRest>(schedule, schedule.encryption, in, out, block_count);
}

void DesDecryptAvx512(const DesSchedule& schedule, const uint8_t* in, uint8_t* out,
                      uint32_t block_count) {
  Transform<kDecryptRest>(schedule, schedule.decryption, in, out, block_count);
}

}  // namespace mirolta

#endif
