// Welch's t of the times of two classes of secrets, one fixed and one random, measured in random
// order. It prints the figures and judges nothing: |t| above 4.5 in repeated runs is a leak, and so it
// must be for the last row, a power that is not constant-time.
// Source: Reparaz, Balasch and Verbauwhede, Dude, is my code constant time?, 2017.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <random>

#include "aes_kernels.h"
#include "hash_kernels.h"
#include "limb_basics.h"
#include "mod_exp.h"
#include "secret_power.h"
#include "test_key.h"

namespace mirolta::constant_time {
namespace {

std::mt19937_64 generator(1);

struct Operation {
  const char* name;
  size_t samples;
  // Makes the secret of a class, before the time is taken.
  std::function<void(bool is_random)> prepare;
  std::function<void()> run;
};

void Fill(void* bytes, size_t size, bool is_random) {
  for (size_t i = 0; i < size; ++i) {
    // Drawn for both classes, which must differ in nothing else.
    const uint64_t number = generator();
    static_cast<uint8_t*>(bytes)[i] = static_cast<uint8_t>(is_random ? number : 0);
  }
}

struct Moments {
  double count = 0, mean = 0, squares = 0;
  void Add(double x) {
    ++count;
    const double difference = x - mean;
    mean += difference / count;
    squares += difference * (x - mean);
  }
  double Error() const { return squares / (count - 1) / count; }
};

// Times above the 90th percentile of both classes are interrupts.
double WelchT(const std::vector<double> (&times)[2]) {
  std::vector<double> all = times[0];
  all.insert(all.end(), times[1].begin(), times[1].end());
  std::sort(all.begin(), all.end());
  const double most = all[all.size() * 9 / 10];
  Moments moments[2];
  for (int i = 0; i < 2; ++i) {
    for (const double time : times[i]) {
      if (time <= most) moments[i].Add(time);
    }
  }
  const double error = std::sqrt(moments[0].Error() + moments[1].Error());
  return error == 0 ? 0 : (moments[0].mean - moments[1].mean) / error;
}

void Measure(const Operation& operation) {
  std::vector<double> times[2];
  for (size_t i = 0; i < operation.samples; ++i) {
    const bool is_random = (generator() & 1) != 0;
    operation.prepare(is_random);
    const auto start = std::chrono::steady_clock::now();
    operation.run();
    const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
    times[is_random ? 1 : 0].push_back(time.count());
  }
  std::printf("%-44s %8zu samples, |t| = %6.2f\n", operation.name, operation.samples,
              std::fabs(WelchT(times)));
}

constexpr size_t kLimbs = 1024 / kLimbBits;

struct Numbers {
  Limb x[kLimbs], e[kLimbs], m[kLimbs], z[kLimbs];
  Numbers() {
    Fill(x, sizeof x, true);
    Fill(m, sizeof m, true);
    m[0] |= 1;
    m[kLimbs - 1] |= Limb{1} << (kLimbBits - 1);
    x[kLimbs - 1] = 0;
  }
};

// The fixed exponent has a single bit.
void SetExponent(Numbers& numbers, bool is_random) {
  Fill(numbers.e, sizeof numbers.e, is_random);
  numbers.e[kLimbs - 1] |= Limb{1} << (kLimbBits - 1);
}

BigInt NumberFrom(const Limb (&limbs)[kLimbs]) {
  BigInt number;
  Need(number.AssignLimbs(limbs, kLimbs) == S_OK, "a number");
  return number;
}

void MeasureAll() {
  RsaKey key = MakeTestKey();
  Numbers numbers;
  BigInt ciphertext, result, exponent;
  const BigInt base = NumberFrom(numbers.x), modulus = NumberFrom(numbers.m);
  // A fixed ciphertext of few bits, in the same length.
  const auto set_ciphertext = [&](bool is_random) {
    Limb limbs[kLimbs];
    Fill(limbs, sizeof limbs, is_random);
    limbs[kLimbs - 1] = static_cast<Limb>(limbs[kLimbs - 1] >> 2 | Limb{1} << (kLimbBits - 3));
    ciphertext = NumberFrom(limbs);
  };
  const auto limb_exponent = [&](bool is_random) { SetExponent(numbers, is_random); };
  const auto number_exponent = [&](bool is_random) {
    SetExponent(numbers, is_random);
    exponent = NumberFrom(numbers.e);
  };
  Measure({"RSA private operation, ciphertext", 6000, set_ciphertext,
           [&] { (void)RsaDecrypt(result, key, ciphertext); }});
  Measure({"RSA private operation by primes, ciphertext", 10000, set_ciphertext,
           [&] { (void)RsaDecryptWithPrimes(result, key, ciphertext); }});
  Measure({"secret power, exponent", 6000, limb_exponent, [&] {
             const SecretPower power = {numbers.z, numbers.x,
                                        kLimbs,    numbers.e,
                                        kLimbs,    kLimbs * kLimbBits,
                                        numbers.m, kLimbs,
                                        nullptr,   static_cast<Limb>(~Limb{0} / 7 * 5)};
             (void)RaiseToSecrets(&power, 1);
           }});

  uint32_t state[8];
  uint8_t blocks[4 * kHashBlockSize] = {};
  const CompressBlocks compress = CurrentKernel<kSha256Kernels>();
  Measure({"SHA-256, chaining value", 200000,
           [&](bool is_random) { Fill(state, sizeof state, is_random); },
           [&] { compress(state, blocks, 4); }});
  AesSchedule schedule;
  uint8_t aes_key[16];
  const AesExpansion expand = CurrentKernel<kAesExpansionKernels>();
  const AesTransform encrypt = CurrentKernel<kAesEncryptKernels>();
  const auto set_key = [&](bool is_random) { Fill(aes_key, sizeof aes_key, is_random); };
  Measure({"AES key expansion", 200000, set_key, [&] { expand(aes_key, 16, &schedule); }});
  Measure({"AES encryption, key", 200000,
           [&](bool is_random) {
             set_key(is_random);
             expand(aes_key, 16, &schedule);
           },
           [&] { encrypt(schedule, blocks, blocks, 16); }});
  Measure({"ModExp, exponent: not constant-time", 2000, number_exponent,
           [&] { (void)ModExp(result, base, exponent, modulus); }});
}

}  // namespace
}  // namespace mirolta::constant_time

int main() {
  mirolta::constant_time::MeasureAll();
  return 0;
}
