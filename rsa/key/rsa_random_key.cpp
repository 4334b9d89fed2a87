// Key generation from random starting values.
#include "big_random.h"
#include "next_prime.h"
#include "rsa_key.h"

namespace mirolta {

namespace {

constexpr bool kEnsureSize = true;
constexpr bool kOdd = true;

// No random bytes are drawn for a size of 0: the start is zero.
HRESULT DrawStart(BigInt& start, LONG bytes) {
  return bytes == 0 ? S_OK : Random(start, bytes, kEnsureSize, kOdd);
}

}  // namespace

HRESULT BuildRandomKey(RsaKey& key, LONG byte_size, bool exact_size) {
  if (byte_size < 1) return E_INVALIDARG;
  const LONG half = byte_size / 2;
  if (half == 0 && exact_size) return E_INVALIDARG;

  BigInt first;
  HRESULT status = DrawStart(first, half);
  if (FAILED(status)) return status;
  // The next draw waits for the clock to tick, so the first prime is searched meanwhile.
  BigInt first_prime = first;
  status = NextPrime(first_prime);
  if (FAILED(status)) return status;
  BigInt second;
  if (exact_size) {
    do {
      status = DrawStart(second, half);
    } while (SUCCEEDED(status) && first == second);
  } else {
    status = DrawStart(second, half + 1);
  }
  if (SUCCEEDED(status)) status = NextPrime(second);
  return FAILED(status) ? status : BuildKeyFromPrimes(key, first_prime, second);
}

}  // namespace mirolta
