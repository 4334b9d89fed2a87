// Numbers from fuzz input, in our form and the peer's.
#pragma once

#include <gmp.h>

#include "big_bytes.h"
#include "big_int.h"
#include "fuzz_input.h"

namespace mirolta::fuzz {

class PeerNumber {
 public:
  PeerNumber() { mpz_init(value_); }
  explicit PeerNumber(const BigInt& n) : PeerNumber() {
    Bytes bytes(static_cast<size_t>(ByteLength(n)));
    ToBytes(bytes.data(), n);
    mpz_import(value_, bytes.size(), 1, 1, 1, 0, bytes.data());
    if (n.IsNegative()) mpz_neg(value_, value_);
  }
  ~PeerNumber() { mpz_clear(value_); }
  PeerNumber(const PeerNumber&) = delete;
  PeerNumber& operator=(const PeerNumber&) = delete;
  mpz_ptr get() { return value_; }
  mpz_srcptr get() const { return value_; }

 private:
  mpz_t value_;
};

// Long runs of ones and zeros, through which carries propagate, are as likely as other numbers.
inline BigInt NextNumber(FuzzInput& in, uint32_t most_bytes) {
  Bytes bytes;
  const uint8_t kind = in.Byte();
  const uint32_t length = in.Word() % (most_bytes + 1);
  while (bytes.size() < length) {
    const uint8_t byte = in.Byte();
    const size_t run = kind % 4 == 0 || in.IsEmpty() ? 1u + byte % 37 : 1;
    for (size_t i = 0; i < run && bytes.size() < length; ++i) {
      bytes.push_back(run > 1 ? static_cast<uint8_t>(byte < 128 ? 0 : 0xFF) : byte);
    }
  }
  BigInt n;
  FUZZ_CHECK(FromBytes(n, bytes.data(), static_cast<uint32_t>(bytes.size())) == S_OK);
  n.SetSignFlag(kind >= 192);
  return n;
}

inline bool Equals(const BigInt& n, mpz_srcptr peer) {
  const PeerNumber same(n);
  return mpz_cmp(same.get(), peer) == 0;
}

}  // namespace mirolta::fuzz
