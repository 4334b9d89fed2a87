// What the tests of wiping share: secrets by seed, calls by name, and how secrets look in memory.
#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <string_view>

#include "aes_schedule.h"
#include "big_bytes.h"
#include "block_hash_engine.h"
#include "des_schedule.h"
#include "gcd.h"
#include "limb_basics.h"
#include "md5_engine.h"
#include "member_calls.h"
#include "portable/test_hooks.h"
#include "sha1_engine.h"
#include "sha256_engine.h"
#include "small_primes.h"
#include "trust_heap.h"
#include "trust_test.h"

namespace mirolta::test {

inline Bytes Secret(unsigned seed, size_t size) {
  std::mt19937 random(seed);
  Bytes bytes(size);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random() >> 7);
  return bytes;
}

inline Bytes Reversed(const Bytes& bytes) {
  return Bytes(bytes.rbegin(), bytes.rend());
}

inline Bytes Masked(Bytes bytes, uint8_t mask) {
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(byte ^ mask);
  return bytes;
}

// A character that is one byte in every character set, and not zero.
inline uint8_t TextByte(uint8_t byte) {
  return static_cast<uint8_t>(0x20 + (byte & 0x3F));
}

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

  static void WatchFor(const Bytes& bytes) { WatchForSecret(bytes.data(), bytes.size()); }
  // Also as UTF-16 units.
  static void WatchForText(const Bytes& text) {
    Bytes units;
    for (const uint8_t byte : text) {
      units.push_back(byte);
      units.push_back(0);
    }
    units.resize(std::min(units.size(), size_t{512}));
    WatchFor(units);
  }
  // A number in both byte orders.
  static void WatchForNumber(const Bytes& number) {
    WatchFor(number);
    WatchFor(Reversed(number));
  }
  // Schedules as words and as bytes in order.
  template <size_t kCount>
  static void WatchForWords(const uint32_t (&words)[kCount], size_t count) {
    Bytes native(count * 4);
    std::memcpy(native.data(), words, native.size());
    Bytes in_order;
    for (size_t i = 0; i < count; ++i) {
      for (int shift = 24; shift >= 0; shift -= 8) {
        in_order.push_back(static_cast<uint8_t>(words[i] >> shift));
      }
    }
    WatchFor(native);
    WatchFor(in_order);
  }
  // What an algorithm derives from its key: a cipher's schedule, a digest's HMAC pads.
  static void WatchForDerived(const std::string& algorithm, const Bytes& key) {
    const uint32_t length = static_cast<uint32_t>(key.size());
    if (algorithm == "AES") {
      AesSchedule schedule;
      ASSERT_TRUE(ExpandAesKey(key.data(), length, &schedule));
      WatchForSchedule(schedule, 4 * (schedule.rounds + 1));
    } else if (algorithm == "DES") {
      DesSchedule schedule;
      ASSERT_TRUE(ExpandDesKey(key.data(), length, &schedule));
      WatchForSchedule(schedule, 2 * schedule.rounds);
    } else if (algorithm == "MD5") {
      WatchForPads<Md5Primitive>(key);
    } else if (algorithm == "SHA1") {
      WatchForPads<Sha1Primitive>(key);
    } else {
      ASSERT_EQ(algorithm, "SHA256");
      WatchForPads<Sha256Primitive>(key);
    }
  }
  template <typename Schedule>
  static void WatchForSchedule(const Schedule& schedule, size_t words) {
    WatchForWords(schedule.encryption, words);
    WatchForWords(schedule.decryption, words);
  }
  // The key as HMAC pads it to a block, and the chaining values after both pads.
  template <typename Primitive>
  static void WatchForPads(const Bytes& key) {
    Bytes padded = key;
    if (key.size() > kHashBlockSize) {
      HashEngine* made = nullptr;
      (void)CreateHashEngine(kHashAlgorithms[Primitive::kAlgorithm], &made);
      const std::unique_ptr<HashEngine> engine(made);
      (void)engine->Update(key.data(), static_cast<uint32_t>(key.size()));
      (void)engine->Final();
      padded.assign(engine->RawDigest(), engine->RawDigest() + engine->DigestSize());
    }
    WatchFor(padded);
    const size_t used = padded.size();
    padded.resize(kHashBlockSize);
    for (const uint8_t mask : {uint8_t{0x36}, uint8_t{0x5C}}) {
      const Bytes pad = Masked(padded, mask);
      WatchFor(Bytes(pad.begin(), pad.begin() + static_cast<std::ptrdiff_t>(used)));
      uint32_t words[Primitive::kWordCount];
      std::copy(std::begin(Primitive::kInitial), std::end(Primitive::kInitial), words);
      Primitive::Kernel()(words, pad.data(), 1);
      WatchForWords(words, Primitive::kWordCount);
    }
  }

  static BigInt NumberOf(const Bytes& bytes) {
    BigInt number;
    EXPECT_EQ(FromBytes(number, bytes.data(), static_cast<uint32_t>(bytes.size())), S_OK);
    return number;
  }
  static Bytes BytesOfNumber(const BigInt& number) {
    Bytes bytes(static_cast<size_t>(ByteLength(number)));
    ToBytes(bytes.data(), number);
    return bytes;
  }
  // A number in both byte orders and in digits of 52 bits.
  static void WatchForDigits(const BigInt& number) {
    const Bytes bytes = BytesOfNumber(number);
    if (bytes.size() < 16) return;
    WatchForNumber(bytes);
    Bytes digits;
    for (uint64_t bit = 0; bit < number.BitLength(); bit += 52) {
      uint64_t digit = 0;
      for (unsigned i = 0; i < 52; ++i) digit |= uint64_t{number.TestBit(bit + i)} << i;
      for (unsigned i = 0; i < 8; ++i) digits.push_back(static_cast<uint8_t>(digit >> (8 * i)));
    }
    digits.resize(std::min(digits.size(), size_t{512}));
    WatchFor(digits);
  }
  static BigInt PowerOfTwo(uint64_t bits) {
    Bytes bytes(static_cast<size_t>(bits / 8 + 1));
    bytes[0] = static_cast<uint8_t>(1u << bits % 8);
    return NumberOf(bytes);
  }
  // x * 2^bits mod m, for each number of bits that Montgomery's form may have there.
  static void WatchForMontgomeryForms(const BigInt& x, const BigInt& m) {
    const uint64_t bits = m.BitLength();
    const uint64_t limbs = (bits + kLimbBits - 1) / kLimbBits * kLimbBits;
    const uint64_t digits = (bits + 2 + 51) / 52 * 52;
    for (const uint64_t shift : {limbs, digits}) WatchForDigits(x * PowerOfTwo(shift) % m);
  }
  // What the search for a prime keeps of its start and of the windows after it: minus the number
  // modulo each small prime.
  static void WatchForResidues(const BigInt& start, uint32_t window, unsigned windows) {
    BigInt number = start;
    for (unsigned i = 0; i <= windows; ++i) {
      Bytes residues;
      for (size_t prime = 100; prime < 200; ++prime) {  // the first are too small to identify
        const uint32_t p = kSmallPrimes.primes[prime];
        const BigInt residue = number % BigInt(p);
        const uint16_t first = static_cast<uint16_t>((p - residue.GetWord(0)) % p);
        residues.push_back(static_cast<uint8_t>(first));
        residues.push_back(static_cast<uint8_t>(first >> 8));
      }
      WatchFor(residues);
      ASSERT_EQ(number.Add(BigInt(window)), S_OK);
    }
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
