#include "digest_result.h"

#include "array_bytes.h"
#include "hash_algorithms.h"

namespace mirolta {

HRESULT DigestToText(HashEngine* engine, BSTR* out) {
  if (engine == nullptr) return kBareNotInitialized;
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  const uint8_t* const digest = engine->Digest();
  if (digest == nullptr) return E_OUTOFMEMORY;
  const LONG length = 2 * engine->DigestSize();
  BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(length));
  if (text == nullptr) return E_OUTOFMEMORY;
  DigestToHex(digest, length, text);
  *out = text;
  return S_OK;
}

HRESULT DigestToArray(HashEngine* engine, VARIANT* out) {
  if (engine == nullptr) return kBareNotInitialized;
  if (out == nullptr) return E_POINTER;
  const uint8_t* const digest = engine->Digest();
  if (digest == nullptr) return E_OUTOFMEMORY;
  return BytesToVariant(digest, static_cast<uint32_t>(engine->DigestSize()), out);
}

}  // namespace mirolta
