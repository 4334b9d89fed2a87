// Allocations that fail, and what freed memory still holds.
#include <optional>

#include "memory_watch.h"
#include "runtime_allocations.h"
#include "stream_sides.h"

namespace mirolta::test {
namespace {

class StreamMemoryTest : public testing::Test {
 protected:
  void TearDown() override {
    failure_.reset();
    MiroltaFailAllocationAfter(-1);
  }
  void FailNext() { failure_.emplace(0); }

  OwnedBstr aes_ = Bstr(OLESTR("AES"));
  OwnedBstr md5_ = Bstr(OLESTR("MD5"));
  TestValue key_ = BytesValue(kKey);
  ScriptedStream target_;
  std::optional<FailOneAllocation> failure_;
};

TEST_F(StreamMemoryTest, AFilterWithoutMemoryIsNotMade) {
  void* out = nullptr;
  FailNext();
  EXPECT_EQ(CreateToviStreamDigest(nullptr, IID_IStream, &out), E_OUTOFMEMORY);
  FailNext();
  EXPECT_EQ(CreateToviStreamCrypt(nullptr, IID_IStream, &out), E_OUTOFMEMORY);
  EXPECT_EQ(out, nullptr);
}

TEST_F(StreamMemoryTest, ADigestEngineWithoutMemoryIsNoFailureAndSwitchesOn) {
  const DigestFilter filter;
  EXPECT_EQ(filter->put_ReadAlgorithm(md5_.Get()), S_OK);
  EXPECT_EQ(filter->put_ReadHashEnable(VARIANT_FALSE), S_OK);
  FailNext();
  EXPECT_EQ(filter->put_ReadAlgorithm(md5_.Get()), S_OK);
  VARIANT_BOOL enabled = 0;
  EXPECT_EQ(filter->get_ReadHashEnable(&enabled), S_OK);
  EXPECT_EQ(enabled, 1);
  BSTR text = nullptr;
  EXPECT_EQ(filter->get_ReadValue(&text), kBareNotInitializedStatus);
}

TEST_F(StreamMemoryTest, ACipherEngineWithoutMemoryIsNoFailureAndLeavesNone) {
  const CryptFilter filter(&target_);
  EXPECT_EQ(filter->put_WriteAlgorithm(aes_.Get()), S_OK);
  EXPECT_EQ(filter->put_WritePadType(5), S_OK);
  FailNext();
  EXPECT_EQ(filter->put_WriteAlgorithm(aes_.Get()), S_OK);
  EXPECT_EQ(filter->put_WriteKey(key_), kNotInitialized);
  EXPECT_EQ(filter->put_WritePadType(5), kNotInitialized);
  LONG pad = -1;
  EXPECT_EQ(filter->get_WritePadType(&pad), S_OK);
  EXPECT_EQ(pad, 0);
  EXPECT_EQ(WriteAll(filter.Stream(), BytesOf("plain")), S_OK);
  EXPECT_EQ(target_.content, BytesOf("plain"));
}

TEST_F(StreamMemoryTest, AReadWithoutRoomTakesNothingFromTheStream) {
  const CryptFilter filter(&target_);
  Reading(filter).Choose();
  target_.content = PatternBytes(32);
  uint8_t bytes[32];
  ULONG got = kUntouched;
  FailNext();
  EXPECT_EQ(filter.Stream()->Read(bytes, 32, &got), E_OUTOFMEMORY);
  EXPECT_EQ(got, 0u);
  EXPECT_TRUE(target_.read_sizes.empty());
  EXPECT_EQ(filter.Stream()->Read(bytes, 32, &got), S_OK);
  EXPECT_EQ(got, 32u);
}

// Fails each allocation of a call, of which there are some, and checks its result each time.
template <typename Call, typename Check>
void FailEach(Call call, Check check) {
  EXPECT_GT(FailEachAllocation(call,
                               [&](HRESULT status, bool failed) {
                                 EXPECT_EQ(status, failed ? E_OUTOFMEMORY : S_OK);
                                 if (failed) check();
                               }),
            0);
}

TEST_F(StreamMemoryTest, AResultWithoutMemoryIsReportedAndEmpty) {
  const DigestFilter digest;
  const CryptFilter crypt;
  BSTR text = nullptr;
  const auto no_text = [&] { EXPECT_EQ(text, nullptr); };
  const auto freed = [&](HRESULT status) {
    SysFreeString(text);
    text = nullptr;
    return status;
  };
  for (int chosen = 0; chosen < 2; ++chosen) {
    FailEach([&] { return freed(digest->get_ReadAlgorithm(&text)); }, no_text);
    FailEach([&] { return freed(crypt->get_WriteAlgorithm(&text)); }, no_text);
    EXPECT_EQ(digest->put_ReadAlgorithm(md5_.Get()), S_OK);
    EXPECT_EQ(crypt->put_WriteAlgorithm(aes_.Get()), S_OK);
  }
  EXPECT_EQ(digest->put_ReadKey(key_), S_OK);
  EXPECT_EQ(crypt->put_WriteKey(key_), S_OK);
  FailEach([&] { return freed(digest->get_ReadValue(&text)); }, no_text);
  OwnedVariant value;
  const auto no_value = [&] { EXPECT_EQ(value.Type(), VT_EMPTY); };
  FailEach([&] { return digest->get_ReadBinaryValue(value.Put()); }, no_value);
  FailEach([&] { return digest->get_ReadKey(value.Put()); }, no_value);
  FailEach([&] { return crypt->get_WriteKey(value.Put()); }, no_value);
}

TEST_F(StreamMemoryTest, BytesOnTheirWayAreWipedFromFreedMemory) {
  static const char kSecret[] = "plaintext to hide and not to leave behind here..";
  const Bytes secret = BytesOf(kSecret);
  std::vector<std::vector<uint8_t>> secrets = {{kKey.begin(), kKey.begin() + 8}};
  for (int at = 0; at < 24; at += 8)
    secrets.emplace_back(secret.begin() + at, secret.begin() + at + 8);
  std::optional<WatchFreedMemory> watch;
  ScriptedStream sink;
  {
    const CryptFilter filter(&target_);
    EXPECT_EQ(filter->put_ReadDecrypt(VARIANT_FALSE), S_OK);
    Reading(filter).Choose();
    Writing(filter).Choose();
    target_.content = secret;
    target_.content.reserve(10000);
    uint8_t bytes[40];
    watch.emplace(secrets);
    // Read part, fail a read, copy, write part, and leave all of it queued.
    EXPECT_EQ(filter.Stream()->Read(bytes, 40, nullptr), S_OK);
    target_.position = 0;
    target_.failing_read = target_.read_sizes.size() + 1;
    target_.moved_by_failure = 30;
    EXPECT_EQ(filter.Stream()->Read(bytes, 40, nullptr), kStreamFailure);
    target_.position = 0;
    EXPECT_EQ(filter.Stream()->CopyTo(&sink, Large(45), nullptr, nullptr), S_OK);
    target_.position = 0;
    EXPECT_EQ(filter.Stream()->Read(bytes, 40, nullptr), S_OK);
    target_.largest_write = 0;
    EXPECT_EQ(filter.Stream()->Write(secret.data(), 40, nullptr), S_OK);
  }
  EXPECT_GT(watch->Freed(), 0);
  EXPECT_EQ(watch->FreedWithSecret(), 0);
}

}  // namespace
}  // namespace mirolta::test
