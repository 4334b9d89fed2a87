#include "big_text.h"

#include <gtest/gtest.h>

#include "big_testing.h"

namespace mirolta {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes BytesOf(const BigInt& n) {
  Bytes bytes(static_cast<size_t>(ByteLength(n)) + 1, 0xEE);
  ToBytes(bytes.data(), n);
  EXPECT_EQ(bytes.back(), 0xEE);
  bytes.pop_back();
  return bytes;
}

BigInt Read(const Bytes& bytes) {
  BigInt n;
  EXPECT_EQ(FromBytes(n, bytes.data(), static_cast<uint32_t>(bytes.size())), S_OK);
  return n;
}

std::string Decimal(const BigInt& n) {
  NumberText text;
  EXPECT_EQ(ToText(text, n, 10), S_OK);
  return Narrow(text);
}

std::string PeerDecimal(mpz_srcptr z) {
  char* const decimal = mpz_get_str(nullptr, 10, z);
  std::string text = decimal;
  free(decimal);
  return text;
}

TEST(BigBytesTest, BytesAreNumbersWithTheHighByteFirst) {
  EXPECT_EQ(Hex(Read({0, 0, 1})), "1");
  EXPECT_EQ(BytesOf(BigInt(1)), (Bytes{1}));
  EXPECT_EQ(Hex(Read({})), "0");
  EXPECT_EQ(Hex(Read({0, 0, 0, 0, 0})), "0");
  EXPECT_EQ(BytesOf(BigInt()), Bytes{});
  EXPECT_EQ(Hex(Read({1, 2, 3, 4, 5})), "102030405");
  EXPECT_EQ(Hex(Read({0x80, 0, 0, 0, 0, 0, 0, 0})), "8000000000000000");
  EXPECT_EQ(BytesOf(BigHex("1ff")), (Bytes{1, 0xFF}));
}

TEST(BigBytesTest, EveryLengthIsReadAndWritten) {
  for (uint32_t length = 0; length < 70; ++length) {
    Bytes bytes(length);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(Generator()());
    if (length != 0) bytes[0] |= 1;
    BigInt n = Read(bytes);
    EXPECT_EQ(BytesOf(n), bytes);
    // A shorter value into a number that had more words.
    ASSERT_EQ(FromBytes(n, bytes.data(), length / 2), S_OK);
    EXPECT_EQ(BytesOf(n), Bytes(bytes.data(), bytes.data() + length / 2));
  }
}

TEST(BigTextTest, DigitsAreReadAndWritten) {
  EXPECT_EQ(Hex(Big("12,345")), "3039");
  BigInt n;
  FromDecimalText(n, OLESTR("-12345"), 6);
  EXPECT_EQ(Hex(n), "3039");
  EXPECT_EQ(Hex(BigHex("0x1F")), "1f");
  EXPECT_EQ(Hex(BigHex("abc")), "abc");
  EXPECT_EQ(Hex(BigHex("aBCdEf0")), "abcdef0");
  EXPECT_EQ(Hex(BigHex("")), "0");
  EXPECT_EQ(Hex(Big("")), "0");
  EXPECT_EQ(Hex(Big("ff")), "0");
  EXPECT_EQ(Hex(BigHex("xyz g")), "0");
  EXPECT_EQ(Hex(BigHex(" 12 - 34 ")), "1234");
  EXPECT_EQ(Decimal(BigHex("ff")), "255");
  EXPECT_EQ(Decimal(Big("000123")), "123");
  EXPECT_EQ(Decimal(Big("18446744073709551616")), "18446744073709551616");
}

// Neighbours of the digits and letters, and wide characters whose low byte is a digit.
TEST(BigTextTest, EveryOtherCharacterIsSkipped) {
  for (uint32_t c = 1; c < 0x10000; ++c) {
    const OLECHAR text[] = {OLECHAR('1'), static_cast<OLECHAR>(c), OLECHAR('2')};
    BigInt decimal, hex;
    ASSERT_EQ(FromDecimalText(decimal, text, 3), S_OK);
    ASSERT_EQ(FromHexText(hex, text, 3), S_OK);
    uint32_t wanted = 12, wanted_hex = 0x12;
    if (c >= '0' && c <= '9') wanted = 102 + 10 * (c - '0');
    if (c >= '0' && c <= '9') wanted_hex = 0x102 + 16 * (c - '0');
    if (c >= 'a' && c <= 'f') wanted_hex = 0x102 + 16 * (c - 'a' + 10);
    if (c >= 'A' && c <= 'F') wanted_hex = 0x102 + 16 * (c - 'A' + 10);
    ASSERT_EQ(decimal.GetWord(0), wanted) << c;
    ASSERT_EQ(hex.GetWord(0), wanted_hex) << c;
  }
}

TEST(BigTextTest, ZeroHasNoText) {
  NumberText text;
  for (const uint32_t base : {10u, 16u}) {
    ASSERT_EQ(ToText(text, BigInt(5), base), S_OK);
    ASSERT_NE(text.Characters(), nullptr);
    EXPECT_EQ(text.Characters()[text.Length()], 0);
    ASSERT_EQ(ToText(text, BigInt(), base), S_OK);
    EXPECT_EQ(text.Characters(), nullptr);
    EXPECT_EQ(text.Length(), 0u);
  }
}

TEST(BigTextTest, ShorterTextKeepsItsMemory) {
  NumberText text;
  ASSERT_EQ(ToText(text, BigHex("123456789abcdef0123"), 16), S_OK);
  const OLECHAR* const characters = text.Characters();
  ASSERT_EQ(ToText(text, BigHex("abc"), 16), S_OK);
  EXPECT_EQ(text.Characters(), characters);
  EXPECT_EQ(Narrow(text), "abc");
  EXPECT_EQ(text.Characters()[3], 0);
  ASSERT_EQ(ToText(text, BigHex("123456789abcdef0123"), 16), S_OK);
  EXPECT_EQ(text.Characters(), characters);
  EXPECT_EQ(Narrow(text), "123456789abcdef0123");
  ASSERT_EQ(ToText(text, BigHex("f123456789abcdef0123"), 16), S_OK);
  EXPECT_EQ(Narrow(text), "f123456789abcdef0123");
  ASSERT_EQ(ToText(text, BigInt(7), 10), S_OK);
  EXPECT_EQ(Narrow(text), "7");
}

TEST(BigTextTest, OtherBasesAreRefused) {
  NumberText text;
  ASSERT_EQ(ToText(text, BigInt(5), 10), S_OK);
  for (const uint32_t base : {0u, 1u, 2u, 8u, 9u, 11u, 15u, 17u, 64u}) {
    EXPECT_EQ(ToText(text, BigInt(7), base), E_FAIL);
    EXPECT_EQ(ToText(text, BigInt(), base), E_FAIL);
  }
  EXPECT_EQ(Narrow(text), "5");
}

TEST(BigTextTest, ConversionsKeepTheSignFlag) {
  BigInt n = BigInt(3) - BigInt(5);
  const uint8_t bytes[] = {9};
  ASSERT_EQ(FromBytes(n, bytes, 1), S_OK);
  EXPECT_EQ(Hex(n), "-9");
  ASSERT_EQ(FromDecimalText(n, OLESTR("12"), 2), S_OK);
  EXPECT_EQ(Hex(n), "-c");
  ASSERT_EQ(FromHexText(n, OLESTR("12"), 2), S_OK);
  EXPECT_EQ(Hex(n), "-12");
  NumberText text;
  ASSERT_EQ(ToText(text, n, 16), S_OK);
  EXPECT_EQ(Narrow(text), "12");  // no sign
  ASSERT_EQ(FromHexText(n, OLESTR(""), 0), S_OK);
  EXPECT_EQ(Hex(n), "-0");
}

// The reader's byte buffer as reference: the digits beyond its bytes are dropped.
BigInt ReadDecimalByBytes(const std::string& text) {
  const double product = static_cast<double>(text.size()) * 0.41524;
  size_t size = static_cast<size_t>(product);
  if (product - static_cast<double>(size) > 0) ++size;
  Bytes bytes(size);
  for (const char c : text) {
    if (c < '0' || c > '9') continue;
    uint32_t carry = static_cast<uint32_t>(c - '0');
    for (size_t i = size; i-- != 0;) {
      const uint32_t v = bytes[i] * 10u + carry;
      bytes[i] = static_cast<uint8_t>(v);
      carry = v >> 8;
    }
  }
  return Read(bytes);
}

TEST(BigTextTest, DigitsBeyondTheBufferAreDropped) {
  size_t dropped = 0;
  for (size_t length = 1800; length < 1850; ++length) {
    const std::string nines(length, '9');
    const BigInt n = Big(nines);
    ASSERT_EQ(Hex(n), Hex(ReadDecimalByBytes(nines))) << length;
    if (Decimal(n) != nines) ++dropped;
  }
  EXPECT_GT(dropped, 0u);
  const std::string long_text(25000, '9');
  EXPECT_EQ(Hex(Big(long_text)), Hex(ReadDecimalByBytes(long_text)));
  // Skipped characters make room.
  const std::string spaced = std::string(1811, '9') + "    ";
  EXPECT_EQ(Decimal(Big(spaced)), std::string(1811, '9'));
  EXPECT_NE(Decimal(Big(spaced.substr(0, 1811))), std::string(1811, '9'));
}

TEST(BigTextTest, PowersOfTenAndTheirNeighboursAreConverted) {
  std::string text = "1";
  for (int i = 0; i < 1700; ++i, text.push_back('0')) {
    const BigInt n = Big(text);
    ASSERT_EQ(Decimal(n), text);
    if (i == 0) continue;
    ASSERT_EQ(Decimal(n - BigInt(1)), std::string(text.size() - 1, '9'));
  }
}

TEST(BigTextTest, RandomNumbersAgreeWithThePeer) {
  for (int i = 0; i < Cases(600); ++i) {
    const BigInt n = RandomBig(i % 20 == 0 ? 40000 : i % 3 == 0 ? 8192 : 700);
    if (n.IsZero()) continue;
    const Mpz peer(n);
    const std::string wanted = PeerDecimal(peer);
    ASSERT_EQ(Decimal(n), wanted);
    ASSERT_EQ(Hex(n), Hex(static_cast<mpz_srcptr>(peer)));
    // Reading back with a character to spare, so that nothing is dropped.
    ASSERT_EQ(Hex(Big(wanted + "   ")), Hex(n));
    ASSERT_EQ(Hex(BigHex(Hex(n))), Hex(n));
  }
}

// Every length around the changes of algorithm, with values at and next to powers of both bases.
TEST(BigTextTest, LongNumbersHaveTheirLength) {
  for (uint32_t words = 20; words < 1500; words += words < 220 ? 1 : 37) {
    for (uint32_t kind = 0; kind < 5; ++kind) {
      Mpz peer;
      if (kind == 0) {
        mpz_setbit(peer, 32 * words);
        mpz_sub_ui(peer, peer, 1);
      } else if (kind < 4) {
        // 10^k - 1, 10^k and 10^k + 1, the digits that fit the words
        mpz_ui_pow_ui(peer, 10, static_cast<unsigned long>(words * 9.63));
        mpz_add_ui(peer, peer, kind);
        mpz_sub_ui(peer, peer, 2);
      } else {
        mpz_set(peer, Mpz(RandomBigOf(32 * words)));
      }
      const BigInt n = FromPeer(peer);
      const std::string wanted = PeerDecimal(peer);
      ASSERT_EQ(Decimal(n), wanted) << words;
      ASSERT_TRUE(Big(wanted + std::string(wanted.size() / 50 + 2, ' ')) == n) << words;
    }
  }
}

TEST(BigTextTest, ManyDigitsAreConverted) {
  const BigInt n = RandomBigOf(400000) + BigInt(1);
  const std::string wanted = PeerDecimal(Mpz(n));
  EXPECT_EQ(Decimal(n), wanted);
  EXPECT_EQ(Hex(Big(wanted + "          ")), Hex(n));
}

}  // namespace
}  // namespace mirolta
