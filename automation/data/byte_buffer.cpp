#include "byte_buffer.h"

#include <cstring>

namespace mirolta {

namespace {

constexpr uint32_t kMoveBlock = 256;

void WipeAndFree(uint8_t* data, uint32_t capacity) {
  if (data == nullptr) return;
  // All of it: bytes taken from the front may remain behind the content.
  WipeMemory(data, capacity);
  delete[] data;
}

}  // namespace

ByteBuffer::ByteBuffer(uint32_t limit, uint32_t step) noexcept {
  Construct(limit, step);
}

ByteBuffer::~ByteBuffer() {
  Free();
}

void ByteBuffer::Construct(uint32_t limit, uint32_t step) noexcept {
  step_ = step <= kMinimumStep ? kMinimumStep : step;
  const uint32_t wanted = limit > step_ ? limit : step_;
  // At most 2^32 + step before it is capped.
  const uint64_t maximum = (uint64_t{wanted} / step_ + 1) * step_;
  maximum_ = maximum > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(maximum);
  AllocateStep();
}

void ByteBuffer::AllocateStep() noexcept {
  data_ = NewArray<uint8_t>(CheckedSize(step_));
  capacity_ = data_ != nullptr ? step_ : 0;
  length_ = 0;
}

void ByteBuffer::Free() noexcept {
  WipeAndFree(data_, capacity_);
  data_ = nullptr;
  capacity_ = 0;
  length_ = 0;
}

void ByteBuffer::Reinit(uint32_t limit, uint32_t step) noexcept {
  Free();
  Construct(limit, step);
}

void ByteBuffer::Reset() noexcept {
  Free();
  AllocateStep();
}

bool ByteBuffer::GrownCapacity(uint32_t need, uint32_t* capacity) const noexcept {
  if (capacity_ == maximum_) return false;
  const uint64_t grown = (uint64_t{need} / step_ + 1) * step_ + capacity_;
  if (grown <= maximum_) {
    *capacity = static_cast<uint32_t>(grown);
    return true;
  }
  *capacity = maximum_;
  return need <= maximum_ - capacity_;
}

// Makes room for `need` bytes more than the storage holds.
bool ByteBuffer::Grow(uint32_t need) noexcept {
  uint32_t capacity = 0;
  if (!GrownCapacity(need, &capacity)) return false;
  uint8_t* data = NewArray<uint8_t>(CheckedSize(capacity));
  if (data == nullptr) return false;
  if (data_ != nullptr) std::memcpy(data, data_, length_);
  WipeAndFree(data_, capacity_);
  data_ = data;
  capacity_ = capacity;
  return true;
}

uint32_t ByteBuffer::Append(const uint8_t* bytes, uint32_t count) noexcept {
  if (bytes == nullptr || count == 0) return 0;
  // Growing frees the storage, which may contain the bytes; they are then at the same offset of the
  // new storage.
  const uintptr_t address = reinterpret_cast<uintptr_t>(bytes);
  const uintptr_t start = reinterpret_cast<uintptr_t>(data_);
  const bool inside = data_ != nullptr && address >= start && address - start < length_;
  const uintptr_t offset = address - start;
  uint8_t* tail = ReserveTail(count);
  if (tail == nullptr) return 0;
  std::memmove(tail, inside ? data_ + offset : bytes, count);
  length_ += count;
  return count;
}

uint32_t ByteBuffer::AppendFill(uint8_t value, uint32_t count) noexcept {
  uint8_t* tail = ReserveTail(count);
  if (tail == nullptr) return 0;
  std::memset(tail, value, count);
  length_ += count;
  return count;
}

// A buffer without storage does not grow for 0 bytes.
uint8_t* ByteBuffer::GrowTail(uint32_t count) noexcept {
  const uint32_t space = FreeSpace();
  return space < count && Grow(count - space) ? data_ + length_ : nullptr;
}

uint32_t ByteBuffer::Peek(uint8_t* destination, uint32_t count) const noexcept {
  const uint32_t taken = count < length_ ? count : length_;
  if (destination == nullptr || taken == 0) return 0;
  std::memcpy(destination, data_, taken);
  return taken;
}

uint32_t ByteBuffer::Consume(uint32_t count) noexcept {
  const uint32_t taken = count < length_ ? count : length_;
  if (taken == 0) return 0;
  length_ -= taken;
  if (length_ != 0) std::memmove(data_, data_ + taken, length_);
  return taken;
}

uint32_t ByteBuffer::MoveAllTo(ByteBuffer& other) noexcept {
  if (&other == this) return 0;
  uint8_t block[kMoveBlock];
  uint32_t moved = 0;
  for (;;) {
    const uint32_t taken = Take(block, kMoveBlock);
    if (taken == 0) break;
    moved += taken;
    if (other.Append(block, taken) < taken) break;
  }
  WipeMemory(block, kMoveBlock);
  return moved;
}

int32_t ByteBuffer::Find(const uint8_t* pattern, uint32_t count) const noexcept {
  if (pattern == nullptr || count >= length_) return -1;
  for (uint32_t position = 0; position < length_ - count; ++position) {
    if (position > static_cast<uint32_t>(INT32_MAX)) break;
    if (std::memcmp(data_ + position, pattern, count) == 0) return static_cast<int32_t>(position);
  }
  return -1;
}

}  // namespace mirolta
