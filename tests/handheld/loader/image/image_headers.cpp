#include "image/image_headers.h"

#include "image/problem.h"

namespace mirolta::loader {
namespace {

constexpr uint16_t kMachineThumb2 = 0x01C4;
constexpr uint16_t kImageMagic32 = 0x010B;
constexpr uint16_t kSubsystemHandheld = 9;  // Windows CE
constexpr uint16_t kFileRelocationsStripped = 0x0001;
constexpr uint16_t kFileExecutable = 0x0002;
constexpr uint16_t kFileDll = 0x2000;
constexpr uint32_t kFileHeaderSize = 24;  // with the signature
constexpr uint32_t kOptionalFieldsSize = 96;
constexpr uint32_t kSectionHeaderSize = 40;
constexpr uint16_t kMostSections = 96;
constexpr uint32_t kLargestImage = 32u << 20;  // a process has 32 MB of address space

// Directories that a loader may ignore: exceptions and debugging need the debugger, and the table
// of import addresses is found through the imports.
constexpr uint32_t kKnownDirectories = 1u << kExportDirectory | 1u << kImportDirectory |
                                       1u << kResourceDirectory | 1u << 3 |
                                       1u << kRelocationDirectory | 1u << 6 | 1u << 12;

bool IsPowerOfTwo(uint32_t number) {
  return number != 0 && (number & (number - 1)) == 0;
}

class HeaderReader {
 public:
  HeaderReader(const ImageBytes& file, ImageHeaders* headers, std::string* problem)
      : file_(file), headers_(*headers), problem_(*problem) {}

  bool Read() {
    return ReadFileHeader() && ReadOptionalHeader() && ReadSections() && CheckDirectories() &&
           CheckEntryPoint();
  }

 private:
  template <typename Number>
  Number At(uint64_t offset) const {  // of a range that was checked
    Number value = 0;
    static_cast<void>(file_.Read(offset, &value));
    return value;
  }

  bool ReadFileHeader() {
    uint16_t magic = 0;
    if (!file_.Read(0, &magic) || magic != 0x5A4D) {
      return Fail(&problem_, "not an image: it does not begin with MZ");
    }
    if (!file_.Read(0x3C, &start_) || !file_.Has(start_, kFileHeaderSize)) {
      return Fail(&problem_, "truncated: the file header is beyond the end of the file");
    }
    if (At<uint32_t>(start_) != 0x00004550) return Fail(&problem_, "no PE signature");
    const uint16_t machine = At<uint16_t>(start_ + 4);
    if (machine != kMachineThumb2) {
      return Fail(&problem_, "machine type ", Hex{machine}, ", not ARM Thumb-2 (0x1C4)");
    }
    section_count_ = At<uint16_t>(start_ + 6);
    optional_size_ = At<uint16_t>(start_ + 20);
    const uint16_t kind = At<uint16_t>(start_ + 22);
    if ((kind & kFileExecutable) == 0) return Fail(&problem_, "not linked without errors");
    if ((kind & kFileDll) == 0) return Fail(&problem_, "not a DLL");
    headers_.has_relocations = (kind & kFileRelocationsStripped) == 0;
    if (section_count_ == 0 || section_count_ > kMostSections) {
      return Fail(&problem_, section_count_, " sections");
    }
    return true;
  }

  bool ReadOptionalHeader() {
    const uint64_t optional = uint64_t{start_} + kFileHeaderSize;
    table_ = optional + optional_size_;
    if (optional_size_ < kOptionalFieldsSize || !file_.Has(optional, optional_size_)) {
      return Fail(&problem_, "truncated: the optional header is incomplete");
    }
    if (At<uint16_t>(optional) != kImageMagic32) return Fail(&problem_, "not a 32-bit image");
    headers_.entry_point = At<uint32_t>(optional + 16);
    headers_.preferred_base = At<uint32_t>(optional + 28);
    alignment_ = At<uint32_t>(optional + 32);
    const uint32_t file_alignment = At<uint32_t>(optional + 36);
    headers_.image_size = At<uint32_t>(optional + 56);
    headers_.headers_size = At<uint32_t>(optional + 60);
    const uint16_t subsystem = At<uint16_t>(optional + 68);
    const uint32_t directory_count = At<uint32_t>(optional + 92);
    if (subsystem != kSubsystemHandheld) {
      return Fail(&problem_, "subsystem ", subsystem, ", not Windows CE (9)");
    }
    if (!IsPowerOfTwo(alignment_) || alignment_ < kPageSize || !IsPowerOfTwo(file_alignment) ||
        file_alignment > alignment_) {
      return Fail(&problem_, "sections are aligned to ", Hex{alignment_}, ", in the file to ",
                  Hex{file_alignment});
    }
    if ((headers_.preferred_base & 0xFFFF) != 0) {
      return Fail(&problem_, "the base ", Hex{headers_.preferred_base}, " is not aligned");
    }
    if (headers_.image_size == 0 || headers_.image_size > kLargestImage ||
        headers_.image_size % kPageSize != 0) {
      return Fail(&problem_, "the image's size is ", Hex{headers_.image_size});
    }
    if (headers_.headers_size > file_.Size() || headers_.headers_size > headers_.image_size ||
        headers_.headers_size < table_ + uint64_t{section_count_} * kSectionHeaderSize) {
      return Fail(&problem_, "truncated: the headers' size is ", Hex{headers_.headers_size});
    }
    if (directory_count > kDirectoryCount ||
        optional_size_ < kOptionalFieldsSize + directory_count * 8) {
      return Fail(&problem_, "truncated: ", directory_count, " data directories");
    }
    for (uint32_t i = 0; i < directory_count; ++i) {
      const uint64_t at = optional + kOptionalFieldsSize + uint64_t{i} * 8;
      headers_.directories[i] = {At<uint32_t>(at), At<uint32_t>(at + 4)};
    }
    return true;
  }

  bool ReadSections() {
    uint32_t free_from = headers_.headers_size;
    for (uint32_t i = 0; i < section_count_; ++i) {
      const uint64_t at = table_ + uint64_t{i} * kSectionHeaderSize;
      ImageSection section;
      for (uint32_t k = 0; k < 8 && file_.Data()[at + k] != 0; ++k) {
        section.name += static_cast<char>(file_.Data()[at + k]);
      }
      section.memory_size = At<uint32_t>(at + 8);
      section.address = At<uint32_t>(at + 12);
      section.file_size = At<uint32_t>(at + 16);
      section.file_offset = At<uint32_t>(at + 20);
      section.characteristics = At<uint32_t>(at + 36);
      if (section.memory_size == 0) section.memory_size = section.file_size;
      if (!CheckSection(section, free_from)) return false;
      free_from = section.End();
      headers_.sections.push_back(section);
    }
    return true;
  }

  bool CheckSection(const ImageSection& section, uint32_t free_from) {
    const std::string name = "section " + section.name;
    if (section.address % alignment_ != 0) {
      return Fail(&problem_, name, " is not aligned: ", Hex{section.address});
    }
    if (section.address < free_from) {
      return Fail(&problem_, name, " overlaps what is before it");
    }
    if (section.address > headers_.image_size ||
        section.memory_size > headers_.image_size - section.address) {
      return Fail(&problem_, name, " is outside the image");
    }
    if (!file_.Has(section.file_offset, section.file_size)) {
      return Fail(&problem_, "truncated: ", name, " is beyond the end of the file");
    }
    return true;
  }

  bool CheckDirectories() {
    for (uint32_t i = 0; i < kDirectoryCount; ++i) {
      const ImageDirectory& one = headers_.directories[i];
      if (one.size == 0) continue;
      if ((kKnownDirectories >> i & 1) == 0) {
        return Fail(&problem_, "data directory ", i, ", which the system does not know");
      }
      if (i == 6) continue;  // of debug information, which may have stayed in the file
      if (one.address > headers_.image_size || one.size > headers_.image_size - one.address) {
        return Fail(&problem_, "data directory ", i, " is outside the image");
      }
    }
    return true;
  }

  bool CheckEntryPoint() {
    const uint32_t entry = headers_.entry_point & ~1u;
    if (headers_.entry_point == 0) return true;
    if ((headers_.entry_point & 1) == 0) {
      return Fail(&problem_, "the entry point is not Thumb code: ", Hex{entry});
    }
    for (const ImageSection& section : headers_.sections) {
      const bool runs = (section.characteristics & kSectionExecute) != 0;
      if (runs && entry >= section.address && entry < section.End()) return true;
    }
    return Fail(&problem_, "the entry point is outside the code: ", Hex{entry});
  }

  const ImageBytes& file_;
  ImageHeaders& headers_;
  std::string& problem_;
  uint32_t start_ = 0;  // of the PE headers
  uint32_t alignment_ = 0;
  uint64_t table_ = 0;  // of sections
  uint16_t section_count_ = 0;
  uint16_t optional_size_ = 0;
};

}  // namespace

bool ReadHeaders(const ImageBytes& file, ImageHeaders* headers, std::string* problem) {
  return HeaderReader(file, headers, problem).Read();
}

}  // namespace mirolta::loader
