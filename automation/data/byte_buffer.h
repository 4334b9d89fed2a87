// The module's byte queue: bytes are appended at its end and taken from its front.
#pragma once

#include <cstdint>
#include <cstring>

#include "platform.h"

namespace mirolta {

// ByteBuffer has its content in the first Length() bytes of Data(). It grows in whole steps up to a
// maximum that limit and step determine, returns 0 or null on failure with the content unchanged,
// and wipes its storage before freeing it. A buffer whose storage could not be allocated is not
// valid; every operation on it is safe, and growing may make it valid.
class ByteBuffer {
 public:
  static constexpr uint32_t kMinimumStep = 256;
  static constexpr OLECHAR kLineTerminator[] = {10, 13, 0};
  static constexpr OLECHAR kShortLineTerminator[] = {10, 0};

  // step is at least kMinimumStep; the maximum is (floor(max(step, limit) / step) + 1) * step,
  // capped below 2^32. One step is allocated immediately.
  explicit ByteBuffer(uint32_t limit = 0, uint32_t step = 0) noexcept;
  ~ByteBuffer();
  ByteBuffer(const ByteBuffer&) = delete;
  ByteBuffer& operator=(const ByteBuffer&) = delete;

  // Frees the storage and constructs again with the new values.
  void Reinit(uint32_t limit, uint32_t step) noexcept;
  // Frees the storage and allocates one step; limit and step are unchanged.
  void Reset() noexcept;
  // Sets the length to 0; the storage is neither freed nor wiped.
  void Clear() noexcept { length_ = 0; }

  bool IsValid() const noexcept { return data_ != nullptr; }
  uint32_t Capacity() const noexcept { return capacity_; }
  uint32_t Length() const noexcept { return length_; }
  uint32_t FreeSpace() const noexcept { return capacity_ - length_; }
  uint32_t Step() const noexcept { return step_; }
  uint32_t Maximum() const noexcept { return maximum_; }
  uint8_t* Data() noexcept { return data_; }
  const uint8_t* Data() const noexcept { return data_; }

  // Append adds all bytes or none. Returns count, or 0 on failure.
  // Alias:  bytes may lie in this buffer.
  [[nodiscard]] uint32_t Append(const uint8_t* bytes, uint32_t count) noexcept;
  // AppendFill adds count copies of value. Returns count, or 0 on failure.
  [[nodiscard]] uint32_t AppendFill(uint8_t value, uint32_t count) noexcept;
  // ReserveTail returns the free space after the content, at least count bytes; null on failure.
  [[nodiscard]] uint8_t* ReserveTail(uint32_t count) noexcept {
    return data_ != nullptr && count <= FreeSpace() ? data_ + length_ : GrowTail(count);
  }
  // Commit adds count bytes that were written through ReserveTail to the content. Returns count, or
  // 0 without a change if fewer are free.
  [[nodiscard]] uint32_t Commit(uint32_t count) noexcept {
    if (FreeSpace() < count) return 0;
    length_ += count;
    return count;
  }

  // Take copies and removes min(count, Length()) bytes at the front, Peek only copies, Consume only
  // removes. They return that number.
  uint32_t Take(uint8_t* destination, uint32_t count) noexcept {
    if (count != kShortTake || length_ != kShortTake || destination == nullptr) {
      return Consume(Peek(destination, count));
    }
    std::memcpy(destination, data_, kShortTake);
    length_ = 0;
    return kShortTake;
  }
  uint32_t Peek(uint8_t* destination, uint32_t count) const noexcept;
  uint32_t Consume(uint32_t count) noexcept;

  // MoveAllTo moves the content to the end of other in pieces of 256 bytes and returns the count of
  // bytes taken from this buffer.
  // Alias:  a move to itself moves nothing and returns 0.
  // Errors: a piece that other refuses is lost and ends the move; its bytes count as taken.
  uint32_t MoveAllTo(ByteBuffer& other) noexcept;

  // Find returns the index of the first occurrence of pattern, or -1. The last possible position,
  // Length() - count, is not compared: a pattern that ends with the content is not found.
  int32_t Find(const uint8_t* pattern, uint32_t count) const noexcept;

 private:
  // A block of AES, alone in the queue: what owners take most often, without a call.
  static constexpr uint32_t kShortTake = 16;

  void Construct(uint32_t limit, uint32_t step) noexcept;
  void AllocateStep() noexcept;
  void Free() noexcept;
  bool GrownCapacity(uint32_t need, uint32_t* capacity) const noexcept;
  bool Grow(uint32_t need) noexcept;
  uint8_t* GrowTail(uint32_t count) noexcept;

  uint8_t* data_ = nullptr;
  uint32_t maximum_ = 0;
  uint32_t step_ = 0;
  uint32_t capacity_ = 0;
  uint32_t length_ = 0;
};

}  // namespace mirolta
