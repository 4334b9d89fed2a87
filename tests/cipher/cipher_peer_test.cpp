// Engines against another library, for every length and in random pieces.
#include <gtest/gtest.h>
#include <openssl/des.h>
#include <openssl/evp.h>

#include <algorithm>
#include <cstring>

#include "cipher_testing.h"

namespace mirolta::test {
namespace {

const EVP_CIPHER* PeerOf(const Cipher& cipher) {
  if (cipher.key_length == 16) return EVP_aes_128_ecb();
  return cipher.key_length == 24 ? EVP_aes_192_ecb() : EVP_aes_256_ecb();
}

Bytes PeerAes(const Cipher& cipher, const Bytes& key, const Bytes& data, bool encrypt) {
  EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
  EXPECT_EQ(EVP_CipherInit_ex(context, PeerOf(cipher), nullptr, key.data(), nullptr, encrypt), 1);
  EXPECT_EQ(EVP_CIPHER_CTX_set_padding(context, 0), 1);
  Bytes out(data.size() + 16);
  int written = 0;
  EXPECT_EQ(
      EVP_CipherUpdate(context, out.data(), &written, data.data(), static_cast<int>(data.size())),
      1);
  EVP_CIPHER_CTX_free(context);
  out.resize(static_cast<size_t>(written));
  return out;
}

Bytes PeerDes(const Bytes& key, const Bytes& data, bool encrypt) {
  DES_key_schedule schedules[3];
  for (size_t i = 0; i < 3; ++i) {
    DES_cblock part;
    std::memcpy(part, key.data() + 8 * i % key.size(), 8);
    DES_set_key_unchecked(&part, &schedules[i]);
  }
  Bytes out(data.size());
  for (size_t i = 0; i < data.size(); i += 8) {
    DES_cblock in_block, out_block;
    std::memcpy(in_block, &data[i], 8);
    if (key.size() == 8) {
      DES_ecb_encrypt(&in_block, &out_block, &schedules[0], encrypt ? 1 : 0);
    } else {
      DES_ecb3_encrypt(&in_block, &out_block, &schedules[0], &schedules[1], &schedules[2],
                       encrypt ? 1 : 0);
    }
    std::memcpy(&out[i], out_block, 8);
  }
  return out;
}

Bytes Peer(const Cipher& cipher, const Bytes& key, const Bytes& data, bool encrypt) {
  if (data.empty()) return {};
  // Of DES the peer has single blocks without its deprecated provider.
  return cipher.algorithm == kCipherAes ? PeerAes(cipher, key, data, encrypt)
                                        : PeerDes(key, data, encrypt);
}

// What one direction still has to be given, and what came out of it.
struct Flow {
  Bytes data;
  size_t given;
  Bytes result;
};

void Give(CipherEngine& engine, bool encrypt, uint32_t most, std::mt19937& random, Flow* flow) {
  const size_t left = flow->data.size() - flow->given;
  const size_t count = std::min<size_t>(left, Below(random, most) + 1);
  const Bytes piece = Part(flow->data, flow->given, count);
  flow->given += count;
  ASSERT_EQ(encrypt ? Encrypt(engine, piece) : Decrypt(engine, piece), S_OK);
  if (Below(random, 2) == 0) {
    flow->result = flow->result + TakeAll(encrypt ? engine.EncryptOut() : engine.DecryptOut());
  }
}

void CheckLength(const Cipher& cipher, size_t length, std::mt19937& random) {
  const Bytes key = RandomBytes(random, cipher.key_length);
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(cipher.algorithm, key);
  const size_t block_size = engine->BlockSize();
  Flow encryption = {RandomBytes(random, length), 0, {}};
  Flow decryption = {RandomBytes(random, length), 0, {}};

  const uint32_t most = Below(random, 4) == 0 ? 5000 : 1 + Below(random, 600);
  while (encryption.given != length || decryption.given != length) {
    if (Below(random, 2) == 0) {
      Give(*engine, true, most, random, &encryption);
    } else {
      Give(*engine, false, most, random, &decryption);
    }
  }
  ASSERT_EQ(engine->EncryptFinal(), S_OK);
  ASSERT_EQ(engine->DecryptFinal(), length % block_size != 0 ? S_FALSE : S_OK);
  encryption.result = encryption.result + TakeAll(engine->EncryptOut());
  decryption.result = decryption.result + TakeAll(engine->DecryptOut());

  const size_t padded = (length + block_size - 1) / block_size * block_size;
  const Bytes plaintext = encryption.data + Bytes(padded - length, 0);
  ASSERT_EQ(encryption.result, Peer(cipher, key, plaintext, true));
  const Bytes whole = Part(decryption.data, 0, length / block_size * block_size);
  ASSERT_EQ(decryption.result, Peer(cipher, key, whole, false));
}

using CipherPeer = CipherTest;
MIROLTA_FOR_EACH_CIPHER(CipherPeer);

TEST_P(CipherPeer, AgreesOnEveryLengthInRandomPieces) {
  std::mt19937 random(GetParam().key_length);
  // Every length to 1024, then every third; 4096 is among them.
  for (size_t length = 0; length <= 4096; length += length < 1024 ? 1 : 3) {
    CheckLength(GetParam(), length, random);
    if (HasFatalFailure()) FAIL() << "length " << length;
  }
}

}  // namespace
}  // namespace mirolta::test
