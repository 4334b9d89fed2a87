// Against OpenSSL: every short length, every split of it, random splits of longer messages.
#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <algorithm>
#include <random>

#include "digest_support.h"

namespace mirolta::test {
namespace {

Bytes PeerDigest(const Algorithm& algorithm, const Bytes& message) {
  const EVP_MD* digests[] = {EVP_md5(), EVP_sha1(), EVP_sha256()};
  uint8_t out[64];
  unsigned length = 0;
  EVP_Digest(message.data(), message.size(), out, &length,
             digests[FindHashAlgorithm(algorithm.name)], nullptr);
  return Bytes(out, out + length);
}

class HashPeer : public testing::TestWithParam<Algorithm> {
 protected:
  std::unique_ptr<HashEngine> engine_ = MakeEngine(GetParam().name);
};

INSTANTIATE_TEST_SUITE_P(All, HashPeer, testing::ValuesIn(kAlgorithms),
                         [](const auto& row) { return std::string(row.param.label); });

TEST_P(HashPeer, EveryLengthUpTo300) {
  for (size_t length = 0; length <= 300; ++length) {
    const Bytes message = PatternBytes(length, static_cast<uint32_t>(length));
    EXPECT_EQ(DigestOf(*engine_, message), PeerDigest(GetParam(), message)) << length;
  }
}

TEST_P(HashPeer, EverySplitInTwo) {
  for (const size_t length : {1u, 55u, 56u, 63u, 64u, 65u, 119u, 120u, 128u, 200u}) {
    const Bytes message = PatternBytes(length);
    const Bytes expected = PeerDigest(GetParam(), message);
    for (uint32_t split = 0; split <= length; ++split) {
      engine_->Start();
      engine_->Update(message.data(), split);
      engine_->Update(message.data() + split, static_cast<uint32_t>(length) - split);
      engine_->Finish();
      ASSERT_EQ(RawBytes(*engine_), expected) << length << " at " << split;
    }
  }
}

TEST_P(HashPeer, RandomSplitsAtAnyAlignment) {
  std::mt19937 random(11);
  for (int round = 0; round < 300; ++round) {
    const size_t offset = random() % 16;
    const Bytes memory = PatternBytes(offset + random() % 3000, static_cast<uint32_t>(random()));
    const Bytes message(memory.begin() + static_cast<long>(offset), memory.end());
    const size_t bound = 1 + random() % 400;
    engine_->Start();
    for (size_t at = offset; at < memory.size();) {
      const size_t rest = memory.size() - at;
      const size_t piece = std::min<size_t>(rest, random() % (bound + 1));
      EXPECT_EQ(engine_->Update(memory.data() + at, static_cast<uint32_t>(piece)),
                piece == 0 ? S_FALSE : S_OK);
      at += piece;
    }
    engine_->Finish();
    ASSERT_EQ(RawBytes(*engine_), PeerDigest(GetParam(), message));
  }
}

}  // namespace
}  // namespace mirolta::test
