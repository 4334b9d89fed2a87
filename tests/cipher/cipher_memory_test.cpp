// Short memory leaves the state that callers rely on, and no memory keeps secrets.
#include <gtest/gtest.h>

#include <cstring>

#include "aes_schedule.h"
#include "des_schedule.h"
#include "portable/test_hooks.h"
#include "test_engines.h"
#include "used_memory.h"
#include "watched_heap.h"

namespace mirolta {
namespace {

class CipherMemory : public testing::Test {
 protected:
  void TearDown() override {
    StopWatching();
    watched_heap.largest_allocation = SIZE_MAX;
    watched_heap.failing_allocations = 0;
  }
};

TEST_F(CipherMemory, TheWatchSeesWhatIsLeft) {
  Watch("secret!!");
  char* const left = new char[100];
  std::memcpy(left + 50, "secret!!", 8);
  test::Used(left);
  EXPECT_EQ(LivePatterns(), 1u);
  delete[] left;
  EXPECT_EQ(watched_heap.leaks, 1u);
  EXPECT_EQ(LivePatterns(), 0u);
}

TEST_F(CipherMemory, NoMemoryNoEngine) {
  for (LONG algorithm : {kCipherAes, kCipherDes}) {
    watched_heap.largest_allocation = 0;
    std::unique_ptr<CipherEngine> engine = CreateCipherEngine(algorithm);
    watched_heap.largest_allocation = SIZE_MAX;
    EXPECT_EQ(engine, nullptr);
  }
}

TEST_F(CipherMemory, EngineWithoutQueuesFailsUntilThereIsMemory) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, Bytes(16, 1));
  const Bytes data(40, 2);
  watched_heap.largest_allocation = 0;
  EXPECT_EQ(engine->ResetBuffers(256), S_OK);
  const HRESULT status = Encrypt(*engine, data);
  const HRESULT final_status = engine->DecryptFinal();
  watched_heap.largest_allocation = SIZE_MAX;
  EXPECT_EQ(status, E_OUTOFMEMORY);
  EXPECT_EQ(final_status, S_OK);
  EXPECT_EQ(engine->EncryptIn().Length(), 0u);
  EXPECT_EQ(Encrypt(*engine, data), S_OK);
  EXPECT_EQ(engine->EncryptOut().Length(), 32u);
  EXPECT_EQ(engine->EncryptIn().Length(), 8u);
}

TEST_F(CipherMemory, OutputThatCannotGrowKeepsTheRestQueued) {
  for (LONG algorithm : {kCipherAes, kCipherDes}) {
    const Bytes key(16, 1);
    std::mt19937 random(1);
    const Bytes data = RandomBytes(random, 2000);
    const std::unique_ptr<CipherEngine> whole = KeyedEngine(algorithm, key);
    ASSERT_EQ(Encrypt(*whole, data), S_OK);
    const Bytes ciphertext = Content(whole->EncryptOut());
    const uint32_t block_size = whole->BlockSize();

    // Storage of 1280 bytes is the most that queues can have: output stops there.
    const std::unique_ptr<CipherEngine> engine = KeyedEngine(algorithm, key);
    ASSERT_EQ(Encrypt(*engine, Part(data, 0, 1001)), S_OK);
    const Bytes rest = Part(data, 1001, 999);
    watched_heap.largest_allocation = 1280;
    const HRESULT status = Encrypt(*engine, rest);
    watched_heap.largest_allocation = SIZE_MAX;
    EXPECT_EQ(status, E_OUTOFMEMORY);
    EXPECT_EQ(Content(engine->EncryptOut()), Part(ciphertext, 0, 1280));
    EXPECT_EQ(Content(engine->EncryptIn()), Part(data, 1280, 720));
    // With memory back, the next call goes on.
    EXPECT_EQ(engine->EncryptUpdate(nullptr, 0), S_OK);
    EXPECT_EQ(Content(engine->EncryptOut()), ciphertext);
    EXPECT_EQ(engine->EncryptIn().Length(), 2000 % block_size);
  }
}

TEST_F(CipherMemory, GrowthByLessThanDoublingIsTriedToo) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, Bytes(16, 1));
  const Bytes first(1008, 1);
  const Bytes second(112, 2);
  ASSERT_EQ(Encrypt(*engine, first), S_OK);
  watched_heap.largest_allocation = 1280;
  const HRESULT status = Encrypt(*engine, second);
  watched_heap.largest_allocation = SIZE_MAX;
  EXPECT_EQ(status, S_OK);
  EXPECT_EQ(engine->EncryptOut().Length(), 1120u);
}

TEST_F(CipherMemory, InputThatCannotGrowTakesNothing) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, Bytes(16, 1));
  const Bytes data(300, 1);
  watched_heap.largest_allocation = 100;
  const HRESULT status = Encrypt(*engine, data);
  watched_heap.largest_allocation = SIZE_MAX;
  // The output queue cannot grow either, so the data would have had to wait.
  EXPECT_EQ(status, E_OUTOFMEMORY);
  EXPECT_EQ(engine->EncryptIn().Length(), 0u);
  EXPECT_EQ(engine->EncryptOut().Length(), 0u);
}

TEST_F(CipherMemory, InputQueueWithoutStorageTakesAllOrNothing) {
  // Of a reset's four queues, the first is the input of encryption; it fails to come and then fails
  // to grow, while there is room for the output.
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, Bytes(16, 1));
  const Bytes data(19, 1);
  watched_heap.failing_allocations = 0b10001;
  EXPECT_EQ(engine->ResetBuffers(256), S_OK);
  EXPECT_TRUE(engine->EncryptOut().IsValid());
  EXPECT_EQ(Encrypt(*engine, data), E_OUTOFMEMORY);
  EXPECT_EQ(watched_heap.failing_allocations, 0u);
  EXPECT_EQ(engine->EncryptIn().Length(), 0u);
  EXPECT_EQ(engine->EncryptOut().Length(), 0u);
  EXPECT_EQ(Encrypt(*engine, data), S_OK);
  EXPECT_EQ(engine->EncryptIn().Length(), 3u);
  EXPECT_EQ(engine->EncryptOut().Length(), 16u);
}

TEST_F(CipherMemory, SmallUpdatesSeldomMoveTheOutput) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, Bytes(16, 1));
  const Bytes data(64, 1);
  const size_t before = watched_heap.allocation_count;
  for (uint32_t i = 0; i < 0x100000 / 64; ++i) ASSERT_EQ(Encrypt(*engine, data), S_OK);
  EXPECT_EQ(engine->EncryptOut().Length(), 0x100000u);
  EXPECT_LE(watched_heap.allocation_count - before, 20u);
  // Taken in between, it need not grow at all.
  engine->EncryptOut().Consume(0x100000);
  const size_t settled = watched_heap.allocation_count;
  for (uint32_t i = 0; i < 100; ++i) {
    ASSERT_EQ(Encrypt(*engine, data), S_OK);
    engine->EncryptOut().Consume(64);
  }
  EXPECT_EQ(watched_heap.allocation_count, settled);
}

TEST_F(CipherMemory, KeyThatCannotBeCopiedLeavesNoKeyAndTheQueues) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, Bytes(16, 1));
  ASSERT_EQ(Encrypt(*engine, Bytes(20, 1)), S_OK);
  const ArrayValue key(Bytes(16, 2));
  watched_heap.largest_allocation = 0;
  const HRESULT status = engine->SetKey(key.Value(), 0);
  watched_heap.largest_allocation = SIZE_MAX;
  EXPECT_EQ(status, E_OUTOFMEMORY);
  EXPECT_FALSE(engine->HasKey());
  EXPECT_EQ(engine->EncryptIn().Length(), 4u);
  EXPECT_EQ(engine->EncryptOut().Length(), 16u);
}

TEST_F(CipherMemory, ResultsThatCannotBeAllocatedAreEmpty) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, Bytes(16, 1));
  VARIANT key;
  std::memset(&key, 0xEE, sizeof key);
  MiroltaFailAllocationAfter(0);
  EXPECT_EQ(engine->GetKey(&key), E_OUTOFMEMORY);
  EXPECT_TRUE(MiroltaAllocationHasFailed());
  EXPECT_EQ(V_VT(&key), VT_EMPTY);
  OLECHAR place[] = {'x', 0};
  BSTR name = place;
  MiroltaFailAllocationAfter(0);
  EXPECT_EQ(engine->GetNameString(&name), E_OUTOFMEMORY);
  EXPECT_TRUE(MiroltaAllocationHasFailed());
  EXPECT_EQ(name, nullptr);
  MiroltaFailAllocationAfter(-1);
}

struct SecretCase {
  LONG algorithm;
  uint32_t key_length;
};
constexpr SecretCase kSecretCases[] = {
    {kCipherAes, 16}, {kCipherAes, 32}, {kCipherDes, 8}, {kCipherDes, 24}};

class CipherSecrets : public CipherMemory, public testing::WithParamInterface<SecretCase> {
 protected:
  // Watches a key, the ends of its schedules, and plaintext. This object holds them too; it counts
  // among the live blocks before and after, and is freed when the watch has ended.
  void SetUp() override {
    for (size_t i = 0; i < sizeof key; ++i) key[i] = static_cast<uint8_t>(0x31 + 7 * i);
    for (size_t i = 0; i < sizeof plaintext; ++i) {
      plaintext[i] = static_cast<uint8_t>(0xC1 + i % 40);
    }
    VariantInit(&value);
    ASSERT_EQ(BytesToVariant(key, GetParam().key_length, &value), S_OK);
    Watch(key);
    Watch(key + GetParam().key_length - kPatternSize);
    Watch(plaintext + 1600);
    Watch(plaintext + sizeof plaintext - kPatternSize);
    if (GetParam().algorithm == kCipherAes) {
      AesSchedule schedule;
      ASSERT_TRUE(ExpandAesKey(key, GetParam().key_length, &schedule));
      WatchEnds(schedule.encryption, 4 * (schedule.rounds + 1));
      WatchEnds(schedule.decryption, 4 * (schedule.rounds + 1));
    } else {
      DesSchedule schedule;
      ASSERT_TRUE(ExpandDesKey(key, GetParam().key_length, &schedule));
      WatchEnds(schedule.encryption, 2 * schedule.rounds);
      WatchEnds(schedule.decryption, 2 * schedule.rounds);
    }
  }

  void TearDown() override {
    VariantClear(&value);
    CipherMemory::TearDown();
  }

  static void WatchEnds(const uint32_t* words, uint32_t count) {
    Watch(words);
    Watch(words + count - 2);
  }

  // An engine with the key, plaintext waiting for encryption, and plaintext out of decryption.
  std::unique_ptr<CipherEngine> FilledEngine() {
    std::unique_ptr<CipherEngine> engine = CreateCipherEngine(GetParam().algorithm);
    EXPECT_EQ(engine->SetKey(value, 0), S_OK);
    EXPECT_EQ(engine->EncryptUpdate(plaintext, sizeof plaintext), S_OK);
    ByteBuffer& ciphertext = engine->EncryptOut();
    EXPECT_EQ(engine->DecryptUpdate(ciphertext.Data(), ciphertext.Length()), S_OK);
    // A growing queue moves; a taken one leaves bytes behind its content.
    EXPECT_EQ(engine->EncryptUpdate(plaintext, sizeof plaintext), S_OK);
    EXPECT_EQ(engine->DecryptUpdate(ciphertext.Data(), ciphertext.Length()), S_OK);
    engine->DecryptOut().Consume(700);
    return engine;
  }

  uint8_t key[32];
  uint8_t plaintext[3007];
  VARIANT value;
};

TEST_P(CipherSecrets, AreInMemoryWhileInUse) {
  const size_t before = LivePatterns();
  const std::unique_ptr<CipherEngine> engine = FilledEngine();
  EXPECT_GE(LivePatterns(), before + 5);
}

TEST_P(CipherSecrets, AreWipedWhenTheEngineGoes) {
  const size_t before = LivePatterns();
  FilledEngine().reset();
  EXPECT_EQ(watched_heap.leaks, 0u);
  EXPECT_EQ(LivePatterns(), before);
}

TEST_P(CipherSecrets, AreWipedWhenTheKeyIsCleared) {
  const size_t before = LivePatterns();
  const std::unique_ptr<CipherEngine> engine = FilledEngine();
  EXPECT_EQ(engine->ClearKey(), S_OK);
  EXPECT_EQ(watched_heap.leaks, 0u);
  EXPECT_EQ(LivePatterns(), before);
}

TEST_P(CipherSecrets, AreWipedWhenTheKeyIsReplaced) {
  const size_t before = LivePatterns();
  const std::unique_ptr<CipherEngine> engine = FilledEngine();
  OwnedVariant other;
  const uint8_t zeros[16] = {};
  ASSERT_EQ(BytesToVariant(zeros, 16, other.Get()), S_OK);
  EXPECT_EQ(engine->SetKey(other.Value(), 0), S_OK);
  EXPECT_EQ(watched_heap.leaks, 0u);
  EXPECT_EQ(LivePatterns(), before);
}

TEST_P(CipherSecrets, AreWipedWhenAKeyIsRefused) {
  const size_t before = LivePatterns();
  const std::unique_ptr<CipherEngine> engine = FilledEngine();
  const uint8_t zeros[20] = {};
  OwnedVariant other;
  ASSERT_EQ(BytesToVariant(zeros, 20, other.Get()), S_OK);
  EXPECT_EQ(engine->SetKey(other.Value(), 0), E_INVALIDARG);
  EXPECT_EQ(watched_heap.leaks, 0u);
  EXPECT_EQ(LivePatterns(), before);
}

TEST_P(CipherSecrets, PlaintextIsWipedByAReset) {
  const std::unique_ptr<CipherEngine> engine = FilledEngine();
  EXPECT_EQ(engine->ResetBuffers(256), S_OK);
  EXPECT_EQ(watched_heap.leaks, 0u);
}

INSTANTIATE_TEST_SUITE_P(Ciphers, CipherSecrets, testing::ValuesIn(kSecretCases),
                         [](const auto& row) {
                           return (row.param.algorithm == kCipherAes ? "Aes" : "Des") +
                                  std::to_string(row.param.key_length);
                         });

}  // namespace
}  // namespace mirolta
