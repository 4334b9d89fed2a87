// Calls of members, of the runtime, of kernels and of engines leave no secret on the stack or in
// registers.
#include <initializer_list>
#include <memory>

#include "aes_kernels.h"
#include "des_kernels.h"
#include "kernel_rows.h"
#include "memory_streams.h"
#include "mod_exp.h"
#include "system_rules.h"
#include "wiping_stack_fixture.h"

namespace mirolta::test {
namespace {

class HashStackTest : public WipingStackTest, public testing::WithParamInterface<const char*> {};

TEST_P(HashStackTest, HashMembersLeaveNoKeysOrData) {
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
        Subject subject(ClassNamed("HashObject"), State::kFresh);
        ASSERT_EQ(subject.Call("InitHash", kMethod, "t:" + algorithm), S_OK);
        WatchFor(given);
        if (as_text) WatchForText(given);
        WatchForDerived(algorithm, given);
        WatchFor(data);
        EXPECT_EQ(CallPainted(subject, "HashData", kMethod, {data_argument, NumberValue(-1)}),
                  S_OK);
        EXPECT_EQ(CallPainted(subject, "Key", kPut, {key_argument}), S_OK);
        for (const VARIANT& argument : {short_argument, data_argument}) {
          EXPECT_EQ(CallPainted(subject, "HashUpdate", kMethod, {argument, NumberValue(-1)}), S_OK);
          EXPECT_EQ(CallPainted(subject, "HashFinalize", kMethod, {}), S_OK);
          EXPECT_EQ(CallPainted(subject, "Value", kGet, {}), S_OK);
          EXPECT_EQ(CallPainted(subject, "Reset", kMethod, {}), S_OK);
        }
        EXPECT_EQ(CallPainted(subject, "Key", kGet, {}), S_OK);
        EXPECT_EQ(CallPainted(subject, "HashData", kMethod, {data_argument, NumberValue(-1)}),
                  S_OK);
        EXPECT_EQ(CallPainted(subject, "ResetKey", kMethod, {}), S_OK);
        EXPECT_EQ(CallPainted(subject, "Key", kPut, {key_argument}), S_OK);
        // Drops the engine with the key.
        const Arguments name("t:" + algorithm);
        EXPECT_EQ(CallPainted(subject, "InitHash", kMethod, {*name.Get()}), S_OK);
        EXPECT_EQ(CallPainted(subject, "Key", kPut, {key_argument}), S_OK);
        RunOnce("release", [&] { subject.Release(); });
      }
      StopWatchingForSecrets();
      values.clear();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Algorithms, HashStackTest, testing::Values("MD5", "SHA1", "SHA256"),
                         [](const testing::TestParamInfo<const char*>& row) {
                           return std::string(row.param);
                         });

struct CipherKey {
  const char* algorithm;
  size_t size;

  bool IsAes() const { return std::string_view(algorithm) == "AES"; }
};

class CipherStackTest : public WipingStackTest, public testing::WithParamInterface<CipherKey> {
 protected:
  // Runs every kernel of the lists on its own, and searches the stack for the schedule.
  template <typename Schedule, typename Transform>
  void SearchKernels(bool (*expand)(const uint8_t*, uint32_t, Schedule*),
                     std::initializer_list<KernelList<Transform>> lists,
                     std::initializer_list<uint32_t> block_counts) {
    const Bytes blocks = Secret(104, 16 * 700);
    Bytes out(blocks.size());
    const Bytes key = Secret(105, GetParam().size);
    WatchForDerived(GetParam().algorithm, key);
    Schedule schedule;
    ASSERT_TRUE(expand(key.data(), static_cast<uint32_t>(key.size()), &schedule));
    for (const KernelList<Transform>& list : lists) {
      ForEachKernel(list, [&](const Kernel<Transform>& kernel) {
        for (const uint32_t count : block_counts) {
          stack.Run([&] { kernel.function(schedule, blocks.data(), out.data(), count); });
          EXPECT_EQ(FindSecret(stack.Touched(), stack.TouchedBytes()), -1) << count << " blocks";
          ++searched;
        }
      });
    }
    EXPECT_GT(searched, 0);
  }
};

TEST_P(CipherStackTest, CipherMembersLeaveNoKeysOrPlaintext) {
  const Bytes key = Secret(79, GetParam().size);
  const VARIANT key_argument = BytesArgument(key);
  for (const unsigned size :
       {16u, 48u, 64u, 128u, 160u, 256u, 512u, 1000u, 1024u, 4096u, 5008u, 20000u}) {
    const Bytes plain = Secret(80, size);
    const VARIANT plain_argument = BytesArgument(plain);
    const VARIANT rest_argument = BytesArgument(Secret(81, 7));
    Subject subject(ClassNamed("SymmetricCryptObject"), State::kFresh);
    ASSERT_EQ(subject.Call("Init", kMethod, std::string("t:") + GetParam().algorithm), S_OK);
    WatchFor(key);
    WatchForDerived(GetParam().algorithm, key);
    WatchFor(Bytes(plain.begin(), plain.begin() + static_cast<int>(std::min(size, 512u))));
    WatchFor(Bytes(plain.end() - 16, plain.end()));
    EXPECT_EQ(CallPainted(subject, "Key", kPut, {key_argument}), S_OK);
    EXPECT_EQ(CallPainted(subject, "Encrypt", kMethod, {plain_argument, Switch(false)}), S_OK);
    const VARIANT encrypted = values.back();
    EXPECT_EQ(CallPainted(subject, "Decrypt", kMethod, {encrypted, Switch(false)}), S_OK);
    // The rest of a block waits.
    const unsigned whole = size - size % (GetParam().IsAes() ? 16u : 8u);
    EXPECT_TRUE(
        HoldsBytes(values.back(), Bytes(plain.begin(), plain.begin() + static_cast<int>(whole))));
    EXPECT_EQ(CallPainted(subject, "Encrypt", kMethod, {rest_argument, Switch(false)}), S_OK);
    EXPECT_EQ(CallPainted(subject, "Encrypt", kMethod, {plain_argument, Switch(false)}), S_OK);
    EXPECT_EQ(CallPainted(subject, "Key", kGet, {}), S_OK);
    EXPECT_EQ(CallPainted(subject, "Reset", kMethod, {NumberValue(0)}), S_OK);
    EXPECT_EQ(CallPainted(subject, "ResetKey", kMethod, {}), S_OK);
    EXPECT_EQ(CallPainted(subject, "Key", kPut, {key_argument}), S_OK);
    RunOnce("release", [&] { subject.Release(); });
    StopWatchingForSecrets();
  }
}

// With no member's frame around them: keys are kept in registers or read from the schedule, and
// kernels that go deep wipe what they spill.
TEST_P(CipherStackTest, CipherKernelsLeaveNoRoundKeys) {
  if (GetParam().IsAes()) {
    SearchKernels<AesSchedule, AesTransform>(ExpandAesKey, {kAesEncryptKernels, kAesDecryptKernels},
                                             {1, 4, 5, 8, 16, 31, 32, 700});
  } else {
    SearchKernels<DesSchedule, DesTransform>(ExpandDesKey, {kDesEncryptKernels, kDesDecryptKernels},
                                             {1, 8, 64, 512, 700});
  }
}

INSTANTIATE_TEST_SUITE_P(Keys, CipherStackTest,
                         testing::Values(CipherKey{"AES", 16}, CipherKey{"AES", 24},
                                         CipherKey{"AES", 32}, CipherKey{"DES", 8},
                                         CipherKey{"DES", 16}, CipherKey{"DES", 24}),
                         [](const testing::TestParamInfo<CipherKey>& row) {
                           return row.param.algorithm + std::to_string(8 * row.param.size);
                         });

TEST_F(WipingStackTest, StreamsLeaveNothingOfWhatPasses) {
  constexpr struct {
    const char* class_name;
    const char* algorithm;
  } kFilters[] = {{"ToviStreamCrypt", "AES"}, {"ToviStreamDigest", "SHA256"}};
  for (const auto& filter : kFilters) {
    const Bytes key = Secret(90, 32);
    const VARIANT key_argument = BytesArgument(key);
    const Bytes written = Secret(92, 3000);
    const OwnedReference<IStream> target = MemoryStream();
    const OwnedReference<IStream> other = MemoryStream();
    VARIANT stream;
    VariantInit(&stream);
    V_VT(&stream) = VT_UNKNOWN;
    stream.punkVal = target.Get();
    Bytes place(3000);
    Subject subject(ClassNamed(filter.class_name), State::kFresh);
    const std::string algorithm = std::string("t:") + filter.algorithm;
    ASSERT_EQ(subject.Call("ReadAlgorithm", kPut, algorithm), S_OK);
    ASSERT_EQ(subject.Call("WriteAlgorithm", kPut, algorithm), S_OK);
    WatchFor(key);
    WatchForDerived(filter.algorithm, key);
    WatchFor(Bytes(written.begin(), written.begin() + 512));
    WatchFor(Bytes(written.end() - 512, written.end()));
    ASSERT_EQ(CallPainted(subject, "Stream", kPutRef, {stream}), S_OK);
    ASSERT_EQ(CallPainted(subject, "ReadKey", kPut, {key_argument}), S_OK);
    ASSERT_EQ(CallPainted(subject, "WriteKey", kPut, {key_argument}), S_OK);
    OwnedReference<IStream> face;
    ASSERT_EQ(face.Query(subject.Unknown(), IID_IStream), S_OK);
    ULONG moved = 0;
    const auto operate = [&](const char* name, const std::function<HRESULT()>& operation) {
      HRESULT status = E_FAIL;
      RunOnce(name, [&] { status = operation(); });
      EXPECT_EQ(status, S_OK) << name;
    };
    operate("Write", [&] { return face->Write(written.data(), 2000, &moved); });
    operate("Write", [&] { return face->Write(written.data() + 2000, 1000, &moved); });
    EXPECT_EQ(CallPainted(subject, "WriteFinalize", kMethod, {}), S_OK);
    Rewind(target.Get());
    operate("Read", [&] { return face->Read(place.data(), 1008, &moved); });
    Rewind(target.Get());
    operate("CopyTo", [&] { return face->CopyTo(other.Get(), Large(4000), nullptr, nullptr); });
    EXPECT_EQ(CallPainted(subject, "ReadFinalize", kMethod, {}), S_OK);
    EXPECT_EQ(CallPainted(subject, "ReadResetKey", kMethod, {}), S_OK);
    face.Reset();
    RunOnce("release", [&] { subject.Release(); });
    // The filters passed on what they were given: that is what the search would have found.
    Rewind(other.Get());
    ASSERT_EQ(other->Read(place.data(), 3000, &moved), S_OK);
    EXPECT_EQ(place, written);
    StopWatchingForSecrets();
  }
}

class RsaStackTest : public WipingStackTest, public testing::WithParamInterface<int> {};

TEST_P(RsaStackTest, RsaMembersLeaveNoPrivateNumbers) {
  const PlannedChance chance;
  const std::string words = "i" + std::to_string(GetParam()) + " B-1";
  const RsaNumbers key = MakeRsaKey(words);
  const VARIANT message = BytesArgument(key.message);
  const VARIANT encrypted = BytesArgument(key.encrypted);
  const VARIANT p = BytesArgument(key.p);
  const VARIANT q = BytesArgument(key.q);
  const std::vector<RsaPut> puts = PutsOf(key);
  Subject subject(ClassNamed("RSACrypt"), State::kFresh);
  WatchForRsaKey(key);
  PlannedChance::Restart();
  EXPECT_EQ(
      CallPainted(subject, "CreateRandKeys", kMethod, {NumberValue(GetParam()), Switch(true)}),
      S_OK);
  // The first use of each and a later one.
  for (int times = 0; times < 2; ++times) {
    EXPECT_EQ(CallPainted(subject, "DecryptPQ", kMethod, {encrypted}), S_OK);
    EXPECT_TRUE(HoldsBytes(values.back(), key.message));
    EXPECT_EQ(CallPainted(subject, "Decrypt", kMethod, {encrypted}), S_OK);
    EXPECT_TRUE(HoldsBytes(values.back(), key.message));
    EXPECT_EQ(CallPainted(subject, "Encrypt", kMethod, {message}), S_OK);
    EXPECT_TRUE(HoldsBytes(values.back(), key.encrypted));
    for (const char* const name : {"P", "Q", "SecretExp"}) {
      EXPECT_EQ(CallPainted(subject, name, kGet, {}), S_OK);
    }
    for (const RsaPut& put : puts) {
      EXPECT_EQ(CallPainted(subject, put.property, kPut, {put.number}), S_OK);
    }
  }
  EXPECT_EQ(CallPainted(subject, "CreateKeys", kMethod, {p, q}), S_OK);
  EXPECT_EQ(CallPainted(subject, "Reset", kMethod, {}), S_OK);
  EXPECT_EQ(CallPainted(subject, "CreateKeys", kMethod, {p, q}), S_OK);
  RunOnce("release", [&] { subject.Release(); });
}

INSTANTIATE_TEST_SUITE_P(Bytes, RsaStackTest, testing::Values(32, 64, 128, 256),
                         testing::PrintToStringParamName());

TEST_F(WipingStackTest, NumberMembersLeaveNoDigits) {
  const PlannedChance chance;
  for (const size_t size : {size_t{16}, size_t{40}, size_t{150}}) {
    Bytes secret = Secret(96, size);
    secret[0] |= 1;
    secret[size - 1] |= 1;
    const VARIANT argument = BytesArgument(secret);
    ForEachNumberCall(
        argument, [&](const Member& member, bool as_operand, std::vector<VARIANT>& arguments) {
          Subject subject(*member.class_row, State::kFresh);
          WatchForDigits(NumberOf(secret));
          if (!as_operand) {
            EXPECT_EQ(CallPainted(subject, "Binary", kPut, {argument}), S_OK);
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
        });
  }
}

// What the runtime does by itself, outside the module's members.
TEST_F(WipingStackTest, TheRuntimeLeavesNoCopies) {
  if (!kWipesWhatItFrees) GTEST_SKIP() << "the system does not wipe its own copies";
  const Bytes content = Secret(103, 20000);
  const OwnedReference<IStream> from = MemoryStream();
  const OwnedReference<IStream> to = MemoryStream();
  ASSERT_EQ(from->Write(content.data(), 20000, nullptr), S_OK);
  WatchFor(Bytes(content.begin(), content.begin() + 512));
  WatchFor(Bytes(content.end() - 512, content.end()));
  Rewind(from.Get());
  HRESULT status = E_FAIL;
  RunOnce("CopyTo", [&] { status = from->CopyTo(to.Get(), Large(30000), nullptr, nullptr); });
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
