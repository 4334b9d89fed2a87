// The base of the digest engines: key, HMAC, and access to the digest.
#pragma once

#include "byte_string.h"
#include "platform.h"

namespace mirolta {

// HashChain holds the chaining value of a digest after a whole block.
struct HashChain {
  static constexpr uint32_t kMaximumWords = 8;
  uint32_t words[kMaximumWords];
};

// HashEngine owns one running digest computation and, if one is set, a key. A concrete engine
// supplies the primitive: Init, Update and Final. Start and Finish choose between the plain digest
// and HMAC. Not thread-safe: the owner's lock serialises all calls.
class HashEngine {
 public:
  static constexpr uint32_t kMaximumBlockSize = 64;

  HashEngine(const HashEngine&) = delete;
  HashEngine& operator=(const HashEngine&) = delete;

  // The order of the virtual functions is fixed.
  virtual ~HashEngine();

  // BeginKeyed starts an HMAC computation.
  // Errors: E_UNEXPECTED without key bytes; the first failure of the primitive.
  // Source: RFC 2104, 2.
  virtual HRESULT BeginKeyed() noexcept;

  // FinishKeyed ends an HMAC computation; the digest bytes then hold its value.
  // Errors: E_UNEXPECTED if there is no key or BeginKeyed has not been called with it; the first
  //         failure of the primitive.
  // Source: RFC 2104, 2.
  virtual HRESULT FinishKeyed() noexcept;

  // SetKey replaces the key, discards what was absorbed and calls BeginKeyed.
  // Errors: those of KeyFromVariant, after which there is no key and the computation is as before;
  //         those of BeginKeyed, so E_UNEXPECTED for a byte array without elements.
  virtual HRESULT SetKey(const VARIANT& key, LONG code_page) noexcept;

  // GetKey returns the key as a byte array, or an empty VARIANT without a key.
  // Errors: E_POINTER for a null out; those of BytesToVariant.
  virtual HRESULT GetKey(VARIANT* out) noexcept;

  // ResetKey wipes the key and starts a plain computation.
  virtual HRESULT ResetKey() noexcept;

  // GetName copies the algorithm's name.
  // Errors: those of CopyName.
  virtual HRESULT GetName(OLECHAR* buffer, LONG capacity) noexcept = 0;

  // GetNameString returns the algorithm's name as a new text.
  // Errors: E_POINTER for a null out; those of GetName; E_OUTOFMEMORY.
  virtual HRESULT GetNameString(BSTR* out) noexcept;

  virtual LONG BlockSize() const noexcept = 0;
  virtual LONG DigestSize() const noexcept = 0;

  // Init starts the primitive; the digest bytes are zero.
  virtual HRESULT Init() noexcept = 0;

  // Update absorbs data[length], whether the computation is open or not.
  // Shapes: data may be null only if length is 0, which absorbs nothing and returns S_FALSE.
  // Alias:  data may be the digest bytes.
  virtual HRESULT Update(const uint8_t* data, uint32_t length) noexcept = 0;

  // Final pads, writes the digest bytes and closes the computation. The padding counts as absorbed:
  // more data, and another Final, continue after it.
  virtual HRESULT Final() noexcept = 0;

  // RawDigest returns the digest bytes as they are, DigestSize() of them.
  virtual const uint8_t* RawDigest() const noexcept = 0;

  // Digest finishes an open computation and returns the digest bytes; null if that fails.
  virtual const uint8_t* Digest() noexcept;

  // Start and Finish compute an HMAC if the key has at least one byte, else a plain digest. A key
  // that is present but empty counts for BeginKeyed and FinishKeyed only.
  virtual HRESULT Start() noexcept;
  virtual HRESULT Finish() noexcept;

  // DropKey wipes the key. A computation in progress ends as a plain digest.
  void DropKey() noexcept;

 protected:
  HashEngine() noexcept = default;

  // SaveChain and LoadChain carry the state after exactly one block: LoadChain does what Init and
  // Update with that block do, but does not change the digest bytes.
  virtual void SaveChain(HashChain* chain) const noexcept = 0;
  virtual void LoadChain(const HashChain& chain) noexcept = 0;

  // FinalKeyed ends the inner and the outer computation of an HMAC: Final, LoadChain(outer), Update
  // with the digest bytes, Final.
  // Errors: the first failure; the digest bytes may hold the inner digest then.
  virtual HRESULT FinalKeyed(const HashChain& outer) noexcept;

  virtual void ClearDigest() noexcept = 0;

  bool IsOpen() const noexcept { return open_ != 0; }
  void SetOpen(bool open) noexcept { open_ = open ? 1 : 0; }

 private:
  // The chaining values after the inner and the outer pad block: all that HMAC needs of a key.
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
