// Engines against the block-by-block model, over random sequences of operations.
#include "cipher_model.h"

#include <gtest/gtest.h>

#include "aes_kernels.h"
#include "cipher_engine.h"
#include "cipher_testing.h"
#include "des_kernels.h"

namespace mirolta::test {
namespace {

// Most pieces are short, some span many blocks, a few come near the queue limit.
uint32_t PieceLength(std::mt19937& random) {
  const uint32_t kind = Below(random, 32);
  if (kind < 20) return Below(random, 40);
  if (kind < 27) return Below(random, 2000);
  if (kind < 29) return Below(random, 70000);
  return Below(random, 1100000);
}

class Pair {
 public:
  Pair(const Cipher& cipher, std::mt19937& random) : cipher_(cipher), random_(random) {
    engine_ = CreateCipherEngine(cipher.algorithm);
    EXPECT_NE(engine_, nullptr);
    block_size_ = engine_->BlockSize();
    SetKey();
  }

  void Step() {
    switch (Below(random_, 16)) {
      case 0:
        SetPad();
        ExpectStatus(engine_->EncryptFinal(),
                     encrypt_.EncryptFinal(block_size_, encrypt_block_, pad_type_));
        break;
      case 1:
        ExpectStatus(engine_->DecryptFinal(), decrypt_.DecryptFinal(block_size_, decrypt_block_));
        break;
      case 2:
        Take(engine_->EncryptOut(), encrypt_.out);
        break;
      case 3:
        Take(engine_->DecryptOut(), decrypt_.out);
        break;
      case 4:
        if (Below(random_, 8) == 0) Reset();
        break;
      case 5:
        if (Below(random_, 16) == 0) SetKey();
        break;
      default:
        Update(Below(random_, 2) == 0);
    }
    EXPECT_TRUE(Content(engine_->EncryptIn()) == encrypt_.in);
    EXPECT_TRUE(Content(engine_->EncryptOut()) == encrypt_.out);
    EXPECT_TRUE(Content(engine_->DecryptIn()) == decrypt_.in);
    EXPECT_TRUE(Content(engine_->DecryptOut()) == decrypt_.out);
  }

  uint32_t Refusals() const { return refusals_; }

 private:
  void ExpectStatus(HRESULT status, HRESULT expected) {
    EXPECT_EQ(status, expected);
    if (status == E_OUTOFMEMORY) ++refusals_;
  }

  void SetKey() {
    const Bytes key = RandomBytes(random_, cipher_.key_length);
    EXPECT_EQ(SetKeyBytes(*engine_, key), S_OK);
    encrypt_.Reinit(0x100000, 256);
    decrypt_.Reinit(0x100000, 256);
    if (cipher_.algorithm == kCipherAes) {
      EXPECT_TRUE(ExpandAesKey(key.data(), cipher_.key_length, &aes_));
      encrypt_block_ = [this](const uint8_t* in, uint8_t* out) {
        AesEncryptPortable(aes_, in, out, 1);
      };
      decrypt_block_ = [this](const uint8_t* in, uint8_t* out) {
        AesDecryptPortable(aes_, in, out, 1);
      };
    } else {
      EXPECT_TRUE(ExpandDesKey(key.data(), cipher_.key_length, &des_));
      encrypt_block_ = [this](const uint8_t* in, uint8_t* out) {
        DesEncryptPortable(des_, in, out, 1);
      };
      decrypt_block_ = [this](const uint8_t* in, uint8_t* out) {
        DesDecryptPortable(des_, in, out, 1);
      };
    }
  }

  void Reset() {
    // 257 and 1001 bytes leave less than a block of room at the end of a full queue.
    constexpr uint32_t kSteps[] = {256, 257, 1001, 65536};
    const uint32_t step = kSteps[Below(random_, 4)];
    EXPECT_EQ(engine_->ResetBuffers(step), S_OK);
    encrypt_.Reinit(0x100000, step);
    decrypt_.Reinit(0x100000, step);
  }

  void SetPad() {
    constexpr LONG kPads[] = {0, 1, 0x141, 256, 0x7FFFFFFF, -2, INT32_MIN};
    pad_type_ = kPads[Below(random_, 7)];
    engine_->SetPadType(pad_type_);
  }

  void Take(ByteBuffer& queue, Bytes& model) {
    const uint32_t count = Below(random_, 2) == 0 ? queue.Length() : Below(random_, 5000);
    const uint32_t taken = queue.Consume(count);
    EXPECT_LE(taken, model.size());
    model.erase(model.begin(), model.begin() + static_cast<ptrdiff_t>(taken));
  }

  void Update(bool encrypt) {
    const Bytes data = RandomBytes(random_, PieceLength(random_));
    const uint32_t length = static_cast<uint32_t>(data.size());
    if (encrypt) {
      ExpectStatus(engine_->EncryptUpdate(data.data(), length),
                   encrypt_.Update(block_size_, encrypt_block_, data.data(), length));
    } else {
      ExpectStatus(engine_->DecryptUpdate(data.data(), length),
                   decrypt_.Update(block_size_, decrypt_block_, data.data(), length));
    }
  }

  const Cipher& cipher_;
  std::mt19937& random_;
  std::unique_ptr<CipherEngine> engine_;
  uint32_t block_size_ = 0;
  LONG pad_type_ = 0;
  uint32_t refusals_ = 0;
  AesSchedule aes_ = {};
  DesSchedule des_ = {};
  ModelChannel encrypt_;
  ModelChannel decrypt_;
  ModelChannel::Block encrypt_block_;
  ModelChannel::Block decrypt_block_;
};

using CipherModel = CipherTest;
MIROLTA_FOR_EACH_CIPHER(CipherModel);

TEST_P(CipherModel, AgreesWithTheEngineOverRandomOperations) {
  std::mt19937 random(GetParam().key_length);
  Pair pair(GetParam(), random);
  for (int step = 0; step < 200; ++step) {
    pair.Step();
    ASSERT_FALSE(testing::Test::HasFailure()) << "step " << step;
  }
  EXPECT_GE(pair.Refusals(), 5u) << "the limits were not reached";
}

}  // namespace
}  // namespace mirolta::test
