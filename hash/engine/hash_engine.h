// What every digest engine shares: the key, HMAC around the primitive, and the safe digest
// accessor.
#pragma once

#include "byte_string.h"
#include "platform.h"

namespace mirolta {

// The chaining words of a digest between two blocks.
struct HashChain {
  static constexpr uint32_t kMaximumWords = 8;
  uint32_t words[kMaximumWords];
};

// HashEngine owns one running digest computation and, if one is set, a key. A concrete engine gives
// the raw primitive; Start and Finish choose between plain and keyed operation. An engine has no
// lock: its owner's holds.
class HashEngine {
 public:
  static constexpr uint32_t kMaximumBlockSize = 64;

  HashEngine(const HashEngine&) = delete;
  HashEngine& operator=(const HashEngine&) = delete;

  // Owners call these through the virtual table, whose order stands.
  virtual ~HashEngine();

  // BeginKeyed starts an HMAC computation with the key.
  // Errors: E_UNEXPECTED without key bytes; the first failure of the primitive.
  // Source: RFC 2104.
  virtual HRESULT BeginKeyed() noexcept;
  // FinishKeyed ends an HMAC computation; the digest bytes then hold its value.
  // Errors: E_UNEXPECTED if no key is there or none was begun; the first failure of the primitive.
  virtual HRESULT FinishKeyed() noexcept;
  // SetKey replaces the key, discards what was absorbed and calls BeginKeyed.
  // Errors: those of KeyFromVariant, after which there is no key and the computation is as before;
  //         those of BeginKeyed, so E_UNEXPECTED for a byte array without elements.
  virtual HRESULT SetKey(const VARIANT& key, LONG code_page) noexcept;
  // GetKey gives the key bytes as a byte array, or an empty VARIANT without a key.
  // Errors: E_POINTER for a null out; those of BytesToVariant.
  virtual HRESULT GetKey(VARIANT* out) noexcept;
  // ResetKey forgets the key and restarts plain.
  virtual HRESULT ResetKey() noexcept;
  // GetName copies the algorithm's name. Errors: those of CopyName.
  virtual HRESULT GetName(OLECHAR* buffer, LONG capacity) noexcept = 0;
  // Errors: E_POINTER for a null out; those of GetName; E_OUTOFMEMORY.
  virtual HRESULT GetNameString(BSTR* out) noexcept;
  virtual LONG BlockSize() const noexcept = 0;
  virtual LONG DigestSize() const noexcept = 0;
  // Init, Update and Final are the raw primitive. Update absorbs data whether the computation is
  // open or not, and gives S_FALSE for length 0. Final writes the digest bytes.
  virtual HRESULT Init() noexcept = 0;
  virtual HRESULT Update(const uint8_t* data, uint32_t length) noexcept = 0;
  virtual HRESULT Final() noexcept = 0;
  // RawDigest gives the digest bytes as they stand.
  virtual const uint8_t* RawDigest() const noexcept = 0;
  // Digest finishes an open computation first; null if that fails.
  virtual const uint8_t* Digest() noexcept;
  // Start and Finish take the keyed way if the key has at least one byte: a key that is present but
  // empty counts in BeginKeyed only.
  virtual HRESULT Start() noexcept;
  virtual HRESULT Finish() noexcept;

  // DropKey wipes the key. The computation goes on as it is, and ends as a plain one.
  void DropKey() noexcept;

 protected:
  HashEngine() noexcept = default;

  // SaveChain and LoadChain carry the state after exactly one block: LoadChain is Init and Update
  // with the block that the chain was saved after, but leaves the digest bytes as they are.
  virtual void SaveChain(HashChain* chain) const noexcept = 0;
  virtual void LoadChain(const HashChain& chain) noexcept = 0;
  // FinalKeyed is Final, LoadChain with the outer chain, Update with the digest bytes, and Final.
  // On failure the digest bytes may hold the inner digest.
  virtual HRESULT FinalKeyed(const HashChain& outer) noexcept;
  virtual void ClearDigest() noexcept = 0;

  bool IsOpen() const noexcept { return open_ != 0; }
  void SetOpen(bool open) noexcept { open_ = open ? 1 : 0; }

 private:
  // What an HMAC computation takes from its key: the states behind the inner and outer pad block.
  struct Pads {
    HashChain inner;
    HashChain outer;
  };

  bool HasUsableKey() const noexcept { return key_.IsPresent() && key_.Count() >= 1; }
  HRESULT FillPaddedKey(uint8_t* padded_key) noexcept;
  HRESULT AbsorbPad(const uint8_t* padded_key, uint8_t pad_byte, HashChain* chain) noexcept;
  HRESULT PreparePads() noexcept;

  ByteString key_;
  Pads pads_ = {};
  bool pads_ready_ = false;
  LONG open_ = 1;
};

}  // namespace mirolta
