#include "hex_kernels.h"

#if MIROLTA_KERNELS_FOR(AARCH64)

  #include <arm_neon.h>

namespace mirolta {

namespace {

static_assert(sizeof(OLECHAR) == 2);

uint8x16_t Reversed(uint8x16_t x) {
  x = vrev64q_u8(x);
  return vextq_u8(x, x, 8);
}

// Four words, 32 digits, at a time.
void Write(OLECHAR* out, const uint32_t* words, size_t count) {
  constexpr uint8_t kDigits[] = {'0', '1', '2', '3', '4', '5', '6', '7',
                                 '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};
  const uint8x16_t digits = vld1q_u8(kDigits);
  size_t i = count;
  for (; i >= 4; i -= 4, out += 32) {
    const uint8x16_t bytes = Reversed(vreinterpretq_u8_u32(vld1q_u32(words + i - 4)));
    const uint8x16_t high = vqtbl1q_u8(digits, vshrq_n_u8(bytes, 4));
    const uint8x16_t low = vqtbl1q_u8(digits, vandq_u8(bytes, vdupq_n_u8(15)));
    const uint8x16_t zero = vdupq_n_u8(0);
    // A digit's second byte is zero.
    const uint8x16x4_t text = {{high, zero, low, zero}};
    vst4q_u8(reinterpret_cast<uint8_t*>(out), text);
  }
  if (i != 0) kPortableHexKernels.write(out, words, i);
}

// The values of digits of either case. Clears the lanes of is_digits where there are others.
uint8x16_t Values(uint8x16_t text, uint8x16_t* is_digits) {
  const uint8x16_t figure = vsubq_u8(text, vdupq_n_u8('0'));
  const uint8x16_t letter = vsubq_u8(vorrq_u8(text, vdupq_n_u8(0x20)), vdupq_n_u8('a'));
  const uint8x16_t is_figure = vcleq_u8(figure, vdupq_n_u8(9));
  *is_digits = vandq_u8(*is_digits, vorrq_u8(is_figure, vcleq_u8(letter, vdupq_n_u8(5))));
  return vbslq_u8(is_figure, figure, vaddq_u8(letter, vdupq_n_u8(10)));
}

size_t Read(uint32_t* words, const OLECHAR* end, size_t count) {
  size_t i = 0;
  for (; i + 4 <= count; i += 4, end -= 32) {
    // By their places modulo 4: the bytes of the first and of the second digits of pairs.
    const uint8x16x4_t bytes = vld4q_u8(reinterpret_cast<const uint8_t*>(end - 32));
    uint8x16_t is_digits = vceqq_u8(vorrq_u8(bytes.val[1], bytes.val[3]), vdupq_n_u8(0));
    const uint8x16_t high = Values(bytes.val[0], &is_digits);
    const uint8x16_t low = Values(bytes.val[2], &is_digits);
    if (vminvq_u8(is_digits) == 0) break;
    vst1q_u32(words + i, vreinterpretq_u32_u8(Reversed(vsliq_n_u8(low, high, 4))));
  }
  // Less than four words, or those before a character that is no digit.
  const size_t rest = count - i < 4 ? count - i : 4;
  return i + kPortableHexKernels.read(words + i, end, rest);
}

}  // namespace

constexpr HexKernels kNeonHexKernels = {Write, Read};

}  // namespace mirolta

#endif
