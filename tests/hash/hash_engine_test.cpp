#include "hash_engine.h"

#include <gtest/gtest.h>

#include "digest_support.h"
#include "memory_watch.h"

namespace mirolta::test {
namespace {

using PlainEngine = EngineTest;
MIROLTA_FOR_EACH_ALGORITHM(PlainEngine);

TEST_P(PlainEngine, HasBlocksOf64BytesAndItsAlgorithmsDigestSize) {
  EXPECT_EQ(engine_->BlockSize(), 64);
  EXPECT_EQ(engine_->DigestSize(), GetParam().digest_size);
}

TEST_P(PlainEngine, ReadAtOnceGivesTheDigestOfTheEmptyMessage) {
  EXPECT_EQ(DigestText(*engine_), GetParam().empty_digest);
}

TEST_P(PlainEngine, FinalEndsTheComputation) {
  EXPECT_EQ(Feed(*engine_, BytesOf("abc")), S_OK);
  EXPECT_EQ(engine_->Final(), S_OK);
  EXPECT_EQ(DigestText(*engine_), GetParam().abc_digest);
}

TEST_P(PlainEngine, UpdateOfLengthZeroChangesNothing) {
  EXPECT_EQ(Feed(*engine_, BytesOf("ab")), S_OK);
  EXPECT_EQ(engine_->Update(nullptr, 0), S_FALSE);
  EXPECT_EQ(engine_->Update(reinterpret_cast<const uint8_t*>("x"), 0), S_FALSE);
  EXPECT_EQ(Feed(*engine_, BytesOf("c")), S_OK);
  EXPECT_EQ(DigestText(*engine_), GetParam().abc_digest);
}

TEST_P(PlainEngine, InitClearsTheDigestBytes) {
  EXPECT_EQ(engine_->Final(), S_OK);
  EXPECT_NE(RawBytes(*engine_), Bytes(RawBytes(*engine_).size(), 0));
  EXPECT_EQ(engine_->Init(), S_OK);
  EXPECT_EQ(RawBytes(*engine_), Bytes(RawBytes(*engine_).size(), 0));
}

TEST_P(PlainEngine, DigestFinishesOnce) {
  Feed(*engine_, BytesOf("abc"));
  const Bytes open = RawBytes(*engine_);
  EXPECT_EQ(open, Bytes(open.size(), 0));
  const uint8_t* first = engine_->Digest();
  EXPECT_EQ(first, engine_->RawDigest());
  EXPECT_EQ(DigestText(*engine_), GetParam().abc_digest);
  EXPECT_EQ(DigestText(*engine_), GetParam().abc_digest);
}

TEST_P(PlainEngine, DataAfterFinalFollowsThePadding) {
  Feed(*engine_, BytesOf("abc"));
  engine_->Final();
  EXPECT_EQ(Feed(*engine_, BytesOf("more")), S_OK);
  EXPECT_EQ(DigestText(*engine_), GetParam().abc_digest);
  EXPECT_EQ(engine_->Finish(), S_OK);
  const Bytes absorbed = Padded(GetParam(), BytesOf("abc")) + BytesOf("more");
  EXPECT_EQ(RawBytes(*engine_), PlainDigestOf(absorbed));
}

TEST_P(PlainEngine, ASecondFinalPadsAgain) {
  for (const size_t length : {0u, 55u, 56u, 63u, 64u, 119u, 120u}) {
    const Bytes message = PatternBytes(length);
    DigestOf(*engine_, message);
    EXPECT_EQ(engine_->Final(), S_OK);
    EXPECT_EQ(RawBytes(*engine_), PlainDigestOf(Padded(GetParam(), message))) << length;
  }
}

TEST_P(PlainEngine, StartDiscardsWhatWasAbsorbed) {
  Feed(*engine_, BytesOf("discarded"));
  EXPECT_EQ(engine_->Start(), S_OK);
  Feed(*engine_, BytesOf("abc"));
  EXPECT_EQ(engine_->Finish(), S_OK);
  EXPECT_EQ(DigestText(*engine_), GetParam().abc_digest);
}

TEST_P(PlainEngine, RefusesKeyedOperationsWithoutAKey) {
  Feed(*engine_, BytesOf("ab"));
  EXPECT_EQ(engine_->BeginKeyed(), E_UNEXPECTED);
  EXPECT_EQ(engine_->FinishKeyed(), E_UNEXPECTED);
  Feed(*engine_, BytesOf("c"));
  EXPECT_EQ(DigestText(*engine_), GetParam().abc_digest);
}

TEST_P(PlainEngine, GivesItsNameWhereThereIsRoom) {
  OLECHAR name[16];
  EXPECT_EQ(engine_->GetName(name, 16), S_OK);
  EXPECT_TRUE(SameWideName(name, GetParam().name));
  const auto length = static_cast<LONG>(std::string(GetParam().label).size());
  name[0] = 'x';
  EXPECT_EQ(engine_->GetName(name, length), E_OUTOFMEMORY);
  EXPECT_EQ(name[0], 'x');
  EXPECT_EQ(engine_->GetName(name, length + 1), S_OK);
  EXPECT_EQ(engine_->GetName(nullptr, 16), E_OUTOFMEMORY);
  BSTR text = nullptr;
  EXPECT_EQ(engine_->GetNameString(&text), S_OK);
  ASSERT_NE(text, nullptr);
  EXPECT_TRUE(SameWideName(text, GetParam().name));
  SysFreeString(text);
  EXPECT_EQ(engine_->GetNameString(nullptr), E_POINTER);
}

TEST_P(PlainEngine, LeavesNothingOfTheMessageInFreedMemory) {
  const Bytes secret = BytesOf("the secret of this test");
  Feed(*engine_, secret);
  WatchFreedMemory watch(secret.data(), secret.size());
  engine_.reset();
  EXPECT_GT(watch.Freed(), 0);
  EXPECT_EQ(watch.FreedWithSecret(), 0);
}

TEST_P(PlainEngine, LeavesNoDigestAndNoChainingValueInFreedMemory) {
  const Bytes digest = DigestOf(*engine_, BytesOf("abc"));
  // The chaining value stands in the processor's byte order, the digest in the algorithm's.
  const std::vector<Bytes> traces = {Tail(digest, digest.size() - 4),
                                     Bytes(digest.rbegin(), digest.rbegin() + 4), Head(digest, 4)};
  const WatchFreedMemory watch(traces);
  engine_.reset();
  EXPECT_GT(watch.Freed(), 0);
  EXPECT_EQ(watch.FreedWithSecret(), 0);
}

}  // namespace
}  // namespace mirolta::test
