// Numbers in the forms of this library and its peers.
#pragma once

#include <gmp.h>
#include <openssl/bn.h>

#include <memory>
#include <string>
#include <vector>

#include "bench_bytes.h"
#include "big_bytes.h"
#include "big_int.h"

namespace mirolta::bench {

struct GmpNumber {
  GmpNumber() { mpz_init(z); }
  ~GmpNumber() { mpz_clear(z); }
  GmpNumber(const GmpNumber&) = delete;
  GmpNumber& operator=(const GmpNumber&) = delete;
  mpz_t z;
};

// PeerNumber is one value in all three forms.
struct PeerNumber {
  BigInt ours;
  GmpNumber gmp;
  std::unique_ptr<BIGNUM, void (*)(BIGNUM*)> openssl{BN_new(), BN_free};

  void Set(const std::vector<uint8_t>& bytes) {
    if (FAILED(FromBytes(ours, bytes.data(), static_cast<uint32_t>(bytes.size())))) return;
    mpz_import(gmp.z, bytes.size(), 1, 1, 1, 0, bytes.data());
    BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), openssl.get());
  }
};

using PeerNumbers = std::shared_ptr<std::vector<PeerNumber>>;

enum class Parity { kAny, kOdd, kEven };

// RandomNumbers returns count numbers of exactly `bits` bits.
inline PeerNumbers RandomNumbers(size_t bits, uint64_t seed, Parity parity = Parity::kAny,
                                 size_t count = kOperands) {
  const size_t size = (bits + 7) / 8;
  const unsigned top = static_cast<unsigned>((bits - 1) % 8);
  const auto numbers = std::make_shared<std::vector<PeerNumber>>(count);
  for (size_t i = 0; i < count; ++i) {
    std::vector<uint8_t> bytes = RandomBytes(size, seed * 1000 + i);
    const unsigned high = (bytes[0] & ((1u << top) - 1)) | 1u << top;
    bytes[0] = static_cast<uint8_t>(high);
    if (parity == Parity::kOdd) bytes.back() |= 1;
    if (parity == Parity::kEven) bytes.back() = static_cast<uint8_t>(bytes.back() & 0xFE);
    (*numbers)[i].Set(bytes);
  }
  return numbers;
}

inline std::string TextOf(const BigInt& n) {
  std::vector<uint8_t> bytes(static_cast<size_t>(ByteLength(n)));
  ToBytes(bytes.data(), n);
  return "number " + std::string(bytes.begin(), bytes.end());
}
inline std::string TextOf(const mpz_t z) {
  std::vector<uint8_t> bytes((mpz_sizeinbase(z, 2) + 7) / 8);
  size_t count = 0;
  mpz_export(bytes.data(), &count, 1, 1, 1, 0, z);
  return "number " + std::string(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(count));
}
inline std::string TextOf(const BIGNUM* n) {
  std::vector<uint8_t> bytes(static_cast<size_t>(BN_num_bytes(n)));
  BN_bn2bin(n, bytes.data());
  return "number " + std::string(bytes.begin(), bytes.end());
}

// Contestants from work(result, operand), each with its own form of number.
template <typename Work>
Contestant OurContestant(Work work) {
  const auto result = std::make_shared<BigInt>();
  return {kOurs, [=](size_t operand) { work(*result, operand); }, [=] { return TextOf(*result); }};
}
template <typename Work>
Contestant GmpContestant(Work work) {
  const auto result = std::make_shared<GmpNumber>();
  return {"GMP", [=](size_t operand) { work(result->z, operand); },
          [=] { return TextOf(result->z); }};
}
template <typename Work>
Contestant OpenSslContestant(const char* name, Work work) {
  const auto result = std::shared_ptr<BIGNUM>(BN_new(), BN_free);
  const auto context = std::shared_ptr<BN_CTX>(BN_CTX_new(), BN_CTX_free);
  return {name, [=](size_t operand) { work(result.get(), operand, context.get()); },
          [=] { return TextOf(result.get()); }};
}

}  // namespace mirolta::bench
