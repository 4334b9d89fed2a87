// Error descriptions of failing members, and members that publish none.
#include "stream_test_kit.h"

namespace mirolta::test {
namespace {

constexpr OLECHAR kNoStreamInterfaceText[] =
    OLESTR("The object does not support IStream interface nor it is a ToviStream object.");
constexpr OLECHAR kNoStreamText[] = OLESTR("No stream has been set yet.");
constexpr OLECHAR kNotFoundText[] = OLESTR("Algorithm not found.");
constexpr OLECHAR kNotInitializedText[] = OLESTR("Not initialized.");

template <typename Dual>
class StreamErrorsTest : public testing::Test {
 protected:
  StreamErrorsTest() { SetErrorInfo(0, nullptr); }

  Filter<Dual> filter_;
};
TYPED_TEST_SUITE(StreamErrorsTest, BothFilters);

TYPED_TEST(StreamErrorsTest, FailuresAreDescribed) {
  const Filter<TypeParam>& filter = this->filter_;
  ScriptedStream target;
  target.is_stream = false;
  EXPECT_EQ(filter->putref_Stream(&target), kNoStreamInterface);
  ExpectError(kNoStreamInterfaceText);
  IUnknown* out = nullptr;
  EXPECT_EQ(filter->get_Stream(&out), kNoStream);
  ExpectError(kNoStreamText);
  const OwnedBstr unknown = Bstr(OLESTR("Sha1"));
  EXPECT_EQ(filter->put_ReadAlgorithm(unknown.Get()), kNotFound);
  ExpectError(kNotFoundText);
  EXPECT_EQ(filter->put_WriteAlgorithm(unknown.Get()), kNotFound);
  ExpectError(kNotFoundText);
  OwnedVariant key;
  EXPECT_EQ(filter->get_ReadKey(key.Put()), kNotInitialized);
  ExpectError(kNotInitializedText);
  EXPECT_EQ(filter->put_WriteKey(key.Value()), kNotInitialized);
  ExpectError(kNotInitializedText);
}

TYPED_TEST(StreamErrorsTest, StreamOperationsAndNullPointersAreNotDescribed) {
  const Filter<TypeParam>& filter = this->filter_;
  uint8_t byte = 0;
  EXPECT_EQ(filter.Stream()->Revert(), STG_E_REVERTED);
  EXPECT_EQ(filter.Stream()->Read(nullptr, 1, nullptr), E_POINTER);
  EXPECT_EQ(filter.Stream()->Read(&byte, 1, nullptr), S_FALSE);
  EXPECT_EQ(filter->putref_Stream(nullptr), E_POINTER);
  EXPECT_EQ(filter->get_Stream(nullptr), E_POINTER);
  ExpectNoError();
}

using StreamDigestErrorsTest = StreamErrorsTest<IToviStreamDigest>;

TEST_F(StreamDigestErrorsTest, ReadersOfADigestDescribeNothing) {
  BSTR text = nullptr;
  EXPECT_EQ(filter_->get_ReadValue(&text), kBareNotInitializedStatus);
  EXPECT_EQ(filter_->get_WriteBinaryValue(nullptr), E_POINTER);
  ExpectNoError();
  EXPECT_EQ(filter_->ReadReset(), kNotInitialized);
  ExpectError(kNotInitializedText);
  EXPECT_EQ(filter_->WriteFinalize(), kNotInitialized);
  ExpectError(kNotInitializedText);
}

TEST(StreamCryptErrorsTest, AMissingKeyOfACipherIsNoDescribedFailure) {
  SetErrorInfo(0, nullptr);
  ScriptedStream target(PatternBytes(16));
  const CryptFilter filter(&target);
  EXPECT_EQ(filter->put_ReadAlgorithm(Bstr(OLESTR("AES")).Get()), S_OK);
  uint8_t byte = 0;
  EXPECT_EQ(filter.Stream()->Read(&byte, 1, nullptr), E_UNEXPECTED);
  EXPECT_EQ(filter->WriteFinalize(), S_OK);
  ExpectNoError();
  EXPECT_EQ(filter->put_WritePadType(1), kNotInitialized);
  ExpectError(kNotInitializedText);
}

}  // namespace
}  // namespace mirolta::test
