#include "charsets/utf7_text.h"

namespace mirolta::runtime {
namespace {

constexpr char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Direct characters besides letters, digits and "/". The terminator is one too.
constexpr char kDirect[] = "\t\n\r '(),-.:?";

int Base64Value(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  return c == '/' ? 63 : -1;
}

bool IsDirect(WCHAR unit) {
  if (unit >= 0x80) return false;
  const char c = static_cast<char>(unit);
  if (Base64Value(c) >= 0) return c != '+';
  for (const char direct : kDirect) {
    if (c == direct) return true;
  }
  return false;
}

}  // namespace

size_t Utf7Encoder::End(char* bytes) {
  if (!in_run_) return 0;
  in_run_ = false;
  size_t size = 0;
  if (bit_count_ != 0) bytes[size++] = kBase64[(bits_ << (6 - bit_count_)) & 63];
  bytes[size++] = '-';
  bits_ = 0;
  bit_count_ = 0;
  return size;
}

size_t Utf7Encoder::Encode(WCHAR unit, char* bytes) {
  size_t size = 0;
  if (IsDirect(unit) || unit == u'+') {
    size = End(bytes);
    bytes[size++] = static_cast<char>(unit);
    if (unit == u'+') bytes[size++] = '-';
    return size;
  }
  if (!in_run_) bytes[size++] = '+';
  in_run_ = true;
  bits_ = (bits_ << 16) | unit;  // 4 + 16 bits at most
  for (bit_count_ += 16; bit_count_ >= 6; bit_count_ -= 6) {
    bytes[size++] = kBase64[(bits_ >> (bit_count_ - 6)) & 63];
  }
  bits_ &= (1u << bit_count_) - 1;
  return size;
}

bool Utf7Decoder::Decode(char byte, WCHAR* unit) {
  *unit = static_cast<BYTE>(byte);
  if (!in_run_) {
    if (byte != '+') return true;
    in_run_ = true;
    run_is_empty_ = true;
    bits_ = 0;
    bit_count_ = 0;
    return false;
  }
  const int value = Base64Value(byte);
  if (value < 0) {
    in_run_ = false;
    if (byte != '-') return true;
    *unit = u'+';
    return run_is_empty_;
  }
  run_is_empty_ = false;
  bits_ = (bits_ << 6) | static_cast<uint32_t>(value);  // 15 + 6 bits at most
  bit_count_ += 6;
  if (bit_count_ < 16) return false;
  bit_count_ -= 16;
  *unit = static_cast<WCHAR>(bits_ >> bit_count_);
  bits_ &= (1u << bit_count_) - 1;
  return true;
}

}  // namespace mirolta::runtime
