// SymmetricCryptObject: data in and out, in pieces, padded, and up to the queues' limits.
#include "symmetric_crypt_fixture.h"

namespace mirolta::test {
namespace {

using SymmetricCryptDataTest = SymmetricCryptTest;

// The queues' limit of 0x100000, rounded up by a whole step.
constexpr size_t kQueueMaximum = 0x100000 + 256;

TEST_F(SymmetricCryptDataTest, BlocksAreTransformedAsPublished) {
  StartAes();
  EXPECT_EQ(Encrypted(BytesOfHex(kAesPlain)), BytesOfHex(kAesCipher));
  EXPECT_EQ(Decrypted(BytesOfHex(kAesCipher)), BytesOfHex(kAesPlain));
  StartDes();
  EXPECT_EQ(Encrypted(BytesOfHex(kDesPlain)), BytesOfHex(kDesCipher));
  EXPECT_EQ(Decrypted(BytesOfHex(kDesCipher)), BytesOfHex(kDesPlain));
}

TEST_F(SymmetricCryptDataTest, OnlyAPartialBlockIsPadded) {
  StartDes();
  EXPECT_EQ(Encrypted(PatternBytes(8)).size(), 8u);
  EXPECT_EQ(Encrypted(PatternBytes(9)).size(), 16u);
  StartAes();
  EXPECT_EQ(Encrypted(PatternBytes(16)).size(), 16u);
  const Bytes cipher = Encrypted(PatternBytes(20));
  ASSERT_EQ(cipher.size(), 32u);
  EXPECT_EQ(Decrypted(cipher), PatternBytes(20) + Bytes(12, 0));
  EXPECT_EQ(Encrypted({}), Bytes());
}

TEST_F(SymmetricCryptDataTest, PadBytesAreThoseOfThePadType) {
  constexpr struct {
    LONG pad_type;
    uint8_t byte;
  } kRows[] = {{0, 0}, {4, 4}, {0x141, 0x41}, {256, 0}, {255, 255}, {0x7FFFFFFF, 0xFF}};
  for (const auto& row : kRows) {
    StartAes();
    ASSERT_EQ(crypt->put_PadType(row.pad_type), S_OK);
    EXPECT_EQ(Decrypted(Encrypted(PatternBytes(20))), PatternBytes(20) + Bytes(12, row.byte))
        << row.pad_type;
  }
  ASSERT_EQ(crypt->put_PadType(-1), S_OK);
  const Bytes padded = Decrypted(Encrypted(PatternBytes(17)));
  ASSERT_EQ(padded.size(), 32u);
  EXPECT_EQ(Head(padded, 17), PatternBytes(17));
  EXPECT_NE(Tail(padded, 17), Bytes(15, padded[17]));
}

TEST_F(SymmetricCryptDataTest, ARefusedPadTypeFailsOnlyWhereAPadIsNeeded) {
  StartAes();
  for (const LONG pad_type : {-2, -0x7FFFFFFF - 1}) {
    ASSERT_EQ(crypt->put_PadType(pad_type), S_OK);
    EXPECT_EQ(Encrypted(BytesOfHex(kAesPlain)), BytesOfHex(kAesCipher));
    EXPECT_EQ(Encrypted({}), Bytes());
    EXPECT_EQ(Encrypt(BytesValue(PatternBytes(17))).status, E_OUTOFMEMORY);
    ExpectNoError();
    // What was taken is still there: its whole block as output, the rest as input.
    ASSERT_EQ(crypt->put_PadType(0), S_OK);
    const Bytes cipher = Encrypted({});
    EXPECT_EQ(Decrypted(cipher), PatternBytes(17) + Bytes(15, 0));
  }
}

TEST_F(SymmetricCryptDataTest, DecryptionNeedsNoPadType) {
  StartAes();
  ASSERT_EQ(crypt->put_PadType(-2), S_OK);
  EXPECT_EQ(Decrypted(BytesOfHex(kAesCipher) + Bytes(1, 9)), BytesOfHex(kAesPlain));
}

TEST_F(SymmetricCryptDataTest, PiecesAreJoinedToBlocks) {
  StartAes();
  EXPECT_EQ(Encrypted(PatternBytes(5), VARIANT_FALSE), Bytes());
  const Bytes cipher = Encrypted(BytesOf("xyz"), VARIANT_TRUE);
  ASSERT_EQ(cipher.size(), 16u);
  EXPECT_EQ(Decrypted(cipher), PatternBytes(5) + BytesOf("xyz") + Bytes(8, 0));

  EXPECT_EQ(Encrypted(PatternBytes(15), VARIANT_FALSE).size(), 0u);
  EXPECT_EQ(Encrypted(PatternBytes(1), VARIANT_FALSE).size(), 16u);
}

TEST_F(SymmetricCryptDataTest, EverySplitGivesTheSameBytesInBothDirections) {
  for (const bool is_aes : {true, false}) {
    Start(is_aes);
    const Bytes plain = PatternBytes(48);
    const Bytes cipher = Encrypted(plain);
    ASSERT_EQ(cipher.size(), 48u);
    for (size_t first = 0; first <= 48; ++first) {
      for (size_t second = first; second <= 48; second += 5) {
        // Interleaved: each direction has a partial block of its own.
        Bytes encrypted, decrypted;
        const size_t ends[] = {0, first, second, 48};
        for (int i = 0; i < 3; ++i) {
          const size_t size = ends[i + 1] - ends[i];
          const VARIANT_BOOL last = i == 2 ? VARIANT_TRUE : VARIANT_FALSE;
          encrypted = encrypted + Encrypted(Part(plain, ends[i], size), last);
          decrypted = decrypted + Decrypted(Part(cipher, ends[i], size), last);
        }
        ASSERT_EQ(encrypted, cipher) << first << " " << second;
        ASSERT_EQ(decrypted, plain) << first << " " << second;
      }
    }
  }
}

TEST_F(SymmetricCryptDataTest, AnyNonZeroFlagEndsTheData) {
  StartAes();
  EXPECT_EQ(Encrypted(PatternBytes(3), 1).size(), 16u);
  EXPECT_EQ(Encrypted(PatternBytes(3), static_cast<VARIANT_BOOL>(0x100)).size(), 16u);
}

TEST_F(SymmetricCryptDataTest, APartialBlockOfCiphertextStaysQueued) {
  StartAes();
  const Bytes cipher = Encrypted(PatternBytes(32));
  EXPECT_EQ(Decrypted(Head(cipher, 17)), Head(PatternBytes(32), 16));
  EXPECT_EQ(Decrypted(Tail(cipher, 17)), Tail(PatternBytes(32), 16));
}

TEST_F(SymmetricCryptDataTest, DataThatDoesNotConvertQueuesNothing) {
  StartAes();
  EXPECT_EQ(Encrypted(PatternBytes(5), VARIANT_FALSE), Bytes());
  const CryptResult failed = Encrypt(TestValue(VT_NULL));
  EXPECT_EQ(failed.status, DISP_E_TYPEMISMATCH);
  EXPECT_FALSE(failed.is_array);
  ExpectNoError();
  EXPECT_EQ(Decrypted(Encrypted({})), PatternBytes(5) + Bytes(11, 0));
}

TEST_F(SymmetricCryptDataTest, ACallTakesUpToTheMaximumOfTheQueue) {
  StartAes();
  const Bytes plain = PatternBytes(kQueueMaximum);
  const Bytes cipher = Encrypted(plain);
  ASSERT_EQ(cipher.size(), kQueueMaximum);
  EXPECT_TRUE(Decrypted(cipher) == plain);
}

TEST_F(SymmetricCryptDataTest, MoreThanTheMaximumIsRefusedAndQueuesNothing) {
  StartAes();
  EXPECT_EQ(Encrypted(PatternBytes(1), VARIANT_FALSE), Bytes());
  EXPECT_EQ(Encrypt(BytesValue(PatternBytes(kQueueMaximum))).status, E_OUTOFMEMORY);
  ExpectNoError();
  EXPECT_EQ(Decrypted(Encrypted({})), PatternBytes(1) + Bytes(15, 0));
  EXPECT_EQ(Decrypt(BytesValue(PatternBytes(kQueueMaximum + 1))).status, E_OUTOFMEMORY);
  EXPECT_EQ(Decrypted({}), Bytes());
}

TEST_F(SymmetricCryptDataTest, APadMayFillTheQueueToItsMaximum) {
  StartAes();
  const Bytes plain = PatternBytes(kQueueMaximum - 1);
  const Bytes cipher = Encrypted(plain);
  ASSERT_EQ(cipher.size(), kQueueMaximum);
  EXPECT_TRUE(Decrypted(cipher) == plain + Bytes(1, 0));
}

TEST_F(SymmetricCryptDataTest, OutputOfFailedCallsFillsTheQueueUntilReset) {
  StartAes();
  ASSERT_EQ(crypt->put_PadType(-2), S_OK);
  // The pad fails after the blocks were put out, so the output queue has room for one block more.
  EXPECT_EQ(Encrypt(BytesValue(PatternBytes(kQueueMaximum - 16 + 3))).status, E_OUTOFMEMORY);
  // Of two blocks the second does not fit, and no later call gets past it: all fail as this one.
  ASSERT_EQ(crypt->put_PadType(0), S_OK);
  EXPECT_EQ(Encrypt(BytesValue(PatternBytes(13 + 16)), VARIANT_FALSE).status, E_OUTOFMEMORY);
  EXPECT_EQ(Encrypt(BytesValue({}), VARIANT_FALSE).status, E_OUTOFMEMORY);
  EXPECT_EQ(Encrypt(BytesValue({}), VARIANT_TRUE).status, E_OUTOFMEMORY);
  // The other direction does not mind.
  EXPECT_EQ(Decrypted(BytesOfHex(kAesCipher)), BytesOfHex(kAesPlain));
  ASSERT_EQ(crypt->Reset(0), S_OK);
  EXPECT_EQ(Encrypted(BytesOfHex(kAesPlain)), BytesOfHex(kAesCipher));
}

TEST_F(SymmetricCryptDataTest, DataQueuedByAFailedCallIsTransformedByTheNext) {
  StartAes();
  ASSERT_EQ(crypt->put_PadType(-2), S_OK);
  const Bytes plain = PatternBytes(kQueueMaximum - 16 + 3);
  EXPECT_EQ(Encrypt(BytesValue(plain)).status, E_OUTOFMEMORY);
  ASSERT_EQ(crypt->put_PadType(7), S_OK);
  const Bytes cipher = Encrypted({});
  ASSERT_EQ(cipher.size(), kQueueMaximum);
  EXPECT_TRUE(Decrypted(cipher) == plain + Bytes(13, 7));
}

}  // namespace
}  // namespace mirolta::test
