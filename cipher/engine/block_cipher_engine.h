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
  void WipeSchedule() override { WipeMemory(&schedule_, sizeof schedule_); }

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

  Schedule schedule_ = {};
};

// DirectCipherEngine calls the kernel without a BlockTransform for whole blocks: an update with one block
// takes hardly longer than the steps before it, and of those loads cost the most. For processors where code is
// cheap.
template <typename Primitive>
class DirectCipherEngine : public BlockCipherEngine<Primitive> {
 public:
  HRESULT ResetBuffers(uint32_t grow_step) final {
    DisarmKernels();
    return CipherEngine::ResetBuffers(grow_step);
  }
  HRESULT EncryptUpdate(const uint8_t* data, uint32_t length) final {
    return TransformDirectly(encrypt_blocks_, this->Encryption(), data, length)
               ? S_OK
               : EncryptQueued(data, length);
  }
  HRESULT DecryptUpdate(const uint8_t* data, uint32_t length) final {
    return TransformDirectly(decrypt_blocks_, this->Decryption(), data, length)
               ? S_OK
               : DecryptQueued(data, length);
  }

 private:
  using Kernel = decltype(Primitive::kEncryptKernels[0].function);

  bool TransformDirectly(Kernel kernel, CipherChannel& channel, const uint8_t* data,
                         uint32_t length) const {
    if (kernel == nullptr || data == nullptr || length % Primitive::kBlockSize != 0) return false;
    if (!channel.HasRoom(length)) return false;
    kernel(this->ExpandedKey(), data, channel.CommitUnqueued(length),
           length / Primitive::kBlockSize);
    return true;
  }

  // Not inlined: the direct updates need no registers for these.
  __attribute__((noinline)) HRESULT EncryptQueued(const uint8_t* data, uint32_t length) {
    const HRESULT status = CipherEngine::EncryptUpdate(data, length);
    encrypt_blocks_ = DirectKernel<Primitive::kEncryptKernels>(this->Encryption());
    return status;
  }
  __attribute__((noinline)) HRESULT DecryptQueued(const uint8_t* data, uint32_t length) {
    const HRESULT status = CipherEngine::DecryptUpdate(data, length);
    decrypt_blocks_ = DirectKernel<Primitive::kDecryptKernels>(this->Decryption());
    return status;
  }

  template <const auto& kKernels>
  Kernel DirectKernel(const CipherChannel& channel) {
    return this->HasKey() && channel.IsUnqueued() ? CurrentKernel<kKernels>() : nullptr;
  }
  void WipeSchedule() final {
    DisarmKernels();
    BlockCipherEngine<Primitive>::WipeSchedule();
  }
  void DisarmKernels() {
    encrypt_blocks_ = nullptr;
    decrypt_blocks_ = nullptr;
  }

  // Null unless there is a key and the operation's input queue IsUnqueued. Set after an update that took the
  // other path. Only such an update, ResetBuffers and the loss of the key can end that state.
  Kernel encrypt_blocks_ = nullptr;
  Kernel decrypt_blocks_ = nullptr;
};

template <typename Primitive>
using CipherEngineOf = std::conditional_t<sizeof(void*) == 8, DirectCipherEngine<Primitive>,
                                          BlockCipherEngine<Primitive>>;

}  // namespace mirolta
