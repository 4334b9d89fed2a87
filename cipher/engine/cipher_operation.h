// Encryption and decryption, for owners of an engine that choose between them at run time.
#pragma once

#include "cipher_engine.h"

namespace mirolta {

// CipherOperation names the members of CipherEngine that make up encryption, or decryption.
struct CipherOperation {
  HRESULT (CipherEngine::*update)(const uint8_t* data, uint32_t length);
  HRESULT (CipherEngine::*final)();
  BlockTransform (CipherEngine::*unqueued_transform)(uint32_t length) noexcept;
  const ByteBuffer& (CipherEngine::*in)() const noexcept;
  ByteBuffer& (CipherEngine::*out)() noexcept;
};

inline constexpr CipherOperation kEncryption = {
    &CipherEngine::EncryptUpdate, &CipherEngine::EncryptFinal,
    &CipherEngine::UnqueuedEncryptTransform, &CipherEngine::EncryptIn, &CipherEngine::EncryptOut};
inline constexpr CipherOperation kDecryption = {
    &CipherEngine::DecryptUpdate, &CipherEngine::DecryptFinal,
    &CipherEngine::UnqueuedDecryptTransform, &CipherEngine::DecryptIn, &CipherEngine::DecryptOut};

}  // namespace mirolta
