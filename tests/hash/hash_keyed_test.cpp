#include <cstring>

#include "digest_peer.h"
#include "digest_support.h"
#include "md5_engine.h"
#include "memory_watch.h"
#include "portable/test_hooks.h"
#include "sha1_engine.h"
#include "sha256_engine.h"

namespace mirolta::test {
namespace {

class KeyedEngine : public EngineTest {
 protected:
  // The type of the key that GetKey gives: empty without one.
  VARTYPE KeyType() {
    TestValue key;
    EXPECT_EQ(engine_->GetKey(&key), S_OK);
    return V_VT(&key);
  }
};
MIROLTA_FOR_EACH_ALGORITHM(KeyedEngine);

TEST_P(KeyedEngine, AgreesWithThePeerForEveryKeyLength) {
  for (size_t key_length = 1; key_length <= 200; ++key_length) {
    const Bytes key = PatternBytes(key_length, 77);
    ASSERT_EQ(engine_->SetKey(BytesValue(key), 0), S_OK);
    for (const size_t length : {0u, 1u, 55u, 56u, 63u, 64u, 65u, 200u}) {
      const Bytes message = PatternBytes(length);
      ASSERT_EQ(DigestOf(*engine_, message), PeerHmac(GetParam().name, key, message))
          << key_length << ", " << length;
    }
  }
}

TEST_P(KeyedEngine, SetKeyDiscardsDataAndBeginsKeyed) {
  const Bytes key = BytesOf("key");
  Feed(*engine_, BytesOf("discarded"));
  ASSERT_EQ(engine_->SetKey(TextValue(OLESTR("key")), 0), S_OK);
  EXPECT_EQ(RawBytes(*engine_), Bytes(RawBytes(*engine_).size(), 0));
  Feed(*engine_, BytesOf("a"));
  Feed(*engine_, BytesOf("bc"));
  ASSERT_NE(engine_->Digest(), nullptr);  // Digest finishes the keyed way
  EXPECT_EQ(RawBytes(*engine_), PeerHmac(GetParam().name, key, BytesOf("abc")));
}

TEST_P(KeyedEngine, StartKeepsTheKeyAcrossComputations) {
  for (const size_t key_length : {3u, 64u, 65u}) {
    const Bytes key = PatternBytes(key_length);
    ASSERT_EQ(engine_->SetKey(BytesValue(key), 0), S_OK);
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(DigestOf(*engine_, BytesOf("abc")), PeerHmac(GetParam().name, key, BytesOf("abc")));
    }
    Feed(*engine_, BytesOf("into the finished one"));
    EXPECT_EQ(DigestOf(*engine_, BytesOf("x")), PeerHmac(GetParam().name, key, BytesOf("x")));
  }
}

// A computation begins the same whether its key has been used before or not: the digest bytes are
// not an earlier computation's.
TEST_P(KeyedEngine, StartWithTheSameKeyClearsTheDigestBytes) {
  ASSERT_EQ(engine_->SetKey(BytesValue(BytesOf("key")), 0), S_OK);
  const Bytes fresh = RawBytes(*engine_);
  EXPECT_NE(DigestOf(*engine_, BytesOf("abc")), fresh);
  ASSERT_EQ(engine_->Start(), S_OK);
  EXPECT_EQ(RawBytes(*engine_), fresh);
}

TEST_P(KeyedEngine, ASecondFinishFollowsTheOuterPadding) {
  const Bytes key = BytesOf("key");
  ASSERT_EQ(engine_->SetKey(BytesValue(key), 0), S_OK);
  DigestOf(*engine_, BytesOf("abc"));
  Feed(*engine_, BytesOf("more"));
  ASSERT_EQ(engine_->Finish(), S_OK);
  // The second computation is the outer one of the first, its padding, and "more".
  const Bytes inner = PlainDigestOf(InnerPad(key) + BytesOf("abc"));
  const Bytes second = PlainDigestOf(Padded(GetParam(), OuterPad(key) + inner) + BytesOf("more"));
  EXPECT_EQ(RawBytes(*engine_), PlainDigestOf(OuterPad(key) + second));
}

TEST_P(KeyedEngine, GetKeyGivesTheBytesAsSet) {
  TestValue out = NumberValue(1);
  EXPECT_EQ(engine_->GetKey(nullptr), E_POINTER);
  EXPECT_EQ(engine_->GetKey(&out), S_OK);
  EXPECT_EQ(V_VT(&out), VT_EMPTY);
  const Bytes key = PatternBytes(100);
  ASSERT_EQ(engine_->SetKey(BytesValue(key), 0), S_OK);
  EXPECT_EQ(engine_->GetKey(&out), S_OK);
  EXPECT_EQ(V_VT(&out), VT_ARRAY | VT_UI1);
  EXPECT_EQ(BytesOfArray(out), key);
  TestValue text;
  ASSERT_EQ(engine_->SetKey(TextValue(OLESTR("k\u00E4")), -2), S_OK);
  EXPECT_EQ(engine_->GetKey(&text), S_OK);
  EXPECT_EQ(BytesOfArray(text), (Bytes{'k', 0, 0xE4, 0}));
  MiroltaFailAllocationAfter(0);
  VARIANT failed = ReferenceTo(VT_I4, nullptr);
  const HRESULT status = engine_->GetKey(&failed);
  MiroltaFailAllocationAfter(-1);
  EXPECT_EQ(status, E_OUTOFMEMORY);
  EXPECT_EQ(V_VT(&failed), VT_EMPTY);
}

TEST_P(KeyedEngine, ResetKeyReturnsToAPlainOpenComputation) {
  ASSERT_EQ(engine_->SetKey(BytesValue({1, 2, 3}), 0), S_OK);
  Feed(*engine_, BytesOf("discarded"));
  EXPECT_EQ(engine_->ResetKey(), S_OK);
  EXPECT_EQ(engine_->BeginKeyed(), E_UNEXPECTED);
  Feed(*engine_, BytesOf("abc"));
  EXPECT_EQ(DigestText(*engine_), GetParam().abc_digest);
  EXPECT_EQ(KeyType(), VT_EMPTY);
}

TEST_P(KeyedEngine, AnEmptyTextKeyIsAKeyForTheKeyedOperationsOnly) {
  ASSERT_EQ(engine_->SetKey(TextValue(OLESTR("")), 0), S_OK);
  EXPECT_EQ(KeyType(), VT_ARRAY | VT_UI1);  // a key is there, and it is empty
  // Keyed for those who ask for it.
  Feed(*engine_, BytesOf("abc"));
  EXPECT_EQ(engine_->FinishKeyed(), S_OK);
  EXPECT_EQ(RawBytes(*engine_), PeerHmac(GetParam().name, {}, BytesOf("abc")));
  // Begun keyed and finished plain: the digest of the inner pad and the message.
  EXPECT_EQ(engine_->BeginKeyed(), S_OK);
  Feed(*engine_, BytesOf("abc"));
  EXPECT_EQ(engine_->Finish(), S_OK);
  EXPECT_EQ(RawBytes(*engine_), PlainDigestOf(InnerPad({}) + BytesOf("abc")));
  // Start and Finish take it for no key.
  DigestOf(*engine_, BytesOf("abc"));
  EXPECT_EQ(DigestText(*engine_), GetParam().abc_digest);
}

TEST_P(KeyedEngine, ARefusedKeyLeavesNoneAndTheComputationAsItWas) {
  const struct {
    const char* name;
    TestValue value;
    LONG code_page;
    HRESULT status;
  } rows[] = {
      {"null", TestValue(VT_NULL), 0, DISP_E_TYPEMISMATCH},
      {"unknown code page", TextValue(OLESTR("abc")), 4711, DISP_E_TYPEMISMATCH},
      {"array of numbers", ArrayValue(VT_UI4, 1, {1}), 0, DISP_E_TYPEMISMATCH},
      {"empty array", BytesValue({}), 0, E_UNEXPECTED},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    ASSERT_EQ(engine_->SetKey(BytesValue({1, 2, 3}), 0), S_OK);
    ASSERT_EQ(engine_->Init(), S_OK);
    Feed(*engine_, BytesOf("ab"));
    EXPECT_EQ(engine_->SetKey(row.value, row.code_page), row.status);
    EXPECT_EQ(KeyType(), VT_EMPTY);
    EXPECT_EQ(engine_->FinishKeyed(), E_UNEXPECTED);
    Feed(*engine_, BytesOf("c"));
    EXPECT_EQ(DigestText(*engine_), GetParam().abc_digest);
  }
}

// The chaining value behind one block, as it stands in memory.
template <typename Primitive>
Bytes ChainBehind(const Bytes& block) {
  uint32_t words[8];
  std::memcpy(words, Primitive::kInitial, sizeof Primitive::kInitial);
  Primitive::Kernel()(words, block.data(), 1);
  Bytes chain(16);
  std::memcpy(chain.data(), words, chain.size());
  return chain;
}

Bytes ChainBehind(const Algorithm& algorithm, const Bytes& block) {
  switch (FindHashAlgorithm(algorithm.name)) {
    case kHashMd5:
      return ChainBehind<Md5Primitive>(block);
    case kHashSha1:
      return ChainBehind<Sha1Primitive>(block);
    default:
      return ChainBehind<Sha256Primitive>(block);
  }
}

TEST_P(KeyedEngine, WipesKeysPadsAndTheirChainingValues) {
  const Bytes key = BytesOf("the secret key of this test");
  const std::vector<Bytes> secrets = {
      key, Head(InnerPad(key), key.size()), Head(OuterPad(key), key.size()),
      ChainBehind(GetParam(), InnerPad(key)), ChainBehind(GetParam(), OuterPad(key))};
  const TestValue value = BytesValue(key);
  const WatchFreedMemory watch(secrets);
  ASSERT_EQ(engine_->SetKey(value, 0), S_OK);
  ASSERT_EQ(engine_->SetKey(value, 0), S_OK);
  ASSERT_EQ(engine_->Finish(), S_OK);
  ASSERT_EQ(engine_->ResetKey(), S_OK);
  EXPECT_GT(watch.Freed(), 0);
  ASSERT_EQ(engine_->SetKey(value, 0), S_OK);
  engine_.reset();
  EXPECT_EQ(watch.FreedWithSecret(), 0);
}

// An engine whose primitive fails on demand; its "digest" counts the calls.
class FailingEngine final : public HashEngine {
 public:
  enum Step { kNone, kInit, kUpdate, kFinal };
  Step failing = kNone;
  int passes = 0;  // how many calls of that step succeed first
  int loads = 0;

  FailingEngine() { SetOpen(true); }
  HRESULT GetName(OLECHAR*, LONG) noexcept override { return E_OUTOFMEMORY; }
  LONG BlockSize() const noexcept override { return 64; }
  LONG DigestSize() const noexcept override { return 16; }
  HRESULT Init() noexcept override {
    SetOpen(true);
    return Status(kInit);
  }
  HRESULT Update(const uint8_t*, uint32_t) noexcept override { return Status(kUpdate); }
  HRESULT Final() noexcept override {
    SetOpen(false);
    return Status(kFinal);
  }
  const uint8_t* RawDigest() const noexcept override { return digest_; }

 protected:
  void SaveChain(HashChain* chain) const noexcept override { std::memset(chain, 0, sizeof *chain); }
  void LoadChain(const HashChain&) noexcept override {
    ++loads;
    SetOpen(true);
  }
  void ClearDigest() noexcept override { std::memset(digest_, 0, sizeof digest_); }

 private:
  HRESULT Status(Step step) { return failing == step && passes-- <= 0 ? E_ABORT : S_OK; }
  uint8_t digest_[16] = {};
};

TEST(HashEngineFailures, SetKeyReturnsTheFirstFailureOfThePrimitive) {
  const TestValue short_key = BytesValue({1, 2, 3});
  const TestValue long_key = BytesValue(Bytes(65, 1));
  const struct {
    const char* name;
    const VARIANT& key;
    FailingEngine::Step step;
    int passes;
  } rows[] = {
      {"begin of the outer pad", short_key, FailingEngine::kInit, 0},
      {"begin of the inner pad", short_key, FailingEngine::kInit, 1},
      {"outer pad", short_key, FailingEngine::kUpdate, 0},
      {"inner pad", short_key, FailingEngine::kUpdate, 1},
      {"begin of a long key", long_key, FailingEngine::kInit, 0},
      {"long key", long_key, FailingEngine::kUpdate, 0},
      {"digest of a long key", long_key, FailingEngine::kFinal, 0},
      {"inner pad of a long key", long_key, FailingEngine::kUpdate, 2},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    FailingEngine engine;
    engine.failing = row.step;
    engine.passes = row.passes;
    EXPECT_EQ(engine.SetKey(row.key, 0), E_ABORT);
    EXPECT_EQ(engine.loads, 0);
    // The key is there, the computation was not begun.
    EXPECT_EQ(engine.FinishKeyed(), E_UNEXPECTED);
    engine.failing = FailingEngine::kNone;
    EXPECT_EQ(engine.BeginKeyed(), S_OK);
    EXPECT_EQ(engine.FinishKeyed(), S_OK);
  }
}

TEST(HashEngineFailures, FinishReturnsTheFirstFailureOfThePrimitive) {
  const struct {
    const char* name;
    FailingEngine::Step step;
    int passes;
  } rows[] = {{"end of the inner computation", FailingEngine::kFinal, 0},
              {"end of the outer one", FailingEngine::kFinal, 1},
              {"inner digest", FailingEngine::kUpdate, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    FailingEngine engine;
    ASSERT_EQ(engine.SetKey(BytesValue({1, 2, 3}), 0), S_OK);
    engine.failing = row.step;
    engine.passes = row.passes;
    EXPECT_EQ(engine.Finish(), E_ABORT);
  }
}

TEST(HashEngineFailures, DigestIsNullIfFinishFails) {
  FailingEngine engine;
  engine.failing = FailingEngine::kFinal;
  EXPECT_EQ(engine.Digest(), nullptr);
  // Final left the computation closed, so what there is can be read.
  EXPECT_EQ(engine.Digest(), engine.RawDigest());
  engine.failing = FailingEngine::kInit;
  EXPECT_EQ(engine.ResetKey(), E_ABORT);
  EXPECT_EQ(engine.Start(), E_ABORT);
}

TEST(HashEngineFailures, GetNameStringReturnsItsFailureWithoutAText) {
  FailingEngine engine;
  BSTR text = reinterpret_cast<BSTR>(8);
  EXPECT_EQ(engine.GetNameString(&text), E_OUTOFMEMORY);
  EXPECT_EQ(text, nullptr);
  const auto real = MakeEngine(OLESTR("MD5"));
  text = reinterpret_cast<BSTR>(8);
  MiroltaFailAllocationAfter(0);
  const HRESULT status = real->GetNameString(&text);
  MiroltaFailAllocationAfter(-1);
  EXPECT_EQ(status, E_OUTOFMEMORY);
  EXPECT_EQ(text, nullptr);
}

}  // namespace
}  // namespace mirolta::test
