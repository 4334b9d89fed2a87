#include "cipher_engine.h"

#include <gtest/gtest.h>

#include <cstring>

#include "aes_engine.h"
#include "cipher_testing.h"
#include "des_engine.h"

namespace mirolta::test {
namespace {

constexpr uint32_t kUsualMaximum = 1048832;

const Bytes kAesKey = BytesOfHex("000102030405060708090a0b0c0d0e0f");
const Bytes kDesKey = BytesOfHex("0123456789abcdef");

Bytes KeyOf(CipherEngine& engine) {
  TestValue key;
  EXPECT_EQ(engine.GetKey(&key), S_OK);
  EXPECT_TRUE(V_VT(&key) == VT_EMPTY || V_VT(&key) == (VT_ARRAY | VT_UI1));
  return BytesOfArray(key);
}

// Leaves 5 bytes waiting and one block of output in both directions.
void FillQueues(CipherEngine& engine) {
  const Bytes data(engine.BlockSize() + 5, 0x33);
  ASSERT_EQ(Encrypt(engine, data), S_OK);
  ASSERT_EQ(Decrypt(engine, data), S_OK);
}

// Expects all four queues to have this step and this maximum.
void ExpectShape(CipherEngine& engine, uint32_t step, uint32_t maximum) {
  for (const ByteBuffer* queue : {&engine.EncryptIn(), &engine.DecryptIn(),
                                  const_cast<const ByteBuffer*>(&engine.EncryptOut()),
                                  const_cast<const ByteBuffer*>(&engine.DecryptOut())}) {
    EXPECT_EQ(queue->Step(), step);
    EXPECT_EQ(queue->Maximum(), maximum);
  }
}

void ExpectQueued(CipherEngine& engine, uint32_t waiting, uint32_t output) {
  EXPECT_EQ(engine.EncryptIn().Length(), waiting);
  EXPECT_EQ(engine.DecryptIn().Length(), waiting);
  EXPECT_EQ(engine.EncryptOut().Length(), output);
  EXPECT_EQ(engine.DecryptOut().Length(), output);
}

TEST(CipherEngine, TwentyBytesBecomeTwoBlocksPaddedWithZeros) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, kAesKey);
  const Bytes data(20, 0x61);
  EXPECT_EQ(Encrypt(*engine, data), S_OK);
  EXPECT_EQ(engine->EncryptFinal(), S_OK);
  const Bytes ciphertext = TakeAll(engine->EncryptOut());
  EXPECT_EQ(ciphertext.size(), 32u);
  EXPECT_EQ(Decrypt(*engine, ciphertext), S_OK);
  EXPECT_EQ(engine->DecryptFinal(), S_OK);
  EXPECT_EQ(TakeAll(engine->DecryptOut()), data + Bytes(12, 0));
}

TEST(CipherEngine, WholeBlocksGetNoPad) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, kAesKey);
  EXPECT_EQ(Encrypt(*engine, BytesOfHex("00112233445566778899aabbccddeeff")), S_OK);
  EXPECT_EQ(engine->EncryptFinal(), S_OK);
  EXPECT_EQ(TakeAll(engine->EncryptOut()), BytesOfHex("69c4e0d86a7b0430d8cdb78070b4c55a"));
  EXPECT_EQ(engine->EncryptFinal(), S_OK);
  EXPECT_EQ(engine->EncryptOut().Length(), 0u);
}

TEST(CipherEngine, BlocksAreTransformedWhenTheyAreWhole) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, kAesKey);
  EXPECT_EQ(Encrypt(*engine, Bytes(15, 1)), S_OK);
  EXPECT_EQ(engine->EncryptOut().Length(), 0u);
  EXPECT_EQ(Encrypt(*engine, Bytes(1, 1)), S_OK);
  EXPECT_EQ(engine->EncryptOut().Length(), 16u);
  EXPECT_EQ(engine->EncryptIn().Length(), 0u);
}

TEST(CipherEngine, DecryptFinalReportsAPartialBlockAndKeepsIt) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, kAesKey);
  const Bytes ciphertext = BytesOfHex("69c4e0d86a7b0430d8cdb78070b4c55aEE");
  EXPECT_EQ(Decrypt(*engine, ciphertext), S_OK);
  EXPECT_EQ(engine->DecryptFinal(), S_FALSE);
  EXPECT_EQ(TakeAll(engine->DecryptOut()), BytesOfHex("00112233445566778899aabbccddeeff"));
  EXPECT_EQ(Content(engine->DecryptIn()), Bytes(1, 0xEE));
  EXPECT_EQ(engine->DecryptFinal(), S_FALSE);
  EXPECT_EQ(Decrypt(*engine, Bytes(15, 0)), S_OK);
  EXPECT_EQ(engine->DecryptFinal(), S_OK);
}

TEST(CipherEngine, UpdatesWithoutDataChangeNothing) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherDes, kDesKey);
  const uint8_t byte = 1;
  EXPECT_EQ(engine->EncryptUpdate(nullptr, 0), S_OK);
  EXPECT_EQ(engine->EncryptUpdate(nullptr, 99), S_OK);
  EXPECT_EQ(engine->EncryptUpdate(&byte, 0), S_OK);
  EXPECT_EQ(engine->DecryptUpdate(nullptr, 0), S_OK);
  EXPECT_EQ(engine->DecryptUpdate(nullptr, 99), S_OK);
  EXPECT_EQ(engine->DecryptUpdate(&byte, 0), S_OK);
  EXPECT_EQ(engine->EncryptFinal(), S_OK);
  EXPECT_EQ(engine->DecryptFinal(), S_OK);
  ExpectQueued(*engine, 0, 0);
}

TEST(CipherEngine, DirectionsKeepTheirOwnPartialBlocks) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherDes, kDesKey);
  const Bytes plaintext = BytesOfHex("4e6f772069732074");
  const Bytes ciphertext = BytesOfHex("3fa40e8a984d4815");
  for (size_t i = 0; i < 8; ++i) {
    EXPECT_EQ(engine->EncryptUpdate(&plaintext[i], 1), S_OK);
    EXPECT_EQ(engine->DecryptUpdate(&ciphertext[i], 1), S_OK);
  }
  EXPECT_EQ(TakeAll(engine->EncryptOut()), ciphertext);
  EXPECT_EQ(TakeAll(engine->DecryptOut()), plaintext);
}

TEST(CipherEngine, TakesTheKeyLengthsOfItsCipherOnly) {
  for (LONG algorithm : {kCipherAes, kCipherDes}) {
    for (uint32_t length = 0; length <= 40; ++length) {
      const bool taken = algorithm == kCipherAes ? length == 16 || length == 24 || length == 32
                                                 : length == 8 || length == 16 || length == 24;
      const std::unique_ptr<CipherEngine> engine =
          KeyedEngine(algorithm, Bytes(algorithm == kCipherAes ? 32 : 8, 9));
      FillQueues(*engine);
      const Bytes key(length, 3);
      EXPECT_EQ(SetKeyBytes(*engine, key), taken ? S_OK : E_INVALIDARG) << length;
      EXPECT_EQ(engine->HasKey(), taken);
      EXPECT_EQ(KeyOf(*engine), taken ? key : Bytes());
      ExpectQueued(*engine, 0, 0);
    }
  }
}

TEST(CipherEngine, GetKeyChecksItsOutPointer) {
  const std::unique_ptr<CipherEngine> engine = CreateCipherEngine(kCipherAes);
  EXPECT_EQ(engine->GetKey(nullptr), E_POINTER);
  VARIANT value;
  std::memset(&value, 0xEE, sizeof value);
  EXPECT_EQ(engine->GetKey(&value), S_OK);
  EXPECT_EQ(V_VT(&value), VT_EMPTY);
}

TEST(CipherEngine, TextKeysAreConvertedByTheCodePage) {
  const std::unique_ptr<CipherEngine> engine = CreateCipherEngine(kCipherDes);
  const TestValue eight = TextValue(OLESTR("eightchr"));
  EXPECT_EQ(engine->SetKey(eight, 0), S_OK);
  EXPECT_EQ(KeyOf(*engine), BytesOfHex("6569676874636872"));
  EXPECT_EQ(engine->SetKey(eight, -1), S_OK);
  EXPECT_EQ(KeyOf(*engine), BytesOfHex("65006900670068007400630068007200"));
  // Every negative code page takes the units as they are stored.
  EXPECT_EQ(engine->SetKey(eight, -2), S_OK);
  EXPECT_EQ(KeyOf(*engine), BytesOfHex("65006900670068007400630068007200"));
  // Three characters are six bytes or three, neither a key.
  const TestValue three = TextValue(OLESTR("abc"));
  EXPECT_EQ(engine->SetKey(three, -1), E_INVALIDARG);
  EXPECT_EQ(engine->SetKey(three, 0), E_INVALIDARG);
  EXPECT_FALSE(engine->HasKey());
  // A number counts as its decimal text.
  EXPECT_EQ(engine->SetKey(NumberValue(12345678), 0), S_OK);
  EXPECT_EQ(KeyOf(*engine), BytesOfHex("3132333435363738"));
  EXPECT_EQ(engine->SetKey(TestValue(), 0), E_INVALIDARG);
  EXPECT_FALSE(engine->HasKey());
}

TEST(CipherEngine, ReferencesToKeysAreKeys) {
  const std::unique_ptr<CipherEngine> engine = CreateCipherEngine(kCipherAes);
  TestValue key = BytesValue(kAesKey);
  EXPECT_EQ(engine->SetKey(ReferenceTo(VT_ARRAY | VT_UI1, &key->parray), 0), S_OK);
  EXPECT_EQ(KeyOf(*engine), kAesKey);
}

TEST(CipherEngine, AKeyThatDoesNotConvertLeavesNoKeyButTheQueues) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, kAesKey);
  FillQueues(*engine);
  EXPECT_EQ(engine->SetKey(TestValue(VT_NULL), 0), DISP_E_TYPEMISMATCH);
  EXPECT_FALSE(engine->HasKey());
  ExpectQueued(*engine, 5, 16);
  // A code page that nothing knows.
  const TestValue text = TextValue(OLESTR("0123456789abcdef"));
  EXPECT_EQ(SetKeyBytes(*engine, kAesKey), S_OK);
  EXPECT_EQ(engine->SetKey(text, 64999), DISP_E_TYPEMISMATCH);
  EXPECT_FALSE(engine->HasKey());
  EXPECT_EQ(KeyOf(*engine), Bytes());
}

TEST(CipherEngine, SettingAKeyDropsWhatIsQueuedAndKeepsThePad) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, kAesKey);
  engine->SetPadType(77);
  EXPECT_EQ(engine->ResetBuffers(1000), S_OK);
  FillQueues(*engine);
  EXPECT_EQ(SetKeyBytes(*engine, Bytes(24, 2)), S_OK);
  ExpectQueued(*engine, 0, 0);
  ExpectShape(*engine, 256, kUsualMaximum);
  EXPECT_EQ(engine->PadType(), 77);
}

TEST(CipherEngine, ClearKeyEmptiesTheQueuesAndKeepsTheirShape) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherDes, kDesKey);
  engine->SetPadType(-5);
  EXPECT_EQ(engine->ResetBuffers(1000), S_OK);
  FillQueues(*engine);
  EXPECT_EQ(engine->ClearKey(), S_OK);
  EXPECT_FALSE(engine->HasKey());
  EXPECT_EQ(KeyOf(*engine), Bytes());
  ExpectQueued(*engine, 0, 0);
  ExpectShape(*engine, 1000, 1049000);
  EXPECT_EQ(engine->PadType(), -5);
  EXPECT_EQ(engine->ClearKey(), S_OK);
}

TEST(CipherEngine, ResetBuffersTakesStepsInRangeAndKeepsTheKey) {
  const struct {
    uint32_t given;
    uint32_t step;
    uint32_t maximum;
  } kRows[] = {{0, 256, kUsualMaximum},      {255, 256, kUsualMaximum},
               {256, 256, kUsualMaximum},    {257, 257, 4081 * 257},
               {65536, 65536, 17 * 65536},   {65537, 256, kUsualMaximum},
               {100000, 256, kUsualMaximum}, {UINT32_MAX, 256, kUsualMaximum},
               {65535, 65535, 17 * 65535},   {1000, 1000, 1049000}};
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, kAesKey);
  engine->SetPadType(3);
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.given);
    FillQueues(*engine);
    EXPECT_EQ(engine->ResetBuffers(row.given), S_OK);
    ExpectQueued(*engine, 0, 0);
    ExpectShape(*engine, row.step, row.maximum);
    EXPECT_EQ(KeyOf(*engine), kAesKey);
    EXPECT_EQ(engine->PadType(), 3);
  }
}

TEST(CipherEngine, WithoutAKeyDataIsQueuedAndNotTransformed) {
  const std::unique_ptr<CipherEngine> engine = CreateCipherEngine(kCipherAes);
  const Bytes data(15, 1);
  EXPECT_EQ(Encrypt(*engine, data), S_OK);
  EXPECT_EQ(Decrypt(*engine, data), S_OK);
  EXPECT_EQ(engine->DecryptFinal(), S_FALSE);
  EXPECT_EQ(Encrypt(*engine, Bytes(3, 2)), E_FAIL);
  EXPECT_EQ(Decrypt(*engine, Bytes(3, 2)), E_FAIL);
  EXPECT_EQ(engine->EncryptFinal(), E_FAIL);
  EXPECT_EQ(engine->DecryptFinal(), E_FAIL);
  EXPECT_EQ(Content(engine->DecryptIn()), data + Bytes(3, 2));
  EXPECT_EQ(engine->EncryptOut().Length(), 0u);
  EXPECT_EQ(engine->DecryptOut().Length(), 0u);
  // The pad is queued before the blocks are transformed.
  EXPECT_EQ(engine->EncryptIn().Length(), 32u);
}

TEST(CipherEngine, AKeyThatWasClearedOrRefusedIsNotUsed) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, kAesKey);
  EXPECT_EQ(engine->ClearKey(), S_OK);
  EXPECT_EQ(Encrypt(*engine, Bytes(16, 0)), E_FAIL);
  EXPECT_EQ(SetKeyBytes(*engine, kAesKey), S_OK);
  EXPECT_EQ(SetKeyBytes(*engine, Bytes(20, 0)), E_INVALIDARG);
  EXPECT_EQ(Decrypt(*engine, Bytes(16, 0)), E_FAIL);
}

// Updates with a block come first, so that the engine has taken the short way for them.
TEST(CipherEngine, AfterBlocksEachUpdateDependsOnKeyAndQueueAsTheyAre) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(kCipherAes, kAesKey);
  const Bytes plaintext = BytesOfHex("00112233445566778899aabbccddeeff");
  const Bytes ciphertext = BytesOfHex("69c4e0d86a7b0430d8cdb78070b4c55a");
  const auto update_with_blocks = [&] {
    for (int i = 0; i < 3; ++i) {
      ASSERT_EQ(Encrypt(*engine, plaintext), S_OK);
      ASSERT_EQ(Decrypt(*engine, ciphertext), S_OK);
      EXPECT_EQ(engine->EncryptUpdate(nullptr, 16), S_OK);
      EXPECT_EQ(engine->DecryptUpdate(ciphertext.data(), 0), S_OK);
      EXPECT_EQ(TakeAll(engine->EncryptOut()), ciphertext);
      EXPECT_EQ(TakeAll(engine->DecryptOut()), plaintext);
    }
  };
  update_with_blocks();
  // A block after a byte is split over two.
  EXPECT_EQ(Encrypt(*engine, Head(plaintext, 1)), S_OK);
  EXPECT_EQ(Decrypt(*engine, Head(ciphertext, 1)), S_OK);
  EXPECT_EQ(Encrypt(*engine, Tail(plaintext, 1) + Head(plaintext, 1)), S_OK);
  EXPECT_EQ(Decrypt(*engine, Tail(ciphertext, 1) + Head(ciphertext, 1)), S_OK);
  EXPECT_EQ(Encrypt(*engine, Tail(plaintext, 1)), S_OK);
  EXPECT_EQ(Decrypt(*engine, Tail(ciphertext, 1)), S_OK);
  EXPECT_EQ(TakeAll(engine->EncryptOut()), ciphertext + ciphertext);
  EXPECT_EQ(TakeAll(engine->DecryptOut()), plaintext + plaintext);

  update_with_blocks();
  EXPECT_EQ(engine->ClearKey(), S_OK);
  EXPECT_EQ(Encrypt(*engine, plaintext), E_FAIL);
  EXPECT_EQ(Decrypt(*engine, ciphertext), E_FAIL);
  ExpectQueued(*engine, 16, 0);
  EXPECT_EQ(SetKeyBytes(*engine, kAesKey), S_OK);
  update_with_blocks();
  engine->DropKey();
  EXPECT_EQ(Encrypt(*engine, plaintext), E_FAIL);
  EXPECT_EQ(Decrypt(*engine, ciphertext), E_FAIL);
  EXPECT_EQ(SetKeyBytes(*engine, kAesKey), S_OK);
  update_with_blocks();
  EXPECT_EQ(SetKeyBytes(*engine, kAesKey + kAesKey), S_OK);
  EXPECT_EQ(Encrypt(*engine, plaintext), S_OK);
  EXPECT_NE(TakeAll(engine->EncryptOut()), ciphertext);
}

TEST(CipherEngine, TripleDesWithEqualKeysIsSingleDes) {
  const std::unique_ptr<CipherEngine> single = KeyedEngine(kCipherDes, kDesKey);
  const std::unique_ptr<CipherEngine> triple = KeyedEngine(kCipherDes, kDesKey + kDesKey);
  EXPECT_EQ(Encrypt(*single, Bytes(64, 0x5A)), S_OK);
  EXPECT_EQ(Encrypt(*triple, Bytes(64, 0x5A)), S_OK);
  EXPECT_EQ(TakeAll(single->EncryptOut()), TakeAll(triple->EncryptOut()));
}

#if defined(__x86_64__) && !defined(_WIN32)

// The slot of a virtual operation; here a pointer to one holds its offset in the table plus 1.
template <typename Member>
size_t Slot(Member member) {
  size_t words[2];
  static_assert(sizeof words == sizeof member);
  std::memcpy(words, &member, sizeof member);
  return (words[0] - 1) / sizeof(void*);
}

// Where the queues would only pass blocks on, the bytes are those of an update; elsewhere the
// update has to be made.
TEST(CipherEngine, UnqueuedTransformsAreUpdatesOfWholeBlocksBetweenEmptyQueues) {
  for (const LONG algorithm : {kCipherAes, kCipherDes}) {
    const Bytes& key = algorithm == kCipherAes ? kAesKey : kDesKey;
    const std::unique_ptr<CipherEngine> engine = KeyedEngine(algorithm, key);
    const uint32_t block_size = engine->BlockSize();
    for (const uint32_t blocks : {1u, 2u, 63u, 4096u}) {
      Bytes data(blocks * block_size);
      for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<uint8_t>(i * 37 + i / 256);
      const uint32_t length = static_cast<uint32_t>(data.size());
      Bytes straight(length);
      const BlockTransform encrypt = engine->UnqueuedEncryptTransform(length);
      ASSERT_NE(encrypt.run, nullptr);
      encrypt.run(encrypt.schedule, data.data(), straight.data(), blocks);
      ExpectQueued(*engine, 0, 0);
      ASSERT_EQ(Encrypt(*engine, data), S_OK);
      EXPECT_EQ(straight, TakeAll(engine->EncryptOut()));
      const BlockTransform decrypt = engine->UnqueuedDecryptTransform(length);
      ASSERT_NE(decrypt.run, nullptr);
      decrypt.run(decrypt.schedule, straight.data(), straight.data(), blocks);
      EXPECT_EQ(straight, data);
    }
    EXPECT_EQ(engine->UnqueuedEncryptTransform(0).run, nullptr);
    EXPECT_EQ(engine->UnqueuedEncryptTransform(block_size + 1).run, nullptr);
    EXPECT_NE(engine->UnqueuedEncryptTransform(kUsualMaximum).run, nullptr);
    EXPECT_EQ(engine->UnqueuedEncryptTransform(kUsualMaximum + block_size).run, nullptr);

    ASSERT_EQ(Encrypt(*engine, Bytes(1, 7)), S_OK);
    EXPECT_EQ(engine->UnqueuedEncryptTransform(block_size).run, nullptr);  // a byte waits
    EXPECT_NE(engine->UnqueuedDecryptTransform(block_size).run, nullptr);  // in the other direction
    ASSERT_EQ(Decrypt(*engine, Bytes(block_size, 7)), S_OK);
    EXPECT_EQ(engine->UnqueuedDecryptTransform(block_size).run, nullptr);  // output waits
    ASSERT_EQ(engine->ClearKey(), S_OK);
    EXPECT_EQ(engine->UnqueuedEncryptTransform(block_size).run, nullptr);
  }
}

TEST(CipherEngine, VirtualOperationsKeepTheirOrder) {
  // The destructor has two slots here.
  EXPECT_EQ(Slot(&CipherEngine::SetKey), 2u);
  EXPECT_EQ(Slot(&CipherEngine::GetKey), 3u);
  EXPECT_EQ(Slot(&CipherEngine::ClearKey), 4u);
  EXPECT_EQ(Slot(&CipherEngine::HasKey), 5u);
  EXPECT_EQ(Slot(&CipherEngine::GetName), 6u);
  EXPECT_EQ(Slot(&CipherEngine::GetNameString), 7u);
  EXPECT_EQ(Slot(&CipherEngine::BlockSize), 8u);
  EXPECT_EQ(Slot(&CipherEngine::ResetBuffers), 9u);
  EXPECT_EQ(Slot(&CipherEngine::EncryptUpdate), 10u);
  EXPECT_EQ(Slot(&CipherEngine::EncryptFinal), 11u);
  EXPECT_EQ(Slot(&CipherEngine::DecryptUpdate), 12u);
  EXPECT_EQ(Slot(&CipherEngine::DecryptFinal), 13u);
}

#endif

}  // namespace
}  // namespace mirolta::test
