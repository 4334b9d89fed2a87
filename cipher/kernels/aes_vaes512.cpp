// AES with the VAES instructions on 512-bit registers (FIPS-197, 5.1 and 5.3.5): four blocks a
// register, eight registers in flight, or four in 32-bit mode. Round keys are broadcast from the schedule
// in each round: that many round instructions hide a load, and fifteen keys held in registers would be
// spilled to the stack.
#include "aes_kernels.h"

#if MIROLTA_KERNELS_FOR(X86)

  #include <immintrin.h>

  #include "seam/x86_vectors.h"

namespace mirolta {

namespace {

  #define MIROLTA_VAES512_TARGET \
    __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,vaes,aes")))
  #define MIROLTA_VAES512 \
    __attribute__((target("avx512f,avx512bw,avx512dq,avx512vl,vaes,aes"), always_inline)) inline

// For one block, where the code lies in cache lines counts.
  #define MIROLTA_VAES512_ENTRY __attribute__((aligned(64))) MIROLTA_VAES512_TARGET

constexpr uint32_t kBlocks = 4;                    // in a register
constexpr uint32_t kGroup = kVectorRegisters / 2;  // registers in flight

// Compilers warn of the undefined register in the plain broadcast intrinsic.
MIROLTA_VAES512 __m512i Repeat(__m128i block) {
  return _mm512_maskz_broadcast_i32x4(0xFFFF, block);
}

MIROLTA_VAES512 __m128i NarrowKey(const uint32_t* words) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(words));
}

MIROLTA_VAES512 __m512i WideKey(const uint32_t* words) {
  return Repeat(NarrowKey(words));
}

template <bool kEncrypt>
MIROLTA_VAES512 __m512i Round(__m512i blocks, __m512i key) {
  return kEncrypt ? _mm512_aesenc_epi128(blocks, key) : _mm512_aesdec_epi128(blocks, key);
}

template <bool kEncrypt>
MIROLTA_VAES512 __m512i LastRound(__m512i blocks, __m512i key) {
  return kEncrypt ? _mm512_aesenclast_epi128(blocks, key) : _mm512_aesdeclast_epi128(blocks, key);
}

template <bool kEncrypt>
MIROLTA_VAES512 __m128i Round(__m128i block, __m128i key) {
  return kEncrypt ? _mm_aesenc_si128(block, key) : _mm_aesdec_si128(block, key);
}

template <bool kEncrypt>
MIROLTA_VAES512 __m128i LastRound(__m128i block, __m128i key) {
  return kEncrypt ? _mm_aesenclast_si128(block, key) : _mm_aesdeclast_si128(block, key);
}

// All rounds on one register, narrow or wide: nine; none, two or four more by key size; and the
// last.
template <bool kEncrypt, auto kKey, typename Register>
MIROLTA_VAES512 Register AllRounds(const uint32_t* words, uint32_t rounds, Register blocks) {
  #pragma GCC unroll 16
  for (uint32_t round = 1; round < 10; ++round) {
    blocks = Round<kEncrypt>(blocks, kKey(words + 4 * round));
  }
  if (rounds != 10) {
    blocks = Round<kEncrypt>(blocks, kKey(words + 40));
    blocks = Round<kEncrypt>(blocks, kKey(words + 44));
    if (rounds != 12) {
      blocks = Round<kEncrypt>(blocks, kKey(words + 48));
      blocks = Round<kEncrypt>(blocks, kKey(words + 52));
    }
  }
  return LastRound<kEncrypt>(blocks, kKey(words + 4 * rounds));
}

template <bool kEncrypt>
MIROLTA_VAES512 void TransformOne(const uint32_t* words, uint32_t rounds, const uint8_t* in,
                                  uint8_t* out) {
  const __m128i plain = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
  const __m128i block = _mm_xor_si128(plain, NarrowKey(words));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out),
                   AllRounds<kEncrypt, NarrowKey>(words, rounds, block));
}

// A masked store takes a sixth of their speed from calls with four blocks. In 32-bit mode the module has to be
// small.
constexpr bool kWholeRegister = kVectorRegisters > 8;

template <bool kEncrypt>
MIROLTA_VAES512 void TransformFour(const uint32_t* words, uint32_t rounds, const uint8_t* in,
                                   uint8_t* out) {
  const __m512i blocks = _mm512_xor_si512(_mm512_loadu_si512(in), WideKey(words));
  _mm512_storeu_si512(out, AllRounds<kEncrypt, WideKey>(words, rounds, blocks));
}

// Up to four blocks in one register.
template <bool kEncrypt>
MIROLTA_VAES512 void TransformFew(const uint32_t* words, uint32_t rounds, const uint8_t* in,
                                  uint8_t* out, uint32_t block_count) {
  const __mmask8 there = static_cast<__mmask8>((1u << 2 * block_count) - 1);
  const __m512i blocks = _mm512_xor_si512(_mm512_maskz_loadu_epi64(there, in), WideKey(words));
  _mm512_mask_storeu_epi64(out, there, AllRounds<kEncrypt, WideKey>(words, rounds, blocks));
}

template <bool kEncrypt, uint32_t kRounds, uint32_t kCount>
MIROLTA_VAES512 void TransformGroup(const uint32_t* words, const uint8_t* in, uint8_t* out) {
  // Keeps the compiler from hoisting the loads of all groups before the first one.
  __asm__("" : "+r"(words));
  __m512i blocks[kCount];
  const __m512i first = WideKey(words);
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < kCount; ++i) {
    blocks[i] = _mm512_xor_si512(_mm512_loadu_si512(in + 64 * i), first);
  }
  #pragma GCC unroll 16
  for (uint32_t round = 1; round < kRounds; ++round) {
    const __m512i key = WideKey(words + 4 * round);
  #pragma GCC unroll 8
    for (uint32_t i = 0; i < kCount; ++i) blocks[i] = Round<kEncrypt>(blocks[i], key);
  }
  const __m512i last = WideKey(words + 4 * kRounds);
  #pragma GCC unroll 8
  for (uint32_t i = 0; i < kCount; ++i) {
    _mm512_storeu_si512(out + 64 * i, LastRound<kEncrypt>(blocks[i], last));
  }
}

template <bool kEncrypt, uint32_t kRounds>
MIROLTA_VAES512_TARGET void TransformMany(const uint32_t* words, const uint8_t* in, uint8_t* out,
                                          uint32_t block_count) {
  for (; block_count >= kGroup * kBlocks; block_count -= kGroup * kBlocks) {
    TransformGroup<kEncrypt, kRounds, kGroup>(words, in, out);
    in += kGroup * kBlocks * kAesBlockSize;
    out += kGroup * kBlocks * kAesBlockSize;
  }
  if (block_count >= kGroup / 2 * kBlocks) {
    TransformGroup<kEncrypt, kRounds, kGroup / 2>(words, in, out);
    in += kGroup / 2 * kBlocks * kAesBlockSize;
    out += kGroup / 2 * kBlocks * kAesBlockSize;
    block_count -= kGroup / 2 * kBlocks;
  }
  if (kGroup / 4 > 1 && block_count >= kGroup / 4 * kBlocks) {
    TransformGroup<kEncrypt, kRounds, kGroup / 4>(words, in, out);
    in += kGroup / 4 * kBlocks * kAesBlockSize;
    out += kGroup / 4 * kBlocks * kAesBlockSize;
    block_count -= kGroup / 4 * kBlocks;
  }
  if (block_count >= kBlocks) {
    TransformGroup<kEncrypt, kRounds, 1>(words, in, out);
    in += kBlocks * kAesBlockSize;
    out += kBlocks * kAesBlockSize;
    block_count -= kBlocks;
  }
  if (block_count != 0) TransformFew<kEncrypt>(words, kRounds, in, out, block_count);
}

// Up to four blocks do not pay for the stack frame of more.
template <bool kEncrypt>
MIROLTA_VAES512 void TransformBlocks(const uint32_t* words, uint32_t rounds, const uint8_t* in,
                                     uint8_t* out, uint32_t block_count) {
  if (block_count == 1) {
    TransformOne<kEncrypt>(words, rounds, in, out);
  } else if (kWholeRegister && block_count == kBlocks) {
    TransformFour<kEncrypt>(words, rounds, in, out);
  } else if (block_count <= kBlocks) {
    TransformFew<kEncrypt>(words, rounds, in, out, block_count);
  } else if (rounds == 10) {
    TransformMany<kEncrypt, 10>(words, in, out, block_count);
  } else if (rounds == 12) {
    TransformMany<kEncrypt, 12>(words, in, out, block_count);
  } else {
    TransformMany<kEncrypt, 14>(words, in, out, block_count);
  }
}

}  // namespace

MIROLTA_VAES512_ENTRY void AesEncryptVaes512(const AesSchedule& schedule, const uint8_t* in,
                                             uint8_t* out, uint32_t block_count) {
  TransformBlocks<true>(schedule.encryption, schedule.rounds, in, out, block_count);
}

MIROLTA_VAES512_ENTRY void AesDecryptVaes512(const AesSchedule& schedule, const uint8_t* in,
                                             uint8_t* out, uint32_t block_count) {
  TransformBlocks<false>(schedule.decryption, schedule.rounds, in, out, block_count);
}

}  // namespace mirolta

#endif
