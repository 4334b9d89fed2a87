#include "charsets/single_byte_table.h"

#include <atomic>
#include <mutex>

#include "charsets/iconv_converter.h"

namespace mirolta::runtime {
namespace {

// Bytes that the character set leaves undefined and the platform decodes, to private-use
// characters.
struct OpenBytes {
  UINT number;
  BYTE first;
  BYTE last;
  WCHAR decoded;  // of first; consecutive
};
constexpr OpenBytes kOpenBytes[] = {
    {1253, 0xAA, 0xAA, 0xF8F9}, {1253, 0xD2, 0xD2, 0xF8FA}, {1253, 0xFF, 0xFF, 0xF8FB},
    {1255, 0xD9, 0xDF, 0xF88D}, {1255, 0xFB, 0xFC, 0xF894}, {1255, 0xFF, 0xFF, 0xF896},
    {1257, 0xA1, 0xA1, 0xF8FC}, {1257, 0xA5, 0xA5, 0xF8FD},
};

bool HasOpenControls(UINT number) {
  return number == 874 || (number >= 1250 && number <= 1258);
}

WCHAR DecodeOpenByte(UINT number, unsigned byte) {
  if (HasOpenControls(number) && byte >= 0x80 && byte <= 0x9F) return static_cast<WCHAR>(byte);
  for (const OpenBytes& row : kOpenBytes) {
    if (row.number == number && byte >= row.first && byte <= row.last) {
      return static_cast<WCHAR>(row.decoded + (byte - row.first));
    }
  }
  return kUndefinedByte;
}

// Decodes byte by byte: in a sequence the C library would compose some letters with their marks,
// which the platform does not.
bool FillTable(const CharacterSet& set, SingleByteTable* table) {
  const IconvConverter converter("UTF-16LE", set.name);
  if (!converter.IsValid()) return false;
  for (unsigned byte = 0; byte < 256; ++byte) {
    char in[1] = {static_cast<char>(byte)};
    char out[8] = {};
    char* from = in;
    char* to = out;
    size_t left = 1;
    size_t room = sizeof(out);
    const size_t failed = iconv(converter.Handle(), &from, &left, &to, &room);
    if (failed != static_cast<size_t>(-1)) iconv(converter.Handle(), nullptr, nullptr, &to, &room);
    const bool one = failed != static_cast<size_t>(-1) && to - out == 2;
    table->decoded[byte] =
        one ? static_cast<WCHAR>(static_cast<BYTE>(out[0]) | static_cast<BYTE>(out[1]) << 8)
            : DecodeOpenByte(set.number, byte);
  }

  for (unsigned count = 0; count < 256; ++count) {  // insertion sort: runs once for each set
    unsigned place = count;
    while (place > 0 && table->decoded[table->by_character[place - 1]] > table->decoded[count]) {
      table->by_character[place] = table->by_character[place - 1];
      --place;
    }
    table->by_character[place] = static_cast<BYTE>(count);
  }
  return true;
}

SingleByteTable g_tables[kCharacterSetCount];
std::atomic<bool> g_filled[kCharacterSetCount];
std::mutex g_filling;

}  // namespace

INT SingleByteTable::Encode(WCHAR character) const {
  if (character == kUndefinedByte) return -1;
  unsigned first = 0;
  unsigned last = 256;
  while (first < last) {  // invariant: the byte, if there is one, is in first..last
    const unsigned middle = (first + last) / 2;
    if (decoded[by_character[middle]] < character) {
      first = middle + 1;
    } else {
      last = middle;
    }
  }
  if (first == 256 || decoded[by_character[first]] != character) return -1;
  return by_character[first];
}

const SingleByteTable* TableOf(const CharacterSet& set) {
  const size_t index = CharacterSetIndex(set);
  // The acquire pairs with the release after filling; under the lock neither is needed.
  if (!g_filled[index].load(std::memory_order_acquire)) {
    const std::lock_guard<std::mutex> lock(g_filling);
    if (!g_filled[index].load(std::memory_order_relaxed)) {
      if (!FillTable(set, &g_tables[index])) return nullptr;
      g_filled[index].store(true, std::memory_order_release);
    }
  }
  return &g_tables[index];
}

}  // namespace mirolta::runtime
