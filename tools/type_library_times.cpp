#include <string.h>

#include <string>
#include <string_view>
#include <utility>

#include "definition_files.h"

namespace mirolta {

namespace {

// The header starts with "MSFT"; the offsets of the types and the table of segments follow it.
constexpr uint32_t kMagic = 0x5446534D;
constexpr size_t kFlagsOffset = 0x14;
constexpr size_t kTypeCountOffset = 0x20;
constexpr size_t kCustomDataOffset = 0x40;
constexpr size_t kHeaderSize = 0x54;
constexpr uint32_t kHelpFileFlag = 0x100;  // the header has one more word
constexpr uint32_t kEndOfList = 0xFFFFFFFF;

// Rows of the table of segments.
constexpr size_t kSegmentRowSize = 16;
constexpr size_t kGuids = 5;
constexpr size_t kCustomData = 11;
constexpr size_t kCustomDataRows = 12;

// The names of widl's custom data: the time as a number, and a text that ends with it.
constexpr GUID kTimeNumber = {
    0xDE77BA63, 0x517C, 0x11D1, {0xA2, 0xDA, 0x00, 0x00, 0xF8, 0x77, 0x3C, 0xE9}};
constexpr GUID kTimeText = {
    0xDE77BA65, 0x517C, 0x11D1, {0xA2, 0xDA, 0x00, 0x00, 0xF8, 0x77, 0x3C, 0xE9}};

constexpr std::string_view kBeforeTime = " at ";
constexpr std::string_view kNoTime = "Thu Jan  1 00:00:00 1970\n";

// A type library's bytes. A place outside of them sets `damaged`.
class Library {
 public:
  explicit Library(std::string bytes) : bytes_(std::move(bytes)) {}

  bool Damaged() const { return damaged_; }
  const std::string& Bytes() const { return bytes_; }

  uint32_t Number(size_t offset) {
    uint32_t number = 0;
    for (size_t i = 4; i-- > 0;) number = number << 8 | static_cast<uint8_t>(Place(offset, 4)[i]);
    return number;
  }

  // The offset of a place in a segment.
  size_t InSegment(size_t segment, uint32_t offset) {
    const size_t help_file = (Number(kFlagsOffset) & kHelpFileFlag) != 0 ? 4 : 0;
    const size_t table = kHeaderSize + size_t{4} * Number(kTypeCountOffset) + help_file;
    const size_t start = Number(table + segment * kSegmentRowSize);
    return start + offset;
  }

  bool HasGuid(size_t offset, const GUID& id) {
    const char* const place = Place(offset, 16);
    return Number(offset) == id.Data1 && (Number(offset + 4) & 0xFFFF) == id.Data2 &&
           Number(offset + 4) >> 16 == id.Data3 && memcmp(place + 8, id.Data4, 8) == 0;
  }

  // A value is its VARTYPE in two bytes, then the number, or a length and a text.
  void ClearNumber(size_t value) { memset(Place(value + 2, 4), 0, 4); }

  void ClearText(size_t value) {
    const size_t length = Number(value + 2);
    char* const text = Place(value + 6, length);
    if (damaged_) return;
    const size_t time = std::string_view(text, length).find(kBeforeTime) + kBeforeTime.size();
    if (time + kNoTime.size() != length) {
      damaged_ = true;
    } else {
      kNoTime.copy(text + time, kNoTime.size());
    }
  }

 private:
  char* Place(size_t offset, size_t length) {
    if (offset < bytes_.size() && length <= bytes_.size() - offset) return &bytes_[offset];
    damaged_ = true;
    return nowhere_;
  }

  std::string bytes_;
  char nowhere_[16] = {};
  bool damaged_ = false;
};

void ClearTimes(Library& library) {
  uint32_t row = library.Number(kCustomDataOffset);
  while (row != kEndOfList && !library.Damaged()) {
    // The offset of the name, that of the value, the next row.
    const size_t place = library.InSegment(kCustomDataRows, row);
    const size_t name = library.InSegment(kGuids, library.Number(place));
    const size_t value = library.InSegment(kCustomData, library.Number(place + 4));
    if (library.HasGuid(name, kTimeNumber)) library.ClearNumber(value);
    if (library.HasGuid(name, kTimeText)) library.ClearText(value);
    row = library.Number(place + 8);
  }
}

}  // namespace

bool ClearTypeLibraryTimes(FILE* library) {
  std::string bytes;
  char buffer[4096];
  for (size_t count; (count = fread(buffer, 1, sizeof(buffer), library)) != 0;) {
    bytes.append(buffer, count);
  }
  Library cleared(std::move(bytes));
  if (cleared.Number(0) != kMagic) return false;
  ClearTimes(cleared);
  if (cleared.Damaged()) return false;
  if (fseek(library, 0, SEEK_SET) != 0) return false;
  return fwrite(cleared.Bytes().data(), 1, cleared.Bytes().size(), library) ==
         cleared.Bytes().size();
}

}  // namespace mirolta
