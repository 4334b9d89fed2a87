// The lock of HashObject: other threads wait, the thread inside may call again.
#include "calling_object.h"
#include "hash_object_fixture.h"
#include "other_thread.h"

namespace mirolta::test {
namespace {

using HashObjectLockTest = HashObjectTest;

TEST_F(HashObjectLockTest, OtherThreadsWaitWhileOneIsInside) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  OtherThread second;
  CallingObject data([&] {
    second.Begin([&] {
      LONG number = 0;
      EXPECT_EQ(hash->get_codePage(&number), S_OK);
    });
    EXPECT_TRUE(second.IsHeldUp());
  });
  EXPECT_EQ(Data(ObjectValue(&data)), S_OK);
  second.Join();
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

TEST_F(HashObjectLockTest, ACallFromInsideMayDropOrChangeTheAlgorithm) {
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  CallingObject removes([&] { EXPECT_EQ(Init(OLESTR("none")), kNotFound); });
  EXPECT_EQ(Data(ObjectValue(&removes)), kNotInitialized);
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(hash->HashUpdate(ObjectValue(&removes), -1), kNotInitialized);
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  EXPECT_EQ(hash->put_Key(ObjectValue(&removes)), kNotInitialized);
  ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  CallingObject changes([&] { EXPECT_EQ(Init(OLESTR("SHA1")), S_OK); });
  EXPECT_EQ(Data(ObjectValue(&changes)), S_OK);
  EXPECT_EQ(Value(), OLESTR("A9993E364706816ABA3E25717850C26C9CD0D89D"));
}

}  // namespace
}  // namespace mirolta::test
