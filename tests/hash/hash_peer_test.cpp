// Engines against OpenSSL: short messages of every length, split anywhere; longer ones split at
// random.
#include <algorithm>
#include <random>

#include "digest_peer.h"
#include "digest_support.h"

namespace mirolta::test {
namespace {

using HashPeer = EngineTest;
MIROLTA_FOR_EACH_ALGORITHM(HashPeer);

TEST_P(HashPeer, AgreesOnEveryLengthUpTo300) {
  for (size_t length = 0; length <= 300; ++length) {
    const Bytes message = PatternBytes(length, static_cast<uint32_t>(length));
    EXPECT_EQ(DigestOf(*engine_, message), PeerDigest(GetParam().name, message)) << length;
  }
}

TEST_P(HashPeer, AgreesOnEverySplitInTwo) {
  for (const size_t length : {1u, 55u, 56u, 63u, 64u, 65u, 119u, 120u, 128u, 200u}) {
    const Bytes message = PatternBytes(length);
    const Bytes expected = PeerDigest(GetParam().name, message);
    for (uint32_t split = 0; split <= length; ++split) {
      engine_->Start();
      engine_->Update(message.data(), split);
      engine_->Update(message.data() + split, static_cast<uint32_t>(length) - split);
      engine_->Finish();
      ASSERT_EQ(RawBytes(*engine_), expected) << length << " at " << split;
    }
  }
}

TEST_P(HashPeer, AgreesOnRandomSplitsAtAnyAlignment) {
  std::mt19937 random(11);
  for (int round = 0; round < 300; ++round) {
    const size_t offset = random() % 16;
    const Bytes memory = PatternBytes(offset + random() % 3000, static_cast<uint32_t>(random()));
    const Bytes message = Tail(memory, offset);
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
    ASSERT_EQ(RawBytes(*engine_), PeerDigest(GetParam().name, message));
  }
}

}  // namespace
}  // namespace mirolta::test
