#include "cipher_side.h"

#include "cipher_algorithms.h"

namespace mirolta {

bool CipherSide::SetAlgorithm(const OLECHAR* name) {
  has_algorithm_ = false;
  engine_.reset();
  const LONG algorithm = FindCipherAlgorithm(name);
  if (algorithm < 0) return false;
  engine_ = CreateCipherEngine(algorithm);
  pad_type_ = 0;
  has_algorithm_ = engine_ != nullptr;
  return true;
}

HRESULT CipherSide::GetName(BSTR* name) const {
  if (engine_ != nullptr) return engine_->GetNameString(name);
  *name = SysAllocString(OLESTR(""));
  return *name != nullptr ? S_OK : E_OUTOFMEMORY;
}

bool CipherSide::SetPadType(LONG pad_type) {
  if (!has_algorithm_) return false;
  pad_type_ = pad_type;
  return true;
}

HRESULT CipherSide::Update(const uint8_t* bytes, uint32_t count) {
  return decrypt_ != 0 ? engine_->DecryptUpdate(bytes, count)
                       : engine_->EncryptUpdate(bytes, count);
}

HRESULT CipherSide::Finish() {
  // Bytes are left without a key only by a key whose conversion failed.
  if (LacksKey() && (In().Length() != 0 || Out().Length() != 0)) return E_UNEXPECTED;
  if (decrypt_ != 0) return engine_->DecryptFinal();
  engine_->SetPadType(pad_type_);
  return engine_->EncryptFinal();
}

void CipherSide::Reset() {
  if (engine_ != nullptr) engine_->ResetBuffers(CipherEngine::kDefaultGrowStep);
}

void CipherSide::ResetKey() {
  if (engine_ != nullptr) engine_->ClearKey();
}

}  // namespace mirolta
