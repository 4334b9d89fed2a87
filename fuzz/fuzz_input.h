// Shared by all harnesses: reads the input as numbers and bytes, and checks that abort the run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform.h"

// A failed check counts as a finding.
#define FUZZ_CHECK(condition)                                                      \
  do {                                                                             \
    if (!(condition)) {                                                            \
      std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                                \
    }                                                                              \
  } while (false)

namespace mirolta::fuzz {

using Bytes = std::vector<uint8_t>;

// FuzzInput reads the input from its front; past its end it reads zeros.
class FuzzInput {
 public:
  FuzzInput(const uint8_t* data, size_t size) : data_(data), size_(size) {}

  bool IsEmpty() const { return size_ == 0; }

  uint8_t Byte() {
    if (size_ == 0) return 0;
    --size_;
    return *data_++;
  }
  uint16_t Word() {
    const uint8_t high = Byte();
    return static_cast<uint16_t>(high << 8 | Byte());
  }
  uint32_t Long() {
    const uint32_t high = Word();
    return high << 16 | Word();
  }
  uint64_t Huge() {
    const uint64_t high = Long();
    return high << 32 | Long();
  }
  // 0..count-1
  uint32_t Below(uint32_t count) { return count == 0 ? 0 : Word() % count; }
  Bytes Take(size_t count) {
    Bytes bytes;
    while (bytes.size() < count && size_ != 0) bytes.push_back(Byte());
    return bytes;
  }
  // A run of bytes whose length is the next number.
  Bytes Some(size_t most) { return Take(Word() % (most + 1)); }
  Bytes Rest() { return Take(size_); }
  std::basic_string<OLECHAR> Text(size_t most) {
    std::basic_string<OLECHAR> text;
    const size_t count = Word() % (most + 1);
    while (text.size() < count && size_ != 0) {
      // Mostly one byte per character, so that the fuzzer finds words.
      const uint8_t byte = Byte();
      text += byte < 0xF0 ? static_cast<OLECHAR>(byte) : static_cast<OLECHAR>(Word());
    }
    return text;
  }

 private:
  const uint8_t* data_;
  size_t size_;
};

}  // namespace mirolta::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
