// Greatest common divisor, inverse, powers and primes with every kind of operand: zero, one, even,
// negative, long. All calls return, and agree with the peer where it computes the same.
#include "big_numbers.h"
#include "gcd.h"
#include "mod_exp.h"
#include "next_prime.h"

using namespace mirolta;
using namespace mirolta::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  const uint32_t most = in.Byte() % 8 == 0 ? 200 : 40;
  const BigInt a = NextNumber(in, most), b = NextNumber(in, most), e = NextNumber(in, 40);
  const PeerNumber x(a), y(b), w(e);
  PeerNumber z;
  BigInt r;
  FUZZ_CHECK(Gcd(r, a, b) == S_OK);
  mpz_gcd(z.get(), x.get(), y.get());
  r.SetSignFlag(false);
  FUZZ_CHECK(Equals(r, z.get()));
  const bool coprime = mpz_cmp_ui(z.get(), 1) == 0;

  const HRESULT inverted = Inverse(r, a, b);
  FUZZ_CHECK(inverted == (b.IsZero() ? DISP_E_DIVBYZERO : S_OK));
  if (coprime && !a.IsNegative() && !b.IsNegative() && mpz_cmp_ui(y.get(), 1) > 0) {
    mpz_invert(z.get(), x.get(), y.get());
    const PeerNumber ours(r);
    PeerNumber reduced;
    mpz_mod(reduced.get(), ours.get(), y.get());
    FUZZ_CHECK(mpz_cmp(reduced.get(), z.get()) == 0);
  }

  const HRESULT raised = ModExp(r, a, e, b);
  FUZZ_CHECK(raised == (b.IsZero() ? DISP_E_DIVBYZERO : S_OK));
  if (raised == S_OK && !a.IsNegative() && !b.IsNegative() && !e.IsNegative()) {
    mpz_powm(z.get(), x.get(), w.get(), y.get());
    FUZZ_CHECK(Equals(r, z.get()));
  }

  bool prime = false;
  FUZZ_CHECK(IsFermatPrime(&prime, a) == S_OK);
  if (!a.IsNegative() && mpz_cmp_ui(x.get(), 10) > 0 && mpz_probab_prime_p(x.get(), 30) != 0) {
    FUZZ_CHECK(prime);
  }
  if (a.BitLength() <= 256) {
    BigInt next = a;
    FUZZ_CHECK(NextPrime(next) == S_OK);
    FUZZ_CHECK(IsFermatPrime(&prime, next) == S_OK && prime);
    // No prime is skipped.
    if (!a.IsNegative() && mpz_cmp_ui(x.get(), 1300) > 0) {
      mpz_sub_ui(z.get(), x.get(), 1);
      mpz_nextprime(z.get(), z.get());
      const PeerNumber found(next);
      FUZZ_CHECK(mpz_cmp(found.get(), z.get()) <= 0);
    }
  }
  return 0;
}
