#include "cipher_channel.h"

#include <algorithm>
#include <initializer_list>

namespace mirolta {

CipherChannel::CipherChannel() noexcept = default;

void CipherChannel::Reinit(uint32_t limit, uint32_t step) noexcept {
  in_.Reinit(limit, step);
  out_.Reinit(limit, step);
}

void CipherChannel::Clear() noexcept {
  for (ByteBuffer* queue : {&in_, &out_}) {
    // The whole storage: consumed bytes may still be there, outside the content.
    WipeMemory(queue->Data(), queue->Capacity());
    queue->Clear();
  }
}

HRESULT CipherChannel::UpdateAnyLength(const BlockTransform& transform, const uint8_t* data,
                                       uint32_t length) noexcept {
  if (data != nullptr && length != 0) {
    if (TransformUnqueued(transform, data, length)) return S_OK;
    if (!Append(data, length)) return E_OUTOFMEMORY;
  }
  return TransformQueued(transform);
}

bool CipherChannel::CanBypass(uint32_t block_size, uint32_t length) const noexcept {
  if (length == 0 || length != WholeBlocks(length, block_size) * block_size) return false;
  if (in_.Length() != 0 || out_.Length() != 0) return false;
  return length <= in_.Maximum();  // the output queue's too
}

bool CipherChannel::Append(const uint8_t* data, uint32_t length) noexcept {
  return in_.Append(data, length) == length;
}

HRESULT CipherChannel::TransformQueued(const BlockTransform& transform) noexcept {
  const uint32_t block_size = transform.block_size;
  const uint32_t block_count = WholeBlocks(in_.Length(), block_size);
  if (block_count == 0) return S_OK;
  if (transform.run == nullptr) return E_FAIL;

  uint32_t done = 0;
  while (done != block_count) {
    const uint32_t count = ReserveBlocks(block_size, block_count - done);
    if (count == 0) break;
    uint8_t* const tail = out_.ReserveTail(count * block_size);
    if (tail == nullptr) break;
    transform.run(transform.schedule, in_.Data() + done * block_size, tail, count);
    if (out_.Commit(count * block_size) == 0) break;
    done += count;
  }
  in_.Consume(done * block_size);
  return done == block_count ? S_OK : E_OUTOFMEMORY;
}

// Transforms data read without copying, past the input queue. Returns false, with nothing done,
// where that would differ from queueing: the input queue could not take the data, or the output
// queue not all blocks.
bool CipherChannel::TransformUnqueued(const BlockTransform& transform, const uint8_t* data,
                                      uint32_t length) noexcept {
  const uint32_t block_size = transform.block_size;
  const uint32_t pending = in_.Length();
  if (transform.run == nullptr || pending >= block_size) return false;
  if (length < block_size - pending || length > in_.Maximum() - pending) return false;
  // With storage for a block, the appends below allocate nothing and cannot fail.
  if (in_.Capacity() < block_size) return false;

  uint32_t block_count = WholeBlocks(pending + length, block_size);
  const uint32_t produced = block_count * block_size;
  const bool has_room = out_.Capacity() - out_.Length() >= produced;
  if (!has_room && ReserveBlocks(block_size, block_count) != block_count) return false;
  uint8_t* tail = out_.ReserveTail(produced);
  if (tail == nullptr) return false;

  if (pending != 0) {
    const uint32_t missing = block_size - pending;
    if (!Append(data, missing)) return false;
    transform.run(transform.schedule, in_.Data(), tail, 1);
    in_.Consume(block_size);
    data += missing;
    length -= missing;
    tail += block_size;
    --block_count;
  }
  transform.run(transform.schedule, data, tail, block_count);
  const uint32_t taken = block_count * block_size;
  return out_.Commit(produced) == produced &&
         (taken == length || Append(data + taken, length - taken));
}

// Reserves storage at the end of the output queue and returns for how many blocks, at most
// block_count: all that the queue's maximum allows or, if memory runs out, what one growth step
// gives.
uint32_t CipherChannel::ReserveBlocks(uint32_t block_size, uint32_t block_count) noexcept {
  const uint32_t length = out_.Length();
  const uint32_t room = out_.Maximum() - length;
  const uint32_t count = std::min(block_count, WholeBlocks(room, block_size));
  if (count == 0) return 0;
  const uint32_t bytes = count * block_size;
  const uint32_t free = out_.Capacity() - length;
  if (free >= bytes) return count;
  // Doubling makes appending amortised linear while nobody takes the output. If memory does not
  // allow that, the exact amount may still be available.
  if (out_.ReserveTail(std::max(bytes, std::min(length, room))) != nullptr) return count;
  if (out_.ReserveTail(bytes) != nullptr) return count;
  if (free >= block_size) return WholeBlocks(free, block_size);
  return out_.ReserveTail(block_size) != nullptr ? 1 : 0;
}

}  // namespace mirolta
