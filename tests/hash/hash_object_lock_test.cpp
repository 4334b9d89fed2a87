// The lock of an object: who takes it, and that nobody else is inside meanwhile.
#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "calling_object.h"
#include "hash_object_fixture.h"
#include "portable/test_hooks.h"

namespace mirolta::test {
namespace {

std::atomic<int> entered{0};
std::atomic<int> left{0};
std::atomic<CRITICAL_SECTION*> last{nullptr};

constexpr MiroltaLockProbe kProbe = {[](CRITICAL_SECTION* section) {
                                       ++entered;
                                       last = section;
                                     },
                                     [](CRITICAL_SECTION*) { ++left; }};

class HashObjectLockTest : public HashObjectTest {
 protected:
  void SetUp() override {
    HashObjectTest::SetUp();
    MiroltaSetLockProbe(&kProbe);
  }
  void TearDown() override { MiroltaSetLockProbe(nullptr); }

  // How often `call` takes a lock; every one is left again.
  int LocksOf(const std::function<void()>& call) {
    entered = 0;
    left = 0;
    call();
    EXPECT_EQ(entered, left);
    return entered;
  }
};

TEST_F(HashObjectLockTest, EveryMemberTakesTheLockOnceWhateverItReturns) {
  LONG number = 0;
  const TestValue data = TextValue(OLESTR("abc"));
  const TestValue null_value(VT_NULL);
  const OwnedBstr md5(SysAllocString(OLESTR("MD5")));
  const OwnedBstr unknown(SysAllocString(OLESTR("none")));
  CRITICAL_SECTION* lock = nullptr;
  for (const BSTR name : {unknown.Get(), md5.Get()}) {
    const std::vector<std::function<void()>> calls = {
        [&] { hash->InitHash(name); },
        [&] { hash->get_HashSize(&number); },
        [&] { hash->get_BlockSize(&number); },
        [&] { hash->HashData(data, -1); },
        [&] { hash->HashData(null_value, -1); },
        [&] { hash->HashUpdate(data, -1); },
        [&] { hash->HashUpdate(null_value, -1); },
        [&] { hash->HashFinalize(); },
        [&] {
          OwnedBstr value;
          hash->get_Value(value.Put());
        },
        [&] {
          TestValue value;
          hash->get_BinaryValue(&value);
        },
        [&] { hash->get_codePage(&number); },
        [&] { hash->put_codePage(number); },
        [&] { hash->put_Key(data); },
        [&] { hash->put_Key(null_value); },
        [&] {
          TestValue key;
          hash->get_Key(&key);
        },
        [&] { hash->Reset(); },
        [&] { hash->ResetKey(); },
    };
    for (size_t i = 0; i < calls.size(); ++i) {
      EXPECT_EQ(LocksOf(calls[i]), 1) << "call " << i;
      if (lock == nullptr) lock = last;
      EXPECT_EQ(last, lock) << "call " << i;
    }
  }
}

TEST_F(HashObjectLockTest, AMissingPlaceIsSeenBeforeTheLock) {
  EXPECT_EQ(LocksOf([&] {
              EXPECT_EQ(hash->get_HashSize(nullptr), E_POINTER);
              EXPECT_EQ(hash->get_BlockSize(nullptr), E_POINTER);
              EXPECT_EQ(hash->get_BinaryValue(nullptr), E_POINTER);
              EXPECT_EQ(hash->get_codePage(nullptr), E_POINTER);
              EXPECT_EQ(hash->get_Key(nullptr), E_POINTER);
            }),
            0);
}

TEST_F(HashObjectLockTest, CountingAndQueryingTakeNoLock) {
  EXPECT_EQ(LocksOf([&] {
              OwnedReference<ISupportErrorInfo> other;
              EXPECT_EQ(other.Query(hash.Get(), IID_ISupportErrorInfo), S_OK);
              hash->AddRef();
              hash->Release();
            }),
            0);
}

TEST_F(HashObjectLockTest, OtherThreadsWaitWhileOneIsInside) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  std::atomic<bool> second_started{false};
  std::atomic<bool> second_done{false};
  std::thread second;
  CallingObject data([&] {
    second = std::thread([&] {
      second_started = true;
      LONG number = 0;
      EXPECT_EQ(hash->get_codePage(&number), S_OK);
      second_done = true;
    });
    while (!second_started) std::this_thread::yield();
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();
    EXPECT_FALSE(second_done);
  });
  EXPECT_EQ(Data(ObjectValue(&data)), S_OK);
  second.join();
  EXPECT_TRUE(second_done);
  EXPECT_EQ(Value(), kAbcMd5);
}

TEST_F(HashObjectLockTest, TheThreadInsideMayCallAgain) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  CallingObject data([&] {
    LONG number = 7;
    EXPECT_EQ(hash->get_codePage(&number), S_OK);
    EXPECT_EQ(number, 0);
  });
  EXPECT_EQ(Data(ObjectValue(&data)), S_OK);
  EXPECT_EQ(Value(), kAbcMd5);
}

// The caller's object may even change the algorithm under the member that reads it.
TEST_F(HashObjectLockTest, ACallFromInsideMayTakeTheAlgorithmAway) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  CallingObject removes([&] { EXPECT_EQ(Init(OLESTR("none")), kNotFound); });
  EXPECT_EQ(Data(ObjectValue(&removes)), kNotInitialized);
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(hash->HashUpdate(ObjectValue(&removes), -1), kNotInitialized);
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  CallingObject key([&] { EXPECT_EQ(Init(OLESTR("none")), kNotFound); });
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(hash->put_Key(ObjectValue(&key)), kNotInitialized);
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  CallingObject changes([&] { EXPECT_EQ(Init(OLESTR("SHA1")), S_OK); });
  EXPECT_EQ(Data(ObjectValue(&changes)), S_OK);
  EXPECT_EQ(Value(), OLESTR("A9993E364706816ABA3E25717850C26C9CD0D89D"));
}

}  // namespace
}  // namespace mirolta::test
