// Several threads on one filter: what the lock covers, and what takes no lock.
#include <atomic>
#include <thread>

#include "all_at_once.h"
#include "stream_sides.h"

namespace mirolta::test {
namespace {

constexpr unsigned kThreads = 8;

// A target that notices a second caller.
class ExclusiveStream : public ScriptedStream {
 public:
  ExclusiveStream() {
    on_read = on_write = [this] {
      if (inside_.exchange(true)) shared = true;
      std::this_thread::yield();
      inside_ = false;
    };
  }
  std::atomic<bool> shared = false;

 private:
  std::atomic<bool> inside_ = false;
};

void ChooseCipher(const CryptFilter& filter) {
  Reading(filter).Choose();
  Writing(filter).Choose();
}

TEST(StreamThreadsTest, WritesOfManyThreadsFollowEachOtherWhole) {
  constexpr unsigned kWrites = 500;
  ExclusiveStream target;
  const DigestFilter digest(&target);
  Writing(digest).Choose(OLESTR("SHA1"));
  const CryptFilter crypt(digest.Stream());
  ChooseCipher(crypt);
  AllAtOnce(kThreads, [&](unsigned) {
    for (unsigned i = 0; i < kWrites; ++i)
      EXPECT_EQ(WriteAll(crypt.Stream(), PatternBytes(16)), S_OK);
  });
  EXPECT_FALSE(target.shared);
  const Bytes block = PeerAes(kKey, PatternBytes(16), true);
  Bytes expected;
  for (unsigned i = 0; i < kThreads * kWrites; ++i) expected = std::move(expected) + block;
  EXPECT_EQ(target.content, expected);
  EXPECT_EQ(Writing(digest).Value(), PeerText(OLESTR("SHA1"), expected));
}

TEST(StreamThreadsTest, ReadsOfManyThreadsShareTheStreamOut) {
  ExclusiveStream target;
  target.content = PatternBytes(200000);
  const DigestFilter digest(&target);
  Reading(digest).Choose(OLESTR("MD5"));
  std::atomic<size_t> total = 0;
  AllAtOnce(kThreads, [&](unsigned) {
    uint8_t bytes[100];
    ULONG got = 0;
    do {
      EXPECT_TRUE(SUCCEEDED(digest.Stream()->Read(bytes, sizeof bytes, &got)));
      total += got;
    } while (got != 0);
  });
  EXPECT_FALSE(target.shared);
  EXPECT_EQ(total, target.content.size());
  EXPECT_EQ(Reading(digest).Value(), PeerText(OLESTR("MD5"), target.content));
}

TEST(StreamThreadsTest, AnotherThreadIsNotMistakenForAReturn) {
  // While one thread is inside, the others wait and are not refused.
  ExclusiveStream target;
  target.content = PatternBytes(100);
  const CryptFilter filter(&target);
  AllAtOnce(kThreads, [&](unsigned) {
    for (int i = 0; i < 800; ++i) {
      EXPECT_EQ(filter.Stream()->Seek(Move(0), STREAM_SEEK_CUR, nullptr), S_OK);
      EXPECT_EQ(WriteAll(filter.Stream(), {1}), S_OK);
      EXPECT_EQ(filter->put_WriteDecrypt(VARIANT_FALSE), S_OK);
    }
  });
  EXPECT_FALSE(target.shared);
}

TEST(StreamThreadsTest, EverythingMayChangeWhileAStreamIsInUse) {
  ExclusiveStream target;
  ExclusiveStream other;
  target.content = other.content = PatternBytes(1 << 20);
  const DigestFilter digest(&target);
  const CryptFilter crypt(digest.Stream());
  std::atomic<bool> done = false;
  std::thread client([&] {
    uint8_t bytes[64];
    ScriptedStream sink;
    for (int i = 0; i < 2000; ++i) {
      // A cipher without a key refuses; nothing else may happen.
      HRESULT status = crypt.Stream()->Read(bytes, sizeof bytes, nullptr);
      EXPECT_TRUE(SUCCEEDED(status) || status == E_UNEXPECTED);
      status = crypt.Stream()->CopyTo(&sink, Large(100), nullptr, nullptr);
      EXPECT_TRUE(SUCCEEDED(status) || status == E_UNEXPECTED);
    }
    done = true;
  });
  std::thread script([&] {
    for (int i = 0; !done; ++i) {
      ChooseCipher(crypt);
      EXPECT_EQ(crypt->ReadFinalize(), S_OK);
      Reading(digest).Choose(OLESTR("MD5"));
      EXPECT_EQ(digest->putref_Stream(i % 2 == 0 ? &other : &target), S_OK);
      EXPECT_EQ(Reading(crypt).Select(OLESTR("none")), kNotFound);
    }
  });
  std::thread unlocked([&] {
    while (!done) {
      LONG pad = 0;
      EXPECT_EQ(crypt->get_ReadPadType(&pad), S_OK);
      const HRESULT status = crypt->put_ReadPadType(7);
      EXPECT_TRUE(status == S_OK || status == kNotInitialized);
      EXPECT_EQ(digest->put_ReadHashEnable(VARIANT_TRUE), S_OK);
      EXPECT_EQ(digest->put_WriteHashEnable(VARIANT_FALSE), S_OK);
    }
  });
  client.join();
  script.join();
  unlocked.join();
  EXPECT_FALSE(target.shared);
  EXPECT_FALSE(other.shared);
}

// The members that take no lock return while a stream blocks in an operation.
TEST(StreamThreadsTest, UnlockedMembersDoNotWaitForATransfer) {
  std::atomic<int> stage = 0;
  ScriptedStream target(PatternBytes(32));
  target.on_read = [&] {
    stage = 1;
    while (stage == 1) std::this_thread::yield();
  };
  const CryptFilter crypt(&target);
  ChooseCipher(crypt);
  const DigestFilter digest(crypt.Stream());
  std::thread reader([&] { EXPECT_EQ(ReadOnce(digest.Stream(), 16, S_OK).size(), 16u); });
  while (stage == 0) std::this_thread::yield();
  LONG pad = -1;
  EXPECT_EQ(crypt->get_ReadPadType(&pad), S_OK);
  EXPECT_EQ(pad, 0);
  EXPECT_EQ(crypt->put_ReadPadType(5), S_OK);
  EXPECT_EQ(crypt->get_WritePadType(&pad), S_OK);
  EXPECT_EQ(crypt->put_WritePadType(6), S_OK);
  EXPECT_EQ(digest->put_ReadHashEnable(VARIANT_TRUE), S_OK);
  EXPECT_EQ(digest->put_WriteHashEnable(VARIANT_TRUE), S_OK);
  stage = 2;
  reader.join();
  EXPECT_EQ(crypt->get_ReadPadType(&pad), S_OK);
  EXPECT_EQ(pad, 5);
}

}  // namespace
}  // namespace mirolta::test
