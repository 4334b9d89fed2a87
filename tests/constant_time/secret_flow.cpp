// Runs what must be constant-time with its secrets hidden from memcheck, which then reports every
// branch and every address that depends on them: RSA's private operation, HMAC, and the kernels of
// AES and DES without table look-ups. With the argument "branch" or "address" it leaks instead.
#include <cstring>

#include "aes_kernels.h"
#include "des_kernels.h"
#include "hash_kernels.h"
#include "secret_numbers.h"
#include "test_key.h"

namespace mirolta {

// The linker calls TakeResult in place of BigInt::AssignLimbs, which is AssignedLimbs: what becomes a
// number is a result, and the caller learns its length.
HRESULT AssignedLimbs(BigInt* number, const Limb* x, size_t n) __asm__("__real_" MIROLTA_ASSIGN);
HRESULT TakeResult(BigInt* number, const Limb* x, size_t n) __asm__("__wrap_" MIROLTA_ASSIGN);
HRESULT TakeResult(BigInt* number, const Limb* x, size_t n) {
  constant_time::Reveal(x, n * sizeof(Limb));
  return AssignedLimbs(number, x, n);
}

}  // namespace mirolta

namespace mirolta::constant_time {
namespace {

void CheckRsa() {
  RsaKey key = MakeTestKey();
  const BigInt ciphertext = NumberOf(kLargerPrime) * NumberOf(kSmallerPrime) - BigInt(12345);
  BigInt plain, by_primes;
  Need(RsaDecrypt(plain, key, ciphertext) == S_OK, "a private operation");
  Need(RsaDecryptWithPrimes(by_primes, key, ciphertext) == S_OK, "one by primes");
  const BigInt* const secrets[] = {
      &ciphertext, &key.d, &key.p, &key.q, &key.values.d_p, &key.values.d_q, &key.values.p_inverse};
  for (const BigInt* number : secrets) {
    HideNumber(*number);
  }
  BigInt again, by_primes_again;
  Need(RsaDecrypt(again, key, ciphertext) == S_OK, "a private operation with hidden numbers");
  std::printf("checked: RSA private operation\n");
  Need(RsaDecryptWithPrimes(by_primes_again, key, ciphertext) == S_OK, "one by hidden primes");
  std::printf("checked: RSA private operation by primes\n");
  Need(again == plain && by_primes_again == plain, "the same result");
}

bool Runs(uint32_t needs) {
  return (needs & ~ProcessorFeatures()) == 0;
}

// HMAC is these functions on the key's pads and the message.
void CheckDigests() {
  uint32_t state[8], outer[8];
  uint8_t block[2 * kHashBlockSize], digest[32];
  const auto hide = [&] {
    std::memset(state, 3, sizeof state);
    std::memset(outer, 4, sizeof outer);
    std::memset(block, 5, sizeof block);
    Hide(state, sizeof state);
    Hide(outer, sizeof outer);
    Hide(block, sizeof block);
  };
  for (const auto* list : {&kMd5Kernels, &kSha1Kernels, &kSha256Kernels}) {
    for (const auto& row : *list) {
      if (!Runs(row.needs)) continue;
      hide();
      row.function(state, block, 2);
      std::printf("checked: %s\n", row.name);
    }
  }
  for (const auto* list : {&kMd5FinishKernels, &kSha1FinishKernels, &kSha256FinishKernels}) {
    for (const auto& row : *list) {
      if (!Runs(row.needs)) continue;
      for (const uint32_t waiting : {0u, 20u, 60u}) {
        hide();
        row.function(state, block, waiting, 512 + 8 * waiting, digest);
      }
      std::printf("checked: %s\n", row.name);
    }
  }
  for (const auto& row : kSha256FinishKeyedKernels) {
    if (!Runs(row.needs) || row.function == nullptr) continue;
    hide();
    row.function(state, outer, block, 20, 512 + 160, digest);
    std::printf("checked: %s\n", row.name);
  }
}

bool HasSlices(const char* name) {
  return std::strstr(name, "avx") != nullptr || std::strstr(name, "sse2") != nullptr;
}

bool HasTables(const char* name) {
  return std::strstr(name, "portable") != nullptr || std::strstr(name, "-arm") == name + 11;
}

void CheckAes() {
  for (const auto& row : kAesExpansionKernels) {
    if (!Runs(row.needs) || HasTables(row.name)) continue;
    for (const uint32_t length : {16u, 24u, 32u}) {
      uint8_t key[32] = {1, 2, 3};
      AesSchedule schedule;
      Hide(key, sizeof key);
      row.function(key, length, &schedule);
    }
    std::printf("checked: %s\n", row.name);
  }
  for (const auto* list : {&kAesEncryptKernels, &kAesDecryptKernels}) {
    for (const auto& row : *list) {
      if (!Runs(row.needs) || HasTables(row.name)) continue;
      AesSchedule schedule = {};
      const uint8_t key[32] = {1, 2, 3};
      Need(ExpandAesKey(key, sizeof key, &schedule), "an AES key");
      Hide(schedule.encryption, sizeof schedule.encryption);
      Hide(schedule.decryption, sizeof schedule.decryption);
      std::vector<uint8_t> blocks(16 * 37, 9);
      Hide(blocks.data(), blocks.size());
      row.function(schedule, blocks.data(), blocks.data(), 37);
      std::printf("checked: %s\n", row.name);
    }
  }
}

// Whole slices of blocks: fewer are looked up.
void CheckDes() {
  constexpr uint32_t kBlocks = 1024;
  for (const auto* list : {&kDesEncryptKernels, &kDesDecryptKernels}) {
    for (const auto& row : *list) {
      if (!Runs(row.needs) || !HasSlices(row.name)) continue;
      for (const uint32_t length : {8u, 24u}) {
        DesSchedule schedule = {};
        const uint8_t key[24] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
        Need(ExpandDesKey(key, length, &schedule), "a DES key");
        Hide(schedule.encryption, sizeof schedule.encryption);
        Hide(schedule.decryption, sizeof schedule.decryption);
        std::vector<uint8_t> blocks(size_t{8} * kBlocks, 9);
        Hide(blocks.data(), blocks.size());
        row.function(schedule, blocks.data(), blocks.data(), kBlocks);
      }
      std::printf("checked: %s\n", row.name);
    }
  }
}

// What memcheck must report.
int Leak(const char* kind) {
  volatile uint8_t table[256] = {};
  volatile uint8_t secret = 7;
  Hide(const_cast<uint8_t*>(&secret), 1);
  volatile int seen = 0;
  if (std::strcmp(kind, "branch") == 0) {
    if ((secret & 1) != 0) seen = 1;
  } else {
    seen = table[secret];
  }
  (void)seen;
  return 0;
}

}  // namespace
}  // namespace mirolta::constant_time

int main(int count, char** arguments) {
  using namespace mirolta::constant_time;
  if (count > 1) return Leak(arguments[1]);
  CheckRsa();
  CheckPowers("64 bits");
  CheckDigests();
  CheckAes();
  CheckDes();
  return 0;
}
