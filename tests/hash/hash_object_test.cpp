// HashObject: its members in every state, with what they leave. Its data are in
// hash_object_data_test.cpp, its keys in hash_object_key_test.cpp.
#include "hash_object_fixture.h"
#include "memory_watch.h"
#include "portable/test_hooks.h"

namespace mirolta::test {
namespace {

// The members that report a missing algorithm.
const struct {
  const char* name;
  HRESULT (*call)(IHashObject* hash);
} kCallsThatNeedAnAlgorithm[] = {
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

TEST_F(HashObjectTest, WithoutAnAlgorithmMembersRaiseNotInitialized) {
  for (const auto& member : kCallsThatNeedAnAlgorithm) {
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
    EXPECT_EQ(Hashed(OLESTR("abc")), algorithm.abc);
    EXPECT_EQ(Value(), algorithm.abc);
  }
}

// The whole text counts, also what follows a zero character.
TEST_F(HashObjectTest, UnknownNamesLeaveNoAlgorithm) {
  const Text names[] = {OLESTR("md5"),
                        OLESTR("sha1"),
                        OLESTR("SHA-1"),
                        OLESTR(" MD5"),
                        OLESTR("MD5 "),
                        OLESTR("MD"),
                        OLESTR("SHA2567"),
                        OLESTR(""),
                        OLESTR("0"),
                        Text(OLESTR("MD5\0x"), 5),
                        Text(OLESTR("MD5\0"), 4),
                        Text(OLESTR("\0MD5"), 4),
                        Text(OLESTR("\0"), 1)};
  for (const Text& name : names) {
    SCOPED_TRACE(testing::PrintToString(name));
    ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
    EXPECT_EQ(Init(name), kNotFound);
    ExpectError(OLESTR("Algorithm not found."));
    EXPECT_FALSE(HasAlgorithm());
    EXPECT_EQ(hash->get_Value(nullptr), kBareNotInitializedStatus);
    EXPECT_EQ(Data(OLESTR("abc")), kNotInitialized);
  }
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(hash->InitHash(nullptr), kNotFound);
  EXPECT_FALSE(HasAlgorithm());
}

TEST_F(Md5ObjectTest, WithoutMemoryForTheEngineThereIsNoAlgorithmButNoFailure) {
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

TEST_F(Md5ObjectTest, InitHashDropsTheKey) {
  ASSERT_EQ(hash->put_Key(TextValue(OLESTR("key"))), S_OK);
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  TestValue key = NumberValue(77);
  EXPECT_EQ(hash->get_Key(&key), S_OK);
  EXPECT_EQ(V_VT(&key), VT_EMPTY);
  EXPECT_EQ(DigestOf("abc"), kAbcMd5);
}

TEST_F(Md5ObjectTest, PiecesGiveTheDigestOfTheWhole) {
  EXPECT_EQ(Update(OLESTR("ab")), S_OK);
  EXPECT_EQ(Update(OLESTR("c")), S_OK);
  EXPECT_EQ(hash->HashFinalize(), S_OK);
  EXPECT_EQ(Value(), kAbcMd5);
  EXPECT_EQ(hash->Reset(), S_OK);
  EXPECT_EQ(Update(BytesValue(BytesOf("ab"))), S_OK);
  EXPECT_EQ(Update(OLESTR("c")), S_OK);
  EXPECT_EQ(Value(), kAbcMd5);  // without HashFinalize
}

TEST_F(Md5ObjectTest, HashDataDropsWhatWasAbsorbed) {
  EXPECT_EQ(Update(OLESTR("something")), S_OK);
  EXPECT_EQ(Hashed(OLESTR("abc")), kAbcMd5);
}

TEST_F(Md5ObjectTest, DataAfterTheEndNeedsHashFinalize) {
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

TEST_F(Md5ObjectTest, BinaryValueIsAByteArray) {
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

TEST_F(Md5ObjectTest, WithoutMemoryForAResultTheDigestIsKept) {
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
