// One direction of the encrypting filter.
#pragma once

#include <memory>

#include "cipher_engine.h"
#include "cipher_operation.h"
#include "pad_setting.h"
#include "platform.h"

namespace mirolta {

// CipherDirection owns the engine, if an algorithm was chosen, and whether it encrypts or decrypts.
// The filter's lock covers all but the pad setting, which may be used at any time: it is kept here,
// not in the engine, which another thread may be replacing.
class CipherDirection {
 public:
  explicit CipherDirection(VARIANT_BOOL decrypt) : decrypt_(decrypt) {}

  // SetAlgorithm drops the engine held and, for a known name, makes a new one, without key and with
  // pad setting 0. Without memory for the engine there is none, and that is no failure.
  // Returns: false for an unknown name.
  bool SetAlgorithm(BSTR name);

  // GetName gives the algorithm's name, an empty text without one.
  // Errors: E_OUTOFMEMORY.
  HRESULT GetName(BSTR* name) const;

  CipherEngine* Engine() const { return engine_.get(); }

  VARIANT_BOOL Decrypts() const { return decrypt_; }
  void SetDecrypts(VARIANT_BOOL decrypt) { decrypt_ = decrypt; }

  // PadType is 0 without an algorithm; SetPadType is refused then by false.
  LONG PadType() const { return pad_.present() ? pad_.value() : 0; }
  bool SetPadType(LONG pad_type);

  // A direction with an algorithm but no key moves nothing: neither plaintext that should have been
  // encrypted nor a ciphertext that nobody can have asked for.
  bool LacksKey() const { return engine_ != nullptr && !engine_->HasKey(); }

  // Update, Finish and Out are the engine's, by the operation that is set. Only with an algorithm.
  // Finish without a key gives E_UNEXPECTED if any bytes are queued, and does nothing if not.
  [[nodiscard]] HRESULT Update(const uint8_t* bytes, uint32_t count);
  [[nodiscard]] HRESULT Finish();
  ByteBuffer& Out() { return (*engine_.*Operation().out)(); }

  // Reset drops what is queued, ResetKey the key too. Both do nothing without an algorithm.
  void Reset();
  void ResetKey();

 private:
  const CipherOperation& Operation() const { return decrypt_ != 0 ? kDecryption : kEncryption; }
  const ByteBuffer& In() const { return (*engine_.*Operation().in)(); }

  std::unique_ptr<CipherEngine> engine_;
  PadSetting pad_;
  VARIANT_BOOL decrypt_;
};

}  // namespace mirolta
