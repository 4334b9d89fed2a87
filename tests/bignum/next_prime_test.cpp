#include "next_prime.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "big_testing.h"
#include "small_primes.h"
#include "vector_file.h"

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

// Batched where the processor has such a kernel, one by one for the shortest.
TEST(FermatTest, MersennePrimesPassAndTheirNeighboursFail) {
  for (const unsigned bits : {89u, 521u, 607u, 1279u, 2203u}) {
    Mpz prime(1);
    mpz_mul_2exp(prime, prime, bits);
    mpz_sub_ui(prime, prime, 1);
    EXPECT_TRUE(IsFermat(FromPeer(static_cast<mpz_srcptr>(prime)))) << bits;
    mpz_sub_ui(prime, prime, 2);
    EXPECT_FALSE(IsFermat(FromPeer(static_cast<mpz_srcptr>(prime)))) << bits;
  }
}

// Primes, and composites made to pass tests like this one.
TEST(FermatTest, PublishedNumbersPassAsTheDefinitionSays) {
  size_t passing_composites = 0;
  test::CheckVectorFile(MIROLTA_VECTORS "/primality.txt", {"Number", "Prime", "Fermat"},
                        [&](const test::VectorCase& one) {
                          const bool is_prime = one.Number("Prime") != 0;
                          const bool passes = IsFermat(BigHex(one.Text("Number")));
                          EXPECT_EQ(passes, one.Number("Fermat") != 0);
                          EXPECT_TRUE(passes || !is_prime);
                          passing_composites += passes && !is_prime;
                        });
  EXPECT_EQ(passing_composites, 147u);
}

// The definition: no divisor in the table, and four Fermat tests.
bool IsFoundByDefinition(mpz_srcptr n) {
  for (SmallPrime prime; prime.Index() < kTablePrimes; prime.Next()) {
    if (mpz_divisible_ui_p(n, prime.Value())) return false;
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

TEST(SmallPrimesTest, WalksThePrimes) {
  std::vector<uint32_t> primes;
  for (Mpz p(2); mpz_get_ui(p) <= 65535; mpz_nextprime(p, p)) {
    primes.push_back(static_cast<uint32_t>(mpz_get_ui(p)));
  }
  ASSERT_EQ(primes.size(), kSmallPrimeCount);
  EXPECT_EQ(primes[kTablePrimes - 1], 1223);
  SmallPrime prime;
  for (size_t i = 0; i < kSmallPrimeCount; ++i, prime.Next()) {
    ASSERT_EQ(prime.Index(), i);
    ASSERT_EQ(prime.Value(), primes[i]);
  }
  ASSERT_EQ(prime.Index(), kSmallPrimeCount);
  for (size_t i = kSmallPrimeCount; i-- != 0;) {
    prime.Previous();
    ASSERT_EQ(prime.Index(), i);
    ASSERT_EQ(prime.Value(), primes[i]);
  }
}

TEST(FermatTest, SmallPrimesPassAndSmallCompositesFail) {
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

TEST(NextPrimeTest, KnownStartsGiveKnownPrimes) {
  EXPECT_EQ(Hex(Next(BigInt(1000000))), Hex(BigInt(1000003)));
  EXPECT_EQ(Hex(Next(BigInt(1000003))), Hex(BigInt(1000003)));
  EXPECT_EQ(Hex(Next(BigInt(1000004))), Hex(BigInt(1000033)));
}

TEST(NextPrimeTest, PrimesOfTheTableAreNeverFound) {
  for (uint32_t n = 0; n <= 1229; ++n) ASSERT_EQ(Next(BigInt(n)).GetWord(0), 1229u) << n;
  EXPECT_EQ(Next(BigInt(1230)).GetWord(0), 1231u);
}

TEST(NextPrimeTest, NegativeStartsAreStartsAtZero) {
  for (const char* start : {"-0", "-1", "-5", "-1229", "-100000000000000000000000000000"}) {
    const BigInt found = Next(Big(start));
    EXPECT_EQ(Hex(found), Hex(BigInt(1229))) << start;
  }
}

TEST(NextPrimeTest, SmallStartsGiveTheNextPrime) {
  BigInt n(1230);
  for (int i = 0; i < 3000; ++i) {
    ASSERT_EQ(Hex(Next(n)), NextByDefinition(n));
    n = Next(n) + BigInt(1);
  }
}

// Large prime gaps, which the search crosses in several windows.
TEST(NextPrimeTest, PrimesFarFromTheStartAreFound) {
  EXPECT_EQ(Hex(Next(Big("1693182318746372"))), Hex(Big("1693182318747503")));
  EXPECT_EQ(Hex(Next(Big("18361375334787046698"))), Hex(Big("18361375334787048247")));
}

// Pseudoprimes without small divisors are found, by the longer sieve too: (6k+1)(12k+1)(18k+1) with
// three prime factors.
TEST(NextPrimeTest, PseudoprimesWithFactorsInTheLongerSieveAreFound) {
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

// Carmichael numbers all of whose divisors are in the longer sieve's reach or above it, none in the
// table: products of primes p for which p - 1 divides one number, as Erdos 1956 makes them.
TEST(NextPrimeTest, CarmichaelNumbersWhoseDivisorsAreSievedAreFound) {
  const std::vector<unsigned long> numbers[] = {
      {1249, 1321, 1873, 2521, 2731, 3169, 3697, 6007, 7393, 25741, 51481, 65521},
      {1249, 1321, 2003, 2311, 2341, 2731, 6007, 7393, 9241, 14561, 20593, 25741, 55441, 65521},
      {1321, 1801, 2161, 2971, 3301,  3697,  3851,  4159,  4201,  4621,
       6301, 7561, 8317, 9901, 15401, 18481, 19801, 23761, 34651, 55441},
      {1249, 1873, 2003,  2017,  2081,  2311,  2521,  2731,  3121,  3433,  4621,  5281,
       8191, 9241, 16381, 18481, 20593, 21841, 25741, 26209, 36037, 48049, 51481, 65521},
      {1249, 1321, 1873, 2003, 2017, 2081, 2311,  2341,  2521,  2731,  2861,  3169,  3361,  3697,
       5281, 6007, 6553, 8581, 8737, 9241, 14561, 16381, 18481, 20593, 26209, 48049, 55441, 65521},
      {1249,  1321,  1873,  2017,  2081,  2311,  2341,  2731,  2861,  3121,  3169,
       3361,  3433,  3697,  4621,  5281,  6007,  7393,  8009,  8191,  13729, 16381,
       18481, 20021, 20593, 21841, 25741, 26209, 36037, 48049, 51481, 55441},
  };
  for (const std::vector<unsigned long>& divisors : numbers) {
    Mpz n(1), less_1;
    for (const unsigned long p : divisors) mpz_mul_ui(n, n, p);
    mpz_sub_ui(less_1, n, 1);
    const size_t bits = mpz_sizeinbase(n, 2);
    SCOPED_TRACE(bits);
    EXPECT_GE(bits, 142u);
    // Carmichael's by Korselt's criterion, and with a divisor that the search sieves with.
    for (const unsigned long p : divisors) ASSERT_TRUE(mpz_divisible_ui_p(less_1, p - 1)) << p;
    EXPECT_LT(divisors[0], bits * bits / 16);
    const BigInt carmichael = FromPeer(n);
    EXPECT_TRUE(IsFermat(carmichael));
    EXPECT_EQ(Hex(Next(carmichael)), Hex(carmichael));
    // Also from below, where other candidates are tested with it.
    const BigInt below = carmichael - BigInt(30);
    EXPECT_EQ(Hex(Next(below)), NextByDefinition(below));
  }
}

// Composites that three bases take for primes and one other refuses, which is not base 2. For
// n = p (kp - k + 1) with both prime, base b passes just if it is a k-th power modulo the greater
// one; 3 always is a square there. The primes are 2^(bits / 2 - 1) + offset.
TEST(NextPrimeTest, EveryBaseRefusesSomeComposite) {
  const struct {
    unsigned bits;
    unsigned long witness;
    unsigned long offset;
    unsigned long k;
  } rows[] = {
      {100, 5, 1277, 2},    {100, 7, 48749, 2},   {104, 5, 1001, 2},    {104, 7, 15353, 2},
      {128, 5, 8141, 2},    {128, 7, 6113, 2},    {156, 5, 3077, 2},    {156, 7, 12809, 2},
      {200, 5, 509, 2},     {200, 7, 19553, 2},   {256, 5, 15581, 2},   {256, 7, 10613, 2},
      {312, 5, 82541, 2},   {312, 7, 122813, 2},  {400, 5, 48821, 2},   {400, 7, 226373, 2},
      {500, 5, 154865, 2},  {500, 7, 812429, 2},  {600, 5, 170669, 2},  {600, 7, 1121573, 2},
      {720, 5, 295541, 2},  {720, 7, 516773, 2},  {832, 5, 53129, 2},   {832, 7, 340733, 2},
      {936, 5, 173609, 2},  {936, 7, 422813, 2},  {1040, 5, 696161, 2}, {1040, 7, 592013, 2},
      {1144, 5, 455069, 2}, {1144, 7, 378953, 2}, {1240, 5, 778469, 2}, {1240, 7, 58913, 2},
      {100, 3, 19019, 3},   {128, 3, 55863, 3},   {200, 3, 34319, 3},   {312, 3, 646415, 3},
      {400, 3, 378569, 3},  {520, 3, 82365, 3},   {600, 3, 54423, 3},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.bits) + " bits, " + std::to_string(row.witness));
    Mpz p(1), n;
    mpz_mul_2exp(p, p, row.bits / 2 - 1);
    mpz_add_ui(p, p, row.offset);
    mpz_mul_ui(n, p, row.k);
    mpz_sub_ui(n, n, row.k - 1);
    mpz_mul(n, n, p);
    ASSERT_EQ(mpz_sizeinbase(n, 2), row.bits);
    for (const unsigned long base : {2ul, 3ul, 5ul, 7ul}) {
      Mpz power, e;
      const Mpz b(base);
      mpz_sub_ui(e, n, 1);
      mpz_powm(power, b, e, n);
      ASSERT_EQ(mpz_cmp_ui(static_cast<mpz_srcptr>(power), 1) != 0, base == row.witness) << base;
    }
    const BigInt composite = FromPeer(n);
    EXPECT_FALSE(IsFermat(composite));
    EXPECT_EQ(Hex(Next(composite)), NextByDefinition(composite));
  }
}

TEST(NextPrimeTest, RandomStartsGiveNumbersThatPassTheFermatTest) {
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

// The peer's next prime passes stronger tests; pseudoprimes are too rare to make a difference.
TEST(NextPrimeTest, RandomStartsAgreeWithThePeer) {
  for (int i = 0; i < Cases(20); ++i) {
    const BigInt start = RandomBig(500) + BigInt(2000);
    Mpz z(start - BigInt(1));
    mpz_nextprime(z, z);
    ASSERT_EQ(Hex(Next(start)), Hex(static_cast<mpz_srcptr>(z)));
  }
}

TEST(NextPrimeTest, SearchesCarryIntoANewWord) {
  for (const char* start : {"fffffffffffffffc", "fffffffe", "ffffffffffffffffffffffff"}) {
    const BigInt n = BigHex(start);
    EXPECT_EQ(Hex(Next(n)), NextByDefinition(n));
  }
}

}  // namespace
}  // namespace mirolta
