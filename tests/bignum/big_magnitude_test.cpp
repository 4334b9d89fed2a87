#include "big_magnitude.h"

#include <gtest/gtest.h>

#include "big_testing.h"

namespace mirolta {
namespace {

void Set(BigMagnitude* m, const std::vector<uint32_t>& words) {
  m->SetSmall(0);
  for (size_t i = words.size(); i-- != 0;) m->SetWord(static_cast<uint32_t>(i), words[i]);
}

std::vector<uint32_t> Words(const BigMagnitude& m) {
  return std::vector<uint32_t>(m.Words(), m.Words() + m.Used());
}

TEST(BigMagnitudeTest, ANewMagnitudeIsZero) {
  BigMagnitude m;
  EXPECT_EQ(m.Used(), 0u);
  EXPECT_EQ(m.Capacity(), 0u);
  EXPECT_EQ(m.share_count, 0u);
  EXPECT_EQ(m.BitLength(), 0u);
  EXPECT_TRUE(m.IsZero());
  EXPECT_EQ(m.GetWord(0), 0u);
  EXPECT_FALSE(m.TestBit(0));
}

TEST(BigMagnitudeTest, ReserveGrowsAndNeverShrinks) {
  BigMagnitude m;
  Set(&m, {1, 2, 3});
  ASSERT_TRUE(m.Reserve(10));
  EXPECT_EQ(m.Capacity(), 10u);
  EXPECT_EQ(Words(m), (std::vector<uint32_t>{1, 2, 3}));
  ASSERT_TRUE(m.Reserve(4));
  EXPECT_EQ(m.Capacity(), 10u);
}

TEST(BigMagnitudeTest, ClearToSetsAllWordsToZero) {
  BigMagnitude m;
  Set(&m, {1, 2, 3, 4, 5});
  ASSERT_TRUE(m.ClearTo(2));
  EXPECT_EQ(m.Used(), 0u);
  EXPECT_EQ(m.Capacity(), 5u);
  for (uint32_t i = 0; i < m.Capacity(); ++i) EXPECT_EQ(m.Words()[i], 0u);
  ASSERT_TRUE(m.ClearTo(9));
  EXPECT_EQ(m.Capacity(), 9u);
}

TEST(BigMagnitudeTest, SetWordGrowsAndCountsWords) {
  BigMagnitude m;
  ASSERT_TRUE(m.SetWord(4, 0));  // zero above the value leaves it alone
  EXPECT_EQ(m.Used(), 0u);
  EXPECT_EQ(m.Capacity(), 0u);
  ASSERT_TRUE(m.SetWord(3, 7));
  EXPECT_EQ(Words(m), (std::vector<uint32_t>{0, 0, 0, 7}));
  ASSERT_TRUE(m.SetWord(1, 5));
  ASSERT_TRUE(m.SetWord(3, 0));  // zero at the top shrinks past zero words
  EXPECT_EQ(Words(m), (std::vector<uint32_t>{0, 5}));
  ASSERT_TRUE(m.SetWord(3, 1));  // the stale words between do not come back
  EXPECT_EQ(Words(m), (std::vector<uint32_t>{0, 5, 0, 1}));
  ASSERT_TRUE(m.SetWord(0, 0));
  EXPECT_EQ(m.Used(), 4u);
  EXPECT_EQ(m.GetWord(4), 0u);
}

TEST(BigMagnitudeTest, SetSmallAndCopyFromReplaceTheValue) {
  BigMagnitude m, other;
  Set(&m, {1, 2, 3});
  ASSERT_TRUE(m.SetSmall(9));
  EXPECT_EQ(Words(m), (std::vector<uint32_t>{9}));
  ASSERT_TRUE(m.SetSmall(0));
  EXPECT_EQ(m.Used(), 0u);
  Set(&other, {0, 0, 8});
  ASSERT_TRUE(m.CopyFrom(other));
  EXPECT_EQ(Words(m), (std::vector<uint32_t>{0, 0, 8}));
  ASSERT_TRUE(m.CopyFrom(m));
  EXPECT_EQ(Words(m), (std::vector<uint32_t>{0, 0, 8}));
}

TEST(BigMagnitudeTest, NormaliseCountsWordsFromTheCapacityDown) {
  BigMagnitude m;
  ASSERT_TRUE(m.ClearTo(6));
  m.Words()[3] = 1;
  m.Normalise();
  EXPECT_EQ(m.Used(), 4u);
  m.Words()[3] = 0;
  EXPECT_TRUE(m.IsZero());  // counted as used, but zero
  EXPECT_EQ(m.Used(), 4u);
  m.Normalise();
  EXPECT_EQ(m.Used(), 0u);
}

TEST(BigMagnitudeTest, BitLengthAndTestBitAgreeWithTheWords) {
  for (uint32_t bit = 0; bit < 100; ++bit) {
    BigMagnitude m;
    ASSERT_TRUE(m.SetWord(bit / 32, uint32_t{1} << (bit % 32)));
    EXPECT_EQ(m.BitLength(), bit + 1);
    for (uint32_t i = 0; i < 130; ++i) EXPECT_EQ(m.TestBit(i), i == bit);
  }
}

TEST(BigMagnitudeTest, SumsDifferencesAndOrdersOfEveryShapeAreRight) {
  for (const std::vector<uint32_t>& aw : ShapedWords()) {
    for (const std::vector<uint32_t>& bw : ShapedWords()) {
      BigMagnitude a, b;
      Set(&a, aw);
      Set(&b, bw);
      SCOPED_TRACE(testing::PrintToString(aw) + " " + testing::PrintToString(bw));
      Mpz x, y, z;
      mpz_import(x, aw.size(), -1, 4, 0, 0, aw.data());
      mpz_import(y, bw.size(), -1, 4, 0, 0, bw.data());
      const int order = mpz_cmp(x, y);
      ASSERT_EQ(BigMagnitude::Compare(a, b), order > 0 ? 1 : order < 0 ? -1 : 0);
      // A larger subtrahend wraps within a's words; its words above those are not read.
      mpz_sub(z, x, y);
      mpz_fdiv_r_2exp(z, z, 32 * aw.size());
      a.Subtract(b);
      ASSERT_EQ(Words(a), Words(FromPeer(z).Magnitude()));
      Set(&a, aw);
      mpz_add(z, x, y);
      ASSERT_TRUE(a.Add(b));
      ASSERT_EQ(Words(a), Words(FromPeer(z).Magnitude()));
      mpz_add(z, y, y);
      ASSERT_TRUE(b.Add(b));
      ASSERT_EQ(Words(b), Words(FromPeer(z).Magnitude()));
      b.Subtract(b);
      ASSERT_EQ(b.Used(), 0u);
    }
  }
}

TEST(BigMagnitudeTest, ShiftsMultiplyAndDivide) {
  std::vector<std::vector<uint32_t>> shapes = ShapedWords();
  for (int i = 0; i < Cases(500); ++i) shapes.push_back(RandomWords(Below(300)));
  for (const std::vector<uint32_t>& words : shapes) {
    for (const uint32_t bits : {0u, 1u, 31u, 32u, 33u, 63u, 64u, Below(330)}) {
      BigMagnitude m;
      Set(&m, words);
      Mpz z, shifted;
      mpz_import(z, words.size(), -1, 4, 0, 0, words.data());
      m.ShiftRight(bits);
      mpz_fdiv_q_2exp(shifted, z, bits);
      ASSERT_EQ(Words(m), Words(FromPeer(shifted).Magnitude())) << bits;
      if (bits != 1) continue;
      Set(&m, words);
      m.ShiftRight1();
      ASSERT_EQ(Words(m), Words(FromPeer(shifted).Magnitude()));
      Set(&m, words);
      ASSERT_TRUE(m.ShiftLeft1());
      mpz_mul_2exp(shifted, z, 1);
      ASSERT_EQ(Words(m), Words(FromPeer(shifted).Magnitude()));
    }
  }
}

// All bit counts around the word edges, for operands of all small sizes.
TEST(BigMagnitudeTest, MultiplyTruncDropsHighBits) {
  for (uint32_t size = 0; size < 6; ++size) {
    for (uint32_t bits = 0; bits <= 32 * 11; ++bits) {
      BigMagnitude a, b, r;
      Set(&a, RandomWords(32 * size));
      Set(&b, RandomWords(32 * (1 + Below(5))));
      Set(&r, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13});  // stale words must not show
      Mpz x, y;
      mpz_import(x, a.Used(), -1, 4, 0, 0, a.Words());
      mpz_import(y, b.Used(), -1, 4, 0, 0, b.Words());
      mpz_mul(x, x, y);
      mpz_fdiv_r_2exp(x, x, bits);
      ASSERT_TRUE(BigMagnitude::MultiplyTrunc(r, a, b, bits));
      ASSERT_EQ(Words(r), Words(FromPeer(x).Magnitude())) << bits;
      ASSERT_TRUE(BigMagnitude::MultiplyTrunc(r, a, a, bits));
      mpz_import(x, a.Used(), -1, 4, 0, 0, a.Words());
      if (a.Used() == 0) mpz_set_ui(x, 0);
      mpz_mul(x, x, x);
      mpz_fdiv_r_2exp(x, x, bits);
      ASSERT_EQ(Words(r), Words(FromPeer(x).Magnitude())) << bits;
    }
  }
}

TEST(BigMagnitudeTest, MultiplyTruncKeepsOneBitOfTheSecondWord) {
  BigMagnitude a, b, r;
  Set(&a, {0xFFFFFFFF, 0xFFFFFFFF});
  Set(&b, {1});
  ASSERT_TRUE(BigMagnitude::MultiplyTrunc(r, a, b, 33));
  EXPECT_EQ(Words(r), (std::vector<uint32_t>{0xFFFFFFFF, 1}));
}

TEST(BigMagnitudeTest, DivideWritesIntoAnyOfItsOperands) {
  for (int i = 0; i < Cases(2000); ++i) {
    const std::vector<uint32_t> aw = RandomWords(Below(400));
    std::vector<uint32_t> bw = RandomWords(1 + Below(300));
    bw[0] |= 1;
    BigMagnitude a, b, q, r;
    Set(&a, aw);
    Set(&b, bw);
    ASSERT_TRUE(BigMagnitude::Divide(q, a, b, r));
    Mpz x, y, pq, pr;
    mpz_import(x, aw.size(), -1, 4, 0, 0, aw.data());
    mpz_import(y, bw.size(), -1, 4, 0, 0, bw.data());
    mpz_tdiv_qr(pq, pr, x, y);
    const auto wanted_q = Words(FromPeer(pq).Magnitude());
    const auto wanted_r = Words(FromPeer(pr).Magnitude());
    ASSERT_EQ(Words(q), wanted_q);
    ASSERT_EQ(Words(r), wanted_r);
    ASSERT_TRUE(BigMagnitude::Divide(a, a, b, b));
    ASSERT_EQ(Words(a), wanted_q);
    ASSERT_EQ(Words(b), wanted_r);
    Set(&a, aw);
    Set(&b, bw);
    ASSERT_TRUE(BigMagnitude::Divide(b, a, b, a));
    ASSERT_EQ(Words(b), wanted_q);
    ASSERT_EQ(Words(a), wanted_r);
  }
}

TEST(BigMagnitudeTest, DivideByZeroIsRefused) {
  BigMagnitude a, zero, q, r;
  Set(&a, {5});
  Set(&q, {6});
  Set(&r, {7});
  EXPECT_FALSE(BigMagnitude::Divide(q, a, zero, r));
  EXPECT_FALSE(BigMagnitude::Divide(q, zero, zero, r));
  EXPECT_EQ(Words(q), (std::vector<uint32_t>{6}));
  EXPECT_EQ(Words(r), (std::vector<uint32_t>{7}));
}

}  // namespace
}  // namespace mirolta
