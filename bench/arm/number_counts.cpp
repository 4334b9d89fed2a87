// Big numbers: products, powers, and the private operation of RSA, plain and by the primes.
#include <nettle/rsa.h>
#include <openssl/rsa.h>

#include "bench_numbers.h"
#include "counted_row.h"
#include "mod_exp.h"
#include "rsa_key.h"

namespace mirolta::bench {

namespace {

// Contestants from work(result), each with its own form of number.
template <typename Work>
Counted CountOurs(Work work) {
  const auto result = std::make_shared<BigInt>();
  return MakeCounted(
      "ours", [=] { (void)work(*result); }, [=] { return TextOf(*result); });
}
template <typename Work>
Counted CountGmp(const char* name, Work work) {
  const auto result = std::make_shared<GmpNumber>();
  return MakeCounted(
      name, [=] { work(result->z); }, [=] { return TextOf(result->z); });
}
template <typename Work>
Counted CountOpenSsl(const char* name, Work work) {
  const auto result = std::shared_ptr<BIGNUM>(BN_new(), BN_free);
  const auto context = std::shared_ptr<BN_CTX>(BN_CTX_new(), BN_CTX_free);
  return MakeCounted(
      name, [=] { work(result.get(), context.get()); }, [=] { return TextOf(result.get()); });
}

std::vector<Counted> MakeProducts(size_t bits) {
  const PeerNumbers x = RandomNumbers(bits, 1, Parity::kAny, 2);
  const auto& a = (*x)[0];
  const auto& b = (*x)[1];
  return {
      CountOurs([=, &a, &b](BigInt& r) { return (void)x, Multiply(r, a.ours, b.ours); }),
      CountGmp("GMP", [=, &a, &b](mpz_t r) { (void)x, mpz_mul(r, a.gmp.z, b.gmp.z); }),
      CountOpenSsl("OpenSSL",
                   [=, &a, &b](BIGNUM* r, BN_CTX* context) {
                     (void)x, BN_mul(r, a.openssl.get(), b.openssl.get(), context);
                   }),
  };
}

// z := base^exponent mod modulus, by everyone.
struct PowerOperands {
  PeerNumber base;
  PeerNumber exponent;
  PeerNumber modulus;
};

std::vector<Counted> CountPowers(const std::shared_ptr<const PowerOperands>& n, bool is_odd) {
  std::vector<Counted> all = {
      CountOurs(
          [=](BigInt& r) { return ModExp(r, n->base.ours, n->exponent.ours, n->modulus.ours); }),
      CountGmp("GMP",
               [=](mpz_t r) { mpz_powm(r, n->base.gmp.z, n->exponent.gmp.z, n->modulus.gmp.z); }),
      CountOpenSsl("OpenSSL", [=](BIGNUM* r, BN_CTX* context) {
        BN_mod_exp(r, n->base.openssl.get(), n->exponent.openssl.get(), n->modulus.openssl.get(),
                   context);
      })};
  if (is_odd) {
    all.push_back(CountOpenSsl("OpenSSL constant-time", [=](BIGNUM* r, BN_CTX* context) {
      BN_mod_exp_mont_consttime(r, n->base.openssl.get(), n->exponent.openssl.get(),
                                n->modulus.openssl.get(), context, nullptr);
    }));
  }
  return all;
}

std::vector<uint8_t> NumberBytes(size_t bits, uint64_t seed, bool is_odd) {
  std::vector<uint8_t> bytes = RandomBytes(bits / 8, seed);
  bytes[0] |= 0x80;
  bytes.back() = static_cast<uint8_t>((bytes.back() & 0xFE) | (is_odd ? 1 : 0));
  return bytes;
}

std::vector<Counted> MakePowers(size_t bits, bool is_odd) {
  const auto numbers = std::make_shared<PowerOperands>();
  std::vector<uint8_t> base = NumberBytes(bits, 1, true);
  base[0] = 0x7F;
  numbers->base.Set(base);
  numbers->exponent.Set(NumberBytes(bits, 2, true));
  numbers->modulus.Set(NumberBytes(bits, 3, is_odd));
  return CountPowers(numbers, is_odd);
}

// A key of fixed primes, in every peer's form.
struct CountedKey {
  explicit CountedKey(size_t bits) : openssl(RSA_new(), RSA_free) {
    BigInt start[2];
    for (size_t i = 0; i < 2; ++i) {
      std::vector<uint8_t> bytes = NumberBytes(bits / 2, 10 + i, true);
      bytes[0] |= 0xC0;
      (void)FromBytes(start[i], bytes.data(), static_cast<uint32_t>(bytes.size()));
    }
    (void)BuildKey(ours, start[0], start[1]);
    const auto set = [](PeerNumber* to, const BigInt& from) {
      std::vector<uint8_t> bytes(static_cast<size_t>(ByteLength(from)));
      ToBytes(bytes.data(), from);
      to->Set(bytes);
    };
    std::vector<uint8_t> bytes = NumberBytes(bits, 9, true);
    bytes[0] = 0x7F;
    power.base.Set(bytes);
    set(&power.exponent, ours.d);
    set(&power.modulus, ours.n);
    input = bytes;

    // The peers' first prime is the larger one.
    PeerNumber e, p, q;
    set(&e, ours.e);
    set(&p, ours.q);
    set(&q, ours.p);
    rsa_private_key_init(&nettle);
    nettle.size = bits / 8;
    mpz_set(nettle.p, p.gmp.z);
    mpz_set(nettle.q, q.gmp.z);
    GmpNumber less;
    mpz_sub_ui(less.z, nettle.p, 1);
    mpz_mod(nettle.a, power.exponent.gmp.z, less.z);
    mpz_sub_ui(less.z, nettle.q, 1);
    mpz_mod(nettle.b, power.exponent.gmp.z, less.z);
    mpz_invert(nettle.c, nettle.q, nettle.p);
    const auto copy = [](const mpz_t z) {
      std::vector<uint8_t> text((mpz_sizeinbase(z, 2) + 7) / 8);
      size_t count = 0;
      mpz_export(text.data(), &count, 1, 1, 1, 0, z);
      return BN_bin2bn(text.data(), static_cast<int>(count), nullptr);
    };
    RSA_set0_key(openssl.get(), BN_dup(power.modulus.openssl.get()), BN_dup(e.openssl.get()),
                 BN_dup(power.exponent.openssl.get()));
    RSA_set0_factors(openssl.get(), copy(nettle.p), copy(nettle.q));
    RSA_set0_crt_params(openssl.get(), copy(nettle.a), copy(nettle.b), copy(nettle.c));
    RSA_blinding_off(openssl.get());
    RSA_set_flags(openssl.get(), RSA_FLAG_NO_BLINDING);
  }
  ~CountedKey() { rsa_private_key_clear(&nettle); }
  CountedKey(const CountedKey&) = delete;
  CountedKey& operator=(const CountedKey&) = delete;

  std::unique_ptr<RSA, void (*)(RSA*)> openssl;
  RsaKey ours;
  PowerOperands power;
  rsa_private_key nettle;
  std::vector<uint8_t> input;
};

// Garner's form on mpz_powm or, for secret exponents, mpz_powm_sec.
using GmpPower = void (*)(mpz_t, const mpz_t, const mpz_t, const mpz_t);
void GmpPrivate(GmpPower power, mpz_t r, const mpz_t c, const rsa_private_key& key) {
  GmpNumber by_q;
  power(r, c, key.a, key.p);
  power(by_q.z, c, key.b, key.q);
  mpz_sub(r, r, by_q.z);
  mpz_mul(r, r, key.c);
  mpz_mod(r, r, key.p);
  mpz_mul(r, r, key.q);
  mpz_add(r, r, by_q.z);
}

std::vector<Counted> MakePrivates(size_t bits) {
  const auto key = std::make_shared<CountedKey>(bits);
  const std::shared_ptr<const PowerOperands> n(key, &key->power);
  std::vector<Counted> all = CountPowers(n, true);
  all[0] = CountOurs([=](BigInt& r) { return RsaDecrypt(r, key->ours, n->base.ours); });
  all.push_back(CountGmp("GMP constant-time", [=](mpz_t r) {
    mpz_powm_sec(r, n->base.gmp.z, n->exponent.gmp.z, n->modulus.gmp.z);
  }));
  return all;
}

std::vector<Counted> MakePrivatesByPrimes(size_t bits) {
  const auto key = std::make_shared<CountedKey>(bits);
  const auto plain = std::make_shared<std::vector<uint8_t>>(bits / 8);
  const auto root = std::make_shared<GmpNumber>();
  return {
      CountOurs(
          [=](BigInt& r) { return RsaDecryptWithPrimes(r, key->ours, key->power.base.ours); }),
      CountGmp("GMP",
               [=](mpz_t r) { GmpPrivate(mpz_powm, r, key->power.base.gmp.z, key->nettle); }),
      CountGmp("GMP constant-time",
               [=](mpz_t r) { GmpPrivate(mpz_powm_sec, r, key->power.base.gmp.z, key->nettle); }),
      MakeCounted(
          "OpenSSL",
          [=] {
            RSA_private_decrypt(static_cast<int>(key->input.size()), key->input.data(),
                                plain->data(), key->openssl.get(), RSA_NO_PADDING);
          },
          [=] {
            const auto number = std::shared_ptr<BIGNUM>(
                BN_bin2bn(plain->data(), static_cast<int>(plain->size()), nullptr), BN_free);
            return TextOf(number.get());
          }),
      MakeCounted(
          "nettle", [=] { rsa_compute_root(&key->nettle, root->z, key->power.base.gmp.z); },
          [=] { return TextOf(root->z); }),
  };
}

}  // namespace

void AddCountedNumbers(CountedRows* rows) {
  const auto add = [rows](const char* task, size_t bits, size_t count, auto make) {
    rows->push_back({std::string(task) + "/" + std::to_string(bits) + " bits", 0, count, make});
  };
  for (const size_t bits : {256u, 512u, 1024u, 2048u, 4096u}) {
    add("multiply", bits, 8, [bits] { return MakeProducts(bits); });
  }
  for (const size_t bits : {256u, 512u, 1024u}) {
    add("power modulo odd", bits, 1, [bits] { return MakePowers(bits, true); });
    add("power modulo even", bits, 1, [bits] { return MakePowers(bits, false); });
  }
  for (const size_t bits : {512u, 1024u}) {
    add("RSA private", bits, 1, [bits] { return MakePrivates(bits); });
    add("RSA private by primes", bits, 1, [bits] { return MakePrivatesByPrimes(bits); });
  }
}

}  // namespace mirolta::bench
