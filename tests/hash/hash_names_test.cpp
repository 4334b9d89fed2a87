#include <gtest/gtest.h>

#include "digest_support.h"
#include "memory_watch.h"

namespace mirolta::test {
namespace {

TEST(HashAlgorithms, TableHoldsThreeNamesAndAnEmptyOne) {
  EXPECT_EQ(sizeof kHashAlgorithms[0], 16 * sizeof(OLECHAR));
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(SameWideName(kHashAlgorithms[i], kAlgorithms[i].name));
  EXPECT_EQ(kHashAlgorithms[3][0], 0);
}

TEST(HashAlgorithms, AreFoundByTheirExactNamesOnly) {
  EXPECT_EQ(FindHashAlgorithm(OLESTR("MD5")), kHashMd5);
  EXPECT_EQ(FindHashAlgorithm(OLESTR("SHA1")), kHashSha1);
  EXPECT_EQ(FindHashAlgorithm(OLESTR("SHA256")), kHashSha256);
  for (const OLECHAR* name : {OLESTR("md5"), OLESTR("Sha1"), OLESTR("SHA-1"), OLESTR("SHA-256"),
                              OLESTR(" SHA1"), OLESTR("SHA1 "), OLESTR("SHA"), OLESTR("SHA2567"),
                              OLESTR("SHA512"), OLESTR(""), static_cast<const OLECHAR*>(nullptr)}) {
    EXPECT_EQ(FindHashAlgorithm(name), -1);
    HashEngine* engine = reinterpret_cast<HashEngine*>(8);
    EXPECT_EQ(CreateHashEngine(name, &engine), -1);
    EXPECT_EQ(engine, nullptr);
  }
}

TEST(HashAlgorithms, EnginesHaveTheNameAndSizeOfTheirAlgorithm) {
  for (const Algorithm& algorithm : kAlgorithms) {
    const auto engine = MakeEngine(algorithm.name);
    ASSERT_NE(engine, nullptr);
    OLECHAR name[16];
    ASSERT_EQ(engine->GetName(name, 16), S_OK);
    EXPECT_TRUE(SameWideName(name, algorithm.name));
    EXPECT_EQ(engine->DigestSize(), algorithm.digest_size);
  }
}

TEST(HashAlgorithms, WithoutMemoryAreFoundButMakeNoEngine) {
  for (int i = 0; i < 3; ++i) {
    HashEngine* engine = reinterpret_cast<HashEngine*>(8);
    int position = -2;
    {
      FailAllocationsAfter fail(0);
      position = CreateHashEngine(kAlgorithms[i].name, &engine);
    }
    EXPECT_EQ(position, i);
    EXPECT_EQ(engine, nullptr);
  }
}

TEST(DigestToHex, WritesUppercaseDigitsIntoAnEvenLength) {
  const uint8_t digest[] = {0x0F, 0xA0};
  OLECHAR text[5];
  EXPECT_EQ(DigestToHex(digest, 4, text), S_OK);
  EXPECT_TRUE(SameWideName(text, OLESTR("0FA0")));
  EXPECT_EQ(DigestToHex(digest, 3, text), E_INVALIDARG);
  EXPECT_EQ(DigestToHex(nullptr, 4, text), E_POINTER);
  EXPECT_EQ(DigestToHex(digest, 4, nullptr), E_POINTER);
}

}  // namespace
}  // namespace mirolta::test
