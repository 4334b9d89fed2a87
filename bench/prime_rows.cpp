// The next prime from random starts, against a sieve and GMP's Fermat test.
#include "bench_numbers.h"
#include "next_prime.h"
#include "small_primes.h"

namespace mirolta::bench {

namespace {

bool IsGmpFermatPrime(const mpz_t n) {
  GmpNumber power;
  GmpNumber base;
  GmpNumber exponent;
  mpz_sub_ui(exponent.z, n, 1);
  for (const unsigned long a : {2ul, 3ul, 5ul, 7ul}) {
    mpz_set_ui(base.z, a);
    mpz_powm(power.z, base.z, exponent.z, n);
    if (mpz_cmp_ui(power.z, 1) != 0) return false;
  }
  return true;
}

// The same candidates as ours: odd, without a factor in the table.
void GmpNextPrime(mpz_t n) {
  if (mpz_even_p(n)) mpz_add_ui(n, n, 1);
  unsigned long primes[kTablePrimes];
  unsigned long remainders[kTablePrimes];
  for (SmallPrime prime; prime.Index() < kTablePrimes; prime.Next()) {
    primes[prime.Index()] = prime.Value();
    remainders[prime.Index()] = mpz_fdiv_ui(n, prime.Value());
  }
  for (unsigned long offset = 0;; offset += 2) {
    bool divides = false;
    for (size_t i = 1; i < kTablePrimes; ++i) {
      divides = divides || remainders[i] == 0;
      remainders[i] += 2;
      if (remainders[i] >= primes[i]) remainders[i] -= primes[i];
    }
    if (divides) continue;
    GmpNumber candidate;
    mpz_add_ui(candidate.z, n, offset);
    if (!IsGmpFermatPrime(candidate.z)) continue;
    mpz_set(n, candidate.z);
    return;
  }
}

// The time of a search depends on its start, so every run does the same set.
constexpr size_t kSearches = 8;

std::vector<Contestant> MakeSearches(size_t bits) {
  const PeerNumbers starts = RandomNumbers(bits, 1);
  return {OurContestant([=](BigInt& r, size_t i) {
            for (size_t k = 0; k < kSearches; ++k) {
              r = (*starts)[(i * kSearches + k) % kOperands].ours;
              (void)NextPrime(r);
            }
          }),
          GmpContestant([=](mpz_t r, size_t i) {
            for (size_t k = 0; k < kSearches; ++k) {
              mpz_set(r, (*starts)[(i * kSearches + k) % kOperands].gmp.z);
              GmpNextPrime(r);
            }
          })};
}

constexpr struct {
  size_t bits;
  double required;
  double stretch;
  int iterations;
} kSizes[] = {{256, 2.5, 3, 16}, {512, 3, 4.5, 8}, {1024, 3.5, 6, 2}};

}  // namespace

void AddPrimeRows(RowList* rows) {
  for (const auto& size : kSizes) {
    const size_t bits = size.bits;
    rows->push_back({"engine/next prime, 8 starts/" + std::to_string(bits) + " bits", 0,
                     size.required, size.stretch, kOperands / kSearches, size.iterations,
                     [bits] { return MakeSearches(bits); }});
  }
}

}  // namespace mirolta::bench
