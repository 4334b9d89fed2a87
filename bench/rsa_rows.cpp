// RSA: key generation, and the private operation by the Chinese remainder theorem.
#include <nettle/rsa.h>
#include <openssl/rsa.h>

#include "bench_numbers.h"
#include "mod_exp.h"
#include "rsa_key.h"
#include "seam/random.h"

namespace mirolta::bench {

namespace {

// Sets start to what BuildRandomKey draws, without its wait for the clock's next tick: two of them are as long
// as the generation of a short key takes OpenSSL.
void DrawStart(BigInt* start, size_t size) {
  const RandomSource& source = CurrentRandomSource();
  if (!source.seed(0)) return;
  std::vector<uint8_t> bytes(size);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(source.next());
  bytes.front() |= 0xC0;
  bytes.back() |= 1;
  (void)FromBytes(*start, bytes.data(), static_cast<uint32_t>(size));
}

void GenerateKey(RsaKey* key, size_t bits) {
  BigInt first;
  BigInt second;
  DrawStart(&first, bits / 16);
  DrawStart(&second, bits / 16);
  (void)BuildKey(*key, first, second);
}

std::vector<Contestant> MakeGenerators(int bits) {
  const auto ours = std::make_shared<RsaKey>();
  const auto openssl = std::shared_ptr<RSA>(RSA_new(), RSA_free);
  const auto exponent = std::shared_ptr<BIGNUM>(BN_new(), BN_free);
  BN_set_word(exponent.get(), RSA_F4);
  return {{kOurs, [=](size_t) { GenerateKey(ours.get(), static_cast<size_t>(bits)); }, nullptr},
          {"OpenSSL",
           [=](size_t) { RSA_generate_key_ex(openssl.get(), bits, exponent.get(), nullptr); },
           nullptr}};
}

// One key in every peer's form.
struct PeerKey {
  explicit PeerKey(int bits) : openssl(RSA_new(), RSA_free) {
    BIGNUM* const exponent = BN_new();
    BN_set_word(exponent, RSA_F4);
    RSA_generate_key_ex(openssl.get(), bits, exponent, nullptr);
    BN_free(exponent);
    RSA_blinding_off(openssl.get());
    const auto set = [](const BIGNUM* from, BigInt* to, mpz_t gmp) {
      std::vector<uint8_t> bytes(static_cast<size_t>(BN_num_bytes(from)));
      BN_bn2bin(from, bytes.data());
      (void)FromBytes(*to, bytes.data(), static_cast<uint32_t>(bytes.size()));
      mpz_import(gmp, bytes.size(), 1, 1, 1, 0, bytes.data());
    };
    rsa_private_key_init(&nettle);
    nettle.size = static_cast<size_t>(bits) / 8;
    BigInt unused;
    set(RSA_get0_n(openssl.get()), &ours.n, n.z);
    set(RSA_get0_e(openssl.get()), &ours.e, e.z);
    set(RSA_get0_d(openssl.get()), &ours.d, d.z);
    // Ours stores the smaller prime first.
    set(RSA_get0_p(openssl.get()), &ours.q, nettle.p);
    set(RSA_get0_q(openssl.get()), &ours.p, nettle.q);
    set(RSA_get0_dmp1(openssl.get()), &unused, nettle.a);
    set(RSA_get0_dmq1(openssl.get()), &unused, nettle.b);
    set(RSA_get0_iqmp(openssl.get()), &unused, nettle.c);
  }
  ~PeerKey() { rsa_private_key_clear(&nettle); }
  PeerKey(const PeerKey&) = delete;
  PeerKey& operator=(const PeerKey&) = delete;

  std::unique_ptr<RSA, void (*)(RSA*)> openssl;
  RsaKey ours;
  GmpNumber n;
  GmpNumber e;
  GmpNumber d;
  rsa_private_key nettle;
};

// Garner's form on mpz_powm.
void GmpPrivate(mpz_t r, const mpz_t c, const PeerKey& key) {
  GmpNumber by_q;
  mpz_powm(r, c, key.nettle.a, key.nettle.p);
  mpz_powm(by_q.z, c, key.nettle.b, key.nettle.q);
  mpz_sub(r, r, by_q.z);
  mpz_mul(r, r, key.nettle.c);
  mpz_mod(r, r, key.nettle.p);
  mpz_mul(r, r, key.nettle.q);
  mpz_add(r, r, by_q.z);
}

std::vector<Contestant> MakePrivates(int bits) {
  const auto key = std::make_shared<PeerKey>(bits);
  const PeerNumbers in = RandomNumbers(static_cast<size_t>(bits) - 1, 5);
  const size_t size = static_cast<size_t>(bits) / 8;
  const auto bytes = std::make_shared<std::vector<uint8_t>>(kOperands * size);
  for (size_t i = 0; i < kOperands; ++i) {
    BN_bn2binpad((*in)[i].openssl.get(), bytes->data() + i * size, static_cast<int>(size));
  }
  const auto plain = std::make_shared<std::vector<uint8_t>>(size);
  const auto nettle = std::make_shared<GmpNumber>();
  return {
      OurContestant(
          [=](BigInt& r, size_t i) { (void)RsaDecryptWithPrimes(r, key->ours, (*in)[i].ours); }),
      GmpContestant([=](mpz_t r, size_t i) { GmpPrivate(r, (*in)[i].gmp.z, *key); }),
      {"OpenSSL",
       [=](size_t i) {
         RSA_private_decrypt(static_cast<int>(size), bytes->data() + i * size, plain->data(),
                             key->openssl.get(), RSA_NO_PADDING);
       },
       [=] {
         const auto number = std::shared_ptr<BIGNUM>(
             BN_bin2bn(plain->data(), static_cast<int>(size), nullptr), BN_free);
         return TextOf(number.get());
       }},
      {"nettle", [=](size_t i) { rsa_compute_root(&key->nettle, nettle->z, (*in)[i].gmp.z); },
       [=] { return TextOf(nettle->z); }},
  };
}

// The private operation modulo n, beside the power that is not constant-time.
std::vector<Contestant> MakePlainPrivates(int bits) {
  const auto key = std::make_shared<PeerKey>(bits);
  const PeerNumbers in = RandomNumbers(static_cast<size_t>(bits) - 1, 5);
  const auto power = std::make_shared<BigInt>();
  return {
      OurContestant([=](BigInt& r, size_t i) { (void)RsaDecrypt(r, key->ours, (*in)[i].ours); }),
      {"ModExp", [=](size_t i) { (void)ModExp(*power, (*in)[i].ours, key->ours.d, key->ours.n); },
       nullptr},
      OpenSslContestant("OpenSSL constant-time",
                        [=](BIGNUM* r, size_t i, BN_CTX* context) {
                          BN_mod_exp_mont_consttime(
                              r, (*in)[i].openssl.get(), RSA_get0_d(key->openssl.get()),
                              RSA_get0_n(key->openssl.get()), context, nullptr);
                        }),
  };
}

constexpr struct {
  int bits;
  double required;
  double stretch;
  int iterations;
  bool has_threads;  // long keys are searched by all processors
} kGeneration[] = {{512, 5, 15, 32, false},
                   {1024, 3, 15, 16, false},
                   {2048, 3, 15, 4, false},
                   {4096, 5, 15, 1, true},
                   {8192, 5, 15, 1, true}};

constexpr struct {
  int bits;
  double required;
  double stretch;
} kPrivate[] = {{1024, 1.3, 1.6}, {2048, 1.3, 1.6}, {4096, 3.5, 5}};

constexpr int kPlainPrivate[] = {1024, 2048, 4096};

}  // namespace

void AddRsaRows(RowList* rows) {
  for (const auto& size : kGeneration) {
    const int bits = size.bits;
    rows->push_back({"engine/RSA key generation/" + std::to_string(bits) + " bits", 0,
                     size.required, size.stretch, kOperands, size.iterations,
                     [bits] { return MakeGenerators(bits); }, size.has_threads});
  }
  for (const auto& size : kPrivate) {
    const int bits = size.bits;
    rows->push_back({"engine/RSA private by primes/" + std::to_string(bits) + " bits", 0,
                     size.required, size.stretch, kOperands, 0,
                     [bits] { return MakePrivates(bits); }});
  }
  for (const int bits : kPlainPrivate) {
    rows->push_back({"engine/RSA private/" + std::to_string(bits) + " bits", 0, 0.9, 1, kOperands,
                     0, [bits] { return MakePlainPrivates(bits); }});
  }
}

}  // namespace mirolta::bench
