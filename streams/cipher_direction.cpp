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

bool CipherDirection::SetPadType(LONG pad_type) {
  if (!pad_.IsPresent()) return false;
  pad_.Set(pad_type);
  return true;
}

HRESULT CipherDirection::Update(const uint8_t* bytes, uint32_t count) {
  return (*engine_.*Operation().update)(bytes, count);
}

HRESULT CipherDirection::Finish() {
  // A failed conversion of a new key leaves bytes queued and no key.
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
