// A growable array in the runtime's memory.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

#include "heap/allocation.h"
#include "seam/memory.h"

namespace mirolta::runtime {

// RuntimeArray owns trivially copyable elements. Memory is wiped before it is freed: streams may
// hold secrets.
// Errors: false if memory is short; the content is unchanged.
// Time:   capacity at least doubles: appending n elements one at a time takes O(n).
template <typename T>
class RuntimeArray {
 public:
  static_assert(std::is_trivially_copyable_v<T>);

  RuntimeArray() = default;
  RuntimeArray(RuntimeArray&& from) noexcept { Swap(from); }
  RuntimeArray& operator=(RuntimeArray&& from) noexcept {
    Swap(from);
    return *this;
  }
  RuntimeArray(const RuntimeArray&) = delete;
  RuntimeArray& operator=(const RuntimeArray&) = delete;
  ~RuntimeArray() { WipeAndFree(); }

  T* Data() { return data_; }
  const T* Data() const { return data_; }
  size_t Size() const { return size_; }
  bool IsEmpty() const { return size_ == 0; }
  T& operator[](size_t index) { return data_[index]; }
  const T& operator[](size_t index) const { return data_[index]; }

  [[nodiscard]] bool Reserve(size_t capacity) {
    if (capacity <= capacity_) return true;
    if (capacity > SIZE_MAX / 2 / sizeof(T)) return false;
    if (capacity < 2 * capacity_) capacity = 2 * capacity_;
    T* const grown = static_cast<T*>(AllocateRuntime(capacity * sizeof(T)));
    if (grown == nullptr) return false;
    if (size_ != 0) std::memcpy(grown, data_, size_ * sizeof(T));
    WipeAndFree();
    data_ = grown;
    capacity_ = capacity;
    return true;
  }

  // Alias:  `from` is outside this array.
  [[nodiscard]] bool Append(const T* from, size_t count) {
    if (count > SIZE_MAX - size_ || !Reserve(size_ + count)) return false;
    if (count != 0) std::memcpy(data_ + size_, from, count * sizeof(T));
    size_ += count;
    return true;
  }
  [[nodiscard]] bool Append(T value) { return Append(&value, 1); }

  // Sets the size; new elements are zero.
  [[nodiscard]] bool Resize(size_t size) {
    if (!Reserve(size)) return false;
    if (size > size_) std::memset(data_ + size_, 0, (size - size_) * sizeof(T));
    size_ = size;
    return true;
  }
  void Shorten(size_t size) {
    if (size < size_) size_ = size;
  }
  void Swap(RuntimeArray& other) noexcept {
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }

 private:
  void WipeAndFree() {
    if (data_ != nullptr) WipeMemory(data_, capacity_ * sizeof(T));
    FreeRuntime(data_);
  }

  T* data_ = nullptr;
  size_t size_ = 0;
  size_t capacity_ = 0;
};

}  // namespace mirolta::runtime
