// Random numbers of up to 8192 bits, many of them edge cases, against the peer.
#include <gtest/gtest.h>

#include "big_testing.h"
#include "gcd.h"
#include "mod_exp.h"

namespace mirolta {
namespace {

constexpr uint32_t kMostBits = 8192;

BigInt Operand(int i) {
  BigInt n = RandomBig(i % 4 == 0 ? kMostBits : i % 4 == 1 ? 1100 : 200);
  n.SetSignFlag(Below(4) == 0);
  return n;
}

std::string Peer(mpz_srcptr z) {
  return Hex(z);
}

// Without the sign flag of zero, which the peer does not have.
std::string Value(const BigInt& n) {
  return n.IsZero() ? "0" : Hex(n);
}

TEST(BigPeerTest, SumsDifferencesAndProductsAgreeWithThePeer) {
  for (int i = 0; i < Cases(6000); ++i) {
    const BigInt a = Operand(i), b = Operand(i / 3);
    const Mpz x(a), y(b);
    Mpz z;
    mpz_add(z, x, y);
    ASSERT_EQ(Value(a + b), Peer(z));
    mpz_sub(z, x, y);
    ASSERT_EQ(Value(a - b), Peer(z));
    mpz_mul(z, x, y);
    ASSERT_EQ(Value(a * b), Peer(z));
    mpz_mul(z, x, x);
    ASSERT_EQ(Value(a * a), Peer(z));
  }
}

TEST(BigPeerTest, QuotientsAndRemaindersAgreeWithThePeer) {
  for (int i = 0; i < Cases(6000); ++i) {
    const BigInt a = Operand(i), b = Operand(i / 3);
    if (b.IsZero()) continue;
    const Mpz x(a), y(b);
    Mpz q, r;
    mpz_tdiv_qr(q, r, x, y);
    ASSERT_EQ(Value(a / b), Peer(q));
    ASSERT_EQ(Value(a % b), Peer(r));
  }
}

TEST(BigPeerTest, QuotientsNextToMultiplesAgreeWithThePeer) {
  for (int i = 0; i < Cases(2000); ++i) {
    const BigInt b = Operand(i), factor = Operand(i / 3);
    if (b.IsZero()) continue;
    BigInt a = b * factor;
    if (i % 2 == 0) a = a + BigInt(Below(2)) - BigInt(Below(2));
    const Mpz x(a), y(b);
    Mpz q;
    mpz_tdiv_q(q, x, y);
    ASSERT_EQ(Value(a / b), Peer(q));
    ASSERT_EQ(Divide(a, a, b), S_OK);
    ASSERT_EQ(Value(a), Peer(q));
  }
}

TEST(BigPeerTest, GcdAndInverseAgreeWithThePeer) {
  for (int i = 0; i < Cases(2500); ++i) {
    BigInt a = Operand(i), b = Operand(i / 3);
    a.SetSignFlag(false);
    b.SetSignFlag(false);
    const Mpz x(a), y(b);
    Mpz z;
    mpz_gcd(z, x, y);
    BigInt r;
    ASSERT_EQ(Gcd(r, a, b), S_OK);
    ASSERT_EQ(Hex(r), Peer(z));
    if (b.BitLength() < 2) continue;
    if (mpz_invert(z, x, y) == 0) continue;
    ASSERT_EQ(Inverse(r, a, b), S_OK);
    ASSERT_EQ(Hex(r), Peer(z));
  }
}

TEST(BigPeerTest, ModularPowersAgreeWithThePeer) {
  for (int i = 0; i < Cases(700); ++i) {
    const uint32_t bits = i % 50 == 0 ? 1500 : i % 5 == 0 ? 400 : 130;
    const BigInt base = RandomBig(bits + 100), e = RandomBig(i % 2 == 0 ? bits : 40);
    BigInt m = RandomBig(bits);
    // Moduli of every kind: odd, even, with many factors two, powers of two.
    if (i % 4 == 1 && !m.IsOdd()) m.Add(BigInt(1));
    if (i % 4 == 2) m = m * HexPower(Below(40));
    if (i % 16 == 3) m = HexPower(Below(60), "1248"[Below(4)]);
    if (m.IsZero()) continue;
    const Mpz x(base), y(e), z(m);
    Mpz power;
    mpz_powm(power, x, y, z);
    BigInt r;
    ASSERT_EQ(ModExp(r, base, e, m), S_OK);
    ASSERT_EQ(Hex(r), Peer(power)) << Hex(base) << " ^ " << Hex(e) << " mod " << Hex(m);
  }
}

// Both parts of the modulus are so long that their products need scratch.
TEST(BigPeerTest, ModularPowersByLongEvenModuliAgreeWithThePeer) {
  for (int i = 0; i < Cases(6); ++i) {
    const BigInt base = RandomBigOf(9000), e = RandomBig(40);
    const BigInt m = RandomBigOf(4000) * HexPower(1000 + Below(200));
    Mpz power;
    mpz_powm(power, Mpz(base), Mpz(e), Mpz(m));
    BigInt r;
    ASSERT_EQ(ModExp(r, base, e, m), S_OK);
    ASSERT_EQ(Value(r), Peer(power)) << Hex(base) << " ^ " << Hex(e) << " mod " << Hex(m);
  }
}

TEST(BigPeerTest, LongOperandsAgreeWithThePeer) {
  for (const uint32_t bits : {60000u, 1000000u}) {
    const BigInt a = RandomBigOf(bits), b = RandomBigOf(bits / 2) + BigInt(1);
    const Mpz x(a), y(b);
    Mpz z, q, r;
    mpz_mul(z, x, y);
    EXPECT_EQ(Value(a * b), Peer(z));
    mpz_mul(z, x, x);
    EXPECT_EQ(Value(a * a), Peer(z));
    mpz_tdiv_qr(q, r, x, y);
    EXPECT_EQ(Value(a / b), Peer(q));
    EXPECT_EQ(Value(a % b), Peer(r));
  }
}

}  // namespace
}  // namespace mirolta
