// The block cipher engine behind the cipher class and the encrypting stream filter.
#pragma once

#include <atomic>

#include "byte_buffer.h"
#include "byte_string.h"
#include "cipher_channel.h"
#include "platform.h"

namespace mirolta {

// CipherEngine owns a key, a pad setting and the queues of two independent directions. Every block
// is transformed by itself: equal blocks give equal ciphertext, and nothing is authenticated. A
// concrete engine supplies its key schedule and its kernels. There is no lock inside; the owner
// serialises all calls but those of the pad setting.
class CipherEngine {
 public:
  // The queues hold at least this much, rounded up by ByteBuffer's rule.
  static constexpr uint32_t kQueueLimit = 0x100000;
  static constexpr uint32_t kDefaultGrowStep = 256;
  static constexpr uint32_t kMaxGrowStep = 0x10000;

  CipherEngine(const CipherEngine&) = delete;
  CipherEngine& operator=(const CipherEngine&) = delete;

  // The order of the virtual operations is fixed; owners and engines agree on it.
  virtual ~CipherEngine();

  // SetKey replaces the key by the bytes of value (see KeyFromVariant) and resets all queues.
  // Errors: a value that gives no bytes returns its conversion's status; the old key is gone and
  // the
  //         queues are as they were. A length that the cipher does not take: E_INVALIDARG; no key
  //         is left and the queues are reset.
  [[nodiscard]] virtual HRESULT SetKey(const VARIANT& value, LONG code_page);

  // GetKey sets key to a new byte array, or to an empty value without a key. E_POINTER for null.
  [[nodiscard]] virtual HRESULT GetKey(VARIANT* key);

  // ClearKey drops the key and the content of all queues, which keep their limit and step.
  virtual HRESULT ClearKey();

  virtual bool HasKey();

  // GetName copies the cipher's name with its terminator.
  // Errors: E_OUTOFMEMORY for a null buffer, or a capacity of 1 or more characters that is too
  //         small. A capacity below 1 is not checked against.
  [[nodiscard]] virtual HRESULT GetName(OLECHAR* buffer, LONG capacity);

  // GetNameString sets name to a new text. E_POINTER for null.
  [[nodiscard]] virtual HRESULT GetNameString(BSTR* name);

  virtual uint32_t BlockSize();

  // ResetBuffers drops the content of all queues and builds them anew with this growth step; a step
  // outside 256..65536 counts as 256. Always S_OK.
  virtual HRESULT ResetBuffers(uint32_t grow_step);

  // EncryptUpdate takes plaintext and puts the ciphertext of all whole blocks so far into
  // EncryptOut. See CipherChannel::Update for its errors and what they leave.
  [[nodiscard]] virtual HRESULT EncryptUpdate(const uint8_t* data, uint32_t length);

  // EncryptFinal fills up a last partial block by the pad setting and encrypts it. A plaintext of
  // whole blocks gets no pad.
  // Errors: E_OUTOFMEMORY for a refused pad setting too.
  [[nodiscard]] virtual HRESULT EncryptFinal();

  // DecryptUpdate is EncryptUpdate of the other direction; no pad is ever removed.
  [[nodiscard]] virtual HRESULT DecryptUpdate(const uint8_t* data, uint32_t length);

  // DecryptFinal returns S_FALSE if a partial block stays queued, else S_OK.
  [[nodiscard]] virtual HRESULT DecryptFinal();

  // DropKey wipes the key and leaves the queues as they are.
  void DropKey();

  // UnqueuedEncryptTransform is for an owner that has a buffer for the output: the transform that it
  // may run from data[length] to that buffer instead of EncryptUpdate and taking EncryptOut. Without
  // run if the queues have a part in that update (see CipherChannel::CanBypass) or there is no key.
  BlockTransform UnqueuedEncryptTransform(uint32_t length) noexcept;
  BlockTransform UnqueuedDecryptTransform(uint32_t length) noexcept;

  // Output that nobody has taken; owners read it and consume it here.
  ByteBuffer& EncryptOut() noexcept { return encrypt_.Out(); }
  ByteBuffer& DecryptOut() noexcept { return decrypt_.Out(); }

  // Input that waits for a whole block.
  const ByteBuffer& EncryptIn() const noexcept { return encrypt_.In(); }
  const ByteBuffer& DecryptIn() const noexcept { return decrypt_.In(); }

  // The pad setting (see MakePad): 0 at first, unchecked, kept when the key changes. Owners read
  // and write it without the lock that they hold for everything else.
  LONG PadType() const noexcept { return pad_type_.load(std::memory_order_relaxed); }
  void SetPadType(LONG pad_type) noexcept { pad_type_.store(pad_type, std::memory_order_relaxed); }

 protected:
  // Run functions and schedule of both directions, for when there is a key.
  CipherEngine(LONG algorithm, const BlockTransform& encryption,
               const BlockTransform& decryption) noexcept;

 private:
  // BuildSchedule fills the schedule from key[length]; false if the cipher takes no such length.
  virtual bool BuildSchedule(const uint8_t* key, uint32_t length) = 0;
  virtual void WipeSchedule() = 0;

  // The transform of a direction; without a key, one that cannot run.
  BlockTransform Keyed(const BlockTransform& transform) const;
  BlockTransform Unqueued(const BlockTransform& transform, const CipherChannel& channel,
                          uint32_t length) const;

  ByteString key_;
  std::atomic<LONG> pad_type_ = 0;
  CipherChannel encrypt_;
  CipherChannel decrypt_;
  const LONG algorithm_;
  const BlockTransform encryption_;
  const BlockTransform decryption_;
};

}  // namespace mirolta
