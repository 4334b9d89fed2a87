#include "cipher_engine.h"

#include "array_bytes.h"
#include "cipher_algorithms.h"
#include "cipher_pad.h"
#include "key_conversion.h"

namespace mirolta {

namespace {

// The block size of AES, the largest.
constexpr uint32_t kMaxBlockSize = 16;

}  // namespace

CipherEngine::CipherEngine(LONG algorithm, const BlockTransform& encryption,
                           const BlockTransform& decryption) noexcept
    : algorithm_(algorithm),
      encryption_(encryption),
      decryption_(decryption),
      no_key_{nullptr, nullptr, encryption.block_size} {}

// Concrete engines wipe their schedule; key and queues wipe themselves.
CipherEngine::~CipherEngine() = default;

HRESULT CipherEngine::SetKey(const VARIANT& value, LONG code_page) {
  DropKey();
  const HRESULT status = KeyFromVariant(value, code_page, &key_);
  if (FAILED(status)) return status;
  ResetBuffers(kDefaultGrowStep);
  if (!BuildSchedule(key_.Data(), key_.Count())) {
    ClearKey();
    return E_INVALIDARG;
  }
  return S_OK;
}

HRESULT CipherEngine::GetKey(VARIANT* key) {
  if (key == nullptr) return E_POINTER;
  VariantInit(key);
  if (!HasKey()) return S_OK;
  return BytesToVariant(key_.Data(), key_.Count(), key);
}

HRESULT CipherEngine::ClearKey() {
  DropKey();
  encrypt_.Clear();
  decrypt_.Clear();
  return S_OK;
}

bool CipherEngine::HasKey() {
  return key_.IsPresent();
}

HRESULT CipherEngine::GetName(OLECHAR* buffer, LONG capacity) {
  return CopyName(kCipherNames[algorithm_], buffer, capacity);
}

HRESULT CipherEngine::GetNameString(BSTR* name) {
  if (name == nullptr) return E_POINTER;
  constexpr LONG kCapacity = 64;
  OLECHAR buffer[kCapacity];
  const HRESULT status = GetName(buffer, kCapacity);
  if (FAILED(status)) return status;
  *name = SysAllocString(buffer);
  return *name != nullptr ? S_OK : E_OUTOFMEMORY;
}

uint32_t CipherEngine::BlockSize() {
  return encryption_.block_size;
}

HRESULT CipherEngine::ResetBuffers(uint32_t grow_step) {
  if (grow_step < kDefaultGrowStep || grow_step > kMaxGrowStep) grow_step = kDefaultGrowStep;
  encrypt_.Reinit(kQueueLimit, grow_step);
  decrypt_.Reinit(kQueueLimit, grow_step);
  return S_OK;
}

HRESULT CipherEngine::EncryptUpdate(const uint8_t* data, uint32_t length) {
  return encrypt_.Update(Keyed(encryption_), data, length);
}

HRESULT CipherEngine::EncryptFinal() {
  const uint32_t pending = encrypt_.In().Length();
  if (pending != 0) {
    // More than a block is pending after an update that found the output queue full. Pending whole
    // blocks get one block of pad.
    uint8_t pad[kMaxBlockSize];
    const uint32_t count = BlockSize() - pending % BlockSize();
    if (!MakePad(PadType(), pad, count)) return E_OUTOFMEMORY;
    if (!encrypt_.Append(pad, count)) return E_OUTOFMEMORY;
  }
  return encrypt_.TransformQueued(Keyed(encryption_));
}

HRESULT CipherEngine::DecryptUpdate(const uint8_t* data, uint32_t length) {
  return decrypt_.Update(Keyed(decryption_), data, length);
}

HRESULT CipherEngine::DecryptFinal() {
  const HRESULT status = decrypt_.TransformQueued(Keyed(decryption_));
  if (FAILED(status)) return status;
  return decrypt_.In().Length() != 0 ? S_FALSE : S_OK;
}

BlockTransform CipherEngine::UnqueuedEncryptTransform(uint32_t length) noexcept {
  return Unqueued(encryption_, encrypt_, length);
}

BlockTransform CipherEngine::UnqueuedDecryptTransform(uint32_t length) noexcept {
  return Unqueued(decryption_, decrypt_, length);
}

BlockTransform CipherEngine::Unqueued(const BlockTransform& transform, const CipherChannel& channel,
                                      uint32_t length) const {
  BlockTransform keyed = Keyed(transform);
  if (keyed.run != nullptr && !channel.CanBypass(keyed.block_size, length)) {
    keyed.run = nullptr;
  }
  return keyed;
}

void CipherEngine::DropKey() {
  key_.Clear();
  WipeSchedule();
}

}  // namespace mirolta
