// One direction of a cipher engine: bytes that wait for a whole block, and blocks that wait for the
// caller.
#pragma once

#include "block_transform.h"
#include "byte_buffer.h"
#include "platform.h"

namespace mirolta {

// CipherChannel turns updates of any length into whole blocks. The result (bytes, statuses, what
// stays in which queue) is that of appending all data to the input queue and then moving one block
// after the other to the output queue; the time grows with the data, however it is split and
// whether or not the output is taken in between.
class CipherChannel {
 public:
  CipherChannel() noexcept;
  CipherChannel(const CipherChannel&) = delete;
  CipherChannel& operator=(const CipherChannel&) = delete;

  // Reinit wipes the content of both queues and builds them with these values (see ByteBuffer).
  void Reinit(uint32_t limit, uint32_t step) noexcept;

  // Clear wipes the content of both queues and keeps their limit, step and storage.
  void Clear() noexcept;

  // Update takes data[length], or nothing if either is null or 0, and transforms all whole blocks.
  // Alias:  data lies in neither queue of this channel.
  // Errors: E_OUTOFMEMORY with nothing taken if the input queue cannot hold data beside what waits;
  //         else with all data taken and the blocks that fit transformed, if the output queue
  //         cannot hold the rest; E_FAIL with all data taken if there are whole blocks but no key.
  [[nodiscard]] HRESULT Update(const BlockTransform& transform, const uint8_t* data,
                               uint32_t length) noexcept;

  // CanBypass tells whether Update with length bytes would, given memory, put just their blocks into
  // the output queue and change nothing else: both queues are empty, the bytes are whole blocks, and
  // each queue may hold them.
  bool CanBypass(uint32_t block_size, uint32_t length) const noexcept;

  // Append adds data[length] to what waits, without transforming; false and no change on failure.
  [[nodiscard]] bool Append(const uint8_t* data, uint32_t length) noexcept;

  // TransformQueued transforms all whole blocks that wait. Errors as of Update.
  [[nodiscard]] HRESULT TransformQueued(const BlockTransform& transform) noexcept;

  const ByteBuffer& In() const noexcept { return in_; }
  ByteBuffer& Out() noexcept { return out_; }

 private:
  bool TransformUnqueued(const BlockTransform& transform, const uint8_t* data,
                         uint32_t length) noexcept;
  uint32_t ReserveBlocks(uint32_t block_size, uint32_t block_count) noexcept;

  ByteBuffer in_;
  ByteBuffer out_;
};

}  // namespace mirolta
