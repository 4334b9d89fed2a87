// Engines, keys and queues of the cipher tests.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "cipher_algorithms.h"
#include "cipher_engine.h"
#include "test_values.h"

namespace mirolta::test {

// The ciphers with their key lengths.
struct Cipher {
  const char* name;
  LONG algorithm;
  uint32_t key_length;
};

inline constexpr Cipher kCiphers[] = {
    {"Aes128", kCipherAes, 16},       {"Aes192", kCipherAes, 24},
    {"Aes256", kCipherAes, 32},       {"Des", kCipherDes, 8},
    {"TwoKeyTripleDes", kCipherDes, 16}, {"ThreeKeyTripleDes", kCipherDes, 24},
};

// A test for each of them.
class CipherTest : public testing::TestWithParam<Cipher> {};

#define MIROLTA_FOR_EACH_CIPHER(suite)                                \
  INSTANTIATE_TEST_SUITE_P(All, suite, testing::ValuesIn(kCiphers), \
                           [](const auto& row) { return std::string(row.param.name); })

inline HRESULT SetKeyBytes(CipherEngine& engine, const Bytes& key) {
  return engine.SetKey(BytesValue(key), 0);
}

inline std::unique_ptr<CipherEngine> KeyedEngine(LONG algorithm, const Bytes& key) {
  std::unique_ptr<CipherEngine> engine = CreateCipherEngine(algorithm);
  EXPECT_NE(engine, nullptr);
  EXPECT_EQ(SetKeyBytes(*engine, key), S_OK);
  return engine;
}

inline Bytes Content(const ByteBuffer& buffer) {
  return Bytes(buffer.Data(), buffer.Data() + buffer.Length());
}

inline Bytes TakeAll(ByteBuffer& buffer) {
  const Bytes content = Content(buffer);
  buffer.Consume(buffer.Length());
  return content;
}

inline HRESULT Encrypt(CipherEngine& engine, const Bytes& data) {
  return engine.EncryptUpdate(data.data(), static_cast<uint32_t>(data.size()));
}

inline HRESULT Decrypt(CipherEngine& engine, const Bytes& data) {
  return engine.DecryptUpdate(data.data(), static_cast<uint32_t>(data.size()));
}

}  // namespace mirolta::test
