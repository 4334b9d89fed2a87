// Numbers of mirolta.hpp.
#include <gtest/gtest.h>

#include <limits>
#include <mirolta.hpp>
#include <sstream>

#include "hpp_testing.h"

namespace {

using mirolta::Bytes;
using mirolta::FromHex;
using mirolta::Number;
using mirolta::ToHex;

TEST(HppNumberTest, ComputesWithOperators) {
  const Number n("123456789012345678901234567890");
  EXPECT_EQ((n * n).ToText(), "15241578753238836750495351562536198787501905199875019052100");
  EXPECT_EQ((n + 1).ToText(), "123456789012345678901234567891");
  EXPECT_EQ((1 - n).ToText(), "-123456789012345678901234567889");
  EXPECT_EQ((n / 97).ToText(), "1272750402189130710322005854");
  EXPECT_EQ(n % 97, 52);
  EXPECT_EQ(n.Gcd(30), 30);
  Number m = 10;
  m += 5;
  m -= 1;
  m *= 6;
  m /= 4;
  m %= 8;
  EXPECT_EQ(m, 5);
  EXPECT_EQ(++m, 6);
  EXPECT_EQ(m++, 6);
  EXPECT_EQ(--m, 6);
  EXPECT_EQ(m--, 6);
  EXPECT_EQ(m, 5);
}

// Every pair of small numbers, as the language computes with them.
TEST(HppNumberTest, SignsAreThoseOfTheLanguage) {
  for (int a = -7; a <= 7; ++a) {
    for (int b = -7; b <= 7; ++b) {
      SCOPED_TRACE(std::to_string(a) + " and " + std::to_string(b));
      const Number x = a;
      const Number y = b;
      EXPECT_EQ((x + y).To<int>(), a + b);
      EXPECT_EQ((x - y).To<int>(), a - b);
      EXPECT_EQ((x * y).To<int>(), a * b);
      EXPECT_EQ(x == y, a == b);
      EXPECT_EQ(x != y, a != b);
      EXPECT_EQ(x < y, a < b);
      EXPECT_EQ(x <= y, a <= b);
      EXPECT_EQ(x > y, a > b);
      EXPECT_EQ(x >= y, a >= b);
      if (b == 0) continue;
      EXPECT_EQ((x / y).To<int>(), a / b);
      EXPECT_EQ((x % y).To<int>(), a % b);
    }
  }
}

TEST(HppNumberTest, HasASignAndANegation) {
  const Number n = -5;
  EXPECT_TRUE(n.IsNegative());
  EXPECT_EQ(n.Sign(), -1);
  EXPECT_EQ((-n).ToText(), "5");
  EXPECT_EQ((+n).ToText(), "-5");
  EXPECT_EQ(n.Abs().ToText(), "5");
  EXPECT_EQ(Number(5).Sign(), 1);
  EXPECT_EQ((-Number()).Sign(), 0);
  EXPECT_FALSE((n - n).IsNegative());
  EXPECT_TRUE((n - n).IsZero());
}

TEST(HppNumberTest, ZeroHasTextAndNoBytes) {
  EXPECT_TRUE(Number().IsZero());
  EXPECT_EQ(Number().ToText(), "0");
  EXPECT_EQ(Number(0).ToHex(), "0");
  EXPECT_TRUE(Number("000").IsZero());
  EXPECT_TRUE(Number("-0").IsZero());
  EXPECT_FALSE(Number("-0").IsNegative());
  EXPECT_TRUE(Number::FromBytes(FromHex("0000")).IsZero());
  EXPECT_TRUE(Number().ToBytes().empty());
  EXPECT_EQ(Number().BitLength(), 0u);
  EXPECT_EQ(Number().Interface().Get(), nullptr);
}

TEST(HppNumberTest, DivisionByZeroIsAnError) {
  const Number n = 5;
  EXPECT_EQ(hpp_testing::ThrownBy([&] { (void)(n / 0); }), DISP_E_DIVBYZERO);
  EXPECT_EQ(hpp_testing::ThrownBy([&] { (void)(n % Number()); }), DISP_E_DIVBYZERO);
  EXPECT_EQ(n.TryDivide(0).Failure().Number(), DISP_E_DIVBYZERO);
  EXPECT_EQ(n.TryPowerMod(2, 0).Failure().Number(), DISP_E_DIVBYZERO);
  EXPECT_EQ(n.TryInverse(0).Failure().Number(), DISP_E_DIVBYZERO);
}

TEST(HppNumberTest, ReadsAndWritesTexts) {
  EXPECT_EQ(Number::Parse("-00123").ToText(), "-123");
  EXPECT_EQ(Number::ParseHex("-0fF").ToText(), "-255");
  EXPECT_EQ(Number::ParseHex("C0FFEE").ToHex(), "c0ffee");
  EXPECT_EQ((-Number(255)).ToHex(), "-ff");
  EXPECT_EQ(Number(std::string("17")), 17);
  std::ostringstream out;
  out << Number(-42);
  EXPECT_EQ(out.str(), "-42");
  for (const char* const text :
       {"", "-", "+1", " 1", "1 ", "1.5", "12,345", "0x10", "--1", "1e3"}) {
    EXPECT_EQ(Number::TryParse(text).Failure().Number(), E_INVALIDARG) << text;
  }
  for (const char* const text : {"", "-", "0x10", "g", "1 0", "--1"}) {
    EXPECT_EQ(Number::TryParseHex(text).Failure().Number(), E_INVALIDARG) << text;
  }
  EXPECT_EQ(hpp_testing::ThrownBy([] { Number n("x"); }), E_INVALIDARG);
}

// The class alone loses the highest byte of some texts of 1,811 digits or more.
TEST(HppNumberTest, ReadsLongTextsExactly) {
  for (const std::size_t size : {1023u, 1024u, 1025u, 1811u, 2048u, 2049u, 5000u, 9000u}) {
    const std::string nines(size, '9');
    const Number number(nines);
    EXPECT_EQ(number.ToText(), nines) << size;
    EXPECT_EQ(number + 1, Number(10).Power(static_cast<unsigned>(size))) << size;
    EXPECT_EQ(Number("-" + nines).ToText(), "-" + nines) << size;
    std::string mixed;
    for (std::size_t i = 0; i < size; ++i) mixed += static_cast<char>('1' + i * i % 7);
    EXPECT_EQ(Number(mixed).ToText(), mixed) << size;
  }
  EXPECT_EQ(Number("1" + std::string(4000, '0')), Number(10).Power(4000));
}

template <typename Integer>
void CheckInteger() {
  using Limits = std::numeric_limits<Integer>;
  for (const Integer value : {(Limits::min)(), (Limits::max)(), Integer{0}, Integer{1}}) {
    const Number number = value;
    EXPECT_EQ(number.To<Integer>(), value);
    EXPECT_EQ(number.ToText(), std::to_string(value));
  }
  EXPECT_EQ((Number((Limits::max)()) + 1).template TryTo<Integer>().Failure().Number(),
            DISP_E_OVERFLOW);
  EXPECT_EQ((Number((Limits::min)()) - 1).template TryTo<Integer>().Failure().Number(),
            DISP_E_OVERFLOW);
}

TEST(HppNumberTest, ConvertsIntegersOfEveryWidth) {
  CheckInteger<signed char>();
  CheckInteger<unsigned char>();
  CheckInteger<short>();
  CheckInteger<unsigned short>();
  CheckInteger<int>();
  CheckInteger<unsigned>();
  CheckInteger<long>();
  CheckInteger<unsigned long>();
  CheckInteger<long long>();
  CheckInteger<unsigned long long>();
  const Number large = Number(2).Power(64);
  EXPECT_EQ(large.TryTo<std::uint64_t>().Failure().Number(), DISP_E_OVERFLOW);
  EXPECT_EQ((large * large + 1).TryTo<int>().Failure().Number(), DISP_E_OVERFLOW);
  EXPECT_EQ(hpp_testing::ThrownBy([&] { (void)large.To<int>(); }), DISP_E_OVERFLOW);
}

TEST(HppNumberTest, ConvertsBytes) {
  const Number n = Number::FromBytes(FromHex("00c0ffee"));
  EXPECT_EQ(n.ToHex(), "c0ffee");
  EXPECT_EQ(ToHex(n.ToBytes()), "c0ffee");
  EXPECT_EQ(ToHex(n.ToBytes(5)), "0000c0ffee");
  EXPECT_EQ(ToHex(n.ToBytes(3)), "c0ffee");
  EXPECT_EQ(ToHex(Number().ToBytes(2)), "0000");
  EXPECT_EQ(n.TryToBytes(2).Failure().Number(), DISP_E_OVERFLOW);
  EXPECT_EQ(n.BitLength(), 24u);
  EXPECT_EQ(Number(1).BitLength(), 1u);
  EXPECT_EQ(Number(-256).BitLength(), 9u);
  EXPECT_EQ(Number::TryFromBytes(FromHex("05"), true)->ToText(), "-5");
  EXPECT_FALSE(Number::TryFromBytes({}, true)->IsNegative());
}

TEST(HppNumberTest, CopiesAreIndependentAndMovesLeaveZero) {
  Number a = -5;
  Number b = a;
  EXPECT_NE(a.Interface().Get(), b.Interface().Get());
  b += 1;
  EXPECT_EQ(a, -5);
  Number moved = std::move(a);
  EXPECT_EQ(moved, -5);
  EXPECT_TRUE(a.IsZero());
  EXPECT_FALSE(a.IsNegative());
  a = std::move(moved);
  EXPECT_EQ(a, -5);
  a = *&a;
  EXPECT_EQ(a, -5);
  a += a;
  a *= a;
  EXPECT_EQ(a, 100);
}

TEST(HppNumberTest, RaisesToPowers) {
  EXPECT_EQ(Number(4).PowerMod(13, 497), 445);
  EXPECT_EQ(Number(2).Power(100).ToText(), "1267650600228229401496703205376");
  EXPECT_EQ(Number(-3).Power(3), -27);
  EXPECT_EQ(Number(0).Power(0), 1);
  EXPECT_EQ(Number(5).PowerMod(0, 7), 1);
  EXPECT_EQ(Number(5).PowerMod(0, 1), 0);
  EXPECT_EQ(Number(0).PowerMod(5, 7), 0);
  EXPECT_EQ(Number(0).PowerMod(0, 7), 1);
  EXPECT_EQ(Number(-2).PowerMod(3, 7), 6);
  EXPECT_EQ(Number(3).PowerMod(-1, 7), 5);
  EXPECT_EQ(Number(3).PowerMod(-2, 7), 4);
  EXPECT_EQ(Number(2).TryPowerMod(-1, 4).Failure().Number(), E_INVALIDARG);
  EXPECT_EQ(Number(2).TryPowerMod(3, -5).Failure().Number(), E_INVALIDARG);
}

TEST(HppNumberTest, FindsInversesAndDivisors) {
  EXPECT_EQ(Number(3).Inverse(7), 5);
  EXPECT_EQ(Number(-3).Inverse(7), 2);
  EXPECT_EQ(Number(10).Inverse(7), 5);
  EXPECT_EQ(Number(5).Inverse(1), 0);
  EXPECT_EQ(Number(2).TryInverse(4).Failure().Number(), E_INVALIDARG);
  EXPECT_EQ(Number(0).TryInverse(7).Failure().Number(), E_INVALIDARG);
  EXPECT_EQ(Number(3).TryInverse(-7).Failure().Number(), E_INVALIDARG);
  EXPECT_EQ(Number(12).Gcd(-18), 6);
  EXPECT_EQ(Number(-12).Gcd(0), 12);
  EXPECT_EQ(Number(0).Gcd(-5), 5);
  EXPECT_EQ(Number(0).Gcd(0), 0);
}

TEST(HppNumberTest, DrawsRandomNumbers) {
  for (int i = 0; i < 4; ++i) {
    const Number n = Number::Random(16, true, true);
    EXPECT_EQ(n.BitLength(), 128u);
    EXPECT_EQ(n % 2, 1);
    EXPECT_TRUE(Number::Random(16) != n);
  }
  EXPECT_LE(Number::Random(2).BitLength(), 16u);
  EXPECT_EQ(Number::TryRandom(0).Failure().Number(), E_INVALIDARG);
  if (sizeof(std::size_t) > 4) {
    EXPECT_EQ(Number::TryRandom(static_cast<std::size_t>(0x80000000u)).Failure().Number(),
              E_OUTOFMEMORY);
  }
}

}  // namespace
