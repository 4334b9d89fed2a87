// Runs one portable kernel on a given amount of work, under an instruction counter.
//
//   mirolta-count KERNEL AMOUNT    bytes of a digest or cipher, powers of a modular exponentiation
//   mirolta-count --list           the kernels, each with the unit and limit
#include <tommath.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "aes_kernels.h"
#include "bench_bytes.h"
#include "big_bytes.h"
#include "des_kernels.h"
#include "hash_kernels.h"
#include "mod_exp.h"

namespace mirolta::bench {

namespace {

template <auto kCompress>
void RunDigest(const uint8_t* data, size_t amount, uint8_t*) {
  uint32_t words[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  kCompress(words, data, amount / kHashBlockSize);
}

template <uint32_t kKeySize>
void RunAes(const uint8_t* data, size_t amount, uint8_t* out) {
  AesSchedule schedule;
  if (!ExpandAesKey(data, kKeySize, &schedule)) return;
  AesEncryptPortable(schedule, data, out, static_cast<uint32_t>(amount / kAesBlockSize));
}

template <uint32_t kKeySize>
void RunDes(const uint8_t* data, size_t amount, uint8_t* out) {
  DesSchedule schedule;
  if (!ExpandDesKey(data, kKeySize, &schedule)) return;
  DesEncryptPortable(schedule, data, out, static_cast<uint32_t>(amount / kDesBlockSize));
}

// Base, exponent and modulus of 1,024 bits.
constexpr uint32_t kPowerBytes = 128;
struct PowerOperands {
  std::vector<uint8_t> base = RandomBytes(kPowerBytes, 1);
  std::vector<uint8_t> exponent = RandomBytes(kPowerBytes, 2);
  std::vector<uint8_t> modulus = RandomBytes(kPowerBytes, 3);
  PowerOperands() {
    base[0] = 0x7F;
    exponent[0] |= 0x80;
    modulus[0] |= 0x80;
    modulus.back() |= 1;
  }
};

void RunPower(const uint8_t*, size_t amount, uint8_t* out) {
  const PowerOperands operands;
  BigInt base, exponent, modulus, result;
  (void)FromBytes(base, operands.base.data(), kPowerBytes);
  (void)FromBytes(exponent, operands.exponent.data(), kPowerBytes);
  (void)FromBytes(modulus, operands.modulus.data(), kPowerBytes);
  for (size_t i = 0; i < amount; ++i) (void)ModExp(result, base, exponent, modulus);
  ToBytes(out + kPowerBytes - ByteLength(result), result);
}

void RunPeerPower(const uint8_t*, size_t amount, uint8_t* out) {
  const PowerOperands operands;
  mp_int base, exponent, modulus, result;
  if (mp_init_multi(&base, &exponent, &modulus, &result, nullptr) != MP_OKAY) return;
  bool good = mp_from_ubin(&base, operands.base.data(), kPowerBytes) == MP_OKAY &&
              mp_from_ubin(&exponent, operands.exponent.data(), kPowerBytes) == MP_OKAY &&
              mp_from_ubin(&modulus, operands.modulus.data(), kPowerBytes) == MP_OKAY;
  for (size_t i = 0; i < amount && good; ++i) {
    good = mp_exptmod(&base, &exponent, &modulus, &result) == MP_OKAY;
  }
  const size_t missing = good ? kPowerBytes - mp_ubin_size(&result) : 0;
  size_t written = 0;
  if (good && mp_to_ubin(&result, out + missing, kPowerBytes, &written) != MP_OKAY) out[0] = 0xFF;
  mp_clear_multi(&base, &exponent, &modulus, &result, nullptr);
}

// Instructions of libtommath 1.2.0 built for 32-bit words (MP_32BIT, -O3 -funroll-loops). The
// installed library is built for 64-bit words, so only its result is used as a peer, not its count.
constexpr double kPeerPowerWith32BitWords = 16880114;

constexpr struct {
  const char* name;
  const char* unit;
  double limit;  // instructions per unit; 0 for a peer, named after the kernel
  void (*run)(const uint8_t* data, size_t amount, uint8_t* out);
} kKernels[] = {
    {"MD5", "byte", 9.1, RunDigest<Md5Portable>},
    {"SHA-1", "byte", 21.6, RunDigest<Sha1Portable>},
    {"SHA-256", "byte", 42.5, RunDigest<Sha256Portable>},
    {"AES-128", "byte", 43.6, RunAes<16>},
    {"AES-256", "byte", 59, RunAes<32>},
    {"DES", "byte", 81, RunDes<8>},
    {"Triple-DES", "byte", 222, RunDes<24>},
    {"Power-1024", "power", kPeerPowerWith32BitWords, RunPower},
    {"Power-1024-libtommath", "power", 0, RunPeerPower},
};

int Main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--list") == 0) {
    for (const auto& kernel : kKernels) {
      std::printf("%s %s %.10g\n", kernel.name, kernel.unit, kernel.limit);
    }
    return 0;
  }
  if (argc != 3) return 2;
  const size_t amount = std::strtoul(argv[2], nullptr, 10);
  const std::vector<uint8_t> data = RandomBytes(amount + kPowerBytes);
  std::vector<uint8_t> out(amount + kPowerBytes);
  for (const auto& kernel : kKernels) {
    if (std::strcmp(kernel.name, argv[1]) != 0) continue;
    kernel.run(data.data(), amount, out.data());
    // The result of the last power; both must print the same.
    for (size_t i = 0; i < kPowerBytes; ++i) std::printf("%02x", out[i]);
    std::printf("\n");
    return 0;
  }
  return 2;
}

}  // namespace

}  // namespace mirolta::bench

int main(int argc, char** argv) {
  return mirolta::bench::Main(argc, argv);
}
