// The engine of a digest, made of its compression function: byte count and block buffer.
#pragma once

#include <cstring>

#include "hash_algorithms.h"
#include "hash_engine.h"
#include "hash_kernels.h"
#include "wide_name.h"

namespace mirolta {

// GatherBytes copies fewer than 64 bytes, in pieces of 16 as far as possible: kernels load 16 bytes
// at once, so this avoids store-forwarding stalls.
inline void GatherBytes(uint8_t* to, const uint8_t* from, uint32_t count) noexcept {
  for (; count >= 16; count -= 16, to += 16, from += 16) std::memcpy(to, from, 16);
  if (count != 0) std::memcpy(to, from, count);
}

// BlockHashEngine makes an engine of a Primitive, which says what differs:
//   kAlgorithm     its index in kHashAlgorithms
//   kWordCount     words of the chaining value; the digest is all of them
//   kInitial       their values before the first block
//   Kernel()       the compression function of this processor
//   Finish()       its FinishDigest
//   FinishKeyed()  its FinishKeyedDigest, or null if it has none
template <typename Primitive>
class BlockHashEngine : public HashEngine {
 public:
  BlockHashEngine() noexcept
      : compress_(Primitive::Kernel()),
        finish_(Primitive::Finish()),
        finish_keyed_(Primitive::FinishKeyed()) {
    BlockHashEngine::Init();
  }
  ~BlockHashEngine() override {
    WipePiece<sizeof words_>(words_);
    WipePiece<sizeof block_>(block_);
    WipePiece<sizeof digest_>(digest_);
  }

  HRESULT GetName(OLECHAR* buffer, LONG capacity) noexcept final {
    return CopyName(kHashAlgorithms[Primitive::kAlgorithm], buffer, capacity);
  }
  LONG BlockSize() const noexcept final { return kHashBlockSize; }
  LONG DigestSize() const noexcept final { return static_cast<LONG>(kDigestSize); }
  HRESULT Init() noexcept final;
  HRESULT Update(const uint8_t* data, uint32_t length) noexcept final;
  HRESULT Final() noexcept final;
  const uint8_t* RawDigest() const noexcept final { return digest_; }

 protected:
  void SaveChain(HashChain* chain) const noexcept final;
  void LoadChain(const HashChain& chain) noexcept final;
  HRESULT FinalKeyed(const HashChain& outer) noexcept final;
  void ClearDigest() noexcept final { std::memset(digest_, 0, sizeof digest_); }

 private:
  static constexpr uint32_t kWordCount = Primitive::kWordCount;
  static constexpr uint32_t kDigestSize = 4 * kWordCount;
  static_assert(kWordCount <= HashChain::kMaximumWords && kDigestSize <= kHashBlockSize);

  uint32_t Waiting() const noexcept { return static_cast<uint32_t>(count_ % kHashBlockSize); }
  void Count(uint32_t length) noexcept { count_ += length; }

  CompressBlocks compress_;
  FinishDigest finish_;
  FinishKeyedDigest finish_keyed_;
  // Bytes absorbed; the last count_ % 64 of them are in block_.
  uint64_t count_;
  uint32_t words_[kWordCount];
  uint8_t block_[kHashBlockSize] = {};
  uint8_t digest_[kDigestSize];
};

template <typename Primitive>
HRESULT BlockHashEngine<Primitive>::Init() noexcept {
  std::memcpy(words_, Primitive::kInitial, sizeof words_);
  count_ = 0;
  std::memset(digest_, 0, sizeof digest_);
  SetOpen(true);
  return S_OK;
}

template <typename Primitive>
HRESULT BlockHashEngine<Primitive>::Update(const uint8_t* data, uint32_t length) noexcept {
  if (length == 0) return S_FALSE;
  const uint32_t waiting = Waiting();
  Count(length);
  if (waiting != 0) {
    const uint32_t missing = kHashBlockSize - waiting;
    if (length < missing) {
      GatherBytes(block_ + waiting, data, length);
      return S_OK;
    }
    GatherBytes(block_ + waiting, data, missing);
    compress_(words_, block_, 1);
    data += missing;
    length -= missing;
  }
  const uint32_t blocks = length / kHashBlockSize;
  if (blocks != 0) compress_(words_, data, blocks);
  const uint32_t rest = length % kHashBlockSize;
  GatherBytes(block_, data + (length - rest), rest);
  return S_OK;
}

template <typename Primitive>
HRESULT BlockHashEngine<Primitive>::Final() noexcept {
  // The bit count is modulo 2^64: the top three bits of the byte count are lost.
  const uint64_t bit_count = count_ << 3;
  const uint32_t waiting = Waiting();
  // 0x80, zeros and the length fill the last block, or two if the length does not fit after 0x80.
  Count((waiting < kHashLengthOffset ? kHashBlockSize : 2 * kHashBlockSize) - waiting);
  finish_(words_, block_, waiting, bit_count, digest_);
  SetOpen(false);
  return S_OK;
}

template <typename Primitive>
void BlockHashEngine<Primitive>::SaveChain(HashChain* chain) const noexcept {
  std::memcpy(chain->words, words_, sizeof words_);
}

template <typename Primitive>
void BlockHashEngine<Primitive>::LoadChain(const HashChain& chain) noexcept {
  std::memcpy(words_, chain.words, sizeof words_);
  count_ = kHashBlockSize;
  SetOpen(true);
}

template <typename Primitive>
HRESULT BlockHashEngine<Primitive>::FinalKeyed(const HashChain& outer) noexcept {
  const uint32_t waiting = Waiting();
  if (finish_keyed_ == nullptr || waiting >= kHashLengthOffset)
    return HashEngine::FinalKeyed(outer);
  finish_keyed_(words_, outer.words, block_, waiting, count_ << 3, digest_);
  // The block of the outer pad, and that of the inner digest and its padding.
  count_ = 2 * kHashBlockSize;
  SetOpen(false);
  return S_OK;
}

}  // namespace mirolta
