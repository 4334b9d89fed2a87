// Freed memory holds no secret: keys, HMAC pads, key schedules, private numbers, plaintext in
// transit. All memory of the process is searched when it is freed, the module's, the runtime's and
// the C library's.
#include <functional>

#include "fake_object.h"
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
  EXPECT_EQ(seen([&] { const TestValue array = BytesValue(secret); }), 0);
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

// Calls after which an object must hold no secret.
struct End {
  const char* name;
  const char* member;  // empty: release only
  INVOKEKIND kind;
  const char* words;
};

// How a key is handed over.
struct KeyForm {
  const char* name;
  enum { kArray, kReference, kText, kObject } value;
  const char* code_page;  // for texts
  bool has_units_of_16_bits = false;
};
constexpr KeyForm kKeyForms[] = {
    {"Array", KeyForm::kArray, "i65001"},
    {"ArrayByReference", KeyForm::kReference, "i65001"},
    {"TextInTheSystemsCharacterSet", KeyForm::kText, "i0"},
    {"TextInUtf16", KeyForm::kText, "i-1", true},
    {"TextInUtf8", KeyForm::kText, "i65001"},
    {"TextOfAnObject", KeyForm::kObject, "i65001"},
};

class KeyWipingTest : public WipingTest, public testing::WithParamInterface<KeyForm> {
 protected:
  // A key's argument in the form, and the bytes that the object makes of it.
  struct GivenKey {
    VARIANT argument;
    Bytes bytes;
  };
  GivenKey Give(const Bytes& key, FakeObject* object) {
    const KeyForm& form = GetParam();
    if (form.value == KeyForm::kArray) return {BytesArgument(key), key};
    if (form.value == KeyForm::kReference) {
      BytesArgument(key);
      reference_ = values.back()->parray;
      return {ReferenceTo(VT_ARRAY | VT_UI1, &reference_), key};
    }
    GivenKey given = {TextArgument(key), {}};
    for (const uint8_t byte : key) {
      given.bytes.push_back(TextByte(byte));
      if (form.has_units_of_16_bits) given.bytes.push_back(0);
    }
    if (form.value == KeyForm::kObject) {
      VariantCopy(&object->value, &values.back());
      TestValue value(VT_DISPATCH);
      value->pdispVal = object;
      ++object->references;
      given.argument = Keep(std::move(value));
    }
    return given;
  }
  static void WatchForKey(const GivenKey& key) {
    WatchFor(key.bytes);
    const bool is_text = GetParam().value == KeyForm::kText || GetParam().value == KeyForm::kObject;
    if (is_text && !GetParam().has_units_of_16_bits) WatchForText(key.bytes);
  }

 private:
  SAFEARRAY* reference_ = nullptr;
};

TEST_P(KeyWipingTest, HashKeysAndTheirPadsAreWiped) {
  const ClassTableRow& hash = ClassNamed("HashObject");
  constexpr End kEnds[] = {
      {"release", "", kMethod, ""},
      {"reset key", "ResetKey", kMethod, ""},
      {"reset", "Reset", kMethod, ""},
      {"re-key", "Key", kPut, "b20"},
      {"short", "Key", kPut, "b0"},
      {"refused", "Key", kPut, "m"},
      {"again", "InitHash", kMethod, "t:SHA256"},
      {"unknown", "InitHash", kMethod, "t:none"},
      {"finalize", "HashFinalize", kMethod, ""},
  };
  for (const char* const algorithm : {"MD5", "SHA1", "SHA256"}) {
    for (const size_t size : {size_t{24}, size_t{200}}) {
      for (const End& end : kEnds) {
        FakeObject object;
        const Bytes key = Secret(77, size);
        const GivenKey given = Give(key, &object);
        const Bytes data = Secret(78, 100);
        const VARIANT data_argument = BytesArgument(data);
        {
          const Subject subject(hash, State::kFresh);
          ASSERT_EQ(subject.Call("InitHash", kMethod, std::string("t:") + algorithm), S_OK);
          ASSERT_EQ(subject.Call("codePage", kPut, GetParam().code_page), S_OK);
          WatchForKey(given);
          WatchForPads(algorithm, given.bytes);
          WatchFor(data);
          StartWatchingForSecrets();
          ASSERT_EQ(Call(subject, hash, "Key", kPut, {given.argument}), S_OK);
          ASSERT_EQ(Call(subject, hash, "HashUpdate", kMethod, {data_argument, NumberValue(-1)}),
                    S_OK);
          Call(subject, hash, "Key", kGet, {});
          if (end.member[0] != 0) subject.Call(end.member, end.kind, end.words);
        }
        ExpectClean(std::string(algorithm) + " " + end.name);
        StopWatchingForSecrets();
        values.clear();
      }
    }
  }
}

TEST_P(KeyWipingTest, CipherKeysSchedulesAndPlaintextAreWiped) {
  const ClassTableRow& crypt = ClassNamed("SymmetricCryptObject");
  constexpr End kEnds[] = {
      {"release", "", kMethod, ""},
      {"reset key", "ResetKey", kMethod, ""},
      {"reset", "Reset", kMethod, "i0"},
      {"re-key", "Key", kPut, "b16"},
      {"wrong length", "Key", kPut, "b5"},
      {"refused", "Key", kPut, "m"},
      {"again", "Init", kMethod, "t:AES"},
      {"unknown", "Init", kMethod, "t:none"},
      {"too much", "Encrypt", kMethod, "b1048833 B-1"},
      {"refused data", "Encrypt", kMethod, "m B-1"},
  };
  for (const char* const algorithm : {"AES", "DES"}) {
    for (const End& end : kEnds) {
      FakeObject object;
      // A key of UTF-16 units is twice as long.
      const Bytes key =
          Secret(79, GetParam().has_units_of_16_bits ? 8 : (algorithm[0] == 'A' ? 16 : 24));
      if (GetParam().has_units_of_16_bits && algorithm[0] == 'D') continue;
      const GivenKey given = Give(key, &object);
      const Bytes plain = Secret(80, 15);
      const VARIANT plain_argument = BytesArgument(plain);
      const VARIANT more_argument = BytesArgument(Secret(81, 3000));
      {
        const Subject subject(crypt, State::kFresh);
        ASSERT_EQ(subject.Call("Init", kMethod, std::string("t:") + algorithm), S_OK);
        ASSERT_EQ(subject.Call("codePage", kPut, GetParam().code_page), S_OK);
        WatchForKey(given);
        WatchFor(plain);
        WatchFor(Secret(81, 512));
        WatchForSchedule(algorithm[0] == 'A', given.bytes);
        StartWatchingForSecrets();
        ASSERT_EQ(Call(subject, crypt, "Key", kPut, {given.argument}), S_OK) << algorithm;
        VARIANT no = NumberValue(0);
        V_VT(&no) = VT_BOOL;
        // The queues grow and move, and hold a piece of a block at the end.
        ASSERT_EQ(Call(subject, crypt, "Encrypt", kMethod, {more_argument, no}), S_OK);
        ASSERT_EQ(Call(subject, crypt, "Encrypt", kMethod, {plain_argument, no}), S_OK);
        ASSERT_EQ(Call(subject, crypt, "Decrypt", kMethod, {plain_argument, no}), S_OK);
        if (end.member[0] != 0) subject.Call(end.member, end.kind, end.words);
      }
      ExpectClean(std::string(algorithm) + " " + end.name);
      StopWatchingForSecrets();
      values.clear();
    }
  }
}

TEST_P(KeyWipingTest, StreamKeysAndWhatPassesAreWiped) {
  for (const bool crypts : {true, false}) {
    const ClassTableRow& filter = ClassNamed(crypts ? "ToviStreamCrypt" : "ToviStreamDigest");
    for (const char* const end : {"", "ReadResetKey", "ReadReset", "ReadFinalize"}) {
      FakeObject object;
      const Bytes key = Secret(90, GetParam().has_units_of_16_bits ? 8 : 16);
      const GivenKey given = Give(key, &object);
      const Bytes read = Secret(91, 300);
      const Bytes written = Secret(92, 300);
      // Its room is there from the start: what streams of the runtime hold is their owner's.
      OwnedReference<IStream> target;
      ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, target.Put()), S_OK);
      ULARGE_INTEGER room;
      room.QuadPart = 10000;
      ASSERT_EQ(target->SetSize(room), S_OK);
      ASSERT_EQ(target->Write(read.data(), 300, nullptr), S_OK);
      LARGE_INTEGER start;
      start.QuadPart = 0;
      OwnedReference<IStream> other;
      ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, other.Put()), S_OK);
      ASSERT_EQ(other->SetSize(room), S_OK);
      VARIANT stream;
      VariantInit(&stream);
      V_VT(&stream) = VT_UNKNOWN;
      stream.punkVal = target.Get();
      uint8_t place[512];
      {
        const Subject subject(filter, State::kFresh);
        ASSERT_EQ(subject.Call("codePage", kPut, GetParam().code_page), S_OK);
        const char* const algorithm = crypts ? "t:AES" : "t:SHA1";
        ASSERT_EQ(subject.Call("ReadAlgorithm", kPut, algorithm), S_OK);
        ASSERT_EQ(subject.Call("WriteAlgorithm", kPut, algorithm), S_OK);
        WatchForKey(given);
        if (crypts) {
          WatchForSchedule(true, given.bytes);
        } else {
          WatchForPads("SHA1", given.bytes);
        }
        WatchFor(read);
        WatchFor(written);
        StartWatchingForSecrets();
        ASSERT_EQ(Call(subject, filter, "Stream", kPutRef, {stream}), S_OK);
        ASSERT_EQ(Call(subject, filter, "ReadKey", kPut, {given.argument}), S_OK);
        ASSERT_EQ(Call(subject, filter, "WriteKey", kPut, {given.argument}), S_OK);
        if (crypts) {
          ASSERT_EQ(subject.Call("ReadDecrypt", kPut, "B0"), S_OK);
        }
        OwnedReference<IStream> face;
        ASSERT_EQ(face.Query(subject.Unknown(), IID_IStream), S_OK);
        ULONG moved = 0;
        ASSERT_EQ(target->Seek(start, STREAM_SEEK_SET, nullptr), S_OK);
        EXPECT_EQ(face->Read(place, 100, &moved), S_OK);
        ULARGE_INTEGER count;
        count.QuadPart = 105;
        EXPECT_EQ(face->CopyTo(other.Get(), count, nullptr, nullptr), S_OK);
        EXPECT_EQ(face->Read(place, 61, &moved), S_OK);
        moved = 1;
        EXPECT_EQ(face->Write(written.data(), 299, &moved), S_OK);
        if (end[0] != 0) {
          EXPECT_EQ(subject.Call(end, kMethod, ""), S_OK);
        }
      }
      ExpectClean((crypts ? "crypt " : "digest ") + std::string(end));
      StopWatchingForSecrets();
      values.clear();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Forms, KeyWipingTest, testing::ValuesIn(kKeyForms),
                         [](const testing::TestParamInfo<KeyForm>& one) {
                           return std::string(one.param.name);
                         });

// Sizes of moduli in bytes: powers with tables on the stack and in memory, of limbs and of digits.
class RsaWipingTest : public WipingTest, public testing::WithParamInterface<int> {};

TEST_P(RsaWipingTest, PrivateNumbersAreWiped) {
  const ClassTableRow& rsa = ClassNamed("RSACrypt");
  const PlannedChance chance;
  const std::string words = "i" + std::to_string(GetParam()) + " B-1";
  // Equal random numbers give an equal key; its private numbers are read first.
  const RsaNumbers key = MakeRsaKey(words);
  const auto& [p, q, d, n, message, known] = key;
  const VARIANT plain = BytesArgument(message);
  const VARIANT p_argument = BytesArgument(p);
  const VARIANT q_argument = BytesArgument(q);
  const VARIANT d_argument = BytesArgument(d);
  const VARIANT n_argument = BytesArgument(n);
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
      const Subject subject(rsa, State::kFresh);
      WatchForRsaKey(key);
      StartWatchingForSecrets();
      PlannedChance::Restart();
      ASSERT_EQ(subject.Call("CreateRandKeys", kMethod, words), S_OK);
      ASSERT_EQ(Call(subject, rsa, "Encrypt", kMethod, {plain}), S_OK);
      const VARIANT encrypted = values.back();
      ASSERT_EQ(Call(subject, rsa, "Decrypt", kMethod, {encrypted}), S_OK);
      EXPECT_TRUE(HoldsBytes(values.back(), message));
      ASSERT_EQ(Call(subject, rsa, "DecryptPQ", kMethod, {encrypted}), S_OK);
      EXPECT_TRUE(HoldsBytes(values.back(), message));
      // Again with numbers that are put.
      ASSERT_EQ(Call(subject, rsa, "P", kPut, {q_argument}), S_OK);
      ASSERT_EQ(Call(subject, rsa, "Q", kPut, {p_argument}), S_OK);
      ASSERT_EQ(Call(subject, rsa, "SecretExp", kPut, {d_argument}), S_OK);
      ASSERT_EQ(Call(subject, rsa, "Modulus", kPut, {n_argument}), S_OK);
      ASSERT_EQ(Call(subject, rsa, "DecryptPQ", kMethod, {encrypted}), S_OK);
      for (const char* const name : {"P", "Q", "SecretExp"}) {
        ASSERT_EQ(Call(subject, rsa, name, kGet, {}), S_OK);
      }
      if (end.member[0] != 0) subject.Call(end.member, end.kind, end.words);
    }
    ExpectClean(end.name);
    StopWatchingForSecrets();
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, RsaWipingTest, testing::Values(64, 128, 256));

// The residues of its start reveal the prime.
TEST_F(WipingTest, ResiduesOfThePrimeSearchAreWiped) {
  const ClassTableRow& rsa = ClassNamed("RSACrypt");
  for (const size_t size : {size_t{20}, size_t{64}}) {
    const Bytes first = Secret(101, size);
    const Bytes second = Secret(102, size);
    const VARIANT first_argument = BytesArgument(first);
    const VARIANT second_argument = BytesArgument(second);
    const Subject subject(rsa, State::kFresh);
    for (const Bytes& start : {first, second}) {
      const BigInt number = NumberOf(start);
      // Offsets that are tested together.
      const uint32_t window = std::max(static_cast<uint32_t>(number.BitLength()) * 4, 512u);
      WatchForResidues(number, window, 6);
    }
    StartWatchingForSecrets();
    ASSERT_EQ(Call(subject, rsa, "CreateKeys", kMethod, {first_argument, second_argument}), S_OK);
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
    ASSERT_EQ(Call(subject, number, "Binary", kPut, {argument}), S_OK);
    for (const bool hex : {false, true}) {
      ASSERT_EQ(Call(subject, number, hex ? "Hex" : "Value", kGet, {}), S_OK);
      const BSTR text = values.back()->bstrVal;
      for (UINT i = 0; i < SysStringLen(text); ++i) {
        digits[hex].push_back(static_cast<uint8_t>(text[i]));
      }
    }
  }
  for (const Member& member : AllMembers()) {
    if (member.class_row != &number) continue;
    for (const bool as_operand : {false, true}) {
      const bool takes_value =
          member.ParameterCount() > 0 && member.row->parameters.rows[0].type.type == VT_VARIANT;
      if (as_operand && !takes_value) continue;
      Arguments others(ArgumentsFor(member, false));
      std::vector<VARIANT> arguments(others.Get(), others.Get() + others.Count());
      if (as_operand) arguments[0] = argument;
      {
        const Subject subject(number, State::kFresh);
        WatchForNumber(secret);
        for (const Bytes& text : digits) {
          WatchFor(text);
          WatchForText(text);
        }
        StartWatchingForSecrets();
        if (!as_operand) {
          ASSERT_EQ(Call(subject, number, "Binary", kPut, {argument}), S_OK);
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
    }
  }
}

// The runtime's own memory: what streams held before they grew or were freed, and values during
// conversion to another type.
TEST_F(WipingTest, CopiesOfTheRuntimeAreWiped) {
  MiroltaKeepDestroyedArrays(false);
  const Bytes content = Secret(103, 3000);
  WatchFor(Bytes(content.begin(), content.begin() + 512));
  WatchFor(Bytes(content.begin() + 1000, content.begin() + 1512));
  StartWatchingForSecrets();
  {
    OwnedReference<IStream> stream;
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
    for (unsigned at = 0; at < 3000; at += 300) {
      ASSERT_EQ(stream->Write(content.data() + at, 300, nullptr), S_OK);
    }
    ULARGE_INTEGER size;
    size.QuadPart = 100;
    ASSERT_EQ(stream->SetSize(size), S_OK);
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
      MiroltaKeepDestroyedArrays(by_value || !keyed);
      FakeObject object(BytesValue(keyed ? key : plain));
      VARIANT by_object;
      VariantInit(&by_object);
      V_VT(&by_object) = VT_DISPATCH;
      by_object.pdispVal = &object;
      std::vector<VARIANT> arguments = {by_value ? BytesArgument(keyed ? key : plain) : by_object};
      if (std::string(one.member) == "Encrypt") {
        arguments.push_back(NumberValue(0));
        V_VT(&arguments[1]) = VT_BOOL;
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
          ASSERT_EQ(Call(subject, class_row, "Key", kPut, {BytesArgument(key)}), S_OK);
        }
        MiroltaFailAllocationAfter(n / 2);
        Call(subject, class_row, one.member, one.kind, arguments);
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
