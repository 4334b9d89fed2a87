#include "hex_kernels.h"

#if MIROLTA_KERNELS_FOR(X86)

  #include <emmintrin.h>

namespace mirolta {

namespace {

static_assert(sizeof(OLECHAR) == 2);

  #define MIROLTA_HEX __attribute__((target("sse2")))

// Two words, sixteen digits, at a time.
MIROLTA_HEX void Write(OLECHAR* out, const uint32_t* words, size_t count) {
  const __m128i zero = _mm_setzero_si128();
  size_t i = count;
  for (; i >= 2; i -= 2, out += 16) {
    const uint64_t pair = uint64_t{words[i - 1]} << 32 | words[i - 2];
    const __m128i in_order = _mm_set_epi64x(0, static_cast<int64_t>(__builtin_bswap64(pair)));
    const __m128i bytes = _mm_unpacklo_epi8(in_order, zero);
    const __m128i low = _mm_slli_epi16(_mm_and_si128(bytes, _mm_set1_epi16(15)), 8);
    const __m128i digits = _mm_or_si128(_mm_srli_epi16(bytes, 4), low);
    // 'a' is 39 above the character after '9'.
    const __m128i letters =
        _mm_and_si128(_mm_cmpgt_epi8(digits, _mm_set1_epi8(9)), _mm_set1_epi8(39));
    const __m128i text = _mm_add_epi8(_mm_add_epi8(digits, _mm_set1_epi8('0')), letters);
    __m128i* const to = reinterpret_cast<__m128i*>(out);  // stored unaligned
    _mm_storeu_si128(to, _mm_unpacklo_epi8(text, zero));
    _mm_storeu_si128(to + 1, _mm_unpackhi_epi8(text, zero));
  }
  if (i != 0) kPortableHexKernels.write(out, words, 1);
}

// 255 in the bytes of x that are at most limit, unsigned; else 0.
MIROLTA_HEX inline __m128i AtMost(__m128i x, char limit) {
  return _mm_cmpeq_epi8(_mm_min_epu8(x, _mm_set1_epi8(limit)), x);
}

MIROLTA_HEX size_t Read(uint32_t* words, const OLECHAR* end, size_t count) {
  size_t i = 0;
  for (; i + 2 <= count; i += 2) {
    const __m128i* const from = reinterpret_cast<const __m128i*>(end - 16);  // loaded unaligned
    // Saturation turns characters above 255 into 0 or 255, which are not digits.
    const __m128i text = _mm_packus_epi16(_mm_loadu_si128(from), _mm_loadu_si128(from + 1));
    const __m128i figure = _mm_sub_epi8(text, _mm_set1_epi8('0'));
    const __m128i letter =
        _mm_sub_epi8(_mm_or_si128(text, _mm_set1_epi8(0x20)), _mm_set1_epi8('a'));
    const __m128i is_figure = AtMost(figure, 9);
    const __m128i is_letter = AtMost(letter, 5);
    if (_mm_movemask_epi8(_mm_or_si128(is_figure, is_letter)) != 0xFFFF) break;
    const __m128i digits =
        _mm_or_si128(_mm_and_si128(is_figure, figure),
                     _mm_and_si128(is_letter, _mm_add_epi8(letter, _mm_set1_epi8(10))));
    // The first digit of a pair becomes the high nibble.
    const __m128i bytes = _mm_and_si128(
        _mm_or_si128(_mm_slli_epi16(digits, 4), _mm_srli_epi16(digits, 8)), _mm_set1_epi16(255));
    uint64_t in_order;
    _mm_storel_epi64(reinterpret_cast<__m128i*>(&in_order), _mm_packus_epi16(bytes, bytes));
    const uint64_t pair = __builtin_bswap64(in_order);
    words[i] = static_cast<uint32_t>(pair);
    words[i + 1] = static_cast<uint32_t>(pair >> 32);
    end -= 16;
  }
  // An odd last word, or the one with a character that is no digit.
  return i < count ? i + kPortableHexKernels.read(words + i, end, 1) : i;
}

}  // namespace

constexpr HexKernels kSse2HexKernels = {Write, Read};

}  // namespace mirolta

#endif
