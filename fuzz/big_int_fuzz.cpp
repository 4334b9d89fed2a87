// Arithmetic on signed numbers against the peer, also with results that alias operands.
#include "big_numbers.h"

using namespace mirolta;
using namespace mirolta::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  const uint32_t most = in.Byte() % 8 == 0 ? 6000 : 300;
  const BigInt a = NextNumber(in, most), b = NextNumber(in, most);
  const PeerNumber x(a), y(b);
  PeerNumber z, r;
  mpz_add(z.get(), x.get(), y.get());
  FUZZ_CHECK(Equals(a + b, z.get()));
  mpz_sub(z.get(), x.get(), y.get());
  FUZZ_CHECK(Equals(a - b, z.get()));
  BigInt c = a;
  FUZZ_CHECK(c.Subtract(b) == S_OK && Equals(c, z.get()));
  FUZZ_CHECK(c.Add(b) == S_OK && Equals(c, x.get()));
  FUZZ_CHECK(c.Add(c) == S_OK);
  mpz_mul_2exp(z.get(), x.get(), 1);
  FUZZ_CHECK(Equals(c, z.get()));
  mpz_mul(z.get(), x.get(), y.get());
  FUZZ_CHECK(Equals(a * b, z.get()));
  FUZZ_CHECK(Multiply(c, b, a) == S_OK && Equals(c, z.get()));
  c = a;
  FUZZ_CHECK(Multiply(c, c, c) == S_OK);
  mpz_mul(z.get(), x.get(), x.get());
  FUZZ_CHECK(Equals(c, z.get()));
  if (b.IsZero()) {
    FUZZ_CHECK(Divide(c, a, b) == DISP_E_DIVBYZERO && Equals(c, z.get()));
    FUZZ_CHECK(Remainder(c, a, b) == DISP_E_DIVBYZERO);
  } else {
    mpz_tdiv_qr(z.get(), r.get(), x.get(), y.get());
    FUZZ_CHECK(Equals(a / b, z.get()));
    FUZZ_CHECK(Equals(a % b, r.get()));
    c = b;
    FUZZ_CHECK(Remainder(c, a, c) == S_OK && Equals(c, r.get()));
  }
  return 0;
}
