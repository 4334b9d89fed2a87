#include "portable/test_hooks.h"
#include "system_support.h"

namespace mirolta {
namespace {

constexpr GUID kId = {0x01234567, 0x89AB, 0xCDEF, {0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10}};
constexpr char16_t kText[] = u"{01234567-89AB-CDEF-FEDC-BA9876543210}";

TEST(GuidText, IsWrittenInCapitals) {
  WCHAR text[39] = {};
  EXPECT_EQ(StringFromGUID2(kId, text, 39), 39);
  EXPECT_EQ(std::u16string(text), kText);
  EXPECT_EQ(StringFromGUID2(kId, text, 38), 0);
  EXPECT_EQ(StringFromGUID2(kId, nullptr, 39), 0);
}

TEST(GuidText, IsReadBack) {
  LPOLESTR text = nullptr;
  ASSERT_EQ(StringFromCLSID(kId, &text), S_OK);
  EXPECT_EQ(std::u16string(text), kText);
  CLSID id = {};
  EXPECT_EQ(CLSIDFromString(text, &id), S_OK);
  EXPECT_EQ(id, kId);
  CoTaskMemFree(text);
  EXPECT_EQ(CLSIDFromString(u"{01234567-89ab-cdef-fedc-ba9876543210}", &id), S_OK);
  EXPECT_EQ(id, kId);
}

TEST(GuidText, MalformedTextIsRefused) {
  const std::u16string good = kText;
  for (size_t i = 0; i < good.size(); ++i) {
    CLSID id = kId;
    std::u16string bad = good;
    bad[i] = u'x';
    EXPECT_EQ(CLSIDFromString(bad.c_str(), &id), CO_E_CLASSSTRING) << i;
    EXPECT_EQ(id, CLSID_NULL) << i;
    EXPECT_EQ(CLSIDFromString(good.substr(0, i).c_str(), &id), CO_E_CLASSSTRING) << i;
  }
  CLSID id = kId;
  EXPECT_EQ(CLSIDFromString((good + u" ").c_str(), &id), CO_E_CLASSSTRING);
  EXPECT_EQ(CLSIDFromString(nullptr, &id), S_OK);
  EXPECT_EQ(id, CLSID_NULL);
  EXPECT_EQ(CLSIDFromString(good.c_str(), nullptr), E_INVALIDARG);
}

TEST(GuidTest, EveryFieldTellsTwoApart) {
  constexpr GUID kSome = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
  EXPECT_TRUE(IsEqualGUID(kSome, GUID(kSome)));
  GUID other = kSome;
  other.Data1 ^= 0x80000000u;
  EXPECT_FALSE(IsEqualGUID(kSome, other));
  other = kSome;
  other.Data2 ^= 0x8000u;
  EXPECT_FALSE(IsEqualGUID(kSome, other));
  other = kSome;
  other.Data3 ^= 0x8000u;
  EXPECT_FALSE(IsEqualGUID(kSome, other));
  for (size_t i = 0; i < 8; ++i) {
    other = kSome;
    other.Data4[i] ^= 0x80;
    EXPECT_FALSE(IsEqualGUID(kSome, other)) << i;
    EXPECT_TRUE(kSome != other) << i;
  }
}

TEST(GuidText, ReportsShortMemory) {
  MiroltaFailAllocationAfter(0);
  LPOLESTR text = nullptr;
  EXPECT_EQ(StringFromCLSID(kId, &text), E_OUTOFMEMORY);
  EXPECT_EQ(text, nullptr);
  MiroltaFailAllocationAfter(-1);
  EXPECT_EQ(StringFromCLSID(kId, nullptr), E_INVALIDARG);
}

}  // namespace
}  // namespace mirolta
