// Modular exponentiation with exponents as long as the modulus.
#include "bench_numbers.h"
#include "mod_exp.h"

namespace mirolta::bench {

namespace {

std::vector<Contestant> MakePowers(size_t bits, Parity parity) {
  const PeerNumbers base = RandomNumbers(bits - 1, 1);
  const PeerNumbers exponent = RandomNumbers(bits, 2);
  const PeerNumbers modulus = RandomNumbers(bits, 3, parity);
  std::vector<Contestant> all = {
      OurContestant([=](BigInt& r, size_t i) {
        (void)ModExp(r, (*base)[i].ours, (*exponent)[i].ours, (*modulus)[i].ours);
      }),
      GmpContestant([=](mpz_t r, size_t i) {
        mpz_powm(r, (*base)[i].gmp.z, (*exponent)[i].gmp.z, (*modulus)[i].gmp.z);
      }),
      OpenSslContestant("OpenSSL",
                        [=](BIGNUM* r, size_t i, BN_CTX* context) {
                          BN_mod_exp(r, (*base)[i].openssl.get(), (*exponent)[i].openssl.get(),
                                     (*modulus)[i].openssl.get(), context);
                        }),
  };
  if (parity != Parity::kOdd) return all;
  all.push_back(
      OpenSslContestant("OpenSSL constant-time", [=](BIGNUM* r, size_t i, BN_CTX* context) {
        BN_mod_exp_mont_consttime(r, (*base)[i].openssl.get(), (*exponent)[i].openssl.get(),
                                  (*modulus)[i].openssl.get(), context, nullptr);
      }));
  return all;
}

constexpr struct {
  size_t bits;
  double required;
  double stretch;
} kSizes[] = {
    {256, 1.2, 1.5}, {512, 1.2, 1.5}, {1024, 1.1, 1.4}, {2048, 1.9, 2.5}, {4096, 2.5, 3.0}};

}  // namespace

void AddPowerRows(RowList* rows) {
  for (const auto& size : kSizes) {
    const std::string name = "/" + std::to_string(size.bits) + " bits";
    const size_t bits = size.bits;
    rows->push_back({"engine/power modulo odd" + name, 0, size.required, size.stretch, kOperands, 0,
                     [bits] { return MakePowers(bits, Parity::kOdd); }});
    rows->push_back({"engine/power modulo even" + name, 0, size.required, size.stretch, kOperands,
                     0, [bits] { return MakePowers(bits, Parity::kEven); }});
  }
}

}  // namespace mirolta::bench
