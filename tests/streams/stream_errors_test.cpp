// Error descriptions of failing members, and members that publish none.
#include "stream_test_kit.h"

namespace mirolta::stream_test {
namespace {

// Takes the thread's error description; empty if there is none.
std::string TakeDescription() {
  OwnedReference<IErrorInfo> error;
  if (GetErrorInfo(0, error.Put()) != S_OK) return "";
  OwnedBstr text;
  EXPECT_EQ(error->GetDescription(text.Put()), S_OK);
  return Narrow(text.Get());
}

const char kNoInterfaceText[] =
    "The object does not support IStream interface nor it is a ToviStream object.";
const char kNoStreamText[] = "No stream has been set yet.";
const char kNotFoundText[] = "Algorithm not found.";
const char kNotInitializedText[] = "Not initialized.";

template <typename Dual>
void ExpectSharedErrors() {
  TakeDescription();
  const Filter<Dual> filter;
  ScriptedStream target;
  target.is_stream = false;
  EXPECT_EQ(filter->putref_Stream(&target), kNoStreamInterface);
  EXPECT_EQ(TakeDescription(), kNoInterfaceText);
  IUnknown* out = nullptr;
  EXPECT_EQ(filter->get_Stream(&out), kNoStream);
  EXPECT_EQ(TakeDescription(), kNoStreamText);
  const OwnedBstr unknown = Text(OLESTR("Sha1"));
  EXPECT_EQ(filter->put_ReadAlgorithm(unknown.Get()), kAlgorithmNotFound);
  EXPECT_EQ(TakeDescription(), kNotFoundText);
  EXPECT_EQ(filter->put_WriteAlgorithm(unknown.Get()), kAlgorithmNotFound);
  EXPECT_EQ(TakeDescription(), kNotFoundText);
  OwnedVariant key;
  EXPECT_EQ(filter->get_ReadKey(key.Put()), kNotInitialized);
  EXPECT_EQ(TakeDescription(), kNotInitializedText);
  EXPECT_EQ(filter->put_WriteKey(key.Value()), kNotInitialized);
  EXPECT_EQ(TakeDescription(), kNotInitializedText);
  // Stream operations and null pointers publish nothing.
  uint8_t byte = 0;
  EXPECT_EQ(filter.Stream()->Revert(), STG_E_REVERTED);
  EXPECT_EQ(filter.Stream()->Read(nullptr, 1, nullptr), E_POINTER);
  EXPECT_EQ(filter.Stream()->Read(&byte, 1, nullptr), S_FALSE);
  EXPECT_EQ(filter->putref_Stream(nullptr), E_POINTER);
  EXPECT_EQ(filter->get_Stream(nullptr), E_POINTER);
  EXPECT_EQ(TakeDescription(), "");
}

TEST(StreamErrorsTest, BothFiltersDescribeTheirFailures) {
  ExpectSharedErrors<IToviStreamDigest>();
  ExpectSharedErrors<IToviStreamCrypt>();
}

TEST(StreamErrorsTest, TheDigestReadersPublishNothing) {
  TakeDescription();
  const DigestFilter filter;
  BSTR text = nullptr;
  EXPECT_EQ(filter->get_ReadValue(&text), 10104);
  EXPECT_EQ(filter->get_WriteBinaryValue(nullptr), E_POINTER);
  EXPECT_EQ(TakeDescription(), "");
  EXPECT_EQ(filter->ReadReset(), kNotInitialized);
  EXPECT_EQ(TakeDescription(), kNotInitializedText);
  EXPECT_EQ(filter->WriteFinalize(), kNotInitialized);
  EXPECT_EQ(TakeDescription(), kNotInitializedText);
}

TEST(StreamErrorsTest, AMissingKeyOfACipherIsNoDescribedFailure) {
  TakeDescription();
  ScriptedStream target(Pattern(16));
  const CryptFilter filter(&target);
  EXPECT_EQ(filter->put_ReadAlgorithm(Text(OLESTR("AES")).Get()), S_OK);
  uint8_t byte = 0;
  EXPECT_EQ(filter.Stream()->Read(&byte, 1, nullptr), E_UNEXPECTED);
  EXPECT_EQ(filter->WriteFinalize(), S_OK);
  EXPECT_EQ(TakeDescription(), "");
  EXPECT_EQ(filter->put_WritePadType(1), kNotInitialized);
  EXPECT_EQ(TakeDescription(), kNotInitializedText);
}

}  // namespace
}  // namespace mirolta::stream_test
