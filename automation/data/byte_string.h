// The bytes that conversions give out: owned, counted, wiped when they go.
#pragma once

#include <cstdint>
#include <cstring>

#include "platform.h"

namespace mirolta {

// ByteString owns Count() bytes at Data(). The empty result is a null pointer with count 0; bytes
// that are present may still be none (Allocate(0)), which keys tell apart.
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

  // Allocate replaces the content by count bytes of unset value; false leaves it empty.
  [[nodiscard]] bool Allocate(uint32_t count) noexcept {
    Clear();
    // Never of size 0: presence must not hang on what the allocator does with it.
    data_ = NewArray<uint8_t>(count != 0 ? CheckedSize(count) : SizeConstant(1));
    if (data_ == nullptr) return false;
    count_ = count;
    return true;
  }

  // Assign replaces the content by a copy; false leaves it empty.
  // Alias:  bytes do not lie in this string.
  [[nodiscard]] bool Assign(const uint8_t* bytes, uint32_t count) noexcept {
    if (!Allocate(count)) return false;
    if (count != 0) std::memcpy(data_, bytes, count);
    return true;
  }

  // Shorten wipes and forgets the bytes from count on.
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
