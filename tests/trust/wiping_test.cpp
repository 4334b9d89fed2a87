// Freed memory holds no secret: keys, HMAC pads, key schedules, private numbers, plaintext in
// transit. All memory of the process is searched when it is freed, the module's, the runtime's and
// the C library's.
#include <functional>

#include "fake_object.h"
#include "memory_streams.h"
#include "system_rules.h"
#include "used_memory.h"
#include "wiping_fixture.h"

namespace mirolta::test {
namespace {

TEST_F(WipingTest, TheWatchSeesEveryKindOfMemory) {
  const Bytes secret = Secret(1, 40);
  const auto seen = [&](const std::function<void()>& leave) {
    WatchFor(secret);
    StartWatchingForSecrets();
    leave();
    const long found = SecretsFreed();
    StopWatchingForSecrets();
    return found;
  };
  EXPECT_EQ(seen([&] {
              const Bytes copy(secret.begin() + 16, secret.begin() + 24);
              Used(copy.data());
            }),
            1);
  EXPECT_EQ(seen([&] { const TestValue array = BytesValue(secret); }), 1);
  // By itself the runtime clears arrays that it destroys.
  MiroltaKeepDestroyedArrays(false);
  EXPECT_EQ(seen([&] { const TestValue array = BytesValue(secret); }), kWipesWhatItFrees ? 0 : 1);
  MiroltaKeepDestroyedArrays(true);
  EXPECT_EQ(seen([&] {
              SysFreeString(SysAllocStringByteLen(reinterpret_cast<LPCSTR>(secret.data()), 40));
            }),
            1);
  EXPECT_EQ(seen([&] {
              uint8_t* const block = static_cast<uint8_t*>(malloc(64));
              std::copy(secret.begin(), secret.end(), block);
              void* const moved = realloc(block, 100000);
              __asm__ volatile("" : : "r"(moved) : "memory");
              free(moved);
            }) >= 1,
            true);
  EXPECT_EQ(seen([&] { const Bytes other = Secret(2, 40); }), 0);
}

// Sizes of moduli in bytes: powers with tables on the stack and in memory, of limbs and of digits.
class RsaWipingTest : public WipingTest, public testing::WithParamInterface<int> {};

TEST_P(RsaWipingTest, PrivateNumbersAreWiped) {
  const PlannedChance chance;
  const std::string words = "i" + std::to_string(GetParam()) + " B-1";
  // Equal random numbers give an equal key; its private numbers are read first.
  const RsaNumbers key = MakeRsaKey(words);
  const VARIANT plain = BytesArgument(key.message);
  const std::vector<RsaPut> puts = PutsOf(key);
  constexpr End kEnds[] = {
      {"release", "", kMethod, ""},
      {"reset", "Reset", kMethod, ""},
      {"other key", "CreateKeys", kMethod, "d4 d5"},
      {"refused key", "CreateRandKeys", kMethod, "i0 B0"},
      {"other numbers", "SecretExp", kPut, "b3"},
      {"too much", "Encrypt", kMethod, "b300"},
      {"refused data", "DecryptPQ", kMethod, "B-1"},
  };
  for (const End& end : kEnds) {
    {
      const Subject subject(ClassNamed("RSACrypt"), State::kFresh);
      WatchForRsaKey(key);
      StartWatchingForSecrets();
      PlannedChance::Restart();
      ASSERT_EQ(subject.Call("CreateRandKeys", kMethod, words), S_OK);
      ASSERT_EQ(Call(subject, "Encrypt", kMethod, {plain}), S_OK);
      const VARIANT encrypted = values.back();
      ASSERT_EQ(Call(subject, "Decrypt", kMethod, {encrypted}), S_OK);
      EXPECT_TRUE(HoldsBytes(values.back(), key.message));
      ASSERT_EQ(Call(subject, "DecryptPQ", kMethod, {encrypted}), S_OK);
      EXPECT_TRUE(HoldsBytes(values.back(), key.message));
      // Again with numbers that are put.
      for (const RsaPut& put : puts) {
        ASSERT_EQ(Call(subject, put.property, kPut, {put.number}), S_OK);
      }
      ASSERT_EQ(Call(subject, "DecryptPQ", kMethod, {encrypted}), S_OK);
      for (const char* const name : {"P", "Q", "SecretExp"}) {
        ASSERT_EQ(Call(subject, name, kGet, {}), S_OK);
      }
      end.On(subject);
    }
    ExpectClean(end.name);
    StopWatchingForSecrets();
  }
}

INSTANTIATE_TEST_SUITE_P(Bytes, RsaWipingTest, testing::Values(64, 128, 256),
                         testing::PrintToStringParamName());

// The residues of its start reveal the prime.
TEST_F(WipingTest, ResiduesOfThePrimeSearchAreWiped) {
  for (const size_t size : {size_t{20}, size_t{64}}) {
    const Bytes first = Secret(101, size);
    const Bytes second = Secret(102, size);
    const VARIANT first_argument = BytesArgument(first);
    const VARIANT second_argument = BytesArgument(second);
    const Subject subject(ClassNamed("RSACrypt"), State::kFresh);
    for (const Bytes& start : {first, second}) {
      const BigInt number = NumberOf(start);
      // Offsets that are tested together.
      const uint32_t window = std::max(static_cast<uint32_t>(number.BitLength()) * 4, 512u);
      WatchForResidues(number, window, 6);
    }
    StartWatchingForSecrets();
    ASSERT_EQ(Call(subject, "CreateKeys", kMethod, {first_argument, second_argument}), S_OK);
    ExpectClean(std::to_string(size));
    StopWatchingForSecrets();
  }
}

// The number of an object and of every operand, in bytes and in digits, through every member.
TEST_F(WipingTest, NumbersAndTheirDigitsAreWiped) {
  const ClassTableRow& number = ClassNamed("PexBigNumber");
  const PlannedChance chance;
  Bytes secret = Secret(96, 40);
  secret[0] |= 1;
  const VARIANT argument = BytesArgument(secret);
  Bytes digits[2];  // decimal and hexadecimal
  {
    const Subject subject(number, State::kFresh);
    ASSERT_EQ(Call(subject, "Binary", kPut, {argument}), S_OK);
    for (const bool hex : {false, true}) {
      ASSERT_EQ(Call(subject, hex ? "Hex" : "Value", kGet, {}), S_OK);
      const BSTR text = values.back()->bstrVal;
      for (UINT i = 0; i < SysStringLen(text); ++i) {
        digits[hex].push_back(static_cast<uint8_t>(text[i]));
      }
    }
  }
  ForEachNumberCall(
      argument, [&](const Member& member, bool as_operand, std::vector<VARIANT>& arguments) {
        {
          const Subject subject(number, State::kFresh);
          WatchForNumber(secret);
          for (const Bytes& text : digits) {
            WatchFor(text);
            WatchForText(text);
          }
          StartWatchingForSecrets();
          if (!as_operand) {
            ASSERT_EQ(Call(subject, "Binary", kPut, {argument}), S_OK);
          }
          PlannedChance::Restart();
          VARIANT result;
          const HRESULT status = subject.Call(*member.row, arguments.data(), &result);
          EXPECT_TRUE(SUCCEEDED(status) || status == E_OUTOFMEMORY) << std::hex << status;
          // New objects hold the number too; text and bytes are the caller's.
          if (V_VT(&result) == VT_DISPATCH) {
            VariantClear(&result);
          } else {
            values.emplace_back();
            *&values.back() = result;
          }
        }
        ExpectClean(member.Name());
        StopWatchingForSecrets();
      });
}

// The runtime's own memory: what streams held before they grew or were freed, and values during
// conversion to another type.
TEST_F(WipingTest, CopiesOfTheRuntimeAreWiped) {
  if (!kWipesWhatItFrees) GTEST_SKIP() << "the system does not wipe its own copies";
  MiroltaKeepDestroyedArrays(false);
  const Bytes content = Secret(103, 3000);
  WatchFor(Bytes(content.begin(), content.begin() + 512));
  WatchFor(Bytes(content.begin() + 1000, content.begin() + 1512));
  StartWatchingForSecrets();
  {
    const OwnedReference<IStream> stream = MemoryStream();
    for (unsigned at = 0; at < 3000; at += 300) {
      ASSERT_EQ(stream->Write(content.data() + at, 300, nullptr), S_OK);
    }
    ASSERT_EQ(stream->SetSize(Large(100)), S_OK);
  }
  ExpectClean("a stream that grew, shrank and went");
  StopWatchingForSecrets();

  FakeObject object(TextValue(OLESTR("3141592653589793238")));
  const VARTYPE kTypes[] = {VT_R8, VT_DECIMAL, VT_BSTR};
  for (const VARTYPE type : kTypes) {
    const TestValue of_object = ObjectValue(&object);
    WatchForText(BytesOf("3141592653589793238"));
    StartWatchingForSecrets();
    {
      TestValue made;
      const VARIANT& from = of_object;
      ASSERT_EQ(VariantChangeType(&made, &from, 0, type), S_OK);
    }
    ExpectClean("a text that was read from an object, as " + std::to_string(type));
    StopWatchingForSecrets();
  }
  // In the mode of the other tests the runtime does not clear what it frees.
  MiroltaKeepDestroyedArrays(true);
}

// The runtime wipes what it frees, but for ciphertext that is not used as a key or changed.
TEST_F(WipingTest, OnlyCiphertextIsFreedAsItIs) {
  if (!kWipesWhatItFrees) GTEST_SKIP() << "the system does not wipe its own copies";
  MiroltaKeepDestroyedArrays(false);
  const Bytes key = Secret(104, 16);
  const Bytes data = Secret(105, 160);
  const Subject cipher(ClassNamed("SymmetricCryptObject"), State::kFresh);
  ASSERT_EQ(cipher.Call("Init", kMethod, "t:AES"), S_OK);
  ASSERT_EQ(Call(cipher, "Key", kPut, {BytesArgument(key)}), S_OK);
  // How often a result of the member is found, with its first element changed, when it is destroyed.
  const auto seen = [&](const char* member, const std::function<void(SAFEARRAY*)>& use) {
    EXPECT_EQ(Call(cipher, member, kMethod, {BytesArgument(data), Switch(false)}), S_OK);
    const Bytes result = BytesOfArray(values.back());
    WatchFor(Bytes(result.begin() + 1, result.end()));
    StartWatchingForSecrets();
    use(V_ARRAY(&*&values.back()));
    values.pop_back();
    const long found = SecretsFreed();
    StopWatchingForSecrets();
    return found;
  };
  const auto nothing = [](SAFEARRAY*) {};
  EXPECT_EQ(seen("Encrypt", nothing), 1);
  EXPECT_EQ(seen("Decrypt", nothing), 0);
  EXPECT_EQ(seen("Encrypt",
                 [](SAFEARRAY* array) {
                   LONG index = 0;
                   BYTE element = 1;
                   EXPECT_EQ(SafeArrayPutElement(array, &index, &element), S_OK);
                 }),
            0);
  EXPECT_EQ(seen("Encrypt",
                 [](SAFEARRAY* array) {
                   SAFEARRAY* copy = nullptr;
                   EXPECT_EQ(SafeArrayCopy(array, &copy), S_OK);
                   EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
                 }),
            0);
  MiroltaKeepDestroyedArrays(true);
}

// Nor does a call that finds no memory leave secrets behind.
TEST_F(WipingTest, CallsThatFindNoMemoryWipeTheirCopies) {
  const Bytes key = Secret(97, 16);
  const Bytes plain = Secret(98, 400);
  struct Case {
    const char* class_name;
    const char* before;
    const char* algorithm;
    const char* member;
    INVOKEKIND kind;
  };
  constexpr Case kCases[] = {
      {"HashObject", "InitHash", "t:SHA256", "Key", kPut},
      {"SymmetricCryptObject", "Init", "t:AES", "Key", kPut},
      {"SymmetricCryptObject", "Init", "t:AES", "Encrypt", kMethod},
      {"PexBigNumber", "", "", "Mul", kMethod},
      {"PexBigNumber", "", "", "Value", kPut},
      {"RSACrypt", "CreateKeys", "d5 d6", "P", kPut},
      {"RSACrypt", "CreateKeys", "d5 d6", "Decrypt", kMethod},
  };
  for (const Case& one : kCases) {
    const ClassTableRow& class_row = ClassNamed(one.class_name);
    for (LONG n = 0; n < 80; ++n) {
      const bool keyed = std::string(one.member) == "Key";
      // Each allocation with a value by itself and with one that is read from an object. On its way
      // from an object to a text the value is in the platform's hands, which clears its own arrays.
      const bool by_value = n % 2 == 0;
      if (keyed && !by_value && !kWipesWhatItFrees) continue;
      MiroltaKeepDestroyedArrays(by_value || !keyed);
      FakeObject object(BytesValue(keyed ? key : plain));
      const TestValue by_object = ObjectValue(&object);
      std::vector<VARIANT> arguments = {by_value ? BytesArgument(keyed ? key : plain) : by_object};
      if (std::string(one.member) == "Encrypt") {
        arguments.push_back(Switch(false));
      }
      {
        const Subject subject(class_row, State::kFresh);
        if (one.before[0] != 0) {
          ASSERT_EQ(subject.Call(one.before, kMethod, one.algorithm), S_OK);
        }
        WatchFor(key);
        WatchForNumber(plain);
        StartWatchingForSecrets();
        if (arguments.size() == 2) {
          ASSERT_EQ(Call(subject, "Key", kPut, {BytesArgument(key)}), S_OK);
        }
        MiroltaFailAllocationAfter(n / 2);
        Call(subject, one.member, one.kind, arguments);
        MiroltaFailAllocationAfter(-1);
      }
      ExpectClean(std::string(one.class_name) + "." + one.member);
      StopWatchingForSecrets();
      values.clear();
    }
  }
}

}  // namespace
}  // namespace mirolta::test
