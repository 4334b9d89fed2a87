// RSA with moduli of up to 64 bits: keys built from small primes, and the primitives with any numbers, against
// powers by plain multiplication of single bits.
#include "fuzz_input.h"
#include "rsa_key.h"

using namespace mirolta;
using namespace mirolta::fuzz;

namespace {

BigInt Big(uint64_t x) {
  BigInt n;
  const Limb limbs[] = {static_cast<Limb>(x),
                        static_cast<Limb>(x >> (kLimbBits / 2) >> (kLimbBits / 2))};
  FUZZ_CHECK(n.AssignLimbs(limbs, kLimbBits == 32 ? 2 : 1) == S_OK);
  return n;
}

uint64_t Small(const BigInt& n) {
  FUZZ_CHECK(n.Used() <= 2 && !n.IsNegative());
  return uint64_t{n.GetWord(1)} << 32 | n.GetWord(0);
}

// x * y mod m without a number above 2^64.
uint64_t Product(uint64_t x, uint64_t y, uint64_t m) {
  uint64_t z = 0;
  for (x %= m; y != 0; y >>= 1) {
    if ((y & 1) != 0) z = z >= m - x ? z - (m - x) : z + x;
    x = x >= m - x ? x - (m - x) : x + x;
  }
  return z;
}
uint64_t Power(uint64_t x, uint64_t e, uint64_t m) {
  uint64_t z = 1 % m;
  for (x %= m; e != 0; e >>= 1) {
    if ((e & 1) != 0) z = Product(z, x, m);
    x = Product(x, x, m);
  }
  return z;
}

constexpr uint32_t kPrimes[] = {2,    3,    5,     7,     11,    13,    17,     257,    1229,
                                1231, 1297, 65521, 65537, 65539, 99991, 131071, 524287, 1048573};

void CheckNumbers(FuzzInput& in) {
  RsaKey key;
  const uint64_t n = in.Huge() >> in.Byte() % 64, e = in.Huge() >> in.Byte() % 64;
  const uint64_t x = in.Huge() >> in.Byte() % 64;
  key.n = Big(n);
  key.e = key.d = Big(e);
  BigInt encrypted, decrypted;
  const HRESULT expected = n == 0 ? E_INVALIDARG : S_OK;
  FUZZ_CHECK(RsaEncrypt(encrypted, key, Big(x)) == expected);
  FUZZ_CHECK(RsaDecrypt(decrypted, key, Big(x)) == expected);
  if (n == 0) return;
  FUZZ_CHECK(Small(encrypted) == Power(x, e, n) && Small(decrypted) == Power(x, e, n));
}

void CheckKey(FuzzInput& in) {
  const uint64_t p = kPrimes[in.Byte() % std::size(kPrimes)];
  const uint64_t q = kPrimes[in.Byte() % std::size(kPrimes)];
  RsaKey key;
  key.e = Big(in.Word() % 4 == 0 ? 0 : in.Word());
  BigInt first = Big(p), second = Big(q);
  const HRESULT built = BuildKeyFromPrimes(key, first, second);
  FUZZ_CHECK(built == S_OK);
  const uint64_t n = p * q, order = (p - 1) * (q - 1);
  FUZZ_CHECK(Small(key.n) == n && Small(key.p) * Small(key.q) == n && Small(key.p) <= Small(key.q));
  if (p == q || order <= 2) return;
  FUZZ_CHECK(Product(Small(key.e), Small(key.d), order) == 1);
  for (int i = 0; i < 3; ++i) {
    const uint64_t x = i == 0 ? 0 : in.Huge() % n;
    BigInt encrypted, decrypted;
    FUZZ_CHECK(RsaEncrypt(encrypted, key, Big(x)) == S_OK);
    FUZZ_CHECK(Small(encrypted) == Power(x, Small(key.e), n));
    FUZZ_CHECK(RsaDecrypt(decrypted, key, encrypted) == S_OK && Small(decrypted) == x);
    // Modulo 2 the exponent d_p is 0, and 0^0 is 1.
    const uint64_t even = Small(key.p) == 2 && x % 2 == 0 ? Small(key.q) : 0;
    FUZZ_CHECK(RsaDecryptWithPrimes(decrypted, key, encrypted) == S_OK);
    FUZZ_CHECK(Small(decrypted) == (x + even) % n);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  if (in.Byte() % 2 == 0) {
    CheckNumbers(in);
  } else {
    CheckKey(in);
  }
  return 0;
}
