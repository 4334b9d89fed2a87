// Engines on published known-answer and multi-block vectors.
#include "cipher_vectors.h"

#include <gtest/gtest.h>

#include "cipher_testing.h"

namespace mirolta::test {
namespace {

void CheckEngine(LONG algorithm, const Bytes& key, const Bytes& plaintext,
                 const Bytes& ciphertext) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(algorithm, key);
  EXPECT_EQ(Encrypt(*engine, plaintext), S_OK);
  EXPECT_EQ(engine->EncryptFinal(), S_OK);
  EXPECT_EQ(TakeAll(engine->EncryptOut()), ciphertext);
  EXPECT_EQ(Decrypt(*engine, ciphertext), S_OK);
  EXPECT_EQ(engine->DecryptFinal(), S_OK);
  EXPECT_EQ(TakeAll(engine->DecryptOut()), plaintext);
}

TEST(CipherVectors, AesEnginesTransformAsPublished) {
  ForEachAesVector([](const Bytes& key, const Bytes& plaintext, const Bytes& ciphertext) {
    CheckEngine(kCipherAes, key, plaintext, ciphertext);
  });
}

TEST(CipherVectors, DesEnginesTransformAsPublished) {
  ForEachDesVector([](const Bytes& key, const Bytes& plaintext, const Bytes& ciphertext) {
    CheckEngine(kCipherDes, key, plaintext, ciphertext);
  });
}

}  // namespace
}  // namespace mirolta::test
