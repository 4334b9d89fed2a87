#include "cipher_side.h"

#include "cipher_algorithms.h"

namespace mirolta {

bool CipherSide::SetAlgorithm(BSTR name) {
  pad_.EngineGone();
  engine_.reset();
  const LONG algorithm = FindCipherAlgorithm(name, SysStringLen(name));
  if (algorithm < 0) return false;
  engine_ = CreateCipherEngine(algorithm);
  if (engine_ != nullptr) pad_.EngineMade();
  return true;
}

HRESULT CipherSide::GetName(BSTR* name) const {
  if (engine_ != nullptr) return engine_->GetNameString(name);
  *name = SysAllocString(OLESTR(""));
  return *name != nullptr ? S_OK : E_OUTOFMEMORY;
}

bool CipherSide::SetPadType(LONG pad_type) {
  if (!pad_.present()) return false;
  pad_.Set(pad_type);
  return true;
}

HRESULT CipherSide::Update(const uint8_t* bytes, uint32_t count) {
  return (*engine_.*Operation().update)(bytes, count);
}

HRESULT CipherSide::Finish() {
  // Bytes are left without a key only by a key whose conversion failed.
  if (LacksKey() && (In().Length() != 0 || Out().Length() != 0)) return E_UNEXPECTED;
  pad_.ApplyTo(*engine_);
  return (*engine_.*Operation().final)();
}

void CipherSide::Reset() {
  if (engine_ != nullptr) engine_->ResetBuffers(CipherEngine::kDefaultGrowStep);
}

void CipherSide::ResetKey() {
  if (engine_ != nullptr) engine_->ClearKey();
}

}  // namespace mirolta
