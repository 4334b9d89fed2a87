// The result of conversions to bytes: owned, and wiped before it is freed.
#pragma once

#include <cstdint>
#include <cstring>

#include "platform.h"

namespace mirolta {

// ByteString owns Count() bytes at Data(). An absent result is a null pointer with count 0; a
// present one may have count 0 too (Allocate(0)), a difference that matters for keys.
class ByteString {
 public:
  ByteString() noexcept = default;
  ~ByteString() { Clear(); }
  ByteString(const ByteString&) = delete;
  ByteString& operator=(const ByteString&) = delete;
  ByteString(ByteString&& other) noexcept { Swap(other); }
  ByteString& operator=(ByteString&& other) noexcept {
    if (this != &other) {
      Clear();
      Swap(other);
    }
    return *this;
  }

  bool IsPresent() const noexcept { return data_ != nullptr; }
  uint32_t Count() const noexcept { return count_; }
  uint8_t* Data() noexcept { return data_; }
  const uint8_t* Data() const noexcept { return data_; }

  // Clear wipes and frees the bytes.
  void Clear() noexcept {
    if (data_ == nullptr) return;
    WipeMemory(data_, count_);
    delete[] data_;
    data_ = nullptr;
    count_ = 0;
  }

  // Allocate replaces the content by count uninitialised bytes; on failure it returns false and is
  // empty.
  [[nodiscard]] bool Allocate(uint32_t count) noexcept {
    Clear();
    // Never of size 0: presence must not depend on the allocator.
    data_ = NewArray<uint8_t>(count != 0 ? CheckedSize(count) : SizeConstant(1));
    if (data_ == nullptr) return false;
    count_ = count;
    return true;
  }

  // Assign replaces the content by a copy; on failure it returns false and is empty.
  // Alias:  bytes do not lie in this string.
  [[nodiscard]] bool Assign(const uint8_t* bytes, uint32_t count) noexcept {
    if (!Allocate(count)) return false;
    if (count != 0) std::memcpy(data_, bytes, count);
    return true;
  }

  // Shorten wipes and removes the bytes from count on.
  void Shorten(uint32_t count) noexcept {
    if (count >= count_) return;
    WipeMemory(data_ + count, count_ - count);
    count_ = count;
  }

  void Swap(ByteString& other) noexcept {
    uint8_t* const data = data_;
    const uint32_t count = count_;
    data_ = other.data_;
    count_ = other.count_;
    other.data_ = data;
    other.count_ = count;
  }

 private:
  uint8_t* data_ = nullptr;
  uint32_t count_ = 0;
};

}  // namespace mirolta
