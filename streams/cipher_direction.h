// One direction of the encrypting filter.
#pragma once

#include "cipher_engine.h"
#include "cipher_operation.h"
#include "filter_direction.h"
#include "pad_setting.h"

namespace mirolta {

// CipherDirection adds whether the direction encrypts or decrypts, and its pad setting. The
// filter's lock covers all but the pad setting, which may be used at any time: it is kept here, not
// in the engine, which another thread may be replacing.
class CipherDirection : public FilterDirection<CipherEngine> {
 public:
  // SetAlgorithm releases the engine and, for a known name, creates a new one, without key and with
  // pad setting 0. If memory runs out there is no engine, which is no failure. Returns false for an
  // unknown name.
  bool SetAlgorithm(BSTR name);

  VARIANT_BOOL Decrypts() const { return decrypt_; }
  void SetDecrypts(VARIANT_BOOL decrypt) { decrypt_ = decrypt; }

  // Without an algorithm PadType is 0, and SetPadType returns false.
  LONG PadType() const { return pad_.IsPresent() ? pad_.Value() : 0; }
  bool SetPadType(LONG pad_type);

  // A direction with an algorithm but no key moves nothing: it must not pass on plaintext that was
  // to be encrypted.
  bool LacksKey() const { return engine_ != nullptr && !engine_->HasKey(); }

  // Update, Finish and Out are the engine's operations in the direction that is set; the direction
  // must have an algorithm. Finish without a key returns E_UNEXPECTED if bytes are queued, and
  // otherwise does nothing.
  [[nodiscard]] HRESULT Update(const uint8_t* bytes, uint32_t count);
  [[nodiscard]] HRESULT Finish();
  ByteBuffer& Out() { return (*engine_.*Operation().out)(); }

  // Reset discards the queues, ResetKey the key too. Both do nothing without an algorithm.
  void Reset();
  void ResetKey();

 private:
  const CipherOperation& Operation() const { return decrypt_ != 0 ? kDecryption : kEncryption; }
  const ByteBuffer& In() const { return (*engine_.*Operation().in)(); }

  PadSetting pad_;
  VARIANT_BOOL decrypt_ = VARIANT_FALSE;
};

}  // namespace mirolta
