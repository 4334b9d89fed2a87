// The engine of a block cipher, made of its key schedule and its kernels.
#pragma once

#include <type_traits>

#include "cipher_algorithms.h"
#include "cipher_engine.h"

namespace mirolta {

// BlockCipherEngine makes an engine of a Primitive, which says what differs:
//   kAlgorithm       its index in kCipherNames
//   kBlockSize       bytes in a block
//   Schedule         the expanded key
//   kExpand          fills a Schedule from key[length]; false if the cipher takes no such length
//   kEncryptKernels  its KernelList of encryption, whose functions take a Schedule
//   kDecryptKernels  the same of decryption
template <typename Primitive>
class BlockCipherEngine : public CipherEngine {
 public:
  BlockCipherEngine() noexcept
      : CipherEngine(Primitive::kAlgorithm,
                     {Run<Primitive::kEncryptKernels>, &schedule_, Primitive::kBlockSize},
                     {Run<Primitive::kDecryptKernels>, &schedule_, Primitive::kBlockSize}) {}
  ~BlockCipherEngine() override { WipeMemory(&schedule_, sizeof schedule_); }

 protected:
  using Schedule = typename Primitive::Schedule;

  const Schedule& ExpandedKey() const noexcept { return schedule_; }

 private:
  // The first run chooses the kernel, in a function of its own: calls are its whole cost for a block.
  template <const auto& kKernels>
  static void Run(const void* schedule, const uint8_t* in, uint8_t* out, uint32_t block_count) {
    const auto kernel = ChosenKernel<kKernels>();
    if (kernel == nullptr) return RunFirst<kKernels>(schedule, in, out, block_count);
    kernel(*static_cast<const Schedule*>(schedule), in, out, block_count);
  }
  template <const auto& kKernels>
  __attribute__((noinline)) static void RunFirst(const void* schedule, const uint8_t* in,
                                                 uint8_t* out, uint32_t block_count) {
    CurrentKernel<kKernels>()(*static_cast<const Schedule*>(schedule), in, out, block_count);
  }

  bool BuildSchedule(const uint8_t* key, uint32_t length) final {
    return Primitive::kExpand(key, length, &schedule_);
  }
  void WipeSchedule() final { WipeMemory(&schedule_, sizeof schedule_); }

  Schedule schedule_ = {};
};

// DirectCipherEngine calls the kernel without a BlockTransform for whole blocks: an update with one block
// takes hardly longer than the steps before it. For processors where code is cheap.
template <typename Primitive>
class DirectCipherEngine : public BlockCipherEngine<Primitive> {
 public:
  DirectCipherEngine() noexcept
      : encrypt_blocks_(CurrentKernel<Primitive::kEncryptKernels>()),
        decrypt_blocks_(CurrentKernel<Primitive::kDecryptKernels>()) {}

  HRESULT EncryptUpdate(const uint8_t* data, uint32_t length) final {
    if (!TakesBlocks(this->Encryption(), data, length)) {
      return CipherEngine::EncryptUpdate(data, length);
    }
    Run(encrypt_blocks_, this->Encryption(), data, length);
    return S_OK;
  }
  HRESULT DecryptUpdate(const uint8_t* data, uint32_t length) final {
    if (!TakesBlocks(this->Decryption(), data, length)) {
      return CipherEngine::DecryptUpdate(data, length);
    }
    Run(decrypt_blocks_, this->Decryption(), data, length);
    return S_OK;
  }

 private:
  using Kernel = decltype(Primitive::kEncryptKernels[0].function);

  bool TakesBlocks(const CipherChannel& channel, const uint8_t* data, uint32_t length) const {
    return length % Primitive::kBlockSize == 0 && this->TakesUnqueued(channel, data, length);
  }
  void Run(Kernel kernel, CipherChannel& channel, const uint8_t* data, uint32_t length) {
    kernel(this->ExpandedKey(), data, channel.CommitUnqueued(length),
           length / Primitive::kBlockSize);
  }

  const Kernel encrypt_blocks_;
  const Kernel decrypt_blocks_;
};

template <typename Primitive>
using CipherEngineOf = std::conditional_t<sizeof(void*) == 8, DirectCipherEngine<Primitive>,
                                          BlockCipherEngine<Primitive>>;

}  // namespace mirolta
