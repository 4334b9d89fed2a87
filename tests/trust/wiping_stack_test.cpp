// What a call of the module leaves on the stack and in registers: where the stack was used there are
// nothing but zeros, and nowhere is a secret (see wiping_stack_secrets_test.cpp). Compilers put
// copies of anything there, so the stack is painted, searched after each call, and the test run for
// every kind of processor (MIROLTA_TEST_FEATURES), compiler and flags that the build has a row for.
#include "left_everywhere.h"
#include "member_locks.h"
#include "memory_streams.h"
#include "used_memory.h"
#include "wiping_stack_fixture.h"

namespace mirolta::test {
namespace {

// Where work inside of work is wiped by itself, the calls that do that leave their return
// addresses.
constexpr size_t kWipingCalls = 64;

TEST_F(WipingStackTest, TheSearchSeesStackAndRegisters) {
  const Bytes secret = Secret(1, 64);
  WatchFor(secret);
  const uint8_t* const from = secret.data() + 8;
  const auto leave = [from] {
    uint8_t copy[8];
    std::memcpy(copy, from, sizeof copy);
    Used(copy);
  };
  stack.Run(leave);
  EXPECT_EQ(FindSecret(stack.Touched(), stack.TouchedBytes()), 0);
  stack.Run([] {});
  EXPECT_EQ(FindSecret(stack.Touched(), stack.TouchedBytes()), -1);
  // What one call leaves is painted over before the next.
  EXPECT_LT(stack.TouchedBytes(), PaintedStack::kOwnFrames);
#if defined(__x86_64__)
  #ifdef _WIN32
    #define MIROLTA_LAST_VECTOR "xmm5"
  #else
    #define MIROLTA_LAST_VECTOR "xmm15"
  #endif
  const auto registers_hold = [&] {
    return FindSecret(stack.Registers(), PaintedStack::kRegisterBytes) == 0;
  };
  stack.Run([from] { __asm__ volatile("movq (%0), %%r10" : : "r"(from) : "r10"); });
  EXPECT_TRUE(registers_hold());
  stack.Run([from] {
    __asm__ volatile("movups (%0), %%" MIROLTA_LAST_VECTOR : : "r"(from) : MIROLTA_LAST_VECTOR);
  });
  EXPECT_TRUE(registers_hold());
  if (__builtin_cpu_supports("avx512bw")) {
    stack.Run([from] { __asm__ volatile("vmovdqu64 (%0), %%zmm31" : : "r"(from)); });
    EXPECT_TRUE(registers_hold());
    stack.Run([from] { __asm__ volatile("kmovq (%0), %%k7" : : "r"(from)); });
    EXPECT_TRUE(registers_hold());
    stack.Run([] {
      __asm__ volatile("vpxord %%zmm31, %%zmm31, %%zmm31; kxorq %%k7, %%k7, %%k7" :);
    });
  }
  // Nothing else need use it in between.
  stack.Run([] { __asm__ volatile("xorl %%r10d, %%r10d" : : : "r10"); });
  stack.Run([] {});
  EXPECT_FALSE(registers_hold());
#endif
}

#if defined(__x86_64__) || defined(__i386__)

// In the members the compiler's own use of registers would hide one that is not cleared.
TEST_F(WipingStackTest, WipedWorkLeavesNoPlaceOut) {
  if (!__builtin_cpu_supports("sse2")) GTEST_SKIP() << "there are no vector registers";
  const Bytes secret = Secret(1, 8);
  WatchFor(secret);
  void* const context = const_cast<uint8_t*>(secret.data());
  stack.Run([&] { (void)LeaveEverywhere(context); });
  EXPECT_EQ(FindSecret(stack.Touched(), stack.TouchedBytes()), 0);
  EXPECT_EQ(FindSecret(stack.Registers(), PaintedStack::kRegisterBytes), 0);
  for (const StackUse use : {StackUse::kShort, StackUse::kMedium, StackUse::kDeep}) {
    RunOnce("everywhere", [&] { (void)RunWiped(LeaveEverywhere, context, &use); });
    if (!__builtin_cpu_supports("avx512bw")) continue;
    RunOnce("wide registers", [&] { (void)RunWiped(LeaveInWideRegisters, context, &use); });
  }
}

#endif

// A chain of calls that goes deeper than the frame of its member wipes leaves something else than
// zeros behind.
TEST_F(WipingStackTest, EveryMemberLeavesZeros) {
  const PlannedChance chance;
  for (const Member& member : AllMembers()) {
    int succeeded = 0;
    for (const State state : kStates) {
      for (const bool large : {false, true}) {
        HRESULT status = E_FAIL;
        for (int times = 0; times < 2; ++times) {
          const Subject subject(*member.class_row, state);
          Arguments arguments(ArgumentsFor(member, large));
          VARIANT result;
          stack.Run([&] { status = subject.Call(*member.row, arguments.Get(), &result); });
          VariantClear(&result);
        }
        // Reporting a failure goes deep into the system.
        if (FAILED(status)) continue;
        ++succeeded;
        EXPECT_LE(stack.DirtyBytes(PaintedStack::kOwnFrames), kWipingCalls)
            << member.Name() << " " << large;
      }
    }
    EXPECT_GT(succeeded, 0) << member.Name();
  }
}

TEST_F(WipingStackTest, EveryStreamOperationLeavesZeros) {
  for (const ClassTableRow* class_row : StreamClasses()) {
    for (const State state : kStates) {
      const Subject subject(*class_row, state);
      OwnedReference<IStream> stream;
      ASSERT_EQ(stream.Query(subject.Unknown(), IID_IStream), S_OK);
      for (const StreamOperation& operation : StreamOperations()) {
        const OwnedReference<IStream> sink = MemoryStream();
        Bytes buffer = StreamBuffer();
        for (int times = 0; times < 2; ++times) {
          stack.Run([&] { operation.call(stream.Get(), sink.Get(), buffer); });
        }
        EXPECT_LE(stack.DirtyBytes(PaintedStack::kOwnFrames), kWipingCalls)
            << StreamOperationName(*class_row, operation);
        ++searched;
      }
    }
  }
  EXPECT_EQ(searched, 4 * static_cast<long>(StreamOperations().size()));
}

// Sizes at which kernels and algorithms change.
TEST_F(WipingStackTest, CiphersOfEverySizeLeaveZeros) {
  const ClassTableRow& crypt = ClassNamed("SymmetricCryptObject");
  for (const char* const algorithm : {"t:AES", "t:DES"}) {
    for (const char* const key : {"b8", "b16", "b24", "b32"}) {
      const Subject subject(crypt, State::kFresh);
      ASSERT_EQ(subject.Call("Init", kMethod, algorithm), S_OK);
      if (FAILED(subject.Call("Key", kPut, key))) continue;
      for (const char* const member : {"Encrypt", "Decrypt"}) {
        for (unsigned size = 8; size <= 40000; size += size / 2 / 8 * 8 + 8) {
          const std::string words = "b" + std::to_string(size) + " B-1";
          const std::string what = std::string(algorithm) + " " + key + " " + member + " " + words;
          Arguments arguments(words);
          VARIANT result;
          HRESULT status = E_FAIL;
          stack.Run([&] {
            status = subject.Call(MemberNamed(crypt, member, kMethod), arguments.Get(), &result);
          });
          EXPECT_TRUE(SUCCEEDED(status)) << what;
          // Kernels that go deep wipe by themselves, and leave their own frames.
          constexpr size_t kKernelFrames = 512;
          EXPECT_LE(stack.DirtyBytes(PaintedStack::kOwnFrames), kKernelFrames) << what;
          VariantClear(&result);
          subject.Call("Reset", kMethod, "i0");
        }
      }
    }
  }
}

TEST_F(WipingStackTest, NumbersOfEverySizeLeaveZeros) {
  const ClassTableRow& number = ClassNamed("PexBigNumber");
  const struct {
    const char* member;
    INVOKEKIND kind;
    const char* more;  // arguments before the number
    unsigned limit;    // of bytes, where larger numbers take long
  } kOperations[] = {
      {"Add", kMethod, "", 100000}, {"Mul", kMethod, "", 100000},     {"Div", kMethod, "", 100000},
      {"Mod", kMethod, "", 100000}, {"GCD", kMethod, "", 3000},       {"ModInv", kMethod, "", 3000},
      {"Cmp", kMethod, "", 100000}, {"ModExp", kMethod, "b3 ", 3000}, {"Value", kGet, "", 100000},
      {"Hex", kGet, "", 100000},    {"Value", kPut, "", 100000},      {"Inc", kMethod, "", 100000}};
  for (const auto& operation : kOperations) {
    for (unsigned size = 4; size <= operation.limit; size += size / 2 + 1) {
      for (const char* const form : {"b", "d"}) {
        const unsigned length = form[0] == 'd' ? size * 12 / 5 : size;
        const std::string words = operation.more + std::string(form) + std::to_string(length);
        const Subject subject(number, State::kFresh);
        ASSERT_EQ(subject.Call("Binary", kPut, "b" + std::to_string(size + size / 2)), S_OK);
        Arguments arguments(operation.kind == kGet ? "" : words);
        VARIANT result;
        HRESULT status = E_FAIL;
        stack.Run([&] {
          status = subject.Call(MemberNamed(number, operation.member, operation.kind),
                                arguments.Get(), &result);
        });
        EXPECT_LE(stack.DirtyBytes(PaintedStack::kOwnFrames), kWipingCalls)
            << operation.member << " " << words << std::hex << status;
        VariantClear(&result);
      }
    }
  }
}

}  // namespace
}  // namespace mirolta::test
