// Engines, keys and queues of the cipher tests.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "array_bytes.h"
#include "cipher_algorithms.h"
#include "cipher_engine.h"
#include "owned_value.h"
#include "test_bytes.h"

namespace mirolta {

// A byte array value of these bytes.
class ArrayValue : public OwnedVariant {
 public:
  explicit ArrayValue(const Bytes& bytes) {
    EXPECT_EQ(BytesToVariant(bytes.data(), static_cast<uint32_t>(bytes.size()), Get()), S_OK);
  }
};

// A text value.
class TextValue : public OwnedVariant {
 public:
  explicit TextValue(const OLECHAR* text) {
    V_VT(Get()) = VT_BSTR;
    V_BSTR(Get()) = SysAllocString(text);
    EXPECT_NE(V_BSTR(Get()), nullptr);
  }
};

inline HRESULT SetKeyBytes(CipherEngine& engine, const Bytes& key) {
  return engine.SetKey(ArrayValue(key).Value(), 0);
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

}  // namespace mirolta
