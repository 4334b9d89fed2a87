#include "hash_engine.h"

#include <cstring>

#include "array_bytes.h"
#include "key_conversion.h"

namespace mirolta {

namespace {

constexpr uint8_t kInnerPad = 0x36;
constexpr uint8_t kOuterPad = 0x5C;
constexpr LONG kNameBufferLength = 64;

}  // namespace

HashEngine::~HashEngine() {
  DropKey();
}

void HashEngine::DropKey() noexcept {
  key_.Clear();
  WipePiece<sizeof pads_>(&pads_);
  pads_ready_ = false;
}

// padded_key[BlockSize()] := the key, or the digest of a key longer than a block, then zeros.
HRESULT HashEngine::FillPaddedKey(uint8_t* padded_key) noexcept {
  const uint32_t block_size = static_cast<uint32_t>(BlockSize());
  std::memset(padded_key, 0, block_size);
  if (key_.Count() <= block_size) {
    if (key_.Count() != 0) std::memcpy(padded_key, key_.Data(), key_.Count());
    return S_OK;
  }
  HRESULT status = Init();
  if (SUCCEEDED(status)) status = Update(key_.Data(), key_.Count());
  if (SUCCEEDED(status)) status = Final();
  if (SUCCEEDED(status)) {
    std::memcpy(padded_key, RawDigest(), static_cast<size_t>(DigestSize()));
  }
  return status;
}

HRESULT HashEngine::AbsorbPad(const uint8_t* padded_key, uint8_t pad_byte,
                              HashChain* chain) noexcept {
  const uint32_t block_size = static_cast<uint32_t>(BlockSize());
  uint8_t pad[kMaximumBlockSize];
  for (uint32_t i = 0; i < block_size; ++i) {
    pad[i] = static_cast<uint8_t>(padded_key[i] ^ pad_byte);
  }
  HRESULT status = Init();
  if (SUCCEEDED(status)) status = Update(pad, block_size);
  WipeMemory(pad, sizeof pad);
  if (SUCCEEDED(status)) SaveChain(chain);
  return status;
}

HRESULT HashEngine::PreparePads() noexcept {
  uint8_t padded_key[kMaximumBlockSize];
  HRESULT status = FillPaddedKey(padded_key);
  if (SUCCEEDED(status)) status = AbsorbPad(padded_key, kOuterPad, &pads_.outer);
  if (SUCCEEDED(status)) status = AbsorbPad(padded_key, kInnerPad, &pads_.inner);
  WipeMemory(padded_key, sizeof padded_key);
  pads_ready_ = SUCCEEDED(status);
  return status;
}

HRESULT HashEngine::BeginKeyed() noexcept {
  if (!key_.IsPresent()) return E_UNEXPECTED;
  // The pads depend on the key only: they are computed once a key.
  if (!pads_ready_) {
    const HRESULT status = PreparePads();
    if (FAILED(status)) return status;
  }
  LoadChain(pads_.inner);
  ClearDigest();
  return S_OK;
}

HRESULT HashEngine::FinishKeyed() noexcept {
  if (!key_.IsPresent() || !pads_ready_) return E_UNEXPECTED;
  return FinalKeyed(pads_.outer);
}

HRESULT HashEngine::FinalKeyed(const HashChain& outer) noexcept {
  HRESULT status = Final();
  if (FAILED(status)) return status;
  // Update reads the inner digest from the digest bytes, which the outer Final overwrites.
  LoadChain(outer);
  status = Update(RawDigest(), static_cast<uint32_t>(DigestSize()));
  return SUCCEEDED(status) ? Final() : status;
}

HRESULT HashEngine::SetKey(const VARIANT& key, LONG code_page) noexcept {
  DropKey();
  const HRESULT status = KeyFromVariant(key, code_page, &key_, KeyArrays::kOneDimension);
  return FAILED(status) ? status : BeginKeyed();
}

HRESULT HashEngine::GetKey(VARIANT* out) noexcept {
  if (out == nullptr) return E_POINTER;
  VariantInit(out);
  return key_.IsPresent() ? BytesToVariant(key_.Data(), key_.Count(), out) : S_OK;
}

HRESULT HashEngine::ResetKey() noexcept {
  DropKey();
  return Init();
}

HRESULT HashEngine::GetNameString(BSTR* out) noexcept {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  OLECHAR name[kNameBufferLength];
  const HRESULT status = GetName(name, kNameBufferLength);
  if (FAILED(status)) return status;
  *out = SysAllocString(name);
  return *out != nullptr ? S_OK : E_OUTOFMEMORY;
}

const uint8_t* HashEngine::Digest() noexcept {
  if (IsOpen() && FAILED(Finish())) return nullptr;
  return RawDigest();
}

HRESULT HashEngine::Start() noexcept {
  return HasUsableKey() ? BeginKeyed() : Init();
}

HRESULT HashEngine::Finish() noexcept {
  return HasUsableKey() ? FinishKeyed() : Final();
}

}  // namespace mirolta
