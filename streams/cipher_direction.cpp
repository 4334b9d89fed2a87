#include "cipher_direction.h"

#include "cipher_algorithms.h"

namespace mirolta {

bool CipherDirection::SetAlgorithm(BSTR name) {
  pad_.EngineGone();
  engine_.reset();
  const LONG algorithm = FindCipherAlgorithm(name, SysStringLen(name));
  if (algorithm < 0) return false;
  engine_ = CreateCipherEngine(algorithm);
  if (engine_ != nullptr) pad_.EngineMade();
  return true;
}

HRESULT CipherDirection::GetName(BSTR* name) const {
  if (engine_ != nullptr) return engine_->GetNameString(name);
  *name = SysAllocString(OLESTR(""));
  return *name != nullptr ? S_OK : E_OUTOFMEMORY;
}

bool CipherDirection::SetPadType(LONG pad_type) {
  if (!pad_.present()) return false;
  pad_.Set(pad_type);
  return true;
}

HRESULT CipherDirection::Update(const uint8_t* bytes, uint32_t count) {
  return (*engine_.*Operation().update)(bytes, count);
}

HRESULT CipherDirection::Finish() {
  // Bytes are left without a key only by a key whose conversion failed.
  if (LacksKey() && (In().Length() != 0 || Out().Length() != 0)) return E_UNEXPECTED;
  pad_.ApplyTo(*engine_);
  return (*engine_.*Operation().final)();
}

void CipherDirection::Reset() {
  if (engine_ != nullptr) engine_->ResetBuffers(CipherEngine::kDefaultGrowStep);
}

void CipherDirection::ResetKey() {
  if (engine_ != nullptr) engine_->ClearKey();
}

}  // namespace mirolta
