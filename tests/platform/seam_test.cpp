// The operations of the seam that no system header offers.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <set>
#include <thread>
#include <vector>

#include "platform.h"
#include "portable/test_hooks.h"

namespace mirolta {
namespace {

std::vector<uint32_t> Draw(uint32_t seed, size_t count) {
  std::vector<uint32_t> numbers;
  const RandomSource& source = CurrentRandomSource();
  EXPECT_TRUE(source.seed(seed));
  while (numbers.size() < count) numbers.push_back(source.next());
  return numbers;
}

// More numbers than one pool of entropy gives.
constexpr size_t kMany = 2000;

TEST(RandomSourceTest, ASeedDoesNotTellTheNumbers) {
  EXPECT_NE(Draw(1, kMany), Draw(1, kMany));
}

TEST(RandomSourceTest, NumbersArePositiveAndDoNotRepeat) {
  const std::vector<uint32_t> numbers = Draw(7, kMany);
  for (const uint32_t number : numbers) EXPECT_LE(number, 0x7FFFFFFFu);
  // Two equal ones of 2,000 out of 2^31 are less likely than one in a thousand; ten never happen.
  EXPECT_GT(std::set<uint32_t>(numbers.begin(), numbers.end()).size(), kMany - 10);
}

TEST(RandomSourceTest, LowBytesTakeEveryValue) {
  std::vector<int> counts(256);
  for (const uint32_t number : Draw(7, 20 * kMany)) ++counts[number % 256];
  // 156 each on average; half of that is six standard deviations away.
  for (const int count : counts) {
    EXPECT_GT(count, 78);
    EXPECT_LT(count, 312);
  }
}

TEST(RandomSourceTest, EveryThreadHasItsOwnNumbers) {
  std::vector<uint32_t> others;
  std::thread other([&] { others = Draw(1, 100); });
  const std::vector<uint32_t> mine = Draw(1, 100);
  other.join();
  EXPECT_NE(mine, others);
}

// The system's own entropy and the system's own note of a fork.
TEST(RandomSourceTest, AChildHasOtherNumbersThanItsParent) {
  ASSERT_TRUE(CurrentRandomSource().seed(1));
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  constexpr size_t kCount = 8;
  uint32_t numbers[kCount] = {};
  const pid_t child = fork();
  for (uint32_t& number : numbers) number = CurrentRandomSource().next();
  if (child == 0) _exit(write(ends[1], numbers, sizeof numbers) == sizeof numbers ? 0 : 1);
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  uint32_t of_child[kCount] = {};
  ASSERT_EQ(read(ends[0], of_child, sizeof of_child), static_cast<ssize_t>(sizeof of_child));
  for (size_t i = 0; i < kCount; ++i) EXPECT_NE(numbers[i], of_child[i]) << i;
  close(ends[0]);
  close(ends[1]);
}

uint32_t seeded = 0;
const RandomSource kFixedSource = {[](uint32_t seed) {
                                     seeded = seed;
                                     return true;
                                   },
                                   [] { return 42u; }};

TEST(RandomSourceTest, AnotherSourceTakesItsPlaceUntilNullPutsTheSystemsBack) {
  SetRandomSource(&kFixedSource);
  EXPECT_EQ(Draw(99, 2), (std::vector<uint32_t>{42, 42}));
  EXPECT_EQ(seeded, 99u);
  SetRandomSource(nullptr);
  EXPECT_NE(Draw(99, 2), (std::vector<uint32_t>{42, 42}));
}

// A clock that gives the listed times, then advances by one a call.
std::vector<DWORD> shown;
size_t looks = 0;
bool time_was_read_after_the_tick = false;

const MiroltaClock kClock = {[]() -> DWORD {
                               const size_t look = looks++;
                               return look < shown.size() ? shown[look] : shown.back() + 1;
                             },
                             [](SYSTEMTIME* time) {
                               time_was_read_after_the_tick = looks == 4;
                               *time = {2026, 11, 5, 20, 1, 2, 3, 4};
                             }};

TEST(ClockSeedTest, WaitsForTheTickAndMixesDateAndCounter) {
  // The first reading, two equal ones, the change, and the one after the local time.
  shown = {0x12345, 0x12345, 0x12345, 0x12346, 0xABC9876F};
  looks = 0;
  MiroltaSetClock(&kClock);
  const uint32_t seed = ClockSeed();
  MiroltaSetClock(nullptr);
  EXPECT_TRUE(time_was_read_after_the_tick);
  EXPECT_EQ(looks, 5u);
  // The month and day go beyond 32 bits; the year's bits overlap the day's.
  const uint64_t date = static_cast<uint64_t>((((11u << 4) | 20u) << 8) | 2026u) << 16;
  EXPECT_EQ(seed, (0xABC9876Fu & 0xFFFFu) | static_cast<uint32_t>(date));
}

TEST(WipeMemoryTest, ClearsJustTheBytesGiven) {
  uint8_t bytes[5] = {1, 2, 3, 4, 5};
  WipeMemory(bytes + 1, 3);
  const uint8_t expected[5] = {1, 0, 0, 0, 5};
  EXPECT_EQ(std::memcmp(bytes, expected, sizeof(bytes)), 0);
  WipeMemory(nullptr, 0);
}

TEST(WipeMemoryTest, APieceIsClearedWithoutThoseBesideIt) {
  uint8_t bytes[66];
  std::memset(bytes, 7, sizeof bytes);
  WipePiece<64>(bytes + 1);
  uint8_t expected[66] = {7};
  expected[65] = 7;
  EXPECT_EQ(std::memcmp(bytes, expected, sizeof bytes), 0);
}

TEST(CreateByteArrayTest, GivesWhatTheSystemsCreationGivesButForTheBytes) {
  for (const uint32_t count : {0u, 1u, 100000u}) {
    SAFEARRAYBOUND bound = {count, 0};
    SAFEARRAY* const expected = SafeArrayCreate(VT_UI1, 1, &bound);
    SAFEARRAY* const array = CreateByteArray(count);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(array->cDims, expected->cDims);
    EXPECT_EQ(array->fFeatures, expected->fFeatures);
    EXPECT_EQ(array->cbElements, 1u);
    EXPECT_EQ(array->cLocks, 0u);
    EXPECT_EQ(array->rgsabound[0].cElements, count);
    EXPECT_EQ(array->rgsabound[0].lLbound, 0);
    VARTYPE type = VT_EMPTY;
    EXPECT_EQ(SafeArrayGetVartype(array, &type), S_OK);
    EXPECT_EQ(type, VT_UI1);
    ASSERT_NE(array->pvData, nullptr);
    std::memset(array->pvData, 0xA5, count);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(expected), S_OK);
  }
}

TEST(CreateByteArrayTest, IsNullWithoutMemory) {
  // The descriptor, then the bytes.
  for (const LONG allowed : {0, 1}) {
    MiroltaFailAllocationAfter(allowed);
    EXPECT_EQ(CreateByteArray(10), nullptr) << allowed;
    EXPECT_TRUE(MiroltaAllocationHasFailed());
  }
  MiroltaFailAllocationAfter(-1);
}

constexpr Kernel<int> kRows[] = {
    {"both", kFeatureAvx2 | kFeatureSha, 3}, {"sha", kFeatureSha, 2}, {"portable", 0, 1}};

TEST(KernelListTest, ChoosesTheFirstRowThatTheProcessorRuns) {
  constexpr KernelList<int> list = kRows;
  static_assert(list.Choose(0).function == 1);
  EXPECT_EQ(list.Choose(kFeatureSha | kFeatureAvx2).function, 3);
  EXPECT_EQ(list.Choose(kFeatureSha).function, 2);
  EXPECT_EQ(list.Choose(kFeatureAvx2).function, 1);
  EXPECT_EQ(list.Choose(~0u).function, 3);
}

TEST(KernelListTest, HasAllRowsInTheirOrder) {
  const KernelList<int> list = kRows;
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(list[1].function, 2);
  int expected = 3;
  for (const Kernel<int>& row : list) EXPECT_EQ(row.function, expected--);
  EXPECT_EQ(expected, 0);
}

int Vectors() {
  return 2;
}
int Words() {
  return 1;
}
constexpr Kernel<int (*)()> kFunctions[] = {{"vectors", kFeatureSha, Vectors},
                                            {"portable", 0, Words}};

}  // namespace

extern const KernelList<int (*)()> kTestKernels;
constinit const KernelList<int (*)()> kTestKernels = kFunctions;

namespace {

TEST(CurrentKernelTest, IsTheRowForThisProcessor) {
  EXPECT_EQ(ChosenKernel<kTestKernels>(), nullptr);
  const auto chosen = CurrentKernel<kTestKernels>();
  EXPECT_EQ(chosen, kTestKernels.Choose(ProcessorFeatures()).function);
  EXPECT_EQ(chosen(), (ProcessorFeatures() & kFeatureSha) != 0 ? 2 : 1);
  EXPECT_EQ(ChosenKernel<kTestKernels>(), chosen);
}

}  // namespace
}  // namespace mirolta
