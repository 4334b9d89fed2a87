// Cipher engines when memory is short, and what memory keeps of secrets.
#include <gtest/gtest.h>

#include <cstring>

#include "aes_schedule.h"
#include "cipher_testing.h"
#include "des_kernels.h"
#include "kernel_rows.h"
#include "memory_watch.h"
#include "portable/test_hooks.h"

namespace mirolta::test {
namespace {

class CipherMemory : public testing::Test {
 protected:
  // Encrypts while allocations of more than `size` bytes fail.
  static HRESULT EncryptWithin(size_t size, CipherEngine& engine, const Bytes& data) {
    const LimitAllocations limit(size);
    return Encrypt(engine, data);
  }

  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, Bytes(16, 1));
};

TEST_F(CipherMemory, WithoutMemoryThereIsNoEngine) {
  for (const LONG algorithm : {kCipherAes, kCipherDes}) {
    const LimitAllocations none(0);
    EXPECT_EQ(CreateCipherEngine(algorithm), nullptr);
  }
}

TEST_F(CipherMemory, AnEngineWithoutQueuesFailsUntilThereIsMemory) {
  const Bytes data(40, 2);
  HRESULT status = S_OK, final_status = E_FAIL;
  {
    const LimitAllocations none(0);
    EXPECT_EQ(engine->ResetBuffers(256), S_OK);
    status = Encrypt(*engine, data);
    final_status = engine->DecryptFinal();
  }
  EXPECT_EQ(status, E_OUTOFMEMORY);
  EXPECT_EQ(final_status, S_OK);
  EXPECT_EQ(engine->EncryptIn().Length(), 0u);
  EXPECT_EQ(Encrypt(*engine, data), S_OK);
  EXPECT_EQ(engine->EncryptOut().Length(), 32u);
  EXPECT_EQ(engine->EncryptIn().Length(), 8u);
}

// On 32-bit ARM bit slices are in allocated memory; other kernels allocate nothing.
TEST_F(CipherMemory, DesKernelsNeedNone) {
  const uint32_t block_count = 200;
  std::mt19937 random(2);
  DesSchedule schedule = {};
  ASSERT_TRUE(ExpandDesKey(RandomBytes(random, 24).data(), 24, &schedule));
  const Bytes plaintext = RandomBytes(random, block_count * kDesBlockSize);
  Bytes expected(plaintext.size());
  DesEncryptPortable(schedule, plaintext.data(), expected.data(), block_count);
  ForEachKernel(kDesEncryptKernels, [&](const auto& kernel) {
    Bytes out(plaintext.size());
    {
      const LimitAllocations none(0);
      kernel.function(schedule, plaintext.data(), out.data(), block_count);
    }
    EXPECT_EQ(out, expected);
  });
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
    const std::unique_ptr<CipherEngine> limited = KeyedEngine(algorithm, key);
    ASSERT_EQ(Encrypt(*limited, Head(data, 1001)), S_OK);
    EXPECT_EQ(EncryptWithin(1280, *limited, Tail(data, 1001)), E_OUTOFMEMORY);
    EXPECT_EQ(Content(limited->EncryptOut()), Head(ciphertext, 1280));
    EXPECT_EQ(Content(limited->EncryptIn()), Tail(data, 1280));
    // With memory back, the next call goes on.
    EXPECT_EQ(limited->EncryptUpdate(nullptr, 0), S_OK);
    EXPECT_EQ(Content(limited->EncryptOut()), ciphertext);
    EXPECT_EQ(limited->EncryptIn().Length(), 2000 % block_size);
  }
}

TEST_F(CipherMemory, OutputGrowsByWhatIsNeededWhereItCannotDouble) {
  ASSERT_EQ(Encrypt(*engine, Bytes(1008, 1)), S_OK);
  EXPECT_EQ(EncryptWithin(1280, *engine, Bytes(112, 2)), S_OK);
  EXPECT_EQ(engine->EncryptOut().Length(), 1120u);
}

TEST_F(CipherMemory, InputThatCannotGrowTakesNothing) {
  // The output queue cannot grow either, so the data would have had to wait.
  EXPECT_EQ(EncryptWithin(100, *engine, Bytes(300, 1)), E_OUTOFMEMORY);
  EXPECT_EQ(engine->EncryptIn().Length(), 0u);
  EXPECT_EQ(engine->EncryptOut().Length(), 0u);
}

TEST_F(CipherMemory, AnInputQueueWithoutStorageTakesAllOrNothing) {
  // Of a reset's four queues, the first is the input of encryption; it fails to come and then fails
  // to grow, while there is room for the output.
  const Bytes data(19, 1);
  {
    const FailOneAllocation first(0);
    EXPECT_EQ(engine->ResetBuffers(256), S_OK);
    EXPECT_TRUE(AllocationHasFailed());
  }
  EXPECT_TRUE(engine->EncryptOut().IsValid());
  {
    const FailOneAllocation first(0);
    EXPECT_EQ(Encrypt(*engine, data), E_OUTOFMEMORY);
    EXPECT_TRUE(AllocationHasFailed());
  }
  EXPECT_EQ(engine->EncryptIn().Length(), 0u);
  EXPECT_EQ(engine->EncryptOut().Length(), 0u);
  EXPECT_EQ(Encrypt(*engine, data), S_OK);
  EXPECT_EQ(engine->EncryptIn().Length(), 3u);
  EXPECT_EQ(engine->EncryptOut().Length(), 16u);
}

TEST_F(CipherMemory, ABlockAfterAResetNeedsTheInputQueueToo) {
  const Bytes block(16, 1);
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(Encrypt(*engine, block), S_OK);
    ASSERT_EQ(Decrypt(*engine, block), S_OK);
  }
  for (const LONG queue : {0, 2}) {  // the input queues, by their order of allocation
    SCOPED_TRACE(queue);
    const auto update = queue == 0 ? Encrypt : Decrypt;
    ByteBuffer& out = queue == 0 ? engine->EncryptOut() : engine->DecryptOut();
    {
      const FailOneAllocation one(queue);
      EXPECT_EQ(engine->ResetBuffers(256), S_OK);
      EXPECT_TRUE(AllocationHasFailed());
    }
    EXPECT_TRUE(out.IsValid());
    {
      const FailOneAllocation first(0);
      EXPECT_EQ(update(*engine, block), E_OUTOFMEMORY);
      EXPECT_TRUE(AllocationHasFailed());
    }
    EXPECT_EQ(out.Length(), 0u);
    EXPECT_EQ(update(*engine, block), S_OK);
    EXPECT_EQ(out.Length(), 16u);
  }
}

TEST_F(CipherMemory, SmallUpdatesSeldomMoveTheOutput) {
  const Bytes data(64, 1);
  const long before = AllocationCount();
  for (uint32_t i = 0; i < 0x100000 / 64; ++i) ASSERT_EQ(Encrypt(*engine, data), S_OK);
  EXPECT_EQ(engine->EncryptOut().Length(), 0x100000u);
  EXPECT_LE(AllocationCount() - before, 20);
  // Taken in between, it need not grow at all.
  engine->EncryptOut().Consume(0x100000);
  const long settled = AllocationCount();
  for (uint32_t i = 0; i < 100; ++i) {
    ASSERT_EQ(Encrypt(*engine, data), S_OK);
    engine->EncryptOut().Consume(64);
  }
  EXPECT_EQ(AllocationCount(), settled);
}

TEST_F(CipherMemory, AKeyThatCannotBeCopiedLeavesNoKeyAndTheQueues) {
  ASSERT_EQ(Encrypt(*engine, Bytes(20, 1)), S_OK);
  const TestValue key = BytesValue(Bytes(16, 2));
  {
    const LimitAllocations none(0);
    EXPECT_EQ(engine->SetKey(key, 0), E_OUTOFMEMORY);
  }
  EXPECT_FALSE(engine->HasKey());
  EXPECT_EQ(engine->EncryptIn().Length(), 4u);
  EXPECT_EQ(engine->EncryptOut().Length(), 16u);
}

TEST_F(CipherMemory, ResultsThatCannotBeAllocatedAreEmpty) {
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

// A key, the ends of its schedules and plaintext are watched. This test holds them too: they count
// among the live secrets before and after.
class CipherSecrets : public CipherTest {
 protected:
  static constexpr size_t kSecretSize = 8;

  CipherSecrets()
      : key_(PatternBytes(GetParam().key_length, 1)), plaintext_(PatternBytes(3007, 2)) {
    Add(key_.data());
    Add(&key_[key_.size() - kSecretSize]);
    Add(&plaintext_[1600]);
    Add(&plaintext_[plaintext_.size() - kSecretSize]);
    if (GetParam().algorithm == kCipherAes) {
      AesSchedule schedule;
      EXPECT_TRUE(ExpandAesKey(key_.data(), GetParam().key_length, &schedule));
      AddEnds(schedule.encryption, 4 * (schedule.rounds + 1));
      AddEnds(schedule.decryption, 4 * (schedule.rounds + 1));
    } else {
      DesSchedule schedule;
      EXPECT_TRUE(ExpandDesKey(key_.data(), GetParam().key_length, &schedule));
      AddEnds(schedule.encryption, 2 * schedule.rounds);
      AddEnds(schedule.decryption, 2 * schedule.rounds);
    }
  }
  void Add(const void* bytes) {
    const auto* const start = static_cast<const uint8_t*>(bytes);
    secrets_.emplace_back(start, start + kSecretSize);
  }
  void AddEnds(const uint32_t* words, uint32_t count) {
    Add(words);
    Add(words + count - 2);
  }

  // An engine with the key, plaintext waiting for encryption, and plaintext out of decryption.
  std::unique_ptr<CipherEngine> FilledEngine() {
    std::unique_ptr<CipherEngine> engine = CreateCipherEngine(GetParam().algorithm);
    EXPECT_EQ(engine->SetKey(value_, 0), S_OK);
    // The second time, queues that grow move, and those that were emptied hold bytes behind their
    // content.
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(Encrypt(*engine, plaintext_), S_OK);
      ByteBuffer& ciphertext = engine->EncryptOut();
      EXPECT_EQ(engine->DecryptUpdate(ciphertext.Data(), ciphertext.Length()), S_OK);
    }
    engine->DecryptOut().Consume(700);
    return engine;
  }
  // Expects `ends` to wipe what a filled engine holds: in memory that it frees and that it keeps.
  template <typename Ends>
  void ExpectWipedBy(const Ends& ends) {
    const WatchFreedMemory watch(secrets_);
    const int before = watch.LiveSecrets();
    std::unique_ptr<CipherEngine> engine = FilledEngine();
    EXPECT_GE(watch.LiveSecrets(), before + 5);  // they are seen while they are there
    ends(engine);
    EXPECT_GT(watch.Freed(), 0);
    EXPECT_EQ(watch.FreedWithSecret(), 0);
    EXPECT_EQ(watch.LiveSecrets(), before);
  }

  const Bytes key_;
  const Bytes plaintext_;
  const TestValue value_ = BytesValue(key_);
  std::vector<Bytes> secrets_;
};

MIROLTA_FOR_EACH_CIPHER(CipherSecrets);

TEST_P(CipherSecrets, AreWipedWithTheEngine) {
  ExpectWipedBy([](auto& engine) { engine.reset(); });
}

TEST_P(CipherSecrets, AreWipedByClearKey) {
  ExpectWipedBy([](auto& engine) { EXPECT_EQ(engine->ClearKey(), S_OK); });
}

TEST_P(CipherSecrets, AreWipedByAnotherKey) {
  ExpectWipedBy([](auto& engine) { EXPECT_EQ(SetKeyBytes(*engine, Bytes(16, 0)), S_OK); });
}

TEST_P(CipherSecrets, AreWipedByARefusedKey) {
  ExpectWipedBy([](auto& engine) { EXPECT_EQ(SetKeyBytes(*engine, Bytes(20, 0)), E_INVALIDARG); });
}

TEST_P(CipherSecrets, PlaintextIsWipedByResetBuffers) {
  const WatchFreedMemory watch(secrets_);
  const std::unique_ptr<CipherEngine> engine = FilledEngine();
  EXPECT_EQ(engine->ResetBuffers(256), S_OK);
  EXPECT_GT(watch.Freed(), 0);
  EXPECT_EQ(watch.FreedWithSecret(), 0);
}

TEST(MemoryWatch, SeesSecretsInLiveAndInFreedMemory) {
  const Bytes secret = BytesOf("secret!!");
  const WatchFreedMemory watch(secret.data(), secret.size());
  {
    const Bytes copy = Bytes(50, 1) + secret;
    EXPECT_GE(watch.LiveSecrets(), 2);
  }
  EXPECT_GE(watch.FreedWithSecret(), 1);
  EXPECT_EQ(watch.LiveSecrets(), 1);
}

}  // namespace
}  // namespace mirolta::test
