// A key of 1,024 bits.
#pragma once

#include <cstdio>
#include <cstdlib>

#include "big_bytes.h"
#include "rsa_key.h"

namespace mirolta::constant_time {

inline constexpr char kSmallerPrime[] =
    "C783077429202DC93D5D1FE799CFF0829BBAAB071CD5A81C9CD37C84BFDC8348"
    "666620D40461B6205065AC5AA5896554ED0CA88BBE0F79CE781BEE357EF5FB63";
inline constexpr char kLargerPrime[] =
    "CD1AF3AB30500E207E428D5ED4A8B1F716368E7CE220CE358896102D0915BA26"
    "FEC5BE3F4BD26C631061465CE54EC7863D13A9F4A19146BD8DDBC0CFA444A383";

// Ends the program where a step of its own fails.
inline void Need(bool is_done, const char* step) {
  if (is_done) return;
  std::fprintf(stderr, "failed: %s\n", step);
  std::exit(2);
}

inline BigInt NumberOf(const char* digits) {
  uint8_t bytes[64] = {};
  for (size_t i = 0; i < sizeof bytes; ++i) {
    const char pair[] = {digits[2 * i], digits[2 * i + 1], 0};
    bytes[i] = static_cast<uint8_t>(std::strtoul(pair, nullptr, 16));
  }
  BigInt number;
  Need(FromBytes(number, bytes, sizeof bytes) == S_OK, "a number of the key");
  return number;
}

inline RsaKey MakeTestKey() {
  RsaKey key;
  BigInt p = NumberOf(kSmallerPrime);
  BigInt q = NumberOf(kLargerPrime);
  Need(BuildKeyFromPrimes(key, p, q) == S_OK, "the key");
  return key;
}

}  // namespace mirolta::constant_time
