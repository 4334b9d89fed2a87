// What the tests of RSA keys share: OpenSSL's numbers as the peer, a clock that always moves, and a
// source of random numbers under the test's control.
#pragma once

#include <gtest/gtest.h>
#include <openssl/bn.h>

#include <random>
#include <string>
#include <vector>

#include "big_bytes.h"
#include "big_text.h"
#include "bytes.h"
#include "portable/test_hooks.h"
#include "rsa_key.h"

namespace mirolta::test {

inline Bytes BytesOf(const BigInt& n) {
  Bytes bytes(static_cast<size_t>(ByteLength(n)));
  ToBytes(bytes.data(), n);
  return bytes;
}

// Bn owns a number of the peer.
class Bn {
 public:
  Bn() : bn_(BN_new()) {}
  explicit Bn(unsigned long value) : Bn() { BN_set_word(bn_, value); }
  explicit Bn(const BigInt& n) : Bn() {
    const Bytes bytes = BytesOf(n);
    BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), bn_);
    BN_set_negative(bn_, n.IsNegative());
  }
  Bn(const Bn& other) : bn_(BN_dup(other.bn_)) {}
  ~Bn() { BN_free(bn_); }
  Bn& operator=(const Bn&) = delete;
  operator BIGNUM*() { return bn_; }
  operator const BIGNUM*() const { return bn_; }

  BigInt Here() const {
    Bytes bytes(static_cast<size_t>(BN_num_bytes(bn_)));
    BN_bn2bin(bn_, bytes.data());
    BigInt n;
    FromBytes(n, bytes.data(), static_cast<uint32_t>(bytes.size()));
    return n;
  }

 private:
  BIGNUM* bn_;
};

inline BN_CTX* Context() {
  static BN_CTX* const context = BN_CTX_new();
  return context;
}

inline Bn Times(const Bn& a, const Bn& b) {
  Bn r;
  BN_mul(r, a, b, Context());
  return r;
}
inline Bn Less1(const Bn& a) {
  Bn r(a);
  BN_sub_word(r, 1);
  return r;
}
inline Bn Power(const Bn& a, const Bn& e, const Bn& m) {
  Bn r;
  BN_mod_exp(r, a, e, m, Context());
  return r;
}
inline bool IsPrime(const Bn& n) {
  return BN_check_prime(n, Context(), nullptr) == 1;
}

// Hexadecimal text of a number; "0" for zero.
inline std::string Hex(const BigInt& n) {
  if (n.IsZero()) return "0";
  NumberText text;
  EXPECT_EQ(ToText(text, n, 16), S_OK);
  return std::string(n.SignFlag() ? 1 : 0, '-') +
         std::string(text.Characters(), text.Characters() + text.Length());
}
inline BigInt FromHex(const std::string& digits) {
  const std::basic_string<OLECHAR> wide(digits.begin(), digits.end());
  BigInt n;
  EXPECT_EQ(FromHexText(n, wide.data(), static_cast<uint32_t>(wide.size())), S_OK);
  return n;
}

// What holds for every key made here.
inline void ExpectKeyHolds(const RsaKey& key) {
  const Bn p(key.p), q(key.q), e(key.e), d(key.d);
  EXPECT_LE(BN_cmp(p, q), 0);
  EXPECT_EQ(BN_cmp(Times(p, q), Bn(key.n)), 0);
  const Bn order = Times(Less1(p), Less1(q));
  Bn product;
  BN_mod_mul(product, e, d, order, Context());
  EXPECT_TRUE(BN_is_one(product));
  EXPECT_LT(BN_cmp(d, order), 0);
  EXPECT_TRUE(IsPrime(p));
  EXPECT_TRUE(IsPrime(q));
  EXPECT_TRUE(BN_is_odd(static_cast<const BIGNUM*>(e)));
  for (const BigInt* number : {&key.n, &key.e, &key.p, &key.q, &key.d}) {
    EXPECT_FALSE(number->SignFlag());
  }
}

inline RsaKey KeyOf(const BigInt& n, const BigInt& e, const BigInt& p, const BigInt& q,
                    const BigInt& d) {
  RsaKey key;
  key.n = n;
  key.e = e;
  key.p = p;
  key.q = q;
  key.d = d;
  return key;
}
// A small key: p = 53, q = 61, n = 3233, e = 17, d = 2753. The prime search finds no primes so
// small, but a key may be loaded.
inline RsaKey SmallKey() {
  return KeyOf(BigInt(3233), BigInt(17), BigInt(53), BigInt(61), BigInt(2753));
}
// Numbers that are no key, to see whether a failure leaves them.
inline RsaKey NoKey() {
  return KeyOf(BigInt(1), BigInt(2), BigInt(3), BigInt(4), BigInt(5));
}
inline std::string TextOf(const RsaKey& key) {
  return Hex(key.n) + " " + Hex(key.e) + " " + Hex(key.p) + " " + Hex(key.q) + " " + Hex(key.d);
}

// A clock whose counter moves with every look, so that seeding need not wait. Its times give the
// seeds 0x0514B7D2 modulo the counter's 16 bits: 2006 is 0x7D6, the fourteenth May 0x50E.
inline DWORD ticks = 0;
inline DWORD NextTick() {
  return ++ticks;
}
inline void FixedTime(SYSTEMTIME* time) {
  *time = {};
  time->wYear = 2006;
  time->wMonth = 5;
  time->wDay = 14;
}
inline constexpr MiroltaClock kQuickClock = {NextTick, FixedTime};

// A source whose numbers are planned; after the plan they come from a generator that is the same in
// every run. Each seeding starts a new draw.
struct PlannedSource {
  static inline std::vector<uint32_t> plan;
  static inline size_t next_planned = 0;
  static inline std::vector<uint32_t> seeds;
  static inline std::vector<int> draws;  // numbers taken after each seed
  static inline int seeds_to_give = -1;  // then seeding fails; below zero never
  static inline std::mt19937 generator;

  static void Restart(std::vector<uint32_t> numbers) {
    plan = std::move(numbers);
    next_planned = 0;
    seeds.clear();
    draws.clear();
    seeds_to_give = -1;
    // So that no allocation fails here where memory is short.
    seeds.reserve(64);
    draws.reserve(64);
  }
  static bool Seed(uint32_t seed) {
    if (seeds_to_give == 0) return false;
    if (seeds_to_give > 0) --seeds_to_give;
    seeds.push_back(seed);
    draws.push_back(0);
    return true;
  }
  static uint32_t Next() {
    ++draws.back();
    return next_planned < plan.size() ? plan[next_planned++] : generator() & 0x7FFFFFFF;
  }
};
inline constexpr RandomSource kPlannedSource = {PlannedSource::Seed, PlannedSource::Next};

class PlannedTest : public testing::Test {
 protected:
  void SetUp() override {
    ticks = 0;
    MiroltaSetClock(&kQuickClock);
    SetRandomSource(&kPlannedSource);
    PlannedSource::generator.seed(62);
    PlannedSource::Restart({});
  }
  void TearDown() override {
    SetRandomSource(nullptr);
    MiroltaSetClock(nullptr);
  }
};

}  // namespace mirolta::test
