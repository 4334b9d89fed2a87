#include "image/relocations.h"

#include "image/problem.h"

namespace mirolta::loader {
namespace {

enum RelocationType : uint8_t { kAbsolute = 0, kHighLow = 3, kThumbMov32 = 7 };

// The four parts of the 16-bit constant in a MOVW or MOVT (encodings T3 and T1): imm4:i:imm3:imm8.
constexpr uint16_t kMovConstantFirst = 0x040F;
constexpr uint16_t kMovConstantSecond = 0x70FF;
constexpr uint16_t kMovw = 0xF240;
constexpr uint16_t kMovt = 0xF2C0;

uint16_t Half(const uint8_t* at) {
  return static_cast<uint16_t>(at[0] | at[1] << 8);
}
void PutHalf(uint8_t* at, uint32_t value) {
  at[0] = static_cast<uint8_t>(value);
  at[1] = static_cast<uint8_t>(value >> 8);
}
uint32_t Word(const uint8_t* at) {
  return Half(at) | uint32_t{Half(at + 2)} << 16;
}
void PutWord(uint8_t* at, uint32_t value) {
  PutHalf(at, value);
  PutHalf(at + 2, value >> 16);
}

bool IsMov(const uint8_t* at, uint16_t operation) {
  return (Half(at) & ~kMovConstantFirst & 0xFFFF) == operation && (Half(at + 2) & 0x8000) == 0;
}
uint32_t MovConstant(const uint8_t* at) {
  const uint32_t first = Half(at);
  const uint32_t second = Half(at + 2);
  return (first & 0xF) << 12 | (first >> 10 & 1) << 11 | (second >> 12 & 7) << 8 | (second & 0xFF);
}
void PutMovConstant(uint8_t* at, uint32_t constant) {
  const uint32_t first = Half(at) & ~uint32_t{kMovConstantFirst};
  const uint32_t second = Half(at + 2) & ~uint32_t{kMovConstantSecond};
  PutHalf(at, first | (constant >> 12 & 0xF) | (constant >> 11 & 1) << 10);
  PutHalf(at + 2, second | (constant >> 8 & 7) << 12 | (constant & 0xFF));
}

// Whether `size` bytes at an address belong to one section.
bool IsInSection(const ImageHeaders& headers, uint64_t address, uint32_t size) {
  for (const ImageSection& section : headers.sections) {
    if (address >= section.address && address + size <= section.End()) return true;
  }
  return false;
}

class Relocator {
 public:
  Relocator(const ImageHeaders& headers, std::span<uint8_t> image, uint32_t delta,
            std::string* problem)
      : headers_(headers), image_(image), delta_(delta), problem_(*problem) {}

  bool Apply() {
    const ImageDirectory& directory = headers_.directories[kRelocationDirectory];
    const ImageBytes bytes(image_);
    for (uint64_t at = 0; at < directory.size;) {
      const uint64_t block = directory.address + at;
      const uint64_t left = directory.size - at;
      uint32_t page = 0;
      uint32_t size = 0;
      if (left < 8 || !bytes.Read(block, &page) || !bytes.Read(block + 4, &size) || size < 8 ||
          size > left || size % 4 != 0) {
        return Fail(&problem_, "a block of relocations is outside their directory");
      }
      for (uint32_t entry = 8; entry < size; entry += 2) {
        uint16_t value = 0;
        static_cast<void>(bytes.Read(block + entry, &value));
        const uint64_t place = uint64_t{page} + (value & 0xFFF);
        if (!ApplyOne(static_cast<uint8_t>(value >> 12), place)) return false;
      }
      at += size;
    }
    return true;
  }

 private:
  bool ApplyOne(uint8_t type, uint64_t place) {
    if (type == kAbsolute) return true;
    if (type != kHighLow && type != kThumbMov32) {
      return Fail(&problem_, "relocation type ", unsigned{type},
                  ", which the system does not know");
    }
    if (!IsInSection(headers_, place, type == kHighLow ? 4 : 8)) {
      return Fail(&problem_, "a relocation is outside the sections");
    }
    uint8_t* const at = image_.data() + place;
    if (type == kHighLow) {
      PutWord(at, Word(at) + delta_);
      return true;
    }
    if (!IsMov(at, kMovw) || !IsMov(at + 4, kMovt)) {
      return Fail(&problem_, "a relocation of MOVW and MOVT is not at such instructions");
    }
    const uint32_t value = (MovConstant(at) | MovConstant(at + 4) << 16) + delta_;
    PutMovConstant(at, value & 0xFFFF);
    PutMovConstant(at + 4, value >> 16);
    return true;
  }

  const ImageHeaders& headers_;
  const std::span<uint8_t> image_;
  const uint32_t delta_;
  std::string& problem_;
};

}  // namespace

bool ApplyRelocations(const ImageHeaders& headers, std::span<uint8_t> image, uint32_t delta,
                      std::string* problem) {
  return Relocator(headers, image, delta, problem).Apply();
}

}  // namespace mirolta::loader
