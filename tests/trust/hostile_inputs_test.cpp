// Every argument of every member with every kind of value: the call says what the model of the
// rules says (status_model.h), and the object still answers (known_answers.h).
#include <cstring>
#include <iostream>
#include <vector>

#include "hostile_values.h"
#include "known_answers.h"
#include "member_calls.h"
#include "module_state.h"
#include "status_model.h"
#include "system_rules.h"
#include "trust_test.h"

namespace mirolta::test {
namespace {

// Sanitizers make the calls slow: they try every fourth value of each row, another four in the
// next row.
#ifdef MIROLTA_SLOW_BUILD
constexpr size_t kStride = 4;
#else
constexpr size_t kStride = 1;
#endif

// Calls that the test leaves out, each for its time; nothing in the module limits them.
bool TakesTooLong(const Member& member, VARTYPE parameter, const HostileValue& value) {
  if (!value.is_long) return false;
  const std::string name = member.Name();
  if (parameter == VT_I4) {
    // Only numbers are read as sizes. A prime of 600 bytes takes seconds, one of 30,000 days;
    // drawing two gigabytes takes a minute and as much memory.
    if (V_VT(&value.value) != VT_I4) return false;
    return name == "RSACrypt.CreateRandKeys" ||
           (name == "PexBigNumber.Random" && value.value.lVal == 0x7FFFFFFF);
  }
  const bool is_text = V_VT(&value.value) == VT_BSTR;
  // The next prime from 40,000 bits on takes an hour. The long arrays of zeros are the number zero.
  if (name == "RSACrypt.CreateKeys") return is_text || value.name == "bytes-10000-full";
  // Eight million decimal digits take seconds to read, and as many again to read back.
  return member.ClassName() == "PexBigNumber" && is_text &&
         value.name.find("16MB") != value.name.npos;
}

// Calls that the test leaves out on a system whose automation treats the value otherwise than the model.
bool IsTheSystems(const Member& member, const ParameterRow& parameter, bool late,
                  const HostileValue& value) {
  if (kPortableRuntime) return false;
  const bool is_any_value = parameter.type.type == VT_VARIANT;
  const std::string name = member.Name();
  if (value.name == "object-itself") {
    // An object that is its own default value is read without end, until there is no stack, wherever the
    // system makes it another type: for late-bound calls, keys and the names of algorithms.
    return !is_any_value || name.find("Key put") != name.npos || name.find(".Init") != name.npos;
  }
  if (value.name == "r8-nan") {
    // As an integer it is the largest.
    return (late && parameter.type.type == VT_I4) || member.ClassName() == "PexBigNumber" ||
           member.ClassName() == "RSACrypt";
  }
  if (value.name == "object-bytes" || value.name == "&object-bytes") {
    // In the system's character set their text has a length that keys of AES do not have.
    return name == "SymmetricCryptObject.Key put" || name == "ToviStreamCrypt.ReadKey put";
  }
  // The copy that a late-bound member gets has data.
  return value.name == "bytes-hollow" && late && is_any_value;
}

bool IsModulesOwn(HRESULT status) {
  return (static_cast<uint32_t>(status) & 0xFFFFFFF0u) == 0x80042770u;
}

class HostileInputsTest : public TrustTest {
 protected:
  void Call(const Member& member, State state, unsigned index, const HostileValue& hostile,
            bool late) {
    PlannedChance::Restart();
    const LONG objects = CurrentModule()->lock_count;
    const Outcome expected = ExpectedOutcome(member, Plain(member.row->parameters.rows[index].name),
                                             state, late, hostile.value);
    {
      const Subject subject(*member.class_row, state);
      Arguments others(ArgumentsFor(member, false));
      std::vector<VARIANT> arguments(others.Get(), others.Get() + others.Count());
      arguments[index] = hostile.value;
      SetErrorInfo(0, nullptr);
      HRESULT status = E_FAIL;
      VARIANT result;
      {
        const LockBalance locks;
        status = late ? subject.Invoke(*member.row, arguments.data(),
                                       static_cast<unsigned>(arguments.size()), &result)
                      : subject.Call(*member.row, arguments.data(), &result);
        EXPECT_EQ(locks.Held(), 0);
      }
      EXPECT_EQ(status, expected.status) << std::hex << status << " not " << expected.status;
      EXPECT_EQ(std::memcmp(&arguments[index], &hostile.value, sizeof(VARIANT)), 0)
          << "the argument has changed";
      OwnedReference<IErrorInfo> info;
      const bool published = GetErrorInfo(0, info.Put()) == S_OK;
      // A late-bound call hands the report to its caller.
      EXPECT_EQ(published, !late && IsModulesOwn(status));
      if (FAILED(status)) {
        const std::string shown = Shown(result);
        EXPECT_TRUE(shown == "(empty)" || shown == "(null text)" || shown == "(no object)" ||
                    shown == "i4 0" || shown == "bool 0")
            << shown;
      }
      VariantClear(&result);
      ExpectReadable(subject, member, state, expected);
      SetErrorInfo(0, nullptr);
      ExpectKnownAnswer(subject, member.ClassName());
      SetErrorInfo(0, nullptr);
    }
    EXPECT_EQ(CurrentModule()->lock_count, objects);
  }

  PlannedChance chance;
  HostileValues values;
};

TEST_F(HostileInputsTest, EveryMemberAnswersEveryValueAsTheModelSays) {
  long calls = 0;
  size_t headings = 0;
  for (const Member& member : AllMembers()) {
    for (unsigned index = 0; index < member.ParameterCount(); ++index) {
      const ParameterRow& parameter = member.row->parameters.rows[index];
      for (const State state : kStates) {
        for (const bool late : {false, true}) {
          const std::string heading = member.Name() + " " + Plain(parameter.name) +
                                      (state == State::kFresh ? " fresh" : " ready") +
                                      (late ? " late" : " early");
          size_t place = headings++;
          for (const HostileValue& value :
               late ? values.All() : values.OfType(parameter.type.type)) {
            if (TakesTooLong(member, parameter.type.type, value)) continue;
            if (IsTheSystems(member, parameter, late, value)) continue;
            if (place++ % kStride != 0) continue;
            SCOPED_TRACE(heading + ": " + value.name);
            Call(member, state, index, value, late);
            ++calls;
            ASSERT_FALSE(HasFatalFailure());
          }
        }
      }
    }
  }
  std::cout << calls << " calls under " << headings << " headings\n";
  // The model has no row that is not called.
  EXPECT_EQ(headings, 4 * StatusModelRows());
}

// Places for results that are null, in every member that has one, and the other pointers.
template <auto kMethod>
struct WithoutResult;
template <typename Interface, typename... T, HRESULT (STDMETHODCALLTYPE Interface::*kMethod)(T...)>
struct WithoutResult<kMethod> {
  static HRESULT Call(void* object) { return (static_cast<Interface*>(object)->*kMethod)(T{}...); }
};

struct NullCase {
  const char* class_name;
  const char* name;
  HRESULT (*call)(void* object);
  HRESULT fresh = E_POINTER;
};
#define NULL_CASE(class_name, interface_name, method, ...) \
  { class_name, #method, &WithoutResult<&interface_name::method>::Call __VA_OPT__(, ) __VA_ARGS__ }

TEST_F(HostileInputsTest, EveryMemberRefusesANullResultPointer) {
  const NullCase cases[] = {
      // The members that return digests check the pointer only when there is a digest.
      NULL_CASE("HashObject", IHashObject, get_Value, 10104),
      NULL_CASE("HashObject", IHashObject, get_HashSize),
      NULL_CASE("HashObject", IHashObject, get_BlockSize),
      NULL_CASE("HashObject", IHashObject, get_BinaryValue),
      NULL_CASE("HashObject", IHashObject, get_codePage),
      NULL_CASE("HashObject", IHashObject, get_Key),
      NULL_CASE("SymmetricCryptObject", ISymmetricCryptObject, get_Key),
      NULL_CASE("SymmetricCryptObject", ISymmetricCryptObject, get_BlockSize),
      NULL_CASE("SymmetricCryptObject", ISymmetricCryptObject, get_codePage),
      NULL_CASE("SymmetricCryptObject", ISymmetricCryptObject, Encrypt),
      NULL_CASE("SymmetricCryptObject", ISymmetricCryptObject, Decrypt),
      NULL_CASE("SymmetricCryptObject", ISymmetricCryptObject, get_PadType),
      NULL_CASE("PexBigNumber", IPexBigNumber, get_Value),
      NULL_CASE("PexBigNumber", IPexBigNumber, get_Hex),
      NULL_CASE("PexBigNumber", IPexBigNumber, get_Text),
      NULL_CASE("PexBigNumber", IPexBigNumber, get_Binary),
      NULL_CASE("PexBigNumber", IPexBigNumber, Add),
      NULL_CASE("PexBigNumber", IPexBigNumber, Sub),
      NULL_CASE("PexBigNumber", IPexBigNumber, Mul),
      NULL_CASE("PexBigNumber", IPexBigNumber, Div),
      NULL_CASE("PexBigNumber", IPexBigNumber, Mod),
      NULL_CASE("PexBigNumber", IPexBigNumber, Cmp),
      NULL_CASE("PexBigNumber", IPexBigNumber, NewNumber),
      NULL_CASE("PexBigNumber", IPexBigNumber, GCD),
      NULL_CASE("PexBigNumber", IPexBigNumber, ModExp),
      NULL_CASE("PexBigNumber", IPexBigNumber, ModInv),
      NULL_CASE("RSACrypt", IRSACrypt, get_Modulus),
      NULL_CASE("RSACrypt", IRSACrypt, get_PublicExp),
      NULL_CASE("RSACrypt", IRSACrypt, get_SecretExp),
      NULL_CASE("RSACrypt", IRSACrypt, get_P),
      NULL_CASE("RSACrypt", IRSACrypt, get_Q),
      NULL_CASE("RSACrypt", IRSACrypt, Encrypt),
      NULL_CASE("RSACrypt", IRSACrypt, Decrypt),
      NULL_CASE("RSACrypt", IRSACrypt, DecryptPQ),
      NULL_CASE("RSACrypt", IRSACrypt, get_BlockSize),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_Stream),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_ReadAlgorithm),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_WriteAlgorithm),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_WriteKey),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_ReadKey),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_ReadValue, 10104),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_WriteValue, 10104),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_WriteHashEnable),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_ReadHashEnable),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_SeekingForbidden),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_codePage),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_ReadBinaryValue),
      NULL_CASE("ToviStreamDigest", IToviStreamDigest, get_WriteBinaryValue),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_Stream),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_ReadAlgorithm),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_WriteAlgorithm),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_ReadKey),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_WriteKey),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_SeekingForbidden),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_codePage),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_WriteDecrypt),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_ReadDecrypt),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_ReadPadType),
      NULL_CASE("ToviStreamCrypt", IToviStreamCrypt, get_WritePadType),
  };
  size_t members = 0;
  for (const Member& member : AllMembers()) members += member.row->result.type != VT_EMPTY;
  EXPECT_EQ(members, sizeof cases / sizeof cases[0]);
  for (const NullCase& one : cases) {
    for (const ClassTableRow* class_row : AllClasses()) {
      if (Plain(class_row->name) != one.class_name) continue;
      for (const State state : kStates) {
        const Subject subject(*class_row, state);
        const LockBalance locks;
        EXPECT_EQ(one.call(subject.Dispatch()), state == State::kFresh ? one.fresh : E_POINTER)
            << one.class_name << "." << one.name;
        EXPECT_EQ(locks.Held(), 0);
        // Where it is seen first, it is seen without the lock.
        EXPECT_EQ(locks.Entered(), one.fresh == E_POINTER ? 0 : 1) << one.name;
      }
    }
  }
}

}  // namespace
}  // namespace mirolta::test
