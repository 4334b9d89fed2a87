// What a call of the module leaves on the stack and in registers: nothing of its secrets, and where
// the stack was used nothing but zeros. Compilers put copies of anything there, so the stack is
// painted, searched after each call, and the test run for every kind of processor
// (MIROLTA_TEST_FEATURES), compiler and flags that the build has a row for.
#include "wiping_stack.h"

#include <functional>
#include <memory>

#include "aes_kernels.h"
#include "des_kernels.h"
#include "fake_object.h"
#include "member_locks.h"
#include "used_memory.h"
#include "mod_exp.h"
#include "wiping_fixture.h"

namespace mirolta::test {
namespace {

// Where work inside of work is wiped by itself, the calls that do that leave their return
// addresses.
constexpr size_t kWipingCalls = 64;

class WipingStackTest : public WipingTest {
 protected:
  // A call twice, as the first has libraries load what they need: that goes deep, but meets no
  // secret but those that are searched for.
  void Run(const std::string& what, const std::function<void()>& call) {
    stack.Run(call);
    Search(what);
    stack.Run(call);
    Search(what);
  }
  void RunOnce(const std::string& what, const std::function<void()>& call) {
    stack.Run(call);
    Search(what);
  }

  void Search(const std::string& what) {
    ++searched;
    EXPECT_EQ(FindSecret(stack.Touched(), stack.TouchedBytes()), -1) << what << ": on the stack";
    EXPECT_EQ(FindSecret(stack.Registers(), PaintedStack::kRegisterBytes), -1)
        << what << ": in registers";
  }

  // Early bound and on the painted stack.
  HRESULT CallPainted(const Subject& subject, const ClassTableRow& class_row,
                      const std::string& member, INVOKEKIND kind,
                      const std::vector<VARIANT>& arguments) {
    HRESULT status = E_FAIL;
    const MemberRow& row = MemberNamed(class_row, member, kind);
    values.emplace_back();
    VARIANT* const result = &values.back();
    std::vector<VARIANT> own = arguments;
    RunOnce(Plain(class_row.name) + "." + member,
            [&] { status = subject.Call(row, own.data(), result); });
    return status;
  }

  PaintedStack stack;
  long searched = 0;
};

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
  const auto registers_hold = [&] {
    return FindSecret(stack.Registers(), PaintedStack::kRegisterBytes) == 0;
  };
  stack.Run([from] { __asm__ volatile("movq (%0), %%r10" : : "r"(from) : "r10"); });
  EXPECT_TRUE(registers_hold());
  stack.Run([from] { __asm__ volatile("movups (%0), %%xmm15" : : "r"(from) : "xmm15"); });
  EXPECT_TRUE(registers_hold());
  if (__builtin_cpu_supports("avx512bw")) {
    stack.Run([from] { __asm__ volatile("vmovdqu64 (%0), %%zmm31" : : "r"(from)); });
    EXPECT_TRUE(registers_hold());
    stack.Run([from] { __asm__ volatile("kmovq (%0), %%k7" : : "r"(from)); });
    EXPECT_TRUE(registers_hold());
    stack.Run([] { __asm__ volatile("vpxord %%zmm31, %%zmm31, %%zmm31; kxorq %%k7, %%k7, %%k7" :); });
  }
  stack.Run([] {});
  EXPECT_FALSE(registers_hold());
#endif
}

#if defined(__x86_64__)

// Leaves eight secret bytes everywhere that a function may change: on the stack from the first
// place below its return address on, and in every register.
__attribute__((naked)) HRESULT LeaveEverywhere(void*) {
  __asm__(
      "movq (%rdi), %rax\n\t"
      "movl $64, %ecx\n"
      "1:\n\t"
      "negq %rcx; movq %rax, (%rsp,%rcx,8); negq %rcx\n\t"
      "decq %rcx; jnz 1b\n\t"
      "movq %rax, %rcx; movq %rax, %rdx; movq %rax, %rsi; movq %rax, %rdi\n\t"
      "movq %rax, %r8; movq %rax, %r9; movq %rax, %r10; movq %rax, %r11\n\t"
      ".irp n,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15\n\t"
      "movq %rax, %xmm\\n\n\t"
      ".endr\n\t"
      "xorl %eax, %eax\n\t"
      "ret");
}

// The same in the registers of AVX-512.
__attribute__((naked)) HRESULT LeaveInWideRegisters(void*) {
  __asm__(
      "movq (%rdi), %rax\n\t"
      ".irp n,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31\n\t"
      "vpbroadcastq %rax, %zmm\\n\n\t"
      ".endr\n\t"
      ".irp n,0,1,2,3,4,5,6,7\n\t"
      "kmovq %rax, %k\\n\n\t"
      ".endr\n\t"
      "xorl %eax, %eax\n\t"
      "ret");
}

// In the members the compiler's own use of registers would hide one that is not cleared.
TEST_F(WipingStackTest, WipedWorkLeavesNoPlaceOut) {
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
  for (const ClassTableRow* class_row : AllClasses()) {
    for (const State state : kStates) {
      const Subject subject(*class_row, state);
      OwnedReference<IStream> stream;
      if (stream.Query(subject.Unknown(), IID_IStream) != S_OK) break;
      for (const StreamOperation& operation : StreamOperations()) {
        OwnedReference<IStream> sink;
        ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, sink.Put()), S_OK);
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
  } kOperations[] = {{"Add", kMethod, "", 100000},  {"Mul", kMethod, "", 100000},
                     {"Div", kMethod, "", 100000},  {"Mod", kMethod, "", 100000},
                     {"GCD", kMethod, "", 3000},    {"ModInv", kMethod, "", 3000},
                     {"Cmp", kMethod, "", 100000},  {"ModExp", kMethod, "b3 ", 3000},
                     {"Value", kGet, "", 100000},   {"Hex", kGet, "", 100000},
                     {"Value", kPut, "", 100000},   {"Inc", kMethod, "", 100000}};
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

class HashStackTest : public WipingStackTest, public testing::WithParamInterface<const char*> {};

TEST_P(HashStackTest, HashMembersLeaveNoKeysOrData) {
  const ClassTableRow& hash = ClassNamed("HashObject");
  const std::string algorithm = GetParam();
  for (const size_t size : {size_t{24}, size_t{64}, size_t{200}}) {
    for (const bool as_text : {false, true}) {
      const Bytes key = Secret(77, size);
      Bytes given = key;
      if (as_text) std::transform(given.begin(), given.end(), given.begin(), TextByte);
      const Bytes data = Secret(78, 300);
      const VARIANT key_argument = as_text ? TextArgument(key) : BytesArgument(key);
      const VARIANT data_argument = BytesArgument(data);
      const VARIANT short_argument = BytesArgument(Secret(78, 20));
      {
        Subject subject(hash, State::kFresh);
        ASSERT_EQ(subject.Call("InitHash", kMethod, "t:" + algorithm), S_OK);
        WatchFor(given);
        if (as_text) WatchForText(given);
        WatchForPads(algorithm, given);
        WatchFor(data);
        EXPECT_EQ(CallPainted(subject, hash, "HashData", kMethod, {data_argument, NumberValue(-1)}),
                  S_OK);
        EXPECT_EQ(CallPainted(subject, hash, "Key", kPut, {key_argument}), S_OK);
        for (const VARIANT& argument : {short_argument, data_argument}) {
          EXPECT_EQ(CallPainted(subject, hash, "HashUpdate", kMethod, {argument, NumberValue(-1)}),
                    S_OK);
          EXPECT_EQ(CallPainted(subject, hash, "HashFinalize", kMethod, {}), S_OK);
          EXPECT_EQ(CallPainted(subject, hash, "Value", kGet, {}), S_OK);
          EXPECT_EQ(CallPainted(subject, hash, "Reset", kMethod, {}), S_OK);
        }
        EXPECT_EQ(CallPainted(subject, hash, "Key", kGet, {}), S_OK);
        EXPECT_EQ(CallPainted(subject, hash, "HashData", kMethod, {data_argument, NumberValue(-1)}),
                  S_OK);
        EXPECT_EQ(CallPainted(subject, hash, "ResetKey", kMethod, {}), S_OK);
        EXPECT_EQ(CallPainted(subject, hash, "Key", kPut, {key_argument}), S_OK);
        RunOnce("release", [&] { subject.Release(); });
      }
      StopWatchingForSecrets();
      values.clear();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Algorithms, HashStackTest, testing::Values("MD5", "SHA1", "SHA256"));

struct CipherKey {
  const char* algorithm;
  size_t size;
};

class CipherStackTest : public WipingStackTest, public testing::WithParamInterface<CipherKey> {};

TEST_P(CipherStackTest, CipherMembersLeaveNoKeysOrPlaintext) {
  const ClassTableRow& crypt = ClassNamed("SymmetricCryptObject");
  const bool aes = GetParam().algorithm[0] == 'A';
  const Bytes key = Secret(79, GetParam().size);
  const VARIANT key_argument = BytesArgument(key);
  VARIANT no = NumberValue(0);
  V_VT(&no) = VT_BOOL;
  for (const unsigned size : {16u, 48u, 64u, 128u, 160u, 256u, 512u, 1000u, 1024u, 4096u, 5008u, 20000u}) {
    const Bytes plain = Secret(80, size);
    const VARIANT plain_argument = BytesArgument(plain);
    const VARIANT rest_argument = BytesArgument(Secret(81, 7));
    Subject subject(crypt, State::kFresh);
    ASSERT_EQ(subject.Call("Init", kMethod, std::string("t:") + GetParam().algorithm), S_OK);
    WatchFor(key);
    WatchForSchedule(aes, key);
    WatchFor(Bytes(plain.begin(), plain.begin() + static_cast<int>(std::min(size, 512u))));
    WatchFor(Bytes(plain.end() - 16, plain.end()));
    EXPECT_EQ(CallPainted(subject, crypt, "Key", kPut, {key_argument}), S_OK);
    EXPECT_EQ(CallPainted(subject, crypt, "Encrypt", kMethod, {plain_argument, no}), S_OK);
    const VARIANT encrypted = values.back();
    EXPECT_EQ(CallPainted(subject, crypt, "Decrypt", kMethod, {encrypted, no}), S_OK);
    // The rest of a block waits.
    const unsigned whole = size - size % (aes ? 16u : 8u);
    EXPECT_TRUE(HoldsBytes(values.back(), Bytes(plain.begin(), plain.begin() + static_cast<int>(whole))));
    EXPECT_EQ(CallPainted(subject, crypt, "Encrypt", kMethod, {rest_argument, no}), S_OK);
    EXPECT_EQ(CallPainted(subject, crypt, "Encrypt", kMethod, {plain_argument, no}), S_OK);
    EXPECT_EQ(CallPainted(subject, crypt, "Key", kGet, {}), S_OK);
    EXPECT_EQ(CallPainted(subject, crypt, "Reset", kMethod, {NumberValue(0)}), S_OK);
    EXPECT_EQ(CallPainted(subject, crypt, "ResetKey", kMethod, {}), S_OK);
    EXPECT_EQ(CallPainted(subject, crypt, "Key", kPut, {key_argument}), S_OK);
    RunOnce("release", [&] { subject.Release(); });
    StopWatchingForSecrets();
  }
}

INSTANTIATE_TEST_SUITE_P(Keys, CipherStackTest,
                         testing::Values(CipherKey{"AES", 16}, CipherKey{"AES", 24},
                                         CipherKey{"AES", 32}, CipherKey{"DES", 8},
                                         CipherKey{"DES", 16}, CipherKey{"DES", 24}));

TEST_F(WipingStackTest, StreamsLeaveNothingOfWhatPasses) {
  for (const bool crypts : {true, false}) {
    const ClassTableRow& filter = ClassNamed(crypts ? "ToviStreamCrypt" : "ToviStreamDigest");
    const Bytes key = Secret(90, 32);
    const VARIANT key_argument = BytesArgument(key);
    const Bytes written = Secret(92, 3000);
    OwnedReference<IStream> target;
    OwnedReference<IStream> other;
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, target.Put()), S_OK);
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, other.Put()), S_OK);
    VARIANT stream;
    VariantInit(&stream);
    V_VT(&stream) = VT_UNKNOWN;
    stream.punkVal = target.Get();
    Bytes place(3000);
    Subject subject(filter, State::kFresh);
    const char* const algorithm = crypts ? "t:AES" : "t:SHA256";
    ASSERT_EQ(subject.Call("ReadAlgorithm", kPut, algorithm), S_OK);
    ASSERT_EQ(subject.Call("WriteAlgorithm", kPut, algorithm), S_OK);
    WatchFor(key);
    if (crypts) {
      WatchForSchedule(true, key);
    } else {
      WatchForPads("SHA256", key);
    }
    WatchFor(Bytes(written.begin(), written.begin() + 512));
    WatchFor(Bytes(written.end() - 512, written.end()));
    ASSERT_EQ(CallPainted(subject, filter, "Stream", kPutRef, {stream}), S_OK);
    ASSERT_EQ(CallPainted(subject, filter, "ReadKey", kPut, {key_argument}), S_OK);
    ASSERT_EQ(CallPainted(subject, filter, "WriteKey", kPut, {key_argument}), S_OK);
    OwnedReference<IStream> face;
    ASSERT_EQ(face.Query(subject.Unknown(), IID_IStream), S_OK);
    LARGE_INTEGER start;
    start.QuadPart = 0;
    HRESULT status = E_FAIL;
    ULONG moved = 0;
    RunOnce("Write", [&] { status = face->Write(written.data(), 2000, &moved); });
    EXPECT_EQ(status, S_OK);
    RunOnce("Write", [&] { status = face->Write(written.data() + 2000, 1000, &moved); });
    EXPECT_EQ(status, S_OK);
    EXPECT_EQ(CallPainted(subject, filter, "WriteFinalize", kMethod, {}), S_OK);
    ASSERT_EQ(target->Seek(start, STREAM_SEEK_SET, nullptr), S_OK);
    RunOnce("Read", [&] { status = face->Read(place.data(), 1008, &moved); });
    EXPECT_EQ(status, S_OK);
    ASSERT_EQ(target->Seek(start, STREAM_SEEK_SET, nullptr), S_OK);
    ULARGE_INTEGER count;
    count.QuadPart = 4000;
    RunOnce("CopyTo", [&] { status = face->CopyTo(other.Get(), count, nullptr, nullptr); });
    EXPECT_EQ(status, S_OK);
    EXPECT_EQ(CallPainted(subject, filter, "ReadFinalize", kMethod, {}), S_OK);
    EXPECT_EQ(CallPainted(subject, filter, "ReadResetKey", kMethod, {}), S_OK);
    face.Reset();
    RunOnce("release", [&] { subject.Release(); });
    // The filters passed on what they were given: that is what the search would have found.
    place.resize(3000);
    ASSERT_EQ(other->Seek(start, STREAM_SEEK_SET, nullptr), S_OK);
    ASSERT_EQ(other->Read(place.data(), 3000, &moved), S_OK);
    EXPECT_EQ(place, written);
    StopWatchingForSecrets();
  }
}

class RsaStackTest : public WipingStackTest, public testing::WithParamInterface<int> {};

TEST_P(RsaStackTest, RsaMembersLeaveNoPrivateNumbers) {
  const ClassTableRow& rsa = ClassNamed("RSACrypt");
  const PlannedChance chance;
  const std::string words = "i" + std::to_string(GetParam()) + " B-1";
  const RsaNumbers key = MakeRsaKey(words);
  const VARIANT message = BytesArgument(key.message);
  const VARIANT encrypted = BytesArgument(key.encrypted);
  const VARIANT p = BytesArgument(key.p);
  const VARIANT q = BytesArgument(key.q);
  const VARIANT d = BytesArgument(key.d);
  const VARIANT n = BytesArgument(key.n);
  VARIANT exact = NumberValue(-1);
  V_VT(&exact) = VT_BOOL;
  Subject subject(rsa, State::kFresh);
  WatchForRsaKey(key);
  PlannedChance::Restart();
  EXPECT_EQ(CallPainted(subject, rsa, "CreateRandKeys", kMethod, {NumberValue(GetParam()), exact}),
            S_OK);
  // The first use of each and a later one.
  for (int times = 0; times < 2; ++times) {
    EXPECT_EQ(CallPainted(subject, rsa, "DecryptPQ", kMethod, {encrypted}), S_OK);
    EXPECT_TRUE(HoldsBytes(values.back(), key.message));
    EXPECT_EQ(CallPainted(subject, rsa, "Decrypt", kMethod, {encrypted}), S_OK);
    EXPECT_TRUE(HoldsBytes(values.back(), key.message));
    EXPECT_EQ(CallPainted(subject, rsa, "Encrypt", kMethod, {message}), S_OK);
    EXPECT_TRUE(HoldsBytes(values.back(), key.encrypted));
    for (const char* const name : {"P", "Q", "SecretExp"}) {
      EXPECT_EQ(CallPainted(subject, rsa, name, kGet, {}), S_OK);
    }
    EXPECT_EQ(CallPainted(subject, rsa, "P", kPut, {q}), S_OK);
    EXPECT_EQ(CallPainted(subject, rsa, "Q", kPut, {p}), S_OK);
    EXPECT_EQ(CallPainted(subject, rsa, "SecretExp", kPut, {d}), S_OK);
    EXPECT_EQ(CallPainted(subject, rsa, "Modulus", kPut, {n}), S_OK);
  }
  EXPECT_EQ(CallPainted(subject, rsa, "CreateKeys", kMethod, {p, q}), S_OK);
  EXPECT_EQ(CallPainted(subject, rsa, "Reset", kMethod, {}), S_OK);
  EXPECT_EQ(CallPainted(subject, rsa, "CreateKeys", kMethod, {p, q}), S_OK);
  RunOnce("release", [&] { subject.Release(); });
}

INSTANTIATE_TEST_SUITE_P(Bytes, RsaStackTest, testing::Values(32, 64, 128, 256));

TEST_F(WipingStackTest, NumberMembersLeaveNoDigits) {
  const ClassTableRow& number = ClassNamed("PexBigNumber");
  const PlannedChance chance;
  for (const size_t size : {size_t{16}, size_t{40}, size_t{150}}) {
    Bytes secret = Secret(96, size);
    secret[0] |= 1;
    secret[size - 1] |= 1;
    const VARIANT argument = BytesArgument(secret);
    for (const Member& member : AllMembers()) {
      if (member.class_row != &number) continue;
      for (const bool as_operand : {false, true}) {
        const bool takes_value =
            member.ParameterCount() > 0 && member.row->parameters.rows[0].type.type == VT_VARIANT;
        if (as_operand && !takes_value) continue;
        Arguments others(ArgumentsFor(member, false));
        std::vector<VARIANT> arguments(others.Get(), others.Get() + others.Count());
        if (as_operand) arguments[0] = argument;
        Subject subject(number, State::kFresh);
        WatchForDigits(NumberOf(secret));
        if (!as_operand) {
          EXPECT_EQ(CallPainted(subject, number, "Binary", kPut, {argument}), S_OK);
        }
        PlannedChance::Restart();
        VARIANT result;
        RunOnce(member.Name(), [&] { subject.Call(*member.row, arguments.data(), &result); });
        if (V_VT(&result) == VT_DISPATCH) {
          RunOnce(member.Name() + ": release", [&] { result.pdispVal->Release(); });
        } else {
          VariantClear(&result);
        }
        RunOnce("release", [&] { subject.Release(); });
        StopWatchingForSecrets();
      }
    }
  }
}

// What the runtime does by itself, outside the module's members.
TEST_F(WipingStackTest, TheRuntimeLeavesNoCopies) {
  const Bytes content = Secret(103, 20000);
  OwnedReference<IStream> from;
  OwnedReference<IStream> to;
  ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, from.Put()), S_OK);
  ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, to.Put()), S_OK);
  ASSERT_EQ(from->Write(content.data(), 20000, nullptr), S_OK);
  WatchFor(Bytes(content.begin(), content.begin() + 512));
  WatchFor(Bytes(content.end() - 512, content.end()));
  LARGE_INTEGER start;
  start.QuadPart = 0;
  ASSERT_EQ(from->Seek(start, STREAM_SEEK_SET, nullptr), S_OK);
  ULARGE_INTEGER count;
  count.QuadPart = 30000;
  HRESULT status = E_FAIL;
  RunOnce("CopyTo", [&] { status = from->CopyTo(to.Get(), count, nullptr, nullptr); });
  EXPECT_EQ(status, S_OK);
  StopWatchingForSecrets();

  const TestValue text = TextValue(OLESTR("3141592653589793238"));
  WatchFor(BytesOf("3141592653589793238"));
  WatchForText(BytesOf("3141592653589793238"));
  Bytes digits = BytesOf("3141592653589793238");
  for (uint8_t& digit : digits) digit = static_cast<uint8_t>(digit - '0');
  WatchFor(digits);
  WatchFor(Reversed(digits));
  double number = 3141592653589793238.0;
  WatchForSecret(&number, sizeof number);
  const VARTYPE kTypes[] = {VT_R8, VT_DECIMAL, VT_CY, VT_I4};
  for (const VARTYPE type : kTypes) {
    VARIANT made;
    VariantInit(&made);
    Run("a text as " + std::to_string(type),
        [&] { (void)VariantChangeType(&made, &static_cast<const VARIANT&>(text), 0, type); });
    if (type == VT_I4 || type == VT_CY) continue;  // too large
    EXPECT_EQ(V_VT(&made), type);
    Run("back", [&] { status = VariantChangeType(&made, &made, 0, VT_BSTR); });
    EXPECT_EQ(status, S_OK);
    VariantClear(&made);
  }
}

// Kernels by themselves, with no member's frame around them: keys are kept in registers or read
// from the schedule, and those that go deep wipe what they spill.
TEST_F(WipingStackTest, CipherKernelsLeaveNoRoundKeys) {
  Bytes blocks = Secret(104, 16 * 700);
  Bytes out(blocks.size());
  for (const size_t size : {size_t{8}, size_t{16}, size_t{24}, size_t{32}}) {
    const Bytes key = Secret(105, size);
    const uint32_t length = static_cast<uint32_t>(size);
    if (size != 32) {
      DesSchedule schedule;
      WatchForSchedule(false, key);
      ASSERT_TRUE(ExpandDesKey(key.data(), length, &schedule));
      for (const KernelList<DesTransform>& list : {kDesEncryptKernels, kDesDecryptKernels}) {
        for (size_t i = 0; i < list.size(); ++i) {
          if ((list[i].needs & ~ProcessorFeatures()) != 0) continue;
          for (const uint32_t count : {1u, 8u, 64u, 512u, 700u}) {
            stack.Run([&] { list[i].function(schedule, blocks.data(), out.data(), count); });
            EXPECT_EQ(FindSecret(stack.Touched(), stack.TouchedBytes()), -1)
                << list[i].name << " " << size << " " << count;
            ++searched;
          }
        }
      }
      StopWatchingForSecrets();
    }
    if (size == 8) continue;
    AesSchedule schedule;
    WatchForSchedule(true, key);
    ASSERT_TRUE(ExpandAesKey(key.data(), length, &schedule));
    for (const KernelList<AesTransform>& list : {kAesEncryptKernels, kAesDecryptKernels}) {
      for (size_t i = 0; i < list.size(); ++i) {
        if ((list[i].needs & ~ProcessorFeatures()) != 0) continue;
        for (const uint32_t count : {1u, 4u, 5u, 8u, 16u, 31u, 32u, 700u}) {
          stack.Run([&] { list[i].function(schedule, blocks.data(), out.data(), count); });
          EXPECT_EQ(FindSecret(stack.Touched(), stack.TouchedBytes()), -1)
              << list[i].name << " " << size << " " << count;
          ++searched;
        }
      }
    }
    StopWatchingForSecrets();
  }
  EXPECT_GT(searched, 0);
}

// Engines wipe their own stack buffers, whoever calls them; the members' frames wipe what compilers
// keep there.
TEST_F(WipingStackTest, EnginesWipeTheirOwnBuffers) {
  const Bytes key = Secret(97, 64);
  const Bytes pads[] = {key, Masked(key, 0x36), Masked(key, 0x5C)};
  for (const Bytes& pad : pads) WatchFor(pad);
  const VARIANT key_argument = BytesArgument(key);
  HashEngine* made = nullptr;
  ASSERT_GE(CreateHashEngine(OLESTR("SHA256"), &made), 0);
  const std::unique_ptr<HashEngine> engine(made);
  HRESULT status = E_FAIL;
  stack.Run([&] { status = engine->SetKey(key_argument, 0); });
  EXPECT_EQ(status, S_OK);
  EXPECT_EQ(FindSecret(stack.Touched(), stack.TouchedBytes(), 64), -1) << "a padded key";
  StopWatchingForSecrets();

  // Operands, in the part of the working memory that lies on the stack.
  const BigInt a = NumberOf(Secret(98, 64));
  const BigInt b = NumberOf(Secret(99, 64));
  const BigInt m = NumberOf(Secret(100, 48));
  WatchForNumber(BytesOfNumber(a));
  WatchForNumber(BytesOfNumber(b));
  WatchForNumber(BytesOfNumber(a * b));
  BigInt result;
  const auto run = [&](HRESULT (*operation)(BigInt&, const BigInt&, const BigInt&) noexcept,
                       const BigInt& x, const BigInt& y) {
    stack.Run([&] { status = operation(result, x, y); });
    EXPECT_EQ(status, S_OK);
    EXPECT_EQ(FindSecret(stack.Touched(), stack.TouchedBytes(), 48), -1) << "a number";
  };
  run(mirolta::Multiply, a, b);
  run(mirolta::Remainder, a, m);
  run(mirolta::Gcd, a, b);
  stack.Run([&] { status = ModExp(result, a, BigInt(3), b); });
  EXPECT_EQ(FindSecret(stack.Touched(), stack.TouchedBytes(), 48), -1) << "a number to a power";
}

}  // namespace
}  // namespace mirolta::test
