// The data of HashObject: values of every form, their code pages, and what they leave.
#include "hash_object_fixture.h"
#include "memory_watch.h"
#include "portable/test_hooks.h"

namespace mirolta::test {
namespace {

TEST_F(Md5ObjectTest, AnEmptyArrayIsNoDataAndLeavesTheComputationOpen) {
  EXPECT_EQ(Update(OLESTR("dropped")), S_OK);
  EXPECT_EQ(Data(BytesValue({})), S_FALSE);
  EXPECT_EQ(Update(OLESTR("abc")), S_OK);
  EXPECT_EQ(Value(), kAbcMd5);
  EXPECT_EQ(Data(BytesValue({})), S_FALSE);
  EXPECT_EQ(Value(), kEmptyMd5);
  EXPECT_EQ(Update(BytesValue({})), S_FALSE);
}

TEST_F(Md5ObjectTest, AnEmptyTextIsTheEmptyMessage) {
  EXPECT_EQ(Update(OLESTR("dropped")), S_OK);
  EXPECT_EQ(Data(OLESTR("")), S_OK);
  EXPECT_EQ(Update(OLESTR("abc")), S_OK);  // after the end: no effect on the digest
  EXPECT_EQ(Value(), kEmptyMd5);
  EXPECT_EQ(Update(OLESTR("")), S_FALSE);
  EXPECT_EQ(Hashed(TestValue(VT_BSTR)), kEmptyMd5);
  EXPECT_EQ(Hashed(TestValue(VT_EMPTY)), kEmptyMd5);
  EXPECT_EQ(Update(TestValue(VT_EMPTY)), S_FALSE);
}

TEST_F(Md5ObjectTest, ATextEndsAtItsFirstZero) {
  EXPECT_EQ(Hashed(std::basic_string_view<OLECHAR>(OLESTR("abc\0def"), 7)), kAbcMd5);
  EXPECT_EQ(Update(std::basic_string_view<OLECHAR>(OLESTR("\0def"), 4)), S_FALSE);
}

TEST_F(Md5ObjectTest, OtherValuesAreHashedAsTheirText) {
  TestValue real(VT_R8);
  real->dblVal = 2.5;
  EXPECT_EQ(Hashed(NumberValue(-120)), DigestOf("-120"));
  EXPECT_EQ(Hashed(real), DigestOf("2.5"));
  EXPECT_EQ(hash->Reset(), S_OK);
  EXPECT_EQ(Update(NumberValue(12)), S_OK);
  EXPECT_EQ(Update(real), S_OK);
  EXPECT_EQ(Value(), DigestOf("122.5"));
}

TEST_F(Md5ObjectTest, ReferencesAreHashedAsTheirReferents) {
  TestValue text = TextValue(OLESTR("abc"));
  TestValue bytes = BytesValue(BytesOf("abc"), 5);
  LONG number = 77;
  const struct {
    const char* name;
    VARIANT value;
    Text digest;
  } rows[] = {
      {"bytes", bytes, kAbcMd5},
      {"reference to text", ReferenceTo(VT_BSTR, &text->bstrVal), kAbcMd5},
      {"reference to a value with text", ReferenceTo(VT_VARIANT, &text), kAbcMd5},
      {"reference to bytes", ReferenceTo(VT_ARRAY | VT_UI1, &bytes->parray), kAbcMd5},
      {"reference to a value with bytes", ReferenceTo(VT_VARIANT, &bytes), kAbcMd5},
      {"reference to a number", ReferenceTo(VT_I4, &number), DigestOf("77")},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(Hashed(row.value), row.digest);
  }
  EXPECT_EQ(bytes->parray->cLocks, 0u);
}

TEST_F(Md5ObjectTest, ObjectsAreHashedAsTheirDefaultValues) {
  FakeObject text(TextValue(OLESTR("abc")));
  FakeObject bytes(BytesValue(BytesOf("abc")));
  FakeObject nothing(BytesValue({}));
  FakeObject chain(ObjectValue(&bytes));
  const TestValue values[] = {ObjectValue(&text), ObjectValue(&bytes), UnknownValue(&chain)};
  for (const TestValue& value : values) {
    EXPECT_EQ(Hashed(value), kAbcMd5);
    EXPECT_EQ(Absorbed(value), kAbcMd5);
  }
  EXPECT_EQ(Data(ObjectValue(&nothing)), S_FALSE);
  EXPECT_EQ(text.references, 2u);   // the table's
  EXPECT_EQ(bytes.references, 3u);  // the table's and the chain's
}

TEST_F(Md5ObjectTest, ADataValueThatDoesNotConvertLeavesARestartedComputation) {
  FakeObject unreadable;
  unreadable.status = DISP_E_MEMBERNOTFOUND;
  FakeObject silent;
  silent.has_dispatch = false;
  const struct {
    const char* name;
    TestValue value;
    HRESULT status;
  } failures[] = {
      {"null", TestValue(VT_NULL), DISP_E_TYPEMISMATCH},
      {"array of numbers", ArrayValue(VT_I4, 1, {1, 0, 0, 0}), DISP_E_TYPEMISMATCH},
      {"no object", ObjectValue(nullptr), E_FAIL},
      {"object whose value cannot be read", ObjectValue(&unreadable), DISP_E_MEMBERNOTFOUND},
      {"object without a value", UnknownValue(&silent), E_FAIL}};
  for (const auto& failure : failures) {
    SCOPED_TRACE(failure.name);
    ASSERT_EQ(hash->Reset(), S_OK);
    ASSERT_EQ(Update(OLESTR("earlier")), S_OK);
    EXPECT_EQ(Update(failure.value), failure.status);  // changes nothing
    EXPECT_EQ(Value(), DigestOf("earlier"));
    ASSERT_EQ(hash->Reset(), S_OK);
    ASSERT_EQ(Update(OLESTR("earlier")), S_OK);
    EXPECT_EQ(Data(failure.value), failure.status);
    EXPECT_EQ(Update(OLESTR("abc")), S_OK);  // open and empty
    EXPECT_EQ(Value(), kAbcMd5);
  }
  ExpectNoError();
}

TEST_F(HashObjectTest, TextIsConvertedByTheCodePage) {
  constexpr std::basic_string_view<OLECHAR> kText = OLESTR("\u00E9\u20AC");
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  const Text utf8 = DigestOf("\xC3\xA9\xE2\x82\xAC");
  const Text western = DigestOf("\xE9\x80");
  const Text low = DigestOf(std::string_view("\xE9\x00\xAC\x20", 4));
  const Text high = DigestOf(std::string_view("\x00\xE9\x20\xAC", 4));
  EXPECT_EQ(Hashed(kText, 65001), utf8);
  EXPECT_EQ(Hashed(kText, 1252), western);
  for (const LONG code_page : {-2, -3, -65001}) EXPECT_EQ(Hashed(kText, code_page), high);
  // -1 stands for the property.
  const struct {
    LONG code_page;
    Text digest;
  } rows[] = {{65001, utf8}, {1252, western}, {-1, low}, {-2, high}};
  for (const auto& expected : rows) {
    SCOPED_TRACE(expected.code_page);
    ASSERT_EQ(hash->put_codePage(expected.code_page), S_OK);
    EXPECT_EQ(Hashed(kText), expected.digest);
    EXPECT_EQ(Absorbed(kText), expected.digest);
    EXPECT_EQ(Absorbed(kText, 1252), western);
  }
}

TEST_F(Md5ObjectTest, AnUnknownCodePageConvertsTextToNothing) {
  EXPECT_EQ(Hashed(OLESTR("abc"), 77777), kEmptyMd5);
  EXPECT_EQ(Update(OLESTR("abc"), 77777), S_FALSE);
}

TEST_F(Md5ObjectTest, CodePagesLeaveByteArraysAlone) {
  for (const LONG code_page : {77777, -2}) {
    EXPECT_EQ(Hashed(BytesValue(BytesOf("abc")), code_page), kAbcMd5);
  }
}

TEST_F(Md5ObjectTest, WithoutMemoryForItsTextDataFails) {
  const TestValue text = TextValue(OLESTR("abc"));
  HRESULT status = S_OK;
  {
    const FailAllocationsAfter none(0);
    status = hash->HashData(text, 65001);
  }
  EXPECT_EQ(status, E_OUTOFMEMORY);
  EXPECT_EQ(Value(), kEmptyMd5);
}

// A copy of the bytes would need memory, and there is none.
TEST_F(HashObjectTest, ByteArraysAreReadWithoutCopying) {
  ASSERT_EQ(Init(OLESTR("SHA256")), S_OK);
  const Bytes bytes(1 << 20, 'p');
  const Text expected = DigestOf(std::string(bytes.begin(), bytes.end()));
  const TestValue array = BytesValue(bytes);
  SAFEARRAY* place = V_ARRAY(&array.operator const VARIANT&());
  const VARIANT values[] = {array, ReferenceTo(VT_ARRAY | VT_UI1, &place)};
  for (const VARIANT& value : values) {
    HRESULT status = E_FAIL;
    {
      const FailAllocationsAfter none(0);
      MiroltaFailAllocationAfter(0);
      status = hash->HashData(value, -1);
      MiroltaFailAllocationAfter(-1);
    }
    EXPECT_EQ(status, S_OK) << V_VT(&value);
    EXPECT_EQ(Value(), expected) << V_VT(&value);
  }
}

}  // namespace
}  // namespace mirolta::test
