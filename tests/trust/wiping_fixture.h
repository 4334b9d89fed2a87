// What the tests of wiping share: secrets by seed, calls by name, and how secrets look in memory.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string_view>

#include "aes_schedule.h"
#include "des_schedule.h"
#include "member_calls.h"
#include "portable/registry_mode.h"
#include "portable/test_hooks.h"
#include "trust_heap.h"

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

inline const ClassTableRow& ClassNamed(std::string_view name) {
  for (const ClassTableRow* row : AllClasses()) {
    if (Plain(row->name) == name) return *row;
  }
  std::abort();
}

inline const MemberRow& MemberNamed(const ClassTableRow& class_row, std::string_view name,
                             INVOKEKIND kind) {
  const InterfaceTable& table = *class_row.default_interface;
  for (unsigned i = 0; i < table.member_count; ++i) {
    if (table.members[i].kind == kind && Plain(table.members[i].name) == name) {
      return table.members[i];
    }
  }
  std::abort();
}

class WipingTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(setenv("MIROLTA_REGISTRY", "/nonexistent/registry", 1), 0);
    ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
    // The runtime would clear arrays for whoever forgets to.
    MiroltaKeepDestroyedArrays(true);
  }
  void TearDown() override {
    StopWatchingForSecrets();
    MiroltaKeepDestroyedArrays(false);
    values.clear();
    MiroltaRegistryInMemory(FALSE);
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

  HRESULT Call(const Subject& subject, const ClassTableRow& class_row, const std::string& member,
               INVOKEKIND kind, std::vector<VARIANT> arguments) {
    const MemberRow& row = MemberNamed(class_row, member, kind);
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
  static void WatchForSchedule(bool aes, const Bytes& key) {
    const uint32_t length = static_cast<uint32_t>(key.size());
    if (aes) {
      AesSchedule schedule;
      ASSERT_TRUE(ExpandAesKey(key.data(), length, &schedule));
      WatchForWords(schedule.encryption, 4 * (schedule.rounds + 1));
      WatchForWords(schedule.decryption, 4 * (schedule.rounds + 1));
    } else {
      DesSchedule schedule;
      ASSERT_TRUE(ExpandDesKey(key.data(), length, &schedule));
      WatchForWords(schedule.encryption, 2 * schedule.rounds);
      WatchForWords(schedule.decryption, 2 * schedule.rounds);
    }
  }

  std::vector<TestValue> values;
};

}  // namespace mirolta::test
