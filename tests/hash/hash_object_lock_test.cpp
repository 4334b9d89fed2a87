// The lock of an object: nobody else is inside meanwhile, but the thread inside may call again.
#include <atomic>
#include <thread>

#include "calling_object.h"
#include "hash_object_fixture.h"

namespace mirolta::test {
namespace {

class HashObjectLockTest : public HashObjectTest {};

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
