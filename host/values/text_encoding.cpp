#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

constexpr OLECHAR kReplacement = 0xFFFD;
constexpr OLECHAR kFirstByteUnit = 0xDC80;  // represents the byte 0x80
constexpr OLECHAR kLastByteUnit = 0xDCFF;

bool IsHighSurrogate(uint32_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}
bool IsLowSurrogate(uint32_t unit) {
  return unit >= 0xDC00 && unit <= 0xDFFF;
}

uint8_t ByteAt(std::string_view bytes, size_t index) {
  return static_cast<uint8_t>(bytes[index]);
}

// The length of the sequence that a lead byte starts; 0 if it is no lead byte.
size_t SequenceLength(uint8_t lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  if (lead >= 0xF0 && lead <= 0xF4) return 4;
  return 0;
}

size_t WriteUnit(uint32_t unit, char* bytes) {
  if (unit < 0x80) {
    bytes[0] = static_cast<char>(unit);
    return 1;
  }
  if (unit < 0x800) {
    bytes[0] = static_cast<char>(0xC0 | (unit >> 6));
    bytes[1] = static_cast<char>(0x80 | (unit & 0x3F));
    return 2;
  }
  bytes[0] = static_cast<char>(0xE0 | (unit >> 12));
  bytes[1] = static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
  bytes[2] = static_cast<char>(0x80 | (unit & 0x3F));
  return 3;
}

// The length of the ASCII text at the start, which is all of most texts.
size_t CountAscii(const char* bytes, size_t size) {
  size_t count = 0;
  while (count < size && static_cast<uint8_t>(bytes[count]) < 0x80) ++count;
  return count;
}

// Calls put(unit) for the one or two units of a code point.
template <typename Put>
void PutUnits(uint32_t code, Put put) {
  if (code < 0x10000) return put(static_cast<OLECHAR>(code));
  put(static_cast<OLECHAR>(0xD800 + ((code - 0x10000) >> 10)));
  put(static_cast<OLECHAR>(0xDC00 + ((code - 0x10000) & 0x3FF)));
}

}  // namespace

size_t ReadSequence(std::string_view bytes, uint32_t* code) {
  static constexpr uint8_t kLeadMask[5] = {0, 0x7F, 0x1F, 0x0F, 0x07};
  static constexpr uint32_t kLeast[5] = {0, 0, 0x80, 0x800, 0x10000};
  const size_t length = SequenceLength(ByteAt(bytes, 0));
  if (length == 0 || length > bytes.size()) return 0;
  uint32_t value = ByteAt(bytes, 0) & kLeadMask[length];
  for (size_t i = 1; i < length; ++i) {
    if ((ByteAt(bytes, i) & 0xC0u) != 0x80) return 0;
    value = (value << 6) | (ByteAt(bytes, i) & 0x3Fu);
  }
  if (value < kLeast[length] || value > 0x10FFFF) return 0;
  *code = value;
  return length;
}

void AppendCode(uint32_t code, std::string* out) {
  char bytes[4];
  if (code < 0x10000) {
    out->append(bytes, WriteUnit(code, bytes));
    return;
  }
  bytes[0] = static_cast<char>(0xF0 | (code >> 18));
  bytes[1] = static_cast<char>(0x80 | ((code >> 12) & 0x3F));
  bytes[2] = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
  bytes[3] = static_cast<char>(0x80 | (code & 0x3F));
  out->append(bytes, 4);
}

size_t EngineByteLength(const OLECHAR* units, size_t count) {
  size_t length = 0;
  for (size_t i = 0; i < count; ++i) length += units[i] < 0x80 ? 1u : units[i] < 0x800 ? 2u : 3u;
  return length;
}

size_t EncodeForEngine(const OLECHAR* units, size_t count, char* bytes) {
  size_t length = 0;
  while (length < count && units[length] < 0x80) {
    bytes[length] = static_cast<char>(units[length]);
    ++length;
  }
  for (size_t i = length; i < count; ++i) length += WriteUnit(units[i], bytes + length);
  return length;
}

// Simple loops become vector instructions.
bool NarrowAscii(const OLECHAR* units, size_t count, char* bytes) {
  unsigned all = 0;
  for (size_t i = 0; i < count; ++i) all |= units[i];
  for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<char>(units[i]);
  return all < 0x80;
}

size_t DecodeFromEngine(const char* bytes, size_t size, OLECHAR* units) {
  size_t at = CountAscii(bytes, size);
  for (size_t i = 0; units != nullptr && i < at; ++i) units[i] = static_cast<OLECHAR>(bytes[i]);
  size_t count = at;
  const auto put = [&](OLECHAR unit) {
    if (units != nullptr) units[count] = unit;
    ++count;
  };
  while (at < size) {
    uint32_t code = kReplacement;
    const size_t length = ReadSequence({bytes + at, size - at}, &code);
    PutUnits(code, put);
    at += length == 0 ? 1 : length;
  }
  return count;
}

Units UnitsFromEngine(std::string_view bytes) {
  const size_t ascii = CountAscii(bytes.data(), bytes.size());
  const std::string_view first = bytes.substr(0, ascii);
  const std::string_view rest = bytes.substr(ascii);
  Units units(first.begin(), first.end());
  if (rest.empty()) return units;
  units.resize(ascii + DecodeFromEngine(rest.data(), rest.size(), nullptr));
  DecodeFromEngine(rest.data(), rest.size(), units.data() + ascii);
  return units;
}

std::string EngineFromUnits(UnitsView units) {
  std::string bytes(EngineByteLength(units.data(), units.size()), '\0');
  EncodeForEngine(units.data(), units.size(), bytes.data());
  return bytes;
}

Units UnitsFromSystem(std::string_view bytes) {
  size_t at = CountAscii(bytes.data(), bytes.size());
  const std::string_view first = bytes.substr(0, at);
  Units units;
  units.reserve(bytes.size());
  units.assign(first.begin(), first.end());
  while (at < bytes.size()) {
    uint32_t code = 0;
    const std::string_view rest = bytes.substr(at);
    const size_t length = ReadSequence(rest, &code);
    if (length == 0 || (code >= 0xD800 && code <= 0xDFFF)) {
      units.push_back(static_cast<OLECHAR>(0xDC00 + ByteAt(bytes, at)));
      ++at;
    } else {
      PutUnits(code, [&](OLECHAR unit) { units.push_back(unit); });
      at += length;
    }
  }
  return units;
}

std::string SystemFromUnits(UnitsView units) {
  std::string bytes(units.size(), '\0');
  if (NarrowAscii(units.data(), units.size(), bytes.data())) return bytes;
  bytes.clear();
  for (size_t i = 0; i < units.size(); ++i) {
    const uint32_t unit = units[i];
    if (IsHighSurrogate(unit) && i + 1 < units.size() && IsLowSurrogate(units[i + 1])) {
      const uint32_t low = units[++i];
      AppendCode(0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00), &bytes);
    } else if (unit >= kFirstByteUnit && unit <= kLastByteUnit) {
      bytes.push_back(static_cast<char>(unit - 0xDC00));
    } else {
      AppendCode(IsHighSurrogate(unit) || IsLowSurrogate(unit) ? kReplacement : unit, &bytes);
    }
  }
  return bytes;
}

}  // namespace mirolta::host
