// Every hexadecimal kernel against printf.
#include "hex_kernels.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "big_testing.h"
#include "kernel_rows.h"

namespace mirolta {
namespace {

using Text = std::basic_string<OLECHAR>;

Text Digits(const std::vector<uint32_t>& words) {
  std::string text;
  for (size_t i = words.size(); i-- != 0;) {
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(words[i]));
    text += digits;
  }
  return Widen(text);
}

TEST(HexKernelListTest, KernelsNeedTheInstructionsThatTheyUse) {
  test::ExpectNeeds(kHexKernels, {{"sse2", kFeatureSse2}, {"neon", 0}, {"portable", 0}});
  EXPECT_EQ(&CurrentHexKernels(), kHexKernels.Choose(ProcessorFeatures()).function);
}

class HexKernelsTest : public ::testing::TestWithParam<Kernel<const HexKernels*>> {
 protected:
  void SetUp() override {
    if (!test::Runs(GetParam().needs)) GTEST_SKIP() << "the processor lacks it";
  }

  const HexKernels* const kernels_ = GetParam().function;
};

TEST_P(HexKernelsTest, WriteAndReadDigits) {
  for (uint32_t count = 0; count < 20; ++count) {
    for (int i = 0; i < Cases(50); ++i) {
      const std::vector<uint32_t> words = RandomWords(count * 32);
      const Text wanted = Digits(words);
      Text text(wanted.size() + 1, OLECHAR{'#'});
      kernels_->write(text.data(), words.data(), count);
      ASSERT_EQ(text, wanted + OLECHAR{'#'});
      // Upper case is read too.
      for (OLECHAR& c : text) {
        if (c >= 'a' && c <= 'f' && Below(2) == 0) c = static_cast<OLECHAR>(c - 32);
      }
      std::vector<uint32_t> read(count + 1, 77);
      ASSERT_EQ(kernels_->read(read.data(), text.data() + wanted.size(), count), count);
      ASSERT_EQ(read[count], 77u);
      read.pop_back();
      ASSERT_EQ(read, words);
    }
  }
}

// One other character at each place: the words after it are read, and nothing is written beyond.
TEST_P(HexKernelsTest, ReadUpToACharacterThatIsNoDigit) {
  const std::vector<uint32_t> words = {0x01234567, 0x89ABCDEF, 0xFEDCBA98, 0x76543210, 0xA0B1C2D3};
  for (uint32_t c = 0; c < 0x10000; ++c) {
    const bool digit = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    ASSERT_EQ(HexDigitValue(static_cast<OLECHAR>(c)) != kNoHexDigit, digit);
    // Beyond a byte, those of whose halves one would be a digit.
    const uint32_t low = HexDigitValue(static_cast<OLECHAR>(c % 256));
    if (digit || (c > 0x180 && (low == kNoHexDigit || c / 256 % 9 != 0))) continue;
    for (size_t place = 0; place < 40; ++place) {
      Text text = Digits(words);
      text[place] = static_cast<OLECHAR>(c);
      const size_t whole = (39 - place) / 8;
      std::vector<uint32_t> read(6, 77);
      ASSERT_EQ(kernels_->read(read.data(), text.data() + 40, 5), whole) << c << " at " << place;
      for (size_t i = 0; i < whole; ++i) ASSERT_EQ(read[i], words[i]);
      ASSERT_EQ(read[5], 77u);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Tables, HexKernelsTest,
                         ::testing::ValuesIn(kHexKernels.begin(), kHexKernels.end()),
                         [](const auto& row) { return test::TestNameOf(row.param); });

TEST(HexTextTest, OtherCharactersAreSkippedAnywhere) {
  for (int i = 0; i < Cases(2000); ++i) {
    const BigInt n = RandomBig(600);
    NumberText digits;
    ASSERT_EQ(ToText(digits, n, 16), S_OK);
    Text text;
    const uint32_t often = 2 + Below(30);
    for (uint32_t j = 0; j < digits.Length(); ++j) {
      while (Below(often) == 0) text.push_back(OLESTR(" -gG/:@`\xff\x130\xff11")[Below(11)]);
      text.push_back(digits.Characters()[j]);
    }
    BigInt read;
    ASSERT_EQ(FromHexText(read, text.data(), static_cast<uint32_t>(text.size())), S_OK);
    ASSERT_EQ(Hex(read), Hex(n));
  }
}

TEST(DecimalTextTest, EveryGroupOfDigitsIsRight) {
  for (uint32_t i = 0; i < 10000; ++i) {
    char wanted[40];
    std::snprintf(wanted, sizeof wanted, "7%04u%04u%04u%04u", i, 9999 - i, 9999 - i, i);
    const BigInt n = Big(wanted);
    NumberText text;
    ASSERT_EQ(ToText(text, n, 10), S_OK);
    ASSERT_EQ(Narrow(text), wanted);
    ASSERT_EQ(n.GetWord(0), static_cast<uint32_t>(std::strtoull(wanted, nullptr, 10)));
  }
}

}  // namespace
}  // namespace mirolta
