// The queues of one operation of a cipher engine: input short of a block, and output for the
// caller.
#pragma once

#include <bit>

#include "block_transform.h"
#include "byte_buffer.h"
#include "platform.h"

namespace mirolta {

// CipherChannel turns updates of any length into whole blocks. The result (bytes, statuses, content
// of the queues) is that of appending all data to the input queue and then transforming one block
// after the other from there to the output queue. Two shortcuts give the same result: Update reads
// whole blocks from data, without the input queue, and where CanBypass holds the owner may
// transform from its input to its output, without either queue.
// Time:   linear in the data, however it is split and whether or not output is taken in between.
class CipherChannel {
 public:
  CipherChannel() noexcept;
  CipherChannel(const CipherChannel&) = delete;
  CipherChannel& operator=(const CipherChannel&) = delete;

  // Reinit wipes both queues and builds them anew with this limit and growth step (see ByteBuffer).
  void Reinit(uint32_t limit, uint32_t step) noexcept;

  // Clear wipes both queues and keeps their limit, growth step and storage.
  void Clear() noexcept;

  // Update takes data[length] and transforms all whole blocks.
  // Shapes: null data, or a length of 0, only transforms what is queued.
  // Alias:  data does not overlap the queues of this channel.
  // Errors: E_OUTOFMEMORY with nothing taken if the input queue cannot hold the data;
  //         E_OUTOFMEMORY with all data taken and the blocks that fit transformed if the output
  //         queue cannot hold the others; E_FAIL with all data taken if there are whole blocks but
  //         no key.
  [[nodiscard]] HRESULT Update(const BlockTransform& transform, const uint8_t* data,
                               uint32_t length) noexcept {
    if ((length & (transform.block_size - 1)) == 0 && data != nullptr && transform.run != nullptr &&
        IsUnqueued() && HasRoom(length)) {
      transform.run(transform.schedule, data, CommitUnqueued(length),
                    WholeBlocks(length, transform.block_size));
      return S_OK;
    }
    return UpdateAnyLength(transform, data, length);
  }

  // An update with whole blocks of a channel that IsUnqueued and HasRoom is only to transform them to the
  // place that CommitUnqueued returns. IsUnqueued says that nothing is queued before them; only Update, Append,
  // TransformQueued and Reinit can end that. HasRoom says that there is storage for length bytes of output.
  bool IsUnqueued() const noexcept { return in_.Length() == 0 && in_.IsValid(); }
  // What the output queue has storage for, the input queue may hold: their maximum is the same.
  bool HasRoom(uint32_t length) const noexcept { return length <= out_.FreeSpace(); }
  // CommitUnqueued adds length bytes to the output queue and returns where.
  uint8_t* CommitUnqueued(uint32_t length) noexcept {
    uint8_t* const tail = out_.Data() + out_.Length();
    (void)out_.Commit(length);
    return tail;
  }

  // CanBypass tells whether Update with length bytes would, given memory, put just their blocks
  // into the output queue and change nothing else: both queues are empty, the bytes are whole
  // blocks, and each queue may hold them.
  bool CanBypass(uint32_t block_size, uint32_t length) const noexcept;

  // Append adds data[length] to the input queue, without transforming.
  // Errors: false, with nothing added, if the queue cannot hold the data.
  [[nodiscard]] bool Append(const uint8_t* data, uint32_t length) noexcept;

  // TransformQueued transforms all whole blocks of the input queue.
  // Errors: E_OUTOFMEMORY with the blocks that fit transformed; E_FAIL if there are whole blocks
  //         but no key.
  [[nodiscard]] HRESULT TransformQueued(const BlockTransform& transform) noexcept;

  const ByteBuffer& In() const noexcept { return in_; }
  ByteBuffer& Out() noexcept { return out_; }

 private:
  // Shifts: a division would take most of the time of a short update.
  static uint32_t WholeBlocks(uint32_t length, uint32_t block_size) noexcept {
    return length >> std::countr_zero(block_size);
  }
  HRESULT UpdateAnyLength(const BlockTransform& transform, const uint8_t* data,
                          uint32_t length) noexcept;
  bool TransformUnqueued(const BlockTransform& transform, const uint8_t* data,
                         uint32_t length) noexcept;
  uint32_t ReserveBlocks(uint32_t block_size, uint32_t block_count) noexcept;

  ByteBuffer in_;
  ByteBuffer out_;
};

}  // namespace mirolta
