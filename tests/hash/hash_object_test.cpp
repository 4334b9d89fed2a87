// HashObject: every member, in every state, with what it leaves behind.
#include <functional>
#include <vector>

#include "hash_object_fixture.h"
#include "memory_watch.h"
#include "portable/test_hooks.h"

namespace mirolta::test {
namespace {

struct NamedCall {
  const char* name;
  std::function<HRESULT(IHashObject*)> call;
};

// The members that report a missing algorithm.
std::vector<NamedCall> CallsThatNeedAnAlgorithm() {
  return {
      {"HashSize",
       [](IHashObject* h) {
         LONG size = 77;
         HRESULT status = h->get_HashSize(&size);
         EXPECT_EQ(size, 77);
         return status;
       }},
      {"BlockSize",
       [](IHashObject* h) {
         LONG size = 77;
         HRESULT status = h->get_BlockSize(&size);
         EXPECT_EQ(size, 77);
         return status;
       }},
      {"HashData", [](IHashObject* h) { return h->HashData(TextValue(OLESTR("abc")), -1); }},
      {"HashUpdate", [](IHashObject* h) { return h->HashUpdate(TextValue(OLESTR("abc")), -1); }},
      {"HashFinalize", [](IHashObject* h) { return h->HashFinalize(); }},
      {"Key get",
       [](IHashObject* h) {
         VARIANT key = NumberValue(77);
         HRESULT status = h->get_Key(&key);
         EXPECT_EQ(key.lVal, 77);
         return status;
       }},
      {"Key put", [](IHashObject* h) { return h->put_Key(TextValue(OLESTR("key"))); }},
      {"Reset", [](IHashObject* h) { return h->Reset(); }},
      {"ResetKey", [](IHashObject* h) { return h->ResetKey(); }},
  };
}

TEST_F(HashObjectTest, WithoutAnAlgorithmMembersRaiseNotInitialized) {
  for (const NamedCall& member : CallsThatNeedAnAlgorithm()) {
    SCOPED_TRACE(member.name);
    EXPECT_EQ(member.call(hash.Get()), kNotInitialized);
    ExpectError(OLESTR("Not initialized."));
  }
}

TEST_F(HashObjectTest, WithoutAnAlgorithmTheDigestReadersDescribeNoError) {
  BSTR text = SysAllocString(OLESTR("unset"));
  BSTR kept = text;
  EXPECT_EQ(hash->get_Value(&text), kBareNotInitializedStatus);
  EXPECT_EQ(text, kept);
  SysFreeString(kept);
  EXPECT_EQ(hash->get_Value(nullptr), kBareNotInitializedStatus);
  VARIANT value = NumberValue(77);
  EXPECT_EQ(hash->get_BinaryValue(&value), kBareNotInitializedStatus);
  EXPECT_EQ(V_VT(&value), VT_I4);
  EXPECT_EQ(value.lVal, 77);
  ExpectNoError();
}

TEST_F(HashObjectTest, NullOutPointersAreReportedFirst) {
  for (const bool initialized : {false, true}) {
    if (initialized) {
      ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
    }
    EXPECT_EQ(hash->get_HashSize(nullptr), E_POINTER);
    EXPECT_EQ(hash->get_BlockSize(nullptr), E_POINTER);
    EXPECT_EQ(hash->get_BinaryValue(nullptr), E_POINTER);
    EXPECT_EQ(hash->get_codePage(nullptr), E_POINTER);
    EXPECT_EQ(hash->get_Key(nullptr), E_POINTER);
    ExpectNoError();
  }
}

TEST_F(HashObjectTest, ComputesTheDigestsOfThreeAlgorithms) {
  constexpr struct {
    const OLECHAR* name;
    LONG size;
    const OLECHAR* empty;
    const OLECHAR* abc;
  } kAlgorithms[] = {
      {OLESTR("MD5"), 16, kEmptyMd5, kAbcMd5},
      {OLESTR("SHA1"), 20, OLESTR("DA39A3EE5E6B4B0D3255BFEF95601890AFD80709"),
       OLESTR("A9993E364706816ABA3E25717850C26C9CD0D89D")},
      {OLESTR("SHA256"), 32,
       OLESTR("E3B0C44298FC1C149AFBF4C8996FB92427AE41E4649B934CA495991B7852B855"),
       OLESTR("BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD")},
  };
  for (const auto& algorithm : kAlgorithms) {
    SCOPED_TRACE(algorithm.size);
    ASSERT_EQ(Init(algorithm.name), S_OK);
    LONG size = 0;
    EXPECT_EQ(hash->get_HashSize(&size), S_OK);
    EXPECT_EQ(size, algorithm.size);
    EXPECT_EQ(hash->get_BlockSize(&size), S_OK);
    EXPECT_EQ(size, 64);
    EXPECT_EQ(Value(), algorithm.empty);  // reading ends the open computation
    EXPECT_EQ(Data(OLESTR("abc")), S_OK);
    EXPECT_EQ(Value(), algorithm.abc);
    EXPECT_EQ(Value(), algorithm.abc);
  }
}

TEST_F(HashObjectTest, UnknownNamesLeaveNoAlgorithm) {
  for (const OLECHAR* name :
       {OLESTR("md5"), OLESTR("sha1"), OLESTR("SHA-1"), OLESTR(" MD5"), OLESTR("MD5 "),
        OLESTR("MD"), OLESTR("SHA2567"), OLESTR(""), OLESTR("0")}) {
    ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
    EXPECT_EQ(Init(name), kNotFound);
    ExpectError(OLESTR("Algorithm not found."));
    EXPECT_FALSE(HasAlgorithm());
    EXPECT_EQ(hash->get_Value(nullptr), kBareNotInitializedStatus);
    EXPECT_EQ(Data(OLESTR("abc")), kNotInitialized);
  }
  // The whole text counts, also what follows a zero character.
  for (const Text& name : {Text(OLESTR("MD5\0x"), 5), Text(OLESTR("MD5\0"), 4),
                           Text(OLESTR("\0MD5"), 4), Text(OLESTR("\0"), 1)}) {
    ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
    EXPECT_EQ(Init(name), kNotFound);
    ExpectError(OLESTR("Algorithm not found."));
    EXPECT_FALSE(HasAlgorithm());
  }
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(hash->InitHash(nullptr), kNotFound);
  EXPECT_FALSE(HasAlgorithm());
}

TEST_F(HashObjectTest, WithoutMemoryForTheEngineThereIsNoAlgorithmButNoFailure) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  const OwnedBstr name(SysAllocString(OLESTR("SHA256")));
  HRESULT status = E_FAIL;
  {
    const FailAllocationsAfter none(0);
    status = hash->InitHash(name.Get());
  }
  EXPECT_EQ(status, S_OK);
  ExpectNoError();
  EXPECT_FALSE(HasAlgorithm());
  EXPECT_EQ(hash->get_Value(nullptr), kBareNotInitializedStatus);
  EXPECT_EQ(hash->InitHash(name.Get()), S_OK);
  EXPECT_TRUE(HasAlgorithm());
}

TEST_F(HashObjectTest, InitHashDropsTheKey) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  ASSERT_EQ(hash->put_Key(TextValue(OLESTR("key"))), S_OK);
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  TestValue key = NumberValue(77);
  EXPECT_EQ(hash->get_Key(&key), S_OK);
  EXPECT_EQ(V_VT(&key), VT_EMPTY);
  EXPECT_EQ(DigestOf("abc"), kAbcMd5);
}

TEST_F(HashObjectTest, PiecesGiveTheDigestOfTheWhole) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(Update(OLESTR("ab")), S_OK);
  EXPECT_EQ(Update(OLESTR("c")), S_OK);
  EXPECT_EQ(hash->HashFinalize(), S_OK);
  EXPECT_EQ(Value(), kAbcMd5);
  EXPECT_EQ(hash->Reset(), S_OK);
  EXPECT_EQ(hash->HashUpdate(BytesValue(BytesOf("ab")), -1), S_OK);
  EXPECT_EQ(Update(OLESTR("c")), S_OK);
  EXPECT_EQ(Value(), kAbcMd5);  // without HashFinalize
}

TEST_F(HashObjectTest, HashDataDropsWhatWasAbsorbed) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(Update(OLESTR("something")), S_OK);
  EXPECT_EQ(Data(OLESTR("abc")), S_OK);
  EXPECT_EQ(Value(), kAbcMd5);
}

TEST_F(HashObjectTest, DataAfterTheEndNeedsHashFinalize) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(Data(OLESTR("abc")), S_OK);
  EXPECT_EQ(Update(OLESTR("d")), S_OK);
  EXPECT_EQ(Value(), kAbcMd5);
  EXPECT_EQ(hash->HashFinalize(), S_OK);
  const Text changed = Value();
  EXPECT_NE(changed, kAbcMd5);
  EXPECT_NE(changed, DigestOf("abcd"));
  EXPECT_EQ(hash->Reset(), S_OK);
  EXPECT_EQ(Update(OLESTR("abc")), S_OK);
  EXPECT_EQ(Value(), kAbcMd5);
}

TEST_F(HashObjectTest, AnEmptyArrayIsNoDataAndLeavesTheComputationOpen) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(Update(OLESTR("dropped")), S_OK);
  EXPECT_EQ(Data(BytesValue({})), S_FALSE);
  EXPECT_EQ(Update(OLESTR("abc")), S_OK);
  EXPECT_EQ(Value(), kAbcMd5);
  EXPECT_EQ(Data(BytesValue({})), S_FALSE);
  EXPECT_EQ(Value(), kEmptyMd5);
  EXPECT_EQ(hash->HashUpdate(BytesValue({}), -1), S_FALSE);
}

TEST_F(HashObjectTest, AnEmptyTextIsTheEmptyMessage) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(Update(OLESTR("dropped")), S_OK);
  EXPECT_EQ(Data(OLESTR("")), S_OK);
  EXPECT_EQ(Update(OLESTR("abc")), S_OK);  // after the end: no effect on the digest
  EXPECT_EQ(Value(), kEmptyMd5);
  EXPECT_EQ(Update(OLESTR("")), S_FALSE);
  TestValue null_text(VT_BSTR);
  EXPECT_EQ(Data(null_text), S_OK);
  EXPECT_EQ(Value(), kEmptyMd5);
  EXPECT_EQ(Data(TestValue(VT_EMPTY)), S_OK);
  EXPECT_EQ(Value(), kEmptyMd5);
  EXPECT_EQ(hash->HashUpdate(TestValue(VT_EMPTY), -1), S_FALSE);
}

TEST_F(HashObjectTest, ATextEndsAtItsFirstZero) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(Data(std::basic_string_view<OLECHAR>(OLESTR("abc\0def"), 7)), S_OK);
  EXPECT_EQ(Value(), kAbcMd5);
  EXPECT_EQ(Update(std::basic_string_view<OLECHAR>(OLESTR("\0def"), 4)), S_FALSE);
}

TEST_F(HashObjectTest, OtherValuesAreHashedAsTheirText) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(Data(NumberValue(-120)), S_OK);
  EXPECT_EQ(Value(), DigestOf("-120"));
  TestValue real(VT_R8);
  real->dblVal = 2.5;
  EXPECT_EQ(Data(real), S_OK);
  EXPECT_EQ(Value(), DigestOf("2.5"));
  EXPECT_EQ(hash->Reset(), S_OK);
  EXPECT_EQ(hash->HashUpdate(NumberValue(12), -1), S_OK);
  EXPECT_EQ(hash->HashUpdate(real, -1), S_OK);
  EXPECT_EQ(Value(), DigestOf("122.5"));
}

TEST_F(HashObjectTest, ReferencesAreHashedAsTheirReferents) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
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
    EXPECT_EQ(Data(row.value), S_OK);
    EXPECT_EQ(Value(), row.digest);
  }
  EXPECT_EQ(bytes->parray->cLocks, 0u);
}

TEST_F(HashObjectTest, ObjectsAreHashedAsTheirDefaultValues) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  FakeObject text(TextValue(OLESTR("abc")));
  FakeObject bytes(BytesValue(BytesOf("abc")));
  FakeObject nothing(BytesValue({}));
  FakeObject chain(ObjectValue(&bytes));
  const TestValue values[] = {ObjectValue(&text), ObjectValue(&bytes), UnknownValue(&chain)};
  for (const TestValue& value : values) {
    EXPECT_EQ(Data(value), S_OK);
    EXPECT_EQ(Value(), kAbcMd5);
    EXPECT_EQ(hash->Reset(), S_OK);
    EXPECT_EQ(hash->HashUpdate(value, -1), S_OK);
    EXPECT_EQ(Value(), kAbcMd5);
  }
  EXPECT_EQ(Data(ObjectValue(&nothing)), S_FALSE);
  EXPECT_EQ(text.references, 2u);   // the table's
  EXPECT_EQ(bytes.references, 3u);  // the table's and the chain's
}

TEST_F(HashObjectTest, ADataValueThatDoesNotConvertLeavesARestartedComputation) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
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
    EXPECT_EQ(hash->HashUpdate(failure.value, -1), failure.status);  // changes nothing
    EXPECT_EQ(Value(), DigestOf("earlier"));
    ASSERT_EQ(hash->Reset(), S_OK);
    ASSERT_EQ(Update(OLESTR("earlier")), S_OK);
    EXPECT_EQ(Data(failure.value), failure.status);
    EXPECT_EQ(Update(OLESTR("abc")), S_OK);  // open and empty
    EXPECT_EQ(Value(), kAbcMd5);
  }
  ExpectNoError();
}

TEST_F(HashObjectTest, OtherFailuresAndSuccessesKeepAnEarlierDescription) {
  EXPECT_EQ(hash->Reset(), kNotInitialized);
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(Data(TestValue(VT_NULL)), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(Data(OLESTR("abc")), S_OK);
  EXPECT_EQ(hash->get_HashSize(nullptr), E_POINTER);
  ExpectError(OLESTR("Not initialized."));
}

TEST_F(HashObjectTest, CodePageIsKeptAsGiven) {
  LONG code_page = 77;
  EXPECT_EQ(hash->get_codePage(&code_page), S_OK);
  EXPECT_EQ(code_page, 0);
  for (const LONG number : {65001, -1, -2, 0x7FFFFFFF, -0x7FFFFFFF - 1, 1}) {
    EXPECT_EQ(hash->put_codePage(number), S_OK);
    EXPECT_EQ(hash->get_codePage(&code_page), S_OK);
    EXPECT_EQ(code_page, number);
  }
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(hash->get_codePage(&code_page), S_OK);
  EXPECT_EQ(code_page, 1);  // InitHash leaves it
}

TEST_F(HashObjectTest, TextIsConvertedByTheCodePage) {
  constexpr OLECHAR kText[] = OLESTR("\u00E9\u20AC");
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  const Text utf8 = DigestOf("\xC3\xA9\xE2\x82\xAC");
  const Text western = DigestOf("\xE9\x80");
  const Text low = DigestOf(std::string_view("\xE9\x00\xAC\x20", 4));
  const Text high = DigestOf(std::string_view("\x00\xE9\x20\xAC", 4));
  EXPECT_EQ(Data(kText, 65001), S_OK);
  EXPECT_EQ(Value(), utf8);
  EXPECT_EQ(Data(kText, 1252), S_OK);
  EXPECT_EQ(Value(), western);
  for (const LONG code_page : {-2, -3, -65001}) {
    EXPECT_EQ(Data(kText, code_page), S_OK);
    EXPECT_EQ(Value(), high);
  }
  // -1 stands for the property.
  const struct {
    LONG code_page;
    Text digest;
  } rows[] = {{65001, utf8}, {1252, western}, {-1, low}, {-2, high}};
  for (const auto& expected : rows) {
    SCOPED_TRACE(expected.code_page);
    ASSERT_EQ(hash->put_codePage(expected.code_page), S_OK);
    EXPECT_EQ(Data(kText, -1), S_OK);
    EXPECT_EQ(Value(), expected.digest);
    EXPECT_EQ(hash->Reset(), S_OK);
    EXPECT_EQ(Update(kText, -1), S_OK);
    EXPECT_EQ(Value(), expected.digest);
    EXPECT_EQ(hash->Reset(), S_OK);
    EXPECT_EQ(Update(kText, 1252), S_OK);
    EXPECT_EQ(Value(), western);
  }
}

TEST_F(HashObjectTest, AnUnknownCodePageConvertsTextToNothing) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(Data(OLESTR("abc"), 77777), S_OK);
  EXPECT_EQ(Value(), kEmptyMd5);
  EXPECT_EQ(Update(OLESTR("abc"), 77777), S_FALSE);
}

TEST_F(HashObjectTest, CodePagesLeaveByteArraysAlone) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(Data(BytesValue(BytesOf("abc")), 77777), S_OK);
  EXPECT_EQ(Value(), kAbcMd5);
  EXPECT_EQ(Data(BytesValue(BytesOf("abc")), -2), S_OK);
  EXPECT_EQ(Value(), kAbcMd5);
}

TEST_F(HashObjectTest, BinaryValueIsAByteArray) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  ASSERT_EQ(Update(OLESTR("abc")), S_OK);
  TestValue value;
  ASSERT_EQ(hash->get_BinaryValue(&value), S_OK);
  EXPECT_EQ(V_VT(&value), VT_ARRAY | VT_UI1);
  EXPECT_EQ(SafeArrayGetDim(value->parray), 1u);
  LONG lower = 77;
  EXPECT_EQ(SafeArrayGetLBound(value->parray, 1, &lower), S_OK);
  EXPECT_EQ(lower, 0);
  EXPECT_EQ(BytesOfArray(value), BytesOfHex("900150983cd24fb0d6963f7d28e17f72"));
  EXPECT_EQ(Value(), kAbcMd5);
}

TEST_F(HashObjectTest, WithoutMemoryForAResultTheDigestIsKept) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  ASSERT_EQ(Update(OLESTR("abc")), S_OK);
  for (LONG count = 0;; ++count) {
    BSTR text = nullptr;
    VARIANT value;
    VariantInit(&value);
    MiroltaFailAllocationAfter(count);
    const HRESULT text_status = hash->get_Value(&text);
    const bool text_failed = MiroltaAllocationHasFailed();
    MiroltaFailAllocationAfter(count);
    const HRESULT status = hash->get_BinaryValue(&value);
    const bool failed = MiroltaAllocationHasFailed();
    MiroltaFailAllocationAfter(-1);
    EXPECT_EQ(text_status, text_failed ? E_OUTOFMEMORY : S_OK);
    EXPECT_EQ(text == nullptr, text_failed);
    EXPECT_EQ(status, failed ? E_OUTOFMEMORY : S_OK);
    EXPECT_EQ(V_VT(&value), failed ? VT_EMPTY : VT_ARRAY | VT_UI1);
    SysFreeString(text);
    VariantClear(&value);
    if (!failed && !text_failed) break;
    ASSERT_LT(count, 10);
  }
  ExpectNoError();
  EXPECT_EQ(Value(), kAbcMd5);
}

TEST_F(HashObjectTest, WithoutMemoryForItsTextDataFails) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
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

TEST_F(HashObjectTest, FreesEverythingWithItsLastReference) {
  hash.Reset();
  const long before = LiveAllocations();
  ASSERT_EQ(CreateHashObject(nullptr, IID_IHashObject, reinterpret_cast<void**>(hash.Put())), S_OK);
  ASSERT_EQ(Init(OLESTR("SHA256")), S_OK);
  ASSERT_EQ(hash->put_Key(TextValue(OLESTR("key"))), S_OK);
  EXPECT_GT(LiveAllocations(), before);
  hash.Reset();
  EXPECT_EQ(LiveAllocations(), before);
  EXPECT_EQ(CurrentModule()->lock_count.load(), 0);
}

TEST_F(HashObjectTest, WithoutMemoryThereIsNoObject) {
  void* out = nullptr;
  HRESULT status = S_OK;
  {
    const FailAllocationsAfter none(0);
    status = CreateHashObject(nullptr, IID_IHashObject, &out);
  }
  EXPECT_EQ(status, E_OUTOFMEMORY);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(CurrentModule()->lock_count.load(), 1);  // the fixture's
}

}  // namespace
}  // namespace mirolta::test
