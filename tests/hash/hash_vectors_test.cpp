// Published vectors: FIPS 180, RFC 1321, RFC 2202, RFC 4231 and NIST's response files.
#include <gtest/gtest.h>

#include <algorithm>

#include "digest_support.h"
#include "vector_file.h"

namespace mirolta::test {
namespace {

// Feeds a message so many times over, in pieces whose sizes are mostly no multiple of anything.
Bytes DigestOfRepeated(HashEngine& engine, const Bytes& message, unsigned long times) {
  Bytes copies;
  for (unsigned long i = 0; i < std::min(times, 1000ul); ++i) copies = copies + message;
  EXPECT_EQ(engine.Start(), S_OK);
  size_t piece = 1;
  for (size_t left = message.size() * times; left != 0;) {
    const size_t now = std::min({piece, left, copies.size()});
    EXPECT_EQ(engine.Update(copies.data(), static_cast<uint32_t>(now)), S_OK);
    left -= now;
    piece = message.size() * ((piece / message.size() + 62) % 997 | 1);
  }
  EXPECT_NE(engine.Digest(), nullptr);
  return RawBytes(engine);
}

void CheckMessages(const OLECHAR* algorithm, const std::string& path) {
  const auto engine = MakeEngine(algorithm);
  CheckVectorFile(path, {"Msg", "Repeat", "MD"}, [&](const VectorCase& one) {
    const Bytes message = one.Bytes("Msg");
    EXPECT_EQ(one.Has("Repeat") ? DigestOfRepeated(*engine, message, one.Number("Repeat"))
                                : DigestOf(*engine, message),
              one.Bytes("MD"));
  });
}

void CheckHmac(const OLECHAR* algorithm, const std::string& path) {
  const auto engine = MakeEngine(algorithm);
  CheckVectorFile(path, {"Key", "Msg", "MD"}, [&](const VectorCase& one) {
    ASSERT_EQ(engine->SetKey(BytesValue(one.Bytes("Key")), 0), S_OK);
    const Bytes expected = one.Bytes("MD");
    const Bytes mac = DigestOf(*engine, one.Bytes("Msg"));
    // Some are published as their first 80 bits or more.
    ASSERT_TRUE(expected.size() >= 10 && expected.size() <= mac.size());
    EXPECT_EQ(Head(mac, expected.size()), expected);
  });
}

// Each checkpoint is the end of a chain of 1000 digests, each of the three before it.
void CheckMonteCarlo(const OLECHAR* algorithm, const std::string& path) {
  const auto engine = MakeEngine(algorithm);
  Bytes seed;
  size_t checkpoints = 0;
  CheckVectorFile(path, {"Seed", "MD"}, [&](const VectorCase& one) {
    if (one.Has("Seed")) {
      seed = one.Bytes("Seed");
      return;
    }
    Bytes a = seed, b = seed, c = seed;
    for (int round = 0; round < 1000; ++round) {
      engine->Start();
      for (const Bytes* part : {&a, &b, &c}) Feed(*engine, *part);
      engine->Finish();
      a.swap(b);
      b.swap(c);
      c = RawBytes(*engine);
    }
    seed = c;
    ASSERT_EQ(seed, one.Bytes("MD"));
    ++checkpoints;
  });
  EXPECT_EQ(checkpoints, 100u);
}

const std::string kFolder = MIROLTA_VECTORS;

TEST(HashVectors, DigestsOfMessagesArePublishedOnes) {
  CheckMessages(OLESTR("MD5"), kFolder + "/md5.txt");
  CheckMessages(OLESTR("SHA1"), kFolder + "/sha1.txt");
  CheckMessages(OLESTR("SHA256"), kFolder + "/sha256.txt");
}

TEST(HashVectors, HmacsArePublishedOnes) {
  CheckHmac(OLESTR("MD5"), kFolder + "/hmac_md5.txt");
  CheckHmac(OLESTR("SHA1"), kFolder + "/hmac_sha1.txt");
  CheckHmac(OLESTR("SHA256"), kFolder + "/hmac_sha256.txt");
}

TEST(HashVectors, ChainsOfDigestsPassPublishedCheckpoints) {
  CheckMonteCarlo(OLESTR("SHA1"), kFolder + "/sha1_monte.txt");
  CheckMonteCarlo(OLESTR("SHA256"), kFolder + "/sha256_monte.txt");
}

}  // namespace
}  // namespace mirolta::test
