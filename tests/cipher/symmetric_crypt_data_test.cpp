// SymmetricCryptObject: data in and out, in pieces, padded, and up to the queues' limits.
#include "symmetric_crypt_fixture.h"

namespace mirolta::test {
namespace {

using SymmetricCryptDataTest = SymmetricCryptTest;

// The queues' limit of 0x100000, rounded up by a whole step.
constexpr size_t kQueueMaximum = 0x100000 + 256;

Bytes Joined(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

Bytes Counting(size_t size) {
  Bytes bytes(size);
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i * 7 + i / 256);
  return bytes;
}

TEST_F(SymmetricCryptDataTest, PublishedBlocks) {
  StartAes();
  EXPECT_EQ(Encrypted(BytesOfHex(kAesPlain)), BytesOfHex(kAesCipher));
  EXPECT_EQ(Decrypted(BytesOfHex(kAesCipher)), BytesOfHex(kAesPlain));
  StartDes();
  EXPECT_EQ(Encrypted(BytesOfHex(kDesPlain)), BytesOfHex(kDesCipher));
  EXPECT_EQ(Decrypted(BytesOfHex(kDesCipher)), BytesOfHex(kDesPlain));
}

TEST_F(SymmetricCryptDataTest, OnlyAPartialBlockIsPadded) {
  StartDes();
  EXPECT_EQ(Encrypted(Counting(8)).size(), 8u);
  EXPECT_EQ(Encrypted(Counting(9)).size(), 16u);
  StartAes();
  EXPECT_EQ(Encrypted(Counting(16)).size(), 16u);
  const Bytes cipher = Encrypted(Counting(20));
  ASSERT_EQ(cipher.size(), 32u);
  EXPECT_EQ(Decrypted(cipher), Joined({Counting(20), Bytes(12, 0)}));
  EXPECT_EQ(Encrypted({}), Bytes());
}

TEST_F(SymmetricCryptDataTest, PadBytesFollowThePadType) {
  struct Row {
    LONG pad_type;
    uint8_t byte;
  };
  for (const Row& row : {Row{0, 0}, Row{4, 4}, Row{0x141, 0x41}, Row{256, 0}, Row{255, 255},
                         Row{0x7FFFFFFF, 0xFF}}) {
    StartAes();
    ASSERT_EQ(crypt->put_PadType(row.pad_type), S_OK);
    EXPECT_EQ(Decrypted(Encrypted(Counting(20))), Joined({Counting(20), Bytes(12, row.byte)}))
        << row.pad_type;
  }
  ASSERT_EQ(crypt->put_PadType(-1), S_OK);
  const Bytes padded = Decrypted(Encrypted(Counting(17)));
  ASSERT_EQ(padded.size(), 32u);
  EXPECT_EQ(Bytes(padded.begin(), padded.begin() + 17), Counting(17));
  EXPECT_NE(Bytes(padded.begin() + 17, padded.end()), Bytes(15, padded[17]));
}

TEST_F(SymmetricCryptDataTest, ARefusedPadTypeFailsOnlyWhereAPadIsNeeded) {
  StartAes();
  for (const LONG pad_type : {-2, -0x7FFFFFFF - 1}) {
    ASSERT_EQ(crypt->put_PadType(pad_type), S_OK);
    EXPECT_EQ(Encrypted(BytesOfHex(kAesPlain)), BytesOfHex(kAesCipher));
    EXPECT_EQ(Encrypted({}), Bytes());
    EXPECT_EQ(Encrypt(BytesValue(Counting(17))).status, E_OUTOFMEMORY);
    EXPECT_EQ(ErrorText(), OLESTR("(nothing)"));
    // What was taken is still there: its whole block as output, the rest as input.
    ASSERT_EQ(crypt->put_PadType(0), S_OK);
    const Bytes cipher = Encrypted({});
    EXPECT_EQ(Decrypted(cipher), Joined({Counting(17), Bytes(15, 0)}));
  }
}

TEST_F(SymmetricCryptDataTest, ThePadTypeDoesNotMatterToDecryption) {
  StartAes();
  ASSERT_EQ(crypt->put_PadType(-2), S_OK);
  EXPECT_EQ(Decrypted(Joined({BytesOfHex(kAesCipher), Bytes(1, 9)})), BytesOfHex(kAesPlain));
}

TEST_F(SymmetricCryptDataTest, PiecesJoinToBlocks) {
  StartAes();
  EXPECT_EQ(Encrypted(Counting(5), VARIANT_FALSE), Bytes());
  const Bytes cipher = Encrypted(BytesOf("xyz"), VARIANT_TRUE);
  ASSERT_EQ(cipher.size(), 16u);
  EXPECT_EQ(Decrypted(cipher), Joined({Counting(5), BytesOf("xyz"), Bytes(8, 0)}));

  EXPECT_EQ(Encrypted(Counting(15), VARIANT_FALSE).size(), 0u);
  EXPECT_EQ(Encrypted(Counting(1), VARIANT_FALSE).size(), 16u);
}

TEST_F(SymmetricCryptDataTest, EverySplitGivesTheSameInBothDirections) {
  for (const bool aes : {true, false}) {
    if (aes) {
      StartAes();
    } else {
      StartDes();
    }
    const Bytes plain = Counting(48);
    const Bytes cipher = Encrypted(plain);
    ASSERT_EQ(cipher.size(), 48u);
    for (ptrdiff_t first = 0; first <= 48; ++first) {
      for (ptrdiff_t second = first; second <= 48; second += 5) {
        const Bytes a(plain.begin(), plain.begin() + first);
        const Bytes b(plain.begin() + first, plain.begin() + second);
        const Bytes c(plain.begin() + second, plain.end());
        const Bytes x(cipher.begin(), cipher.begin() + first);
        const Bytes y(cipher.begin() + first, cipher.begin() + second);
        const Bytes z(cipher.begin() + second, cipher.end());
        // Interleaved: each direction has a partial block of its own.
        const Bytes e1 = Encrypted(a, VARIANT_FALSE), d1 = Decrypted(x, VARIANT_FALSE);
        const Bytes e2 = Encrypted(b, VARIANT_FALSE), d2 = Decrypted(y, VARIANT_FALSE);
        const Bytes e3 = Encrypted(c), d3 = Decrypted(z);
        ASSERT_EQ(Joined({e1, e2, e3}), cipher) << first << " " << second;
        ASSERT_EQ(Joined({d1, d2, d3}), plain) << first << " " << second;
      }
    }
  }
}

TEST_F(SymmetricCryptDataTest, AnyNonZeroFlagEndsTheData) {
  StartAes();
  EXPECT_EQ(Encrypted(Counting(3), 1).size(), 16u);
  EXPECT_EQ(Encrypted(Counting(3), static_cast<VARIANT_BOOL>(0x100)).size(), 16u);
}

TEST_F(SymmetricCryptDataTest, APartialCiphertextBlockStaysQueued) {
  StartAes();
  const Bytes cipher = Encrypted(Counting(32));
  const Bytes head(cipher.begin(), cipher.begin() + 17);
  const Bytes tail(cipher.begin() + 17, cipher.end());
  const Bytes plain = Counting(32);
  EXPECT_EQ(Decrypted(head, VARIANT_TRUE), Bytes(plain.begin(), plain.begin() + 16));
  EXPECT_EQ(Decrypted(tail, VARIANT_TRUE), Bytes(plain.begin() + 16, plain.end()));
}

TEST_F(SymmetricCryptDataTest, AFailedConversionTakesNothing) {
  StartAes();
  EXPECT_EQ(Encrypted(Counting(5), VARIANT_FALSE), Bytes());
  const Outcome failed = Encrypt(TestValue(VT_NULL));
  EXPECT_EQ(failed.status, DISP_E_TYPEMISMATCH);
  EXPECT_FALSE(failed.is_array);
  EXPECT_EQ(ErrorText(), OLESTR("(nothing)"));
  EXPECT_EQ(Decrypted(Encrypted({})), Joined({Counting(5), Bytes(11, 0)}));
}

TEST_F(SymmetricCryptDataTest, ACallCanTakeTheQueuesMaximum) {
  StartAes();
  const Bytes plain = Counting(kQueueMaximum);
  const Bytes cipher = Encrypted(plain);
  ASSERT_EQ(cipher.size(), kQueueMaximum);
  EXPECT_TRUE(Decrypted(cipher) == plain);
}

TEST_F(SymmetricCryptDataTest, MoreThanTheMaximumIsRefusedAndNothingTaken) {
  StartAes();
  EXPECT_EQ(Encrypted(Counting(1), VARIANT_FALSE), Bytes());
  EXPECT_EQ(Encrypt(BytesValue(Counting(kQueueMaximum))).status, E_OUTOFMEMORY);
  EXPECT_EQ(ErrorText(), OLESTR("(nothing)"));
  EXPECT_EQ(Decrypted(Encrypted({})), Bytes(16, 0));
  EXPECT_EQ(Decrypt(BytesValue(Counting(kQueueMaximum + 1))).status, E_OUTOFMEMORY);
  EXPECT_EQ(Decrypted({}), Bytes());
}

TEST_F(SymmetricCryptDataTest, APadMayFillTheQueueToItsMaximum) {
  StartAes();
  const Bytes plain = Counting(kQueueMaximum - 1);
  const Bytes cipher = Encrypted(plain);
  ASSERT_EQ(cipher.size(), kQueueMaximum);
  EXPECT_TRUE(Decrypted(cipher) == Joined({plain, Bytes(1, 0)}));
}

TEST_F(SymmetricCryptDataTest, OutputThatNobodyGotFillsTheQueueUntilReset) {
  StartAes();
  ASSERT_EQ(crypt->put_PadType(-2), S_OK);
  // The pad fails after the blocks were put out, so the output queue has room for one block more.
  EXPECT_EQ(Encrypt(BytesValue(Counting(kQueueMaximum - 16 + 3))).status, E_OUTOFMEMORY);
  // Of two blocks the second does not fit, and no later call gets past it: all fail as this one.
  ASSERT_EQ(crypt->put_PadType(0), S_OK);
  EXPECT_EQ(Encrypt(BytesValue(Counting(13 + 16)), VARIANT_FALSE).status, E_OUTOFMEMORY);
  EXPECT_EQ(Encrypt(BytesValue({}), VARIANT_FALSE).status, E_OUTOFMEMORY);
  EXPECT_EQ(Encrypt(BytesValue({}), VARIANT_TRUE).status, E_OUTOFMEMORY);
  // The other direction does not mind.
  EXPECT_EQ(Decrypted(BytesOfHex(kAesCipher)), BytesOfHex(kAesPlain));
  ASSERT_EQ(crypt->Reset(0), S_OK);
  EXPECT_EQ(Encrypted(BytesOfHex(kAesPlain)), BytesOfHex(kAesCipher));
}

TEST_F(SymmetricCryptDataTest, WhatWasTakenByAFailedCallComesWithTheNext) {
  StartAes();
  ASSERT_EQ(crypt->put_PadType(-2), S_OK);
  const Bytes plain = Counting(kQueueMaximum - 16 + 3);
  EXPECT_EQ(Encrypt(BytesValue(plain)).status, E_OUTOFMEMORY);
  ASSERT_EQ(crypt->put_PadType(7), S_OK);
  const Bytes cipher = Encrypted({});
  ASSERT_EQ(cipher.size(), kQueueMaximum);
  EXPECT_TRUE(Decrypted(cipher) == Joined({plain, Bytes(13, 7)}));
}

}  // namespace
}  // namespace mirolta::test
