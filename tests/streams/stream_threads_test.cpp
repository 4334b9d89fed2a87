// Several threads on one filter: what the lock covers, and what goes past it.
#include <atomic>
#include <thread>

#include "portable/test_hooks.h"
#include "stream_test_kit.h"

namespace mirolta::stream_test {
namespace {

const Bytes kKey = Pattern(16, 3);

void RunTwice(const std::function<void()>& work) {
  std::thread first(work);
  std::thread second(work);
  first.join();
  second.join();
}

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
  OwnedVariant key;
  *key.Put() = ByteArray(kKey);
  EXPECT_EQ(filter->put_ReadAlgorithm(Text(OLESTR("AES")).Get()), S_OK);
  EXPECT_EQ(filter->put_ReadKey(key.Value()), S_OK);
  EXPECT_EQ(filter->put_WriteAlgorithm(Text(OLESTR("AES")).Get()), S_OK);
  EXPECT_EQ(filter->put_WriteKey(key.Value()), S_OK);
}

TEST(StreamThreadsTest, WritesOfTwoThreadsFollowEachOtherWhole) {
  constexpr int kWrites = 2000;
  ExclusiveStream target;
  const DigestFilter digest(&target);
  EXPECT_EQ(digest->put_WriteAlgorithm(Text(OLESTR("SHA1")).Get()), S_OK);
  const CryptFilter crypt(digest.Stream());
  ChooseCipher(crypt);
  RunTwice([&] {
    for (int i = 0; i < kWrites; ++i) EXPECT_EQ(WriteAll(crypt.Stream(), Pattern(16)), S_OK);
  });
  EXPECT_FALSE(target.shared);
  const Bytes block = PeerAes(kKey, Pattern(16), true);
  Bytes expected;
  for (int i = 0; i < 2 * kWrites; ++i) expected.insert(expected.end(), block.begin(), block.end());
  EXPECT_EQ(target.content, expected);
  OwnedBstr value;
  EXPECT_EQ(digest->get_WriteValue(value.Put()), S_OK);
  EXPECT_EQ(Narrow(value.Get()), PeerDigest("SHA1", expected));
}

TEST(StreamThreadsTest, ReadsOfTwoThreadsShareTheStreamOut) {
  ExclusiveStream target;
  target.content = Pattern(200000);
  const DigestFilter digest(&target);
  EXPECT_EQ(digest->put_ReadAlgorithm(Text(OLESTR("MD5")).Get()), S_OK);
  std::atomic<size_t> total = 0;
  RunTwice([&] {
    uint8_t bytes[100];
    ULONG got = 0;
    do {
      EXPECT_TRUE(SUCCEEDED(digest.Stream()->Read(bytes, sizeof bytes, &got)));
      total += got;
    } while (got != 0);
  });
  EXPECT_FALSE(target.shared);
  EXPECT_EQ(total, target.content.size());
  OwnedBstr value;
  EXPECT_EQ(digest->get_ReadValue(value.Put()), S_OK);
  EXPECT_EQ(Narrow(value.Get()), PeerDigest("MD5", target.content));
}

TEST(StreamThreadsTest, ASecondThreadIsNotMistakenForAReturn) {
  // While one thread is inside, another waits: it is refused nothing.
  ExclusiveStream target;
  target.content = Pattern(100);
  const CryptFilter filter(&target);
  RunTwice([&] {
    for (int i = 0; i < 3000; ++i) {
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
  target.content = other.content = Pattern(1 << 20);
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
      EXPECT_EQ(digest->put_ReadAlgorithm(Text(OLESTR("MD5")).Get()), S_OK);
      EXPECT_EQ(digest->putref_Stream(i % 2 == 0 ? &other : &target), S_OK);
      EXPECT_EQ(crypt->put_ReadAlgorithm(Text(OLESTR("none")).Get()), MIROLTA_STATUS(0x80042777u));
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

// The members that take no lock answer while a stream is stuck in an operation.
TEST(StreamThreadsTest, UnlockedMembersDoNotWaitForATransfer) {
  std::atomic<int> stage = 0;
  ScriptedStream target(Pattern(32));
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

LONG volatile entered = 0;
LONG volatile left = 0;

// How often a call enters a lock.
LONG LocksOf(const std::function<void()>& call) {
  entered = 0;
  left = 0;
  static const MiroltaLockProbe kProbe = {[](CRITICAL_SECTION*) { InterlockedIncrement(&entered); },
                                          [](CRITICAL_SECTION*) { InterlockedIncrement(&left); }};
  MiroltaSetLockProbe(&kProbe);
  call();
  MiroltaSetLockProbe(nullptr);
  EXPECT_EQ(entered, left);
  return entered;
}

struct LockRow {
  const char* member;
  LONG locks;
  std::function<void()> call;
};

void ExpectLocks(const std::vector<LockRow>& rows) {
  for (const LockRow& row : rows) EXPECT_EQ(LocksOf(row.call), row.locks) << row.member;
}

// With and without a target, an algorithm, a key: the lock is entered once and left.
std::vector<LockRow> StreamRows(IStream* stream, IStream* sink) {
  static uint8_t bytes[16];
  static STATSTG statistics;
  return {
      {"Read", 1, [=] { stream->Read(bytes, 16, nullptr); }},
      {"Write", 1, [=] { stream->Write(bytes, 16, nullptr); }},
      {"CopyTo", 1, [=] { stream->CopyTo(sink, Large(16), nullptr, nullptr); }},
      {"Seek", 1, [=] { stream->Seek(Move(0), STREAM_SEEK_CUR, nullptr); }},
      {"SetSize", 1, [=] { stream->SetSize(Large(0)); }},
      {"Commit", 1, [=] { stream->Commit(0); }},
      {"Revert", 1, [=] { stream->Revert(); }},
      {"LockRegion", 1, [=] { stream->LockRegion(Large(0), Large(0), 0); }},
      {"UnlockRegion", 1, [=] { stream->UnlockRegion(Large(0), Large(0), 0); }},
      {"Stat", 1, [=] { stream->Stat(&statistics, STATFLAG_NONAME); }},
      {"Clone", 0, [=] { stream->Clone(nullptr); }},
      {"Read into nothing", 0, [=] { stream->Read(nullptr, 16, nullptr); }},
      {"Write of nothing", 0, [=] { stream->Write(nullptr, 16, nullptr); }},
  };
}

TEST(StreamThreadsTest, WhichMembersOfTheDigestTakeTheLock) {
  ScriptedStream target(Pattern(64));
  ScriptedStream sink;
  const DigestFilter filter;
  const OwnedBstr md5 = Text(OLESTR("MD5"));
  const OwnedBstr none = Text(OLESTR("none"));
  OwnedVariant key;
  *key.Put() = ByteArray(kKey);
  IToviStreamDigest* const f = filter.operator->();
  IUnknown* object = nullptr;
  OwnedBstr text;
  OwnedVariant value;
  VARIANT_BOOL flag = 0;
  LONG number = 0;
  for (int round = 0; round < 3; ++round) {
    ExpectLocks({
        {"get_Stream", 1,
         [&] {
           if (SUCCEEDED(f->get_Stream(&object))) object->Release();
         }},
        {"putref_Stream null", 0, [&] { f->putref_Stream(nullptr); }},
        {"get_ReadAlgorithm", 1, [&] { f->get_ReadAlgorithm(text.Put()); }},
        {"get_WriteAlgorithm", 1, [&] { f->get_WriteAlgorithm(text.Put()); }},
        {"get_ReadKey", 1, [&] { f->get_ReadKey(value.Put()); }},
        {"get_WriteKey", 1, [&] { f->get_WriteKey(value.Put()); }},
        {"get_ReadKey null", 0, [&] { f->get_ReadKey(nullptr); }},
        {"put_ReadKey", 1, [&] { f->put_ReadKey(key.Value()); }},
        {"put_WriteKey", 1, [&] { f->put_WriteKey(key.Value()); }},
        {"get_ReadValue", 1, [&] { f->get_ReadValue(text.Put()); }},
        {"get_WriteValue", 1, [&] { f->get_WriteValue(text.Put()); }},
        {"get_ReadBinaryValue", 1, [&] { f->get_ReadBinaryValue(value.Put()); }},
        {"get_WriteBinaryValue", 1, [&] { f->get_WriteBinaryValue(value.Put()); }},
        {"ReadReset", 1, [&] { f->ReadReset(); }},
        {"WriteReset", 1, [&] { f->WriteReset(); }},
        {"ReadResetKey", 1, [&] { f->ReadResetKey(); }},
        {"WriteResetKey", 1, [&] { f->WriteResetKey(); }},
        {"ReadFinalize", 1, [&] { f->ReadFinalize(); }},
        {"WriteFinalize", 1, [&] { f->WriteFinalize(); }},
        {"get_ReadHashEnable", 1, [&] { f->get_ReadHashEnable(&flag); }},
        {"get_WriteHashEnable", 1, [&] { f->get_WriteHashEnable(&flag); }},
        {"put_ReadHashEnable", 0, [&] { f->put_ReadHashEnable(1); }},
        {"put_WriteHashEnable", 0, [&] { f->put_WriteHashEnable(1); }},
        {"get_SeekingForbidden", 1, [&] { f->get_SeekingForbidden(&flag); }},
        {"put_SeekingForbidden", 1, [&] { f->put_SeekingForbidden(1); }},
        {"get_codePage", 1, [&] { f->get_codePage(&number); }},
        {"put_codePage", 1, [&] { f->put_codePage(0); }},
    });
    ExpectLocks(StreamRows(filter.Stream(), &sink));
    ExpectLocks({{"putref_Stream", 1, [&] { f->putref_Stream(&target); }},
                 {"put_ReadAlgorithm none", 1, [&] { f->put_ReadAlgorithm(none.Get()); }},
                 {"put_ReadAlgorithm", 1, [&] { f->put_ReadAlgorithm(md5.Get()); }},
                 {"put_WriteAlgorithm", 1, [&] { f->put_WriteAlgorithm(md5.Get()); }}});
  }
}

TEST(StreamThreadsTest, WhichMembersOfTheCipherTakeTheLock) {
  ScriptedStream target(Pattern(64));
  ScriptedStream sink;
  const CryptFilter filter;
  const OwnedBstr aes = Text(OLESTR("AES"));
  const OwnedBstr none = Text(OLESTR("none"));
  OwnedVariant key;
  *key.Put() = ByteArray(kKey);
  IToviStreamCrypt* const f = filter.operator->();
  OwnedBstr text;
  OwnedVariant value;
  VARIANT_BOOL flag = 0;
  LONG number = 0;
  for (int round = 0; round < 3; ++round) {
    ExpectLocks(StreamRows(filter.Stream(), &sink));
    ExpectLocks({
        {"get_ReadAlgorithm", 1, [&] { f->get_ReadAlgorithm(text.Put()); }},
        {"get_WriteAlgorithm", 1, [&] { f->get_WriteAlgorithm(text.Put()); }},
        {"get_ReadKey", 1, [&] { f->get_ReadKey(value.Put()); }},
        {"get_WriteKey", 1, [&] { f->get_WriteKey(value.Put()); }},
        {"put_ReadKey", 1, [&] { f->put_ReadKey(key.Value()); }},
        {"put_WriteKey", 1, [&] { f->put_WriteKey(key.Value()); }},
        {"ReadReset", 1, [&] { f->ReadReset(); }},
        {"WriteReset", 1, [&] { f->WriteReset(); }},
        {"ReadFinalize", 1, [&] { f->ReadFinalize(); }},
        {"WriteFinalize", 1, [&] { f->WriteFinalize(); }},
        {"ReadResetKey", 1, [&] { f->ReadResetKey(); }},
        {"WriteResetKey", 1, [&] { f->WriteResetKey(); }},
        {"get_ReadDecrypt", 1, [&] { f->get_ReadDecrypt(&flag); }},
        {"get_WriteDecrypt", 1, [&] { f->get_WriteDecrypt(&flag); }},
        {"put_ReadDecrypt", 1, [&] { f->put_ReadDecrypt(1); }},
        {"put_WriteDecrypt", 1, [&] { f->put_WriteDecrypt(0); }},
        {"get_ReadPadType", 0, [&] { f->get_ReadPadType(&number); }},
        {"get_WritePadType", 0, [&] { f->get_WritePadType(&number); }},
    });
    ExpectLocks({{"putref_Stream", 1, [&] { f->putref_Stream(&target); }},
                 {"put_ReadAlgorithm none", 1, [&] { f->put_ReadAlgorithm(none.Get()); }},
                 {"put_ReadAlgorithm", 1, [&] { f->put_ReadAlgorithm(aes.Get()); }},
                 {"put_WriteAlgorithm", 1, [&] { f->put_WriteAlgorithm(aes.Get()); }},
                 {"put_ReadPadType", 0, [&] { f->put_ReadPadType(3); }},
                 {"put_WritePadType", 0, [&] { f->put_WritePadType(3); }}});
  }
}

}  // namespace
}  // namespace mirolta::stream_test
