// Products, quotients, inverses and common divisors.
#include <cstring>

#include "bench_numbers.h"
#include "divide.h"
#include "gcd.h"
#include "multiply.h"

namespace mirolta::bench {

namespace {

// kOperands numbers of `bits` bits: pieces of one pool, eight bytes apart, each with its top bit set. Limbs of
// both libraries are in the byte order of this machine.
class LimbPool {
 public:
  LimbPool(size_t bits, uint64_t seed) : bytes_(bits / 8) {
    std::mt19937_64 generator(seed);
    std::vector<uint64_t> pool(bits / 64 + kOperands);
    for (uint64_t& piece : pool) piece = generator() | uint64_t{1} << 63;
    gmp_.assign(pool.size() * sizeof(uint64_t) / sizeof(mp_limb_t), 0);
    ours_.assign(pool.size() * sizeof(uint64_t) / sizeof(Limb), 0);
    std::memcpy(gmp_.data(), pool.data(), pool.size() * sizeof(uint64_t));
    std::memcpy(ours_.data(), pool.data(), pool.size() * sizeof(uint64_t));
  }
  size_t GmpCount() const { return bytes_ / sizeof(mp_limb_t); }
  size_t OurCount() const { return bytes_ / sizeof(Limb); }
  const mp_limb_t* gmp(size_t operand) const {
    return gmp_.data() + operand * sizeof(uint64_t) / sizeof(mp_limb_t);
  }
  const Limb* ours(size_t operand) const {
    return ours_.data() + operand * sizeof(uint64_t) / sizeof(Limb);
  }

 private:
  size_t bytes_;
  std::vector<mp_limb_t> gmp_;
  std::vector<Limb> ours_;
};

template <typename Word>
std::string LimbText(const std::vector<Word>& limbs) {
  std::string text(limbs.size() * sizeof(Word), 0);
  std::memcpy(text.data(), limbs.data(), text.size());
  return text;
}

template <typename Word, typename Work>
Contestant LimbContestant(const char* name, size_t result_count, Work work) {
  const auto result = std::make_shared<std::vector<Word>>(result_count);
  return {name, [=](size_t operand) { work(result->data(), operand); },
          [=] { return LimbText(*result); }};
}

std::vector<Contestant> MakeLimbProducts(size_t bits) {
  const auto x = std::make_shared<LimbPool>(bits, 1);
  const auto y = std::make_shared<LimbPool>(bits, 2);
  const size_t n = x->OurCount();
  const auto scratch = std::make_shared<std::vector<Limb>>(MultiplyScratch(n, n).Value() + 1);
  return {LimbContestant<Limb>(kOurs, 2 * n,
                               [=](Limb* z, size_t i) {
                                 MultiplyLimbs(z, x->ours(i), n, y->ours(i), n, scratch->data());
                               }),
          LimbContestant<mp_limb_t>("GMP", 2 * x->GmpCount(), [=](mp_limb_t* z, size_t i) {
            mpn_mul_n(z, x->gmp(i), y->gmp(i), static_cast<mp_size_t>(x->GmpCount()));
          })};
}

std::vector<Contestant> MakeLimbQuotients(size_t bits) {
  const auto a = std::make_shared<LimbPool>(2 * bits, 3);
  const auto d = std::make_shared<LimbPool>(bits, 4);
  const size_t n = d->OurCount();
  const size_t m = a->OurCount();
  const size_t gmp_n = d->GmpCount();
  return {LimbContestant<Limb>(kOurs, m - n + 1 + n,
                               [=](Limb* z, size_t i) {
                                 if (!DivideLimbs(z, z + m - n + 1, a->ours(i), m, d->ours(i), n)) {
                                   std::memset(z, 0, (m + 1) * sizeof *z);
                                 }
                               }),
          LimbContestant<mp_limb_t>("GMP", 2 * gmp_n + 1, [=](mp_limb_t* z, size_t i) {
            mpn_tdiv_qr(z, z + gmp_n + 1, 0, a->gmp(i), static_cast<mp_size_t>(2 * gmp_n),
                        d->gmp(i), static_cast<mp_size_t>(gmp_n));
          })};
}

// Operations on integers: ours and GMP's of the same shape.
using OurBinary = HRESULT (*)(BigInt&, const BigInt&, const BigInt&) noexcept;
using GmpBinary = void (*)(mpz_t, const mpz_t, const mpz_t);

void GmpInvert(mpz_t r, const mpz_t a, const mpz_t m) {
  mpz_invert(r, a, m);
}

// Of the first operand alone.
HRESULT Square(BigInt& r, const BigInt& a, const BigInt&) noexcept {
  return Multiply(r, a, a);
}
void GmpSquare(mpz_t r, const mpz_t a, const mpz_t) {
  mpz_mul(r, a, a);
}

struct BinaryCase {
  const char* name;
  OurBinary ours;
  GmpBinary gmp;
  size_t first_factor;  // the first operand's bits over the second's
  double required;
  double stretch;
};
const BinaryCase kBinary[] = {
    {"multiply", Multiply, mpz_mul, 1, 1.0, 1.3},
    {"divide 2n by n", Divide, mpz_tdiv_q, 2, 0.9, 1.3},
    {"inverse", Inverse, GmpInvert, 1, 0.6, 1.0},
    {"gcd", Gcd, mpz_gcd, 1, 0.6, 1.0},
};
constexpr BinaryCase kSquare = {"square", Square, GmpSquare, 1, 0, 0};

// Moduli of inverses are drawn until they are coprime to the number: without an inverse the results
// may differ.
std::vector<Contestant> MakeBinary(const BinaryCase& operation, size_t bits, size_t count) {
  const bool inverse = operation.ours == Inverse;
  const PeerNumbers a =
      RandomNumbers(operation.first_factor * bits - (inverse ? 1 : 0), 1, Parity::kAny, count);
  const PeerNumbers b = RandomNumbers(bits, 2, Parity::kOdd, count);
  if (inverse) {
    for (size_t i = 0; i < count; ++i) {
      GmpNumber gcd;
      for (uint64_t seed = 1;; ++seed) {
        mpz_gcd(gcd.z, (*a)[i].gmp.z, (*b)[i].gmp.z);
        if (mpz_cmp_ui(gcd.z, 1) == 0) break;
        std::vector<uint8_t> bytes = RandomBytes(bits / 8, 777000 + 100 * i + seed);
        bytes[0] |= 0x80;
        bytes.back() |= 1;
        (*b)[i].Set(bytes);
      }
    }
  }
  return {OurContestant([=, &operation](BigInt& r, size_t i) {
            (void)operation.ours(r, (*a)[i].ours, (*b)[i].ours);
          }),
          GmpContestant([=, &operation](mpz_t r, size_t i) {
            operation.gmp(r, (*a)[i].gmp.z, (*b)[i].gmp.z);
          })};
}

// kOperands of the long operands would take gigabytes.
constexpr size_t kLongOperands = 4;
constexpr struct {
  const BinaryCase* operation;
  size_t bits;
  double required;
  double stretch;
} kLong[] = {
    {&kBinary[0], 100000, 1.0, 1.5},  {&kBinary[0], 1000000, 1.2, 2.5},
    {&kBinary[0], 10000000, 1.5, 4},  {&kBinary[1], 100000, 0.9, 1.3},
    {&kBinary[1], 1000000, 1.0, 1.5}, {&kBinary[1], 10000000, 1.0, 1.5},
    {&kBinary[2], 10000, 0.7, 1.0},   {&kBinary[2], 100000, 0.7, 1.0},
    {&kBinary[2], 1000000, 0.7, 1.5}, {&kBinary[2], 10000000, 0.7, 1.5},
    {&kBinary[3], 10000, 0.7, 1.0},   {&kBinary[3], 100000, 0.7, 1.0},
    {&kBinary[3], 1000000, 0.7, 1.5}, {&kBinary[3], 10000000, 0.7, 1.5},
    {&kSquare, 100000, 1.0, 1.5},     {&kSquare, 1000000, 1.2, 2.5},
    {&kSquare, 10000000, 1.5, 4},
};

void AddLongRows(RowList* rows) {
  for (const auto& entry : kLong) {
    const BinaryCase& operation = *entry.operation;
    const size_t bits = entry.bits;
    rows->push_back({"engine/" + std::string(operation.name) + "/" + std::to_string(bits) + " bits",
                     0, entry.required, entry.stretch, kLongOperands, 0,
                     [&operation, bits] { return MakeBinary(operation, bits, kLongOperands); }});
  }
}

}  // namespace

void AddProductRows(RowList* rows) {
  for (const size_t bits : {256u, 512u, 1024u, 2048u, 4096u}) {
    const std::string size = "/" + std::to_string(bits) + " bits";
    rows->push_back({"kernel/multiply" + size, 0, 0.8, 1.3, kOperands, 0,
                     [bits] { return MakeLimbProducts(bits); }});
    rows->push_back({"kernel/divide 2n by n" + size, 0, 0.9, 1.3, kOperands, 0,
                     [bits] { return MakeLimbQuotients(bits); }});
    for (const BinaryCase& operation : kBinary) {
      rows->push_back({"engine/" + std::string(operation.name) + size, 0, operation.required,
                       operation.stretch, kOperands, 0,
                       [&operation, bits] { return MakeBinary(operation, bits, kOperands); }});
    }
  }
  AddLongRows(rows);
}

}  // namespace mirolta::bench
