// Rows whose operands are pieces of one random pool of bytes.
#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench_row.h"

namespace mirolta::bench {

// The same bytes in every run of the program.
inline std::vector<uint8_t> RandomBytes(size_t count, uint64_t seed = 1) {
  std::mt19937_64 generator(seed);
  std::vector<uint8_t> bytes(count);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(generator());
  return bytes;
}

// ByteOperands are kOperands overlapping pieces of length bytes, 64 bytes apart.
class ByteOperands {
 public:
  explicit ByteOperands(size_t length)
      : length_(length),
        pool_(std::make_shared<std::vector<uint8_t>>(RandomBytes(length + kStride * kOperands))) {}

  size_t Length() const { return length_; }
  const uint8_t* at(size_t operand) const { return pool_->data() + kStride * operand; }

 private:
  static constexpr size_t kStride = 64;

  size_t length_;
  std::shared_ptr<std::vector<uint8_t>> pool_;
};

inline std::string TextOf(const std::vector<uint8_t>& bytes) {
  return std::string(bytes.begin(), bytes.end());
}

// ByteContestant creates a contestant from work(in, length, out), which writes output_size bytes.
template <typename Work>
Contestant ByteContestant(const char* name, const ByteOperands& operands, size_t output_size,
                          Work work) {
  const auto out = std::make_shared<std::vector<uint8_t>>(output_size);
  return {
      name,
      [=](size_t operand) mutable { work(operands.at(operand), operands.Length(), out->data()); },
      [=] { return TextOf(*out); }};
}

// The same for a task that keeps its output itself; output() returns it.
template <typename Work, typename Output>
Contestant OwnPlaceContestant(const char* name, const ByteOperands& operands, size_t output_size,
                              Work work, Output output) {
  return {name, [=](size_t operand) mutable { work(operands.at(operand), operands.Length()); },
          [=] {
            const uint8_t* const bytes = output();
            return std::string(bytes, bytes + output_size);
          }};
}

// "16 bytes", "64 KiB", "1 MiB".
inline std::string SizeName(size_t bytes) {
  if (bytes >= 1u << 20) return std::to_string(bytes >> 20) + " MiB";
  if (bytes >= 1u << 10) return std::to_string(bytes >> 10) + " KiB";
  return std::to_string(bytes) + " bytes";
}

}  // namespace mirolta::bench
