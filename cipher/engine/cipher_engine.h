// The base of the cipher engines: key, pad setting and queues.
#pragma once

#include <atomic>

#include "byte_buffer.h"
#include "byte_string.h"
#include "cipher_channel.h"
#include "platform.h"

namespace mirolta {

// CipherEngine owns a key, a pad setting and the queues of its two independent operations,
// encryption and decryption. Every block is transformed independently (ECB): equal blocks give
// equal ciphertext, and nothing is authenticated. A concrete engine supplies its key schedule and
// its kernels. Not thread-safe but for the pad setting: the owner's lock serialises all other
// calls.
class CipherEngine {
 public:
  // What each queue holds at most, before ByteBuffer rounds it up.
  static constexpr uint32_t kQueueLimit = 0x100000;
  static constexpr uint32_t kDefaultGrowStep = 256;
  static constexpr uint32_t kMaxGrowStep = 0x10000;

  CipherEngine(const CipherEngine&) = delete;
  CipherEngine& operator=(const CipherEngine&) = delete;

  // The order of the virtual functions is fixed.
  virtual ~CipherEngine();

  // SetKey replaces the key by the bytes of value (see KeyFromVariant) and resets all queues.
  // Errors: those of KeyFromVariant, with no key left and the queues unchanged; E_INVALIDARG for a
  //         length that the cipher does not take, with no key left and the queues reset.
  [[nodiscard]] virtual HRESULT SetKey(const VARIANT& value, LONG code_page);

  // GetKey returns the key as a byte array, or an empty VARIANT without a key.
  // Errors: E_POINTER for a null key; those of BytesToVariant.
  [[nodiscard]] virtual HRESULT GetKey(VARIANT* key);

  // ClearKey wipes the key and the content of all queues, which keep their limit and growth step.
  virtual HRESULT ClearKey();

  virtual bool HasKey();

  // GetName copies the cipher's name with its terminator.
  // Errors: those of CopyName: E_OUTOFMEMORY for a null buffer, or a capacity of 1 or more
  //         characters that is too small. A capacity below 1 is not checked.
  [[nodiscard]] virtual HRESULT GetName(OLECHAR* buffer, LONG capacity);

  // GetNameString returns the cipher's name as a new text.
  // Errors: E_POINTER for a null name; E_OUTOFMEMORY.
  [[nodiscard]] virtual HRESULT GetNameString(BSTR* name);

  virtual uint32_t BlockSize();

  // ResetBuffers wipes all queues and builds them anew with this growth step; a step outside
  // kDefaultGrowStep..kMaxGrowStep counts as kDefaultGrowStep. Returns S_OK.
  virtual HRESULT ResetBuffers(uint32_t grow_step);

  // EncryptUpdate takes plaintext and appends the ciphertext of all whole blocks to EncryptOut.
  // Shapes: null data, or a length of 0, only transforms what is queued.
  // Errors: those of CipherChannel::Update, which says what they leave.
  [[nodiscard]] virtual HRESULT EncryptUpdate(const uint8_t* data, uint32_t length);

  // EncryptFinal pads a last partial block by the pad setting and encrypts it. A plaintext of whole
  // blocks gets no pad.
  // Errors: those of CipherChannel::TransformQueued; E_OUTOFMEMORY if MakePad fails, as for an
  //         invalid pad setting, or if the input queue cannot hold the pad.
  [[nodiscard]] virtual HRESULT EncryptFinal();

  // DecryptUpdate does the same for decryption. Pads are never removed.
  // Errors: those of CipherChannel::Update.
  [[nodiscard]] virtual HRESULT DecryptUpdate(const uint8_t* data, uint32_t length);

  // DecryptFinal transforms what is queued. Returns S_FALSE if a partial block stays queued.
  // Errors: those of CipherChannel::TransformQueued.
  [[nodiscard]] virtual HRESULT DecryptFinal();

  // DropKey wipes the key and leaves the queues as they are.
  void DropKey();

  // UnqueuedEncryptTransform is for an owner with a buffer for the output: the transform to run
  // from data[length] to that buffer, instead of EncryptUpdate and taking EncryptOut. Its run is
  // null if that update would need the queues (see CipherChannel::CanBypass) or there is no key.
  BlockTransform UnqueuedEncryptTransform(uint32_t length) noexcept;
  BlockTransform UnqueuedDecryptTransform(uint32_t length) noexcept;

  // The output queues; owners read and consume output here.
  ByteBuffer& EncryptOut() noexcept { return encrypt_.Out(); }
  ByteBuffer& DecryptOut() noexcept { return decrypt_.Out(); }

  // The input queues.
  const ByteBuffer& EncryptIn() const noexcept { return encrypt_.In(); }
  const ByteBuffer& DecryptIn() const noexcept { return decrypt_.In(); }

  // The pad setting (see MakePad): 0 at first, not validated, kept when the key changes. Atomic:
  // owners use it without their lock. Relaxed: nothing else is read depending on it.
  LONG PadType() const noexcept { return pad_type_.load(std::memory_order_relaxed); }
  void SetPadType(LONG pad_type) noexcept { pad_type_.store(pad_type, std::memory_order_relaxed); }

 protected:
  CipherChannel& Encryption() noexcept { return encrypt_; }
  CipherChannel& Decryption() noexcept { return decrypt_; }

  // The transforms of a keyed engine.
  CipherEngine(LONG algorithm, const BlockTransform& encryption,
               const BlockTransform& decryption) noexcept;

 private:
  // BuildSchedule fills the schedule from key[length]; false if the cipher takes no such length.
  virtual bool BuildSchedule(const uint8_t* key, uint32_t length) = 0;
  virtual void WipeSchedule() = 0;

  // Keyed returns transform, or the one without a run if there is no key.
  const BlockTransform& Keyed(const BlockTransform& transform) const noexcept {
    return key_.IsPresent() ? transform : no_key_;
  }
  BlockTransform Unqueued(const BlockTransform& transform, const CipherChannel& channel,
                          uint32_t length) const;

  ByteString key_;
  std::atomic<LONG> pad_type_ = 0;
  CipherChannel encrypt_;
  CipherChannel decrypt_;
  const LONG algorithm_;
  const BlockTransform encryption_;
  const BlockTransform decryption_;
  const BlockTransform no_key_;
};

}  // namespace mirolta
