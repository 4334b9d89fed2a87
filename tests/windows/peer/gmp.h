// The peer of the number tests where GMP is not to be had: the operations they use, under GMP's
// names, by the schoolbook methods on 32-bit words. It shares nothing with what is tested, and is
// written to be seen to be right; no case needs it to be fast.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

// A sign and a magnitude, least significant word first, without leading zeros.
struct PeerNumber {
  std::vector<uint32_t> words;
  bool negative = false;
};

using mpz_t = PeerNumber[1];
using mpz_ptr = PeerNumber*;
using mpz_srcptr = const PeerNumber*;
using mp_bitcnt_t = size_t;

namespace peer {

using Words = std::vector<uint32_t>;

inline void Trim(PeerNumber& z) {
  while (!z.words.empty() && z.words.back() == 0) z.words.pop_back();
  if (z.words.empty()) z.negative = false;
}

inline PeerNumber From(uint64_t value) {
  PeerNumber z;
  for (; value != 0; value >>= 32) z.words.push_back(static_cast<uint32_t>(value));
  return z;
}

inline PeerNumber Negated(PeerNumber z) {
  z.negative = !z.negative && !z.words.empty();
  return z;
}

inline int CompareWords(const Words& x, const Words& y) {
  if (x.size() != y.size()) return x.size() < y.size() ? -1 : 1;
  for (size_t i = x.size(); i-- > 0;) {
    if (x[i] != y[i]) return x[i] < y[i] ? -1 : 1;
  }
  return 0;
}

inline int Compare(const PeerNumber& x, const PeerNumber& y) {
  if (x.negative != y.negative) return x.negative ? -1 : 1;
  const int order = CompareWords(x.words, y.words);
  return x.negative ? -order : order;
}

inline PeerNumber Add(const PeerNumber& x, const PeerNumber& y) {
  PeerNumber z;
  const bool swapped = CompareWords(x.words, y.words) < 0;
  const PeerNumber& large = swapped ? y : x;
  const PeerNumber& small = swapped ? x : y;
  z.negative = large.negative;
  int64_t carry = 0;
  for (size_t i = 0; i < large.words.size(); ++i) {
    const int64_t other = i < small.words.size() ? small.words[i] : 0;
    carry += large.words[i] + (large.negative == small.negative ? other : -other);
    z.words.push_back(static_cast<uint32_t>(carry & 0xFFFFFFFF));
    carry >>= 32;
  }
  if (carry != 0) z.words.push_back(static_cast<uint32_t>(carry));
  Trim(z);
  return z;
}

inline PeerNumber Subtract(const PeerNumber& x, const PeerNumber& y) {
  return Add(x, Negated(y));
}

inline PeerNumber Multiply(const PeerNumber& x, const PeerNumber& y) {
  PeerNumber z;
  z.words.assign(x.words.size() + y.words.size(), 0);
  z.negative = x.negative != y.negative;
  for (size_t i = 0; i < x.words.size(); ++i) {
    uint64_t carry = 0;
    for (size_t j = 0; j < y.words.size(); ++j) {
      carry += uint64_t{x.words[i]} * y.words[j] + z.words[i + j];
      z.words[i + j] = static_cast<uint32_t>(carry);
      carry >>= 32;
    }
    z.words[i + y.words.size()] = static_cast<uint32_t>(carry);
  }
  Trim(z);
  return z;
}

inline size_t BitLength(const PeerNumber& z) {
  if (z.words.empty()) return 0;
  size_t bits = 32 * (z.words.size() - 1);
  for (uint32_t top = z.words.back(); top != 0; top >>= 1) ++bits;
  return bits;
}

inline bool Bit(const PeerNumber& z, size_t at) {
  return at / 32 < z.words.size() && (z.words[at / 32] >> at % 32 & 1) != 0;
}

inline PeerNumber ShiftedLeft(const PeerNumber& x, size_t bits) {
  PeerNumber z;
  z.negative = x.negative;
  z.words.assign(bits / 32, 0);
  uint64_t carry = 0;
  for (const uint32_t word : x.words) {
    carry |= uint64_t{word} << bits % 32;
    z.words.push_back(static_cast<uint32_t>(carry));
    carry >>= 32;
  }
  z.words.push_back(static_cast<uint32_t>(carry));
  Trim(z);
  return z;
}

// Of a magnitude: the sign is dropped.
inline PeerNumber ShiftedRight(const PeerNumber& x, size_t bits) {
  PeerNumber z;
  for (size_t i = bits / 32; i < x.words.size(); ++i) {
    const uint64_t above = i + 1 < x.words.size() ? x.words[i + 1] : 0;
    z.words.push_back(static_cast<uint32_t>((above << 32 | x.words[i]) >> bits % 32));
  }
  Trim(z);
  return z;
}

// Divide rounds the quotient towards zero; the remainder has the sign of x.
// Source: Knuth TAOCP 2, 4.3.1, algorithm D.
inline void Divide(PeerNumber& q, PeerNumber& r, const PeerNumber& x, const PeerNumber& y) {
  if (y.words.empty()) std::abort();
  const bool negative = x.negative != y.negative;
  const bool remainder_negative = x.negative;
  const size_t n = y.words.size();
  const size_t shift = 32 * n - BitLength(y);
  const Words v = ShiftedLeft(y, shift).words;
  Words u = ShiftedLeft(x, shift).words;
  u.resize(std::max(x.words.size(), n) + 1, 0);
  PeerNumber quotient;
  quotient.words.assign(u.size() - n, 0);
  for (size_t j = u.size() - n; j-- > 0;) {
    const uint64_t top = uint64_t{u[j + n]} << 32 | u[j + n - 1];
    uint64_t digit = top / v[n - 1];
    uint64_t rest = top % v[n - 1];
    while (digit >> 32 != 0 || (n > 1 && digit * v[n - 2] > (rest << 32 | u[j + n - 2]))) {
      --digit;
      rest += v[n - 1];
      if (rest >> 32 != 0) break;
    }
    int64_t borrow = 0;
    uint64_t carry = 0;
    for (size_t i = 0; i < n; ++i) {
      carry += digit * v[i];
      borrow += int64_t{u[i + j]} - static_cast<int64_t>(carry & 0xFFFFFFFF);
      u[i + j] = static_cast<uint32_t>(borrow & 0xFFFFFFFF);
      borrow >>= 32;
      carry >>= 32;
    }
    borrow += int64_t{u[j + n]} - static_cast<int64_t>(carry);
    u[j + n] = static_cast<uint32_t>(borrow & 0xFFFFFFFF);
    if (borrow < 0) {
      --digit;
      uint64_t sum = 0;
      for (size_t i = 0; i < n; ++i) {
        sum += uint64_t{u[i + j]} + v[i];
        u[i + j] = static_cast<uint32_t>(sum);
        sum >>= 32;
      }
      u[j + n] += static_cast<uint32_t>(sum);
    }
    quotient.words[j] = static_cast<uint32_t>(digit);
  }
  PeerNumber scaled;
  scaled.words = u;
  Trim(scaled);
  r = ShiftedRight(scaled, shift);
  r.negative = remainder_negative;
  Trim(r);
  q = quotient;
  q.negative = negative;
  Trim(q);
}

// The remainder of rounding down: not negative for a positive y.
inline PeerNumber Modulo(const PeerNumber& x, const PeerNumber& y) {
  PeerNumber q, r;
  Divide(q, r, x, y);
  if (!r.words.empty() && r.negative != y.negative) r = Add(r, y);
  return r;
}

inline PeerNumber Power(const PeerNumber& x, const PeerNumber& e, const PeerNumber& m) {
  PeerNumber z = Modulo(From(1), m);
  const PeerNumber base = Modulo(x, m);
  for (size_t i = BitLength(e); i-- > 0;) {
    z = Modulo(Multiply(z, z), m);
    if (Bit(e, i)) z = Modulo(Multiply(z, base), m);
  }
  return z;
}

inline PeerNumber Gcd(PeerNumber x, PeerNumber y) {
  x.negative = y.negative = false;
  while (!y.words.empty()) {
    x = Modulo(x, y);
    std::swap(x, y);
  }
  return x;
}

// False if there is none.
inline bool Inverse(PeerNumber& z, const PeerNumber& x, const PeerNumber& m) {
  PeerNumber r0 = m, r1 = Modulo(x, m), t0, t1 = From(1);
  while (!r1.words.empty()) {
    PeerNumber q, r;
    Divide(q, r, r0, r1);
    PeerNumber t = Subtract(t0, Multiply(q, t1));
    r0 = std::exchange(r1, r);
    t0 = std::exchange(t1, t);
  }
  if (Compare(r0, From(1)) != 0) return false;
  z = Modulo(t0, m);
  return true;
}

inline uint32_t SmallModulo(const PeerNumber& x, uint32_t d) {
  uint64_t rest = 0;
  for (size_t i = x.words.size(); i-- > 0;) rest = (rest << 32 | x.words[i]) % d;
  return static_cast<uint32_t>(rest);
}

// Miller and Rabin's test to the bases that make it exact below 3.4 * 10^14 (Jaeschke 1993); no
// larger composite of a test's is made to pass it.
inline bool IsPrime(const PeerNumber& n) {
  constexpr uint32_t kBases[] = {2, 3, 5, 7, 11, 13, 17};
  if (Compare(n, From(2)) < 0) return false;
  for (uint32_t p = 2; p < 2000; ++p) {
    if (Compare(n, From(p)) == 0) return true;
    if (SmallModulo(n, p) == 0) return false;
  }
  const PeerNumber minus_one = Subtract(n, From(1));
  size_t twos = 0;
  while (!Bit(minus_one, twos)) ++twos;
  const PeerNumber odd = ShiftedRight(minus_one, twos);
  for (const uint32_t base : kBases) {
    PeerNumber power = Power(From(base), odd, n);
    bool passes = Compare(power, From(1)) == 0;
    for (size_t i = 0; i < twos && !passes; ++i) {
      passes = Compare(power, minus_one) == 0;
      power = Modulo(Multiply(power, power), n);
    }
    if (!passes) return false;
  }
  return true;
}

}  // namespace peer

// GMP's names. Operands may be the result.
inline void mpz_init(mpz_ptr) {}
inline void mpz_clear(mpz_ptr) {}
inline void mpz_set(mpz_ptr z, mpz_srcptr x) {
  *z = PeerNumber(*x);
}
inline void mpz_set_ui(mpz_ptr z, unsigned long x) {
  *z = peer::From(x);
}
inline void mpz_init_set_ui(mpz_ptr z, unsigned long x) {
  mpz_set_ui(z, x);
}
inline void mpz_neg(mpz_ptr z, mpz_srcptr x) {
  *z = peer::Negated(*x);
}
inline void mpz_setbit(mpz_ptr z, mp_bitcnt_t bit) {
  if (z->words.size() <= bit / 32) z->words.resize(bit / 32 + 1, 0);
  z->words[bit / 32] |= uint32_t{1} << bit % 32;
}

inline int mpz_sgn(mpz_srcptr z) {
  return z->words.empty() ? 0 : z->negative ? -1 : 1;
}
inline int mpz_cmp(mpz_srcptr x, mpz_srcptr y) {
  return peer::Compare(*x, *y);
}
inline int mpz_cmp_ui(mpz_srcptr x, unsigned long y) {
  return peer::Compare(*x, peer::From(y));
}
inline bool mpz_divisible_ui_p(mpz_srcptr x, unsigned long d) {
  return peer::SmallModulo(*x, static_cast<uint32_t>(d)) == 0;
}
inline int mpz_probab_prime_p(mpz_srcptr n, int) {
  return peer::IsPrime(*n) ? 1 : 0;
}

inline void mpz_add(mpz_ptr z, mpz_srcptr x, mpz_srcptr y) {
  *z = peer::Add(*x, *y);
}
inline void mpz_add_ui(mpz_ptr z, mpz_srcptr x, uint64_t y) {
  *z = peer::Add(*x, peer::From(y));
}
inline void mpz_sub(mpz_ptr z, mpz_srcptr x, mpz_srcptr y) {
  *z = peer::Subtract(*x, *y);
}
inline void mpz_sub_ui(mpz_ptr z, mpz_srcptr x, uint64_t y) {
  *z = peer::Subtract(*x, peer::From(y));
}
inline void mpz_mul(mpz_ptr z, mpz_srcptr x, mpz_srcptr y) {
  *z = peer::Multiply(*x, *y);
}
inline void mpz_mul_ui(mpz_ptr z, mpz_srcptr x, uint64_t y) {
  *z = peer::Multiply(*x, peer::From(y));
}
inline void mpz_mul_2exp(mpz_ptr z, mpz_srcptr x, mp_bitcnt_t bits) {
  *z = peer::ShiftedLeft(*x, bits);
}
inline void mpz_ui_pow_ui(mpz_ptr z, unsigned long x, unsigned long e) {
  PeerNumber power = peer::From(1);
  for (; e != 0; --e) power = peer::Multiply(power, peer::From(x));
  *z = power;
}

inline void mpz_tdiv_qr(mpz_ptr q, mpz_ptr r, mpz_srcptr x, mpz_srcptr y) {
  PeerNumber quotient, remainder;
  peer::Divide(quotient, remainder, *x, *y);
  *q = quotient;
  *r = remainder;
}
inline void mpz_tdiv_q(mpz_ptr q, mpz_srcptr x, mpz_srcptr y) {
  PeerNumber remainder;
  mpz_tdiv_qr(q, &remainder, x, y);
}
inline void mpz_fdiv_qr(mpz_ptr q, mpz_ptr r, mpz_srcptr x, mpz_srcptr y) {
  const PeerNumber divisor = *y;
  mpz_tdiv_qr(q, r, x, y);
  if (r->words.empty() || r->negative == divisor.negative) return;
  *q = peer::Subtract(*q, peer::From(1));
  *r = peer::Add(*r, divisor);
}
inline void mpz_mod(mpz_ptr r, mpz_srcptr x, mpz_srcptr y) {
  *r = peer::Modulo(*x, *y);
}
inline void mpz_fdiv_q_2exp(mpz_ptr q, mpz_srcptr x, mp_bitcnt_t bits) {
  PeerNumber remainder;
  const PeerNumber divisor = peer::ShiftedLeft(peer::From(1), bits);
  mpz_fdiv_qr(q, &remainder, x, &divisor);
}
inline void mpz_fdiv_r_2exp(mpz_ptr r, mpz_srcptr x, mp_bitcnt_t bits) {
  *r = peer::Modulo(*x, peer::ShiftedLeft(peer::From(1), bits));
}

inline void mpz_gcd(mpz_ptr z, mpz_srcptr x, mpz_srcptr y) {
  *z = peer::Gcd(*x, *y);
}
inline int mpz_invert(mpz_ptr z, mpz_srcptr x, mpz_srcptr m) {
  return peer::Inverse(*z, *x, *m) ? 1 : 0;
}
inline void mpz_powm(mpz_ptr z, mpz_srcptr x, mpz_srcptr e, mpz_srcptr m) {
  *z = peer::Power(*x, *e, *m);
}
inline void mpz_nextprime(mpz_ptr z, mpz_srcptr x) {
  PeerNumber n = *x;
  do {
    n = peer::Add(n, peer::From(1));
  } while (!peer::IsPrime(n));
  *z = n;
}

inline auto mpz_get_ui(mpz_srcptr z) {
  uint64_t value = z->words.size() > 1 ? z->words[1] : 0;
  return value << 32 | (z->words.empty() ? 0 : z->words[0]);
}
// Of bases 2 (the length in bits) and those of mpz_get_str, which may be one too large.
inline size_t mpz_sizeinbase(mpz_srcptr z, int base) {
  const size_t bits = z->words.empty() ? 1 : peer::BitLength(*z);
  return base == 2 ? bits : base == 16 ? (bits + 3) / 4 : bits / 3 + 1;
}
// Bases 10 and 16, into new memory.
inline char* mpz_get_str(char*, int base, mpz_srcptr z) {
  PeerNumber rest = *z;
  constexpr uint32_t kChunk = 1000000000;  // nine decimal digits at a time
  std::string text;  // its last digit first
  if (base == 16) {
    for (const uint32_t word : rest.words) {
      for (int i = 0; i < 32; i += 4) text.push_back("0123456789abcdef"[word >> i & 15]);
    }
    rest.words.clear();
  }
  while (!rest.words.empty()) {
    uint64_t carry = 0;
    for (size_t i = rest.words.size(); i-- > 0;) {
      carry = carry << 32 | rest.words[i];
      rest.words[i] = static_cast<uint32_t>(carry / kChunk);
      carry %= kChunk;
    }
    peer::Trim(rest);
    for (int i = 0; i < 9; ++i) {
      text.push_back(static_cast<char>('0' + carry % 10));
      carry /= 10;
    }
  }
  while (text.size() > 1 && text.back() == '0') text.pop_back();
  if (text.empty()) text = "0";
  if (z->negative) text.push_back('-');
  std::reverse(text.begin(), text.end());
  char* const out = static_cast<char*>(std::malloc(text.size() + 1));
  if (out == nullptr) std::abort();
  std::memcpy(out, text.c_str(), text.size() + 1);
  return out;
}
// Words of size 4 or 8, least significant first, in the machine's order.
inline void mpz_import(mpz_ptr z, size_t count, int, size_t size, int, size_t, const void* words) {
  *z = PeerNumber();
  z->words.resize(count * size / 4);
  if (count != 0) std::memcpy(z->words.data(), words, count * size);
  peer::Trim(*z);
}
inline void* mpz_export(void* out, size_t* count, int, size_t size, int, size_t, mpz_srcptr z) {
  std::vector<uint32_t> words = z->words;
  while (words.size() * 4 % size != 0) words.push_back(0);
  if (count != nullptr) *count = words.size() * 4 / size;
  if (!words.empty()) std::memcpy(out, words.data(), words.size() * 4);
  return out;
}
