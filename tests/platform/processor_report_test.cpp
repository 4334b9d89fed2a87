// Which features a processor's report amounts to. The bits are those of the processor's manuals.
#include "seam/processor_report.h"

#include <gtest/gtest.h>

#include "platform.h"

#if !defined(MIROLTA_PORTABLE_ONLY) && (defined(__x86_64__) || defined(__i386__))

namespace mirolta {
namespace {

constexpr uint32_t Bit(int number) {
  return 1u << number;
}

// Leaf 1, ECX.
constexpr uint32_t kSsse3 = Bit(9);
constexpr uint32_t kSse41 = Bit(19);
constexpr uint32_t kAes = Bit(25);
constexpr uint32_t kOsxsave = Bit(27);
constexpr uint32_t kAvx = Bit(28);
// Leaf 1, EDX.
constexpr uint32_t kFxsr = Bit(24);
constexpr uint32_t kSse2 = Bit(26);
// Leaf 7, EBX.
constexpr uint32_t kBmi1 = Bit(3);
constexpr uint32_t kAvx2 = Bit(5);
constexpr uint32_t kBmi2 = Bit(8);
constexpr uint32_t kAvx512F = Bit(16);
constexpr uint32_t kAvx512Dq = Bit(17);
constexpr uint32_t kAdx = Bit(19);
constexpr uint32_t kIfma = Bit(21);
constexpr uint32_t kSha = Bit(29);
constexpr uint32_t kAvx512Bw = Bit(30);
constexpr uint32_t kAvx512Vl = Bit(31);
constexpr uint32_t kAvx512 = kAvx512F | kAvx512Dq | kAvx512Bw | kAvx512Vl;
// Leaf 7, ECX.
constexpr uint32_t kGfni = Bit(8);
constexpr uint32_t kVaes = Bit(9);

constexpr uint32_t kXmm = Bit(1), kYmm = Bit(2), kOpmask = Bit(5), kZmmLow = Bit(6),
                   kZmmHigh = Bit(7);
constexpr uint32_t kSaves256 = kXmm | kYmm;
constexpr uint32_t kSaves512 = kSaves256 | kOpmask | kZmmLow | kZmmHigh;

constexpr ProcessorReport kEverything = {~0u, ~0u, ~0u, ~0u, kSaves512};
constexpr uint32_t kWithSse41 = kFeatureSsse3 | kFeatureAesNi | kFeatureSha | kFeatureGfni;
constexpr uint32_t kWith128 = kFeatureSse2 | kWithSse41 | kFeatureBmi2Adx;
constexpr uint32_t kWith256 = kWith128 | kFeatureAvx2 | kFeatureVaes;
constexpr uint32_t kAll = kWith256 | kFeatureAvx512 | kFeatureAvx512Ifma;

TEST(ProcessorReportTest, NothingReportedIsNothingFound) {
  EXPECT_EQ(FeaturesIn({}), 0u);
}

TEST(ProcessorReportTest, EverythingReportedIsEverythingFound) {
  EXPECT_EQ(FeaturesIn(kEverything), kAll);
}

TEST(ProcessorReportTest, EachFeatureAsksForAllOfItsBits) {
  struct Row {
    const char* name;
    ProcessorReport missing;  // bits taken from a report of everything
    uint32_t features;        // those that go with them
  };
  const Row kRows[] = {
      {"FXSAVE", {0, kFxsr, 0, 0, 0}, kAll & ~kFeatureBmi2Adx},
      {"SSE2", {0, kSse2, 0, 0, 0}, kAll & ~kFeatureBmi2Adx},
      {"SSSE3", {kSsse3, 0, 0, 0, 0}, kWithSse41},
      {"SSE4.1", {kSse41, 0, 0, 0, 0}, kWithSse41},
      {"AES", {kAes, 0, 0, 0, 0}, kFeatureAesNi},
      {"OSXSAVE", {kOsxsave, 0, 0, 0, 0}, kAll & ~kWith128},
      {"AVX", {kAvx, 0, 0, 0, 0}, kAll & ~kWith128},
      {"AVX2", {0, 0, kAvx2, 0, 0}, kFeatureAvx2},
      {"BMI1", {0, 0, kBmi1, 0, 0}, kFeatureBmi2Adx},
      {"BMI2", {0, 0, kBmi2, 0, 0}, kFeatureBmi2Adx},
      {"ADX", {0, 0, kAdx, 0, 0}, kFeatureBmi2Adx},
      {"SHA", {0, 0, kSha, 0, 0}, kFeatureSha},
      {"AVX512F", {0, 0, kAvx512F, 0, 0}, kFeatureAvx512 | kFeatureAvx512Ifma},
      {"AVX512DQ", {0, 0, kAvx512Dq, 0, 0}, kFeatureAvx512 | kFeatureAvx512Ifma},
      {"AVX512BW", {0, 0, kAvx512Bw, 0, 0}, kFeatureAvx512 | kFeatureAvx512Ifma},
      {"AVX512VL", {0, 0, kAvx512Vl, 0, 0}, kFeatureAvx512 | kFeatureAvx512Ifma},
      {"AVX512IFMA", {0, 0, kIfma, 0, 0}, kFeatureAvx512Ifma},
      {"GFNI", {0, 0, 0, kGfni, 0}, kFeatureGfni},
      {"VAES", {0, 0, 0, kVaes, 0}, kFeatureVaes},
      {"XMM saved", {0, 0, 0, 0, kXmm}, kAll & ~kFeatureBmi2Adx},
      {"YMM saved", {0, 0, 0, 0, kYmm}, kAll & ~kWith128},
      {"opmasks saved", {0, 0, 0, 0, kOpmask}, kAll & ~kWith256},
      {"low ZMM saved", {0, 0, 0, 0, kZmmLow}, kAll & ~kWith256},
      {"high ZMM saved", {0, 0, 0, 0, kZmmHigh}, kAll & ~kWith256},
  };
  for (const Row& row : kRows) {
    const ProcessorReport report = {kEverything.leaf1_ecx & ~row.missing.leaf1_ecx,
                                    kEverything.leaf1_edx & ~row.missing.leaf1_edx,
                                    kEverything.leaf7_ebx & ~row.missing.leaf7_ebx,
                                    kEverything.leaf7_ecx & ~row.missing.leaf7_ecx,
                                    kEverything.saved_state & ~row.missing.saved_state};
    EXPECT_EQ(FeaturesIn(report), kAll & ~row.features) << "without " << row.name;
  }
}

TEST(ProcessorReportTest, ASystemThatDoesNotTellWhatItSavesSavesThe128BitRegisters) {
  const ProcessorReport report = {~kOsxsave, ~0u, ~0u, ~0u, 0};
  EXPECT_EQ(FeaturesIn(report), kWith128);
}

TEST(ProcessorReportTest, BitsThatNothingAsksForDoNotMatter) {
  const ProcessorReport just = {kSsse3 | kSse41 | kAes | kOsxsave | kAvx, kFxsr | kSse2,
                                kBmi1 | kAvx2 | kBmi2 | kAdx | kSha | kAvx512 | kIfma,
                                kGfni | kVaes, kSaves512};
  EXPECT_EQ(FeaturesIn(just), kAll);
  const ProcessorReport others = {~just.leaf1_ecx, ~just.leaf1_edx, ~just.leaf7_ebx,
                                  ~just.leaf7_ecx, ~just.saved_state};
  EXPECT_EQ(FeaturesIn(others), 0u);
}

}  // namespace
}  // namespace mirolta

#elif MIROLTA_KERNELS_FOR(AARCH64) && defined(__linux__) || MIROLTA_KERNELS_FOR(ARMV7)

  #include <sys/auxv.h>

namespace mirolta {
namespace {

TEST(ProcessorReportTest, EachFeatureOfArmFollowsFromItsCapability) {
  const struct {
    const char* name;
    uint64_t capability;
    uint32_t features;
  } rows[] = {
  #if defined(__aarch64__)
    {"AES", HWCAP_AES, kFeatureArmAes},
    {"SHA1", HWCAP_SHA1, kFeatureArmSha1},
    {"SHA2", HWCAP_SHA2, kFeatureArmSha2},
  #else
    {"NEON", HWCAP_ARM_NEON, kFeatureNeon},
  #endif
  };
  uint64_t others = ~uint64_t{0};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(FeaturesIn({row.capability}), row.features);
    others &= ~row.capability;
  }
  EXPECT_EQ(FeaturesIn({others}), 0u);
}

TEST(ProcessorReportTest, TheFeaturesOfThisMachineAreThoseThatItsSystemLists) {
  EXPECT_EQ(ProcessorFeatures(), FeaturesIn({getauxval(AT_HWCAP)}));
}

}  // namespace
}  // namespace mirolta

#endif
