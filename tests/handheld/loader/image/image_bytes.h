// Bounds-checked little-endian reads of an untrusted file or mapped image.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>

namespace mirolta::loader {

class ImageBytes {
 public:
  ImageBytes() = default;
  explicit ImageBytes(std::span<const uint8_t> bytes) : bytes_(bytes) {}

  size_t Size() const { return bytes_.size(); }
  const uint8_t* Data() const { return bytes_.data(); }

  bool Has(uint64_t offset, uint64_t length) const {
    return offset <= bytes_.size() && length <= bytes_.size() - offset;
  }

  // Each reads one number and returns false beyond the end.
  bool Read(uint64_t offset, uint16_t* value) const { return ReadNumber(offset, value); }
  bool Read(uint64_t offset, uint32_t* value) const { return ReadNumber(offset, value); }
  bool Read(uint64_t offset, int32_t* value) const {
    uint32_t bits = 0;
    if (!ReadNumber(offset, &bits)) return false;
    *value = static_cast<int32_t>(bits);
    return true;
  }

  // Part returns the bytes at an offset; false if they are not all there.
  bool Part(uint64_t offset, uint64_t length, ImageBytes* out) const {
    if (!Has(offset, length)) return false;
    *out = ImageBytes(bytes_.subspan(static_cast<size_t>(offset), static_cast<size_t>(length)));
    return true;
  }

  // Text reads characters up to a zero; false if there is none before the end.
  bool Text(uint64_t offset, std::string* text) const {
    if (offset >= bytes_.size()) return false;
    const uint8_t* const start = bytes_.data() + offset;
    const void* const end = std::memchr(start, 0, bytes_.size() - static_cast<size_t>(offset));
    if (end == nullptr) return false;
    text->assign(start, static_cast<const uint8_t*>(end));
    return true;
  }

 private:
  template <typename Number>
  bool ReadNumber(uint64_t offset, Number* value) const {
    if (!Has(offset, sizeof(Number))) return false;
    uint32_t number = 0;
    for (size_t i = sizeof(Number); i-- > 0;) {
      number = number << 8 | bytes_[static_cast<size_t>(offset) + i];
    }
    *value = static_cast<Number>(number);
    return true;
  }

  std::span<const uint8_t> bytes_;
};

}  // namespace mirolta::loader
