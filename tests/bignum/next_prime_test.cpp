#include <gtest/gtest.h>

#include "big_testing.h"
#include "number_theory.h"
#include "small_primes.h"

namespace mirolta {
namespace {

bool IsFermat(const BigInt& n) {
  bool result = false;
  EXPECT_EQ(IsFermatPrime(&result, n), S_OK);
  return result;
}

BigInt Next(BigInt n) {
  EXPECT_EQ(NextPrime(n), S_OK);
  return n;
}

// By powers in lanes where the processor has them, the other way for the shortest.
TEST(FermatTest, MersennePrimesAndTheirNeighbours) {
  for (const unsigned bits : {89u, 521u, 607u, 1279u, 2203u}) {
    Mpz prime(1);
    mpz_mul_2exp(prime, prime, bits);
    mpz_sub_ui(prime, prime, 1);
    EXPECT_TRUE(IsFermat(FromPeer(static_cast<mpz_srcptr>(prime)))) << bits;
    mpz_sub_ui(prime, prime, 2);
    EXPECT_FALSE(IsFermat(FromPeer(static_cast<mpz_srcptr>(prime)))) << bits;
  }
}

// The search as it is defined: no divisor in the table, and the four powers.
bool IsFoundByDefinition(mpz_srcptr n) {
  for (size_t i = 0; i < kTablePrimes; ++i) {
    if (mpz_divisible_ui_p(n, kSmallPrimes.primes[i])) return false;
  }
  Mpz e, power;
  mpz_sub_ui(e, n, 1);
  for (const unsigned long base : {2ul, 3ul, 5ul, 7ul}) {
    const Mpz a(base);
    mpz_powm(power, a, e, n);
    if (mpz_cmp_ui(static_cast<mpz_srcptr>(power), 1) != 0) return false;
  }
  return true;
}

std::string NextByDefinition(const BigInt& start) {
  Mpz n(start);
  while (!IsFoundByDefinition(n)) mpz_add_ui(n, n, 1);
  return Hex(static_cast<mpz_srcptr>(n));
}

TEST(SmallPrimesTest, AreThePrimes) {
  size_t i = 0;
  Mpz p(1);
  for (;;) {
    mpz_nextprime(p, p);
    const auto value = mpz_get_ui(p);
    if (value > 65535) break;
    ASSERT_LT(i, kSmallPrimeCount);
    ASSERT_EQ(kSmallPrimes.primes[i++], value);
  }
  EXPECT_EQ(i, kSmallPrimeCount);
  EXPECT_EQ(kSmallPrimes.primes[kTablePrimes - 1], 1223);
}

TEST(FermatTest, SmallNumbers) {
  for (uint32_t n = 0; n < 3000; ++n) {
    const Mpz z(n);
    bool wanted = n > 1;
    for (const uint32_t base : {2u, 3u, 5u, 7u}) {
      if (!wanted) break;
      const Mpz a(base), e(n - 1);
      Mpz power;
      mpz_powm(power, a, e, z);
      wanted = mpz_cmp_ui(static_cast<mpz_srcptr>(power), 1) == 0;
    }
    EXPECT_EQ(IsFermat(BigInt(n)), wanted) << n;
  }
  EXPECT_FALSE(IsFermat(Big("-13")));
}

TEST(FermatTest, PseudoprimesPass) {
  EXPECT_TRUE(IsFermat(Big("29341")));       // 13 * 37 * 61
  EXPECT_TRUE(IsFermat(Big("3215031751")));  // 151 * 751 * 28351
  EXPECT_FALSE(IsFermat(Big("561")));        // a multiple of three
  EXPECT_FALSE(IsFermat(Big("341")));        // of base two only
}

TEST(NextPrimeTest, Table) {
  EXPECT_EQ(Hex(Next(BigInt(1000000))), Hex(BigInt(1000003)));
  EXPECT_EQ(Hex(Next(BigInt(1000003))), Hex(BigInt(1000003)));
  EXPECT_EQ(Hex(Next(BigInt(1000004))), Hex(BigInt(1000033)));
}

TEST(NextPrimeTest, NeverFindsATablePrime) {
  for (uint32_t n = 0; n <= 1229; ++n) ASSERT_EQ(Next(BigInt(n)).getWord(0), 1229u) << n;
  EXPECT_EQ(Next(BigInt(1230)).getWord(0), 1231u);
}

TEST(NextPrimeTest, StartsBelowZero) {
  for (const char* start : {"-0", "-1", "-5", "-1229", "-100000000000000000000000000000"}) {
    const BigInt found = Next(Big(start));
    EXPECT_EQ(Hex(found), Hex(BigInt(1229))) << start;
  }
}

TEST(NextPrimeTest, RunsOfSmallStarts) {
  BigInt n(1230);
  for (int i = 0; i < 3000; ++i) {
    ASSERT_EQ(Hex(Next(n)), NextByDefinition(n));
    n = Next(n) + BigInt(1);
  }
}

// Long distances between primes, which the search walks in several windows.
TEST(NextPrimeTest, LongDistances) {
  EXPECT_EQ(Hex(Next(Big("1693182318746372"))), Hex(Big("1693182318747503")));
  EXPECT_EQ(Hex(Next(Big("18361375334787046698"))), Hex(Big("18361375334787048247")));
}

// Composites without small divisors that pass for primes are found, also by the longer sieve:
// (6k+1)(12k+1)(18k+1) with three primes.
TEST(NextPrimeTest, FindsPseudoprimesWithFactorsInTheLongerSieve) {
  int found = 0;
  for (unsigned long k = 205; k < 3400 && found < 12; ++k) {
    Mpz a(6 * k + 1), b(12 * k + 1), c(18 * k + 1);
    if (!mpz_probab_prime_p(a, 20) || !mpz_probab_prime_p(b, 20) || !mpz_probab_prime_p(c, 20)) {
      continue;
    }
    mpz_mul(a, a, b);
    mpz_mul(a, a, c);
    const BigInt carmichael = FromPeer(a);
    ASSERT_EQ(Hex(Next(carmichael)), Hex(carmichael));
    ++found;
  }
  EXPECT_EQ(found, 12);
}

TEST(NextPrimeTest, RandomStarts) {
  for (int i = 0; i < Cases(300); ++i) {
    const BigInt start = RandomBig(64);
    ASSERT_EQ(Hex(Next(start)), NextByDefinition(start));
  }
  for (int i = 0; i < Cases(12); ++i) {
    const BigInt start = RandomBigOf(256);
    ASSERT_EQ(Hex(Next(start)), NextByDefinition(start));
  }
  for (int i = 0; i < Cases(3); ++i) {
    const BigInt start = RandomBigOf(512);
    ASSERT_EQ(Hex(Next(start)), NextByDefinition(start));
  }
}

// The peer's own next prime, which is no mere Fermat prime, is the same for practically all starts.
TEST(NextPrimeTest, PeerFindsTheSame) {
  for (int i = 0; i < Cases(20); ++i) {
    const BigInt start = RandomBig(500) + BigInt(2000);
    Mpz z(start - BigInt(1));
    mpz_nextprime(z, z);
    ASSERT_EQ(Hex(Next(start)), Hex(static_cast<mpz_srcptr>(z)));
  }
}

TEST(NextPrimeTest, CarriesIntoANewWord) {
  for (const char* start : {"fffffffffffffffc", "fffffffe", "ffffffffffffffffffffffff"}) {
    const BigInt n = BigHex(start);
    EXPECT_EQ(Hex(Next(n)), NextByDefinition(n));
  }
}

}  // namespace
}  // namespace mirolta
