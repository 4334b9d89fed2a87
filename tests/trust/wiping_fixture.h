// What the tests of wiping share: calls by name with results that are kept, and keys of RSA.
#pragma once

#include <cstring>
#include <string_view>
#include <vector>

#include "gcd.h"
#include "member_calls.h"
#include "portable/test_hooks.h"
#include "secret_forms.h"
#include "trust_test.h"

namespace mirolta::test {

inline const MemberRow& MemberNamed(const ClassTableRow& class_row, std::string_view name,
                                    INVOKEKIND kind) {
  const MemberRow* const row = FindMember(class_row, name, kind);
  if (row == nullptr) std::abort();
  return *row;
}

// Calls after which an object must hold no secret.
struct End {
  const char* name;
  const char* member;  // empty: release only
  INVOKEKIND kind;
  const char* words;

  void On(const Subject& subject) const {
    if (member[0] != 0) subject.Call(member, kind, words);
  }
};

class WipingTest : public TrustTest {
 protected:
  void SetUp() override {
    TrustTest::SetUp();
    // By default the runtime clears arrays and texts that it frees, which would hide missing wipes.
    MiroltaKeepDestroyedArrays(true);
  }
  void TearDown() override {
    StopWatchingForSecrets();
    MiroltaKeepDestroyedArrays(false);
    values.clear();
    TrustTest::TearDown();
  }

  // What the test itself holds of secrets, inputs and results, lives until the watch has ended.
  VARIANT Keep(TestValue value) {
    values.push_back(std::move(value));
    return values.back();
  }
  VARIANT BytesArgument(const Bytes& bytes) { return Keep(BytesValue(bytes)); }
  VARIANT TextArgument(const Bytes& bytes) {  // as many characters
    TestValue value(VT_BSTR);
    value->bstrVal = SysAllocStringLen(nullptr, static_cast<UINT>(bytes.size()));
    for (size_t i = 0; i < bytes.size(); ++i) value->bstrVal[i] = TextByte(bytes[i]);
    return Keep(std::move(value));
  }

  static VARIANT Switch(bool on) {
    VARIANT value;
    VariantInit(&value);
    V_VT(&value) = VT_BOOL;
    value.boolVal = on ? VARIANT_TRUE : VARIANT_FALSE;
    return value;
  }

  HRESULT Call(const Subject& subject, const std::string& member, INVOKEKIND kind,
               std::vector<VARIANT> arguments) {
    const MemberRow& row = MemberNamed(subject.Class(), member, kind);
    VARIANT result;
    const HRESULT status = subject.Call(row, arguments.data(), &result);
    // Results are the caller's to wipe.
    values.emplace_back();
    *&values.back() = result;
    return status;
  }

  // Compares without a copy.
  static bool HoldsBytes(const VARIANT& value, const Bytes& bytes) {
    void* data = nullptr;
    if (V_VT(&value) != (VT_ARRAY | VT_UI1) ||
        value.parray->rgsabound[0].cElements != bytes.size() ||
        SafeArrayAccessData(value.parray, &data) != S_OK) {
      return false;
    }
    const bool same = std::memcmp(data, bytes.data(), bytes.size()) == 0;
    SafeArrayUnaccessData(value.parray);
    return same;
  }

  void ExpectClean(const std::string& what) {
    EXPECT_GT(BlocksSearched(), 0) << what;
    EXPECT_EQ(SecretsFreed(), 0) << what << ": secret " << LastSecretFreed();
  }

  // An RSA key of the module's own making, and what its holder must not leave behind.
  struct RsaNumbers {
    Bytes p, q, d, n, message, encrypted;
  };
  // Makes the key that PlannedChance gives from its start.
  RsaNumbers MakeRsaKey(const std::string& words) {
    const Subject subject(ClassNamed("RSACrypt"), State::kFresh);
    PlannedChance::Restart();
    EXPECT_EQ(subject.Call("CreateRandKeys", kMethod, words), S_OK);
    const auto read = [&](const char* name) {
      EXPECT_EQ(Call(subject, name, kGet, {}), S_OK);
      return BytesOfArray(values.back());
    };
    RsaNumbers key = {read("P"), read("Q"), read("SecretExp"), read("Modulus"), {}, {}};
    key.message = Secret(95, key.n.size() - 1);
    EXPECT_EQ(Call(subject, "Encrypt", kMethod, {BytesArgument(key.message)}), S_OK);
    key.encrypted = BytesOfArray(values.back());
    return key;
  }
  // What makes an object hold the key, with its primes exchanged.
  struct RsaPut {
    const char* property;
    VARIANT number;
  };
  std::vector<RsaPut> PutsOf(const RsaNumbers& key) {
    return {{"P", BytesArgument(key.q)},
            {"Q", BytesArgument(key.p)},
            {"SecretExp", BytesArgument(key.d)},
            {"Modulus", BytesArgument(key.n)}};
  }
  static void WatchForRsaKey(const RsaNumbers& key) {
    const BigInt one(1);
    const BigInt p = NumberOf(key.p);
    const BigInt q = NumberOf(key.q);
    const BigInt d = NumberOf(key.d);
    const BigInt c = NumberOf(key.encrypted);
    const BigInt m = NumberOf(key.message);
    BigInt p_inverse;
    ASSERT_EQ(Inverse(p_inverse, p, q), S_OK);
    const BigInt order = (p - one) * (q - one);
    for (const BigInt& secret : {p, q, d, m, order, p_inverse, d % (p - one), d % (q - one)}) {
      WatchForDigits(secret);
    }
    for (const BigInt& prime : {p, q}) {
      WatchForDigits(c % prime);
      WatchForDigits(m % prime);
      // The first rows of the table of powers.
      WatchForMontgomeryForms(c % prime, prime);
      WatchForMontgomeryForms(c * c % prime * c % prime, prime);
    }
  }

  // Runs use(member, as_operand, arguments) for every member of PexBigNumber: with ordinary
  // arguments, and with `number` in the place of the first if that takes any value.
  template <typename Use>
  static void ForEachNumberCall(const VARIANT& number, const Use& use) {
    for (const Member& member : AllMembers()) {
      if (member.ClassName() != "PexBigNumber") continue;
      const bool takes_value =
          member.ParameterCount() > 0 && member.row->parameters.rows[0].type.type == VT_VARIANT;
      for (const bool as_operand : {false, true}) {
        if (as_operand && !takes_value) continue;
        Arguments ordinary(ArgumentsFor(member, false));
        std::vector<VARIANT> arguments(ordinary.Get(), ordinary.Get() + ordinary.Count());
        if (as_operand) arguments[0] = number;
        use(member, as_operand, arguments);
      }
    }
  }

  std::vector<TestValue> values;
};

}  // namespace mirolta::test
