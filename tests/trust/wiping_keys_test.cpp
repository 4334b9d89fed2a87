// Keys in every form that they are given in, what is derived from them, and what passes while they
// are set: freed memory holds none of it (see wiping_test.cpp).
#include "fake_object.h"
#include "memory_streams.h"
#include "system_rules.h"
#include "wiping_fixture.h"

namespace mirolta::test {
namespace {

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
    const bool is_text = GetParam().value == KeyForm::kText ||
                         (GetParam().value == KeyForm::kObject && kWipesWhatItFrees);
    if (is_text && !GetParam().has_units_of_16_bits) WatchForText(key.bytes);
  }

 private:
  SAFEARRAY* reference_ = nullptr;
};

TEST_P(KeyWipingTest, HashKeysAndTheirPadsAreWiped) {
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
          const Subject subject(ClassNamed("HashObject"), State::kFresh);
          ASSERT_EQ(subject.Call("InitHash", kMethod, std::string("t:") + algorithm), S_OK);
          ASSERT_EQ(subject.Call("codePage", kPut, GetParam().code_page), S_OK);
          WatchForKey(given);
          WatchForDerived(algorithm, given.bytes);
          WatchFor(data);
          StartWatchingForSecrets();
          ASSERT_EQ(Call(subject, "Key", kPut, {given.argument}), S_OK);
          ASSERT_EQ(Call(subject, "HashUpdate", kMethod, {data_argument, NumberValue(-1)}), S_OK);
          Call(subject, "Key", kGet, {});
          end.On(subject);
        }
        ExpectClean(std::string(algorithm) + " " + end.name);
        StopWatchingForSecrets();
        values.clear();
      }
    }
  }
}

TEST_P(KeyWipingTest, CipherKeysSchedulesAndPlaintextAreWiped) {
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
        const Subject subject(ClassNamed("SymmetricCryptObject"), State::kFresh);
        ASSERT_EQ(subject.Call("Init", kMethod, std::string("t:") + algorithm), S_OK);
        ASSERT_EQ(subject.Call("codePage", kPut, GetParam().code_page), S_OK);
        WatchForKey(given);
        WatchFor(plain);
        WatchFor(Secret(81, 512));
        WatchForDerived(algorithm, given.bytes);
        StartWatchingForSecrets();
        ASSERT_EQ(Call(subject, "Key", kPut, {given.argument}), S_OK) << algorithm;
        // The queues grow and move, and hold a piece of a block at the end.
        ASSERT_EQ(Call(subject, "Encrypt", kMethod, {more_argument, Switch(false)}), S_OK);
        ASSERT_EQ(Call(subject, "Encrypt", kMethod, {plain_argument, Switch(false)}), S_OK);
        ASSERT_EQ(Call(subject, "Decrypt", kMethod, {plain_argument, Switch(false)}), S_OK);
        end.On(subject);
      }
      ExpectClean(std::string(algorithm) + " " + end.name);
      StopWatchingForSecrets();
      values.clear();
    }
  }
}

TEST_P(KeyWipingTest, StreamKeysAndWhatPassesAreWiped) {
  constexpr struct {
    const char* class_name;
    const char* algorithm;
  } kFilters[] = {{"ToviStreamCrypt", "AES"}, {"ToviStreamDigest", "SHA1"}};
  for (const auto& filter : kFilters) {
    const std::string algorithm = std::string("t:") + filter.algorithm;
    for (const char* const end : {"", "ReadResetKey", "ReadReset", "ReadFinalize"}) {
      FakeObject object;
      const Bytes key = Secret(90, GetParam().has_units_of_16_bits ? 8 : 16);
      const GivenKey given = Give(key, &object);
      const Bytes read = Secret(91, 300);
      const Bytes written = Secret(92, 300);
      // Its room is there from the start: what streams of the runtime hold is their owner's.
      const OwnedReference<IStream> target = MemoryStream();
      ASSERT_EQ(target->SetSize(Large(10000)), S_OK);
      ASSERT_EQ(target->Write(read.data(), 300, nullptr), S_OK);
      const OwnedReference<IStream> other = MemoryStream();
      ASSERT_EQ(other->SetSize(Large(10000)), S_OK);
      VARIANT stream;
      VariantInit(&stream);
      V_VT(&stream) = VT_UNKNOWN;
      stream.punkVal = target.Get();
      uint8_t place[512];
      {
        const Subject subject(ClassNamed(filter.class_name), State::kFresh);
        ASSERT_EQ(subject.Call("codePage", kPut, GetParam().code_page), S_OK);
        ASSERT_EQ(subject.Call("ReadAlgorithm", kPut, algorithm), S_OK);
        ASSERT_EQ(subject.Call("WriteAlgorithm", kPut, algorithm), S_OK);
        WatchForKey(given);
        WatchForDerived(filter.algorithm, given.bytes);
        WatchFor(read);
        WatchFor(written);
        StartWatchingForSecrets();
        ASSERT_EQ(Call(subject, "Stream", kPutRef, {stream}), S_OK);
        ASSERT_EQ(Call(subject, "ReadKey", kPut, {given.argument}), S_OK);
        ASSERT_EQ(Call(subject, "WriteKey", kPut, {given.argument}), S_OK);
        if (FindMember(subject.Class(), "ReadDecrypt", kPut) != nullptr) {
          ASSERT_EQ(subject.Call("ReadDecrypt", kPut, "B0"), S_OK);
        }
        OwnedReference<IStream> face;
        ASSERT_EQ(face.Query(subject.Unknown(), IID_IStream), S_OK);
        ULONG moved = 0;
        Rewind(target.Get());
        EXPECT_EQ(face->Read(place, 100, &moved), S_OK);
        EXPECT_EQ(face->CopyTo(other.Get(), Large(105), nullptr, nullptr), S_OK);
        EXPECT_EQ(face->Read(place, 61, &moved), S_OK);
        moved = 1;
        EXPECT_EQ(face->Write(written.data(), 299, &moved), S_OK);
        if (end[0] != 0) {
          EXPECT_EQ(subject.Call(end, kMethod, ""), S_OK);
        }
      }
      ExpectClean(std::string(filter.class_name) + " " + end);
      StopWatchingForSecrets();
      values.clear();
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Forms, KeyWipingTest, testing::ValuesIn(kKeyForms),
                         [](const testing::TestParamInfo<KeyForm>& one) {
                           return std::string(one.param.name);
                         });

}  // namespace
}  // namespace mirolta::test
