#include "hash_engine.h"

#include <gtest/gtest.h>

#include "digest_support.h"
#include "memory_watch.h"

namespace mirolta::test {
namespace {

class PlainEngine : public testing::TestWithParam<Algorithm> {
 protected:
  std::unique_ptr<HashEngine> engine_ = MakeEngine(GetParam().name);
};

INSTANTIATE_TEST_SUITE_P(All, PlainEngine, testing::ValuesIn(kAlgorithms),
                         [](const auto& row) { return std::string(row.param.label); });

TEST_P(PlainEngine, Sizes) {
  EXPECT_EQ(engine_->BlockSize(), 64);
  EXPECT_EQ(engine_->DigestSize(), GetParam().digest_size);
}

TEST_P(PlainEngine, ReadAtOnceGivesTheEmptyMessage) {
  EXPECT_EQ(DigestText(*engine_), GetParam().empty_digest);
}

TEST_P(PlainEngine, DigestsAbc) {
  EXPECT_EQ(Feed(*engine_, BytesOf("abc")), S_OK);
  EXPECT_EQ(engine_->Final(), S_OK);
  EXPECT_EQ(DigestText(*engine_), GetParam().abc_digest);
}

TEST_P(PlainEngine, LengthZeroChangesNothing) {
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

TEST_P(PlainEngine, DataAfterFinalCountsBehindThePadding) {
  Feed(*engine_, BytesOf("abc"));
  engine_->Final();
  EXPECT_EQ(Feed(*engine_, BytesOf("more")), S_OK);
  EXPECT_EQ(DigestText(*engine_), GetParam().abc_digest);
  EXPECT_EQ(engine_->Finish(), S_OK);
  // The same bytes given in one go: message, its padding and length, and the rest.
  Bytes whole = BytesOf("abc");
  whole.push_back(0x80);
  whole.resize(64);
  whole[GetParam().digest_size == 16 ? 56 : 63] = 24;
  for (const uint8_t byte : BytesOf("more")) whole.push_back(byte);
  const auto other = MakeEngine(GetParam().name);
  EXPECT_EQ(RawBytes(*engine_), DigestOf(*other, whole));
}

TEST_P(PlainEngine, ASecondFinalPadsAgain) {
  for (const size_t length : {0u, 55u, 56u, 63u, 64u, 119u, 120u}) {
    const Bytes message = PatternBytes(length);
    DigestOf(*engine_, message);
    EXPECT_EQ(engine_->Final(), S_OK);
    Bytes whole = message;
    whole.push_back(0x80);
    while (whole.size() % 64 != 56) whole.push_back(0);
    Bytes bits(8);
    for (size_t i = 0; i < 8; ++i) bits[i] = static_cast<uint8_t>(uint64_t{length} * 8 >> 8 * i);
    if (GetParam().digest_size != 16) bits = Bytes(bits.rbegin(), bits.rend());
    whole.insert(whole.end(), bits.begin(), bits.end());
    const auto other = MakeEngine(GetParam().name);
    EXPECT_EQ(RawBytes(*engine_), DigestOf(*other, whole)) << length;
  }
}

TEST_P(PlainEngine, StartDiscards) {
  Feed(*engine_, BytesOf("discarded"));
  EXPECT_EQ(engine_->Start(), S_OK);
  Feed(*engine_, BytesOf("abc"));
  EXPECT_EQ(engine_->Finish(), S_OK);
  EXPECT_EQ(DigestText(*engine_), GetParam().abc_digest);
}

TEST_P(PlainEngine, KeyedOperationsNeedAKey) {
  Feed(*engine_, BytesOf("ab"));
  EXPECT_EQ(engine_->BeginKeyed(), E_UNEXPECTED);
  EXPECT_EQ(engine_->FinishKeyed(), E_UNEXPECTED);
  Feed(*engine_, BytesOf("c"));
  EXPECT_EQ(DigestText(*engine_), GetParam().abc_digest);
}

TEST_P(PlainEngine, Names) {
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

TEST_P(PlainEngine, NothingOfTheMessageIsLeftInFreedMemory) {
  const Bytes secret = BytesOf("the secret of this test");
  Feed(*engine_, secret);
  WatchFreedMemory watch(secret.data(), secret.size());
  engine_.reset();
  EXPECT_GT(watch.Freed(), 0);
  EXPECT_EQ(watch.FreedWithSecret(), 0);
}

TEST_P(PlainEngine, DigestAndChainingWordsAreWiped) {
  const Bytes digest = DigestOf(*engine_, BytesOf("abc"));
  // The chaining words stand in the processor's byte order, the digest in the algorithm's.
  for (const Bytes& trace :
       {Bytes(digest.end() - 4, digest.end()), Bytes(digest.rbegin(), digest.rbegin() + 4)}) {
    HashEngine* engine = MakeEngine(GetParam().name).release();
    DigestOf(*engine, BytesOf("abc"));
    WatchFreedMemory watch(trace.data(), trace.size());
    delete engine;
    EXPECT_GT(watch.Freed(), 0);
    EXPECT_EQ(watch.FreedWithSecret(), 0);
  }
}

}  // namespace
}  // namespace mirolta::test
