// The headers of an image file: what they say, and whether the handheld's loader accepts it.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "image/image_bytes.h"

namespace mirolta::loader {

inline constexpr uint32_t kPageSize = 0x1000;

// Characteristics of a section.
inline constexpr uint32_t kSectionDiscardable = 0x02000000;
inline constexpr uint32_t kSectionExecute = 0x20000000;
inline constexpr uint32_t kSectionRead = 0x40000000;
inline constexpr uint32_t kSectionWrite = 0x80000000;

struct ImageSection {
  std::string name;
  uint32_t address = 0;  // relative to the image, like all addresses here
  uint32_t memory_size = 0;
  uint32_t file_offset = 0;
  uint32_t file_size = 0;
  uint32_t characteristics = 0;

  uint32_t End() const { return address + memory_size; }
};

struct ImageDirectory {
  uint32_t address = 0;
  uint32_t size = 0;
};

enum DirectoryIndex : uint8_t {
  kExportDirectory = 0,
  kImportDirectory = 1,
  kResourceDirectory = 2,
  kRelocationDirectory = 5,
  kDirectoryCount = 16,
};

struct ImageHeaders {
  uint32_t preferred_base = 0;
  uint32_t image_size = 0;
  uint32_t headers_size = 0;
  uint32_t entry_point = 0;  // 0: none
  bool has_relocations = true;
  std::vector<ImageSection> sections;  // in the order of their addresses
  std::array<ImageDirectory, kDirectoryCount> directories;
};

// ReadHeaders reads and checks the headers of a DLL for the handheld.
// Errors: false, with a sentence in `problem`, for what the system refuses or does not know:
//         another machine or subsystem, headers or sections outside the file or the image,
//         sections that overlap, directories outside the image or of an unknown kind, an entry
//         point outside the code.
bool ReadHeaders(const ImageBytes& file, ImageHeaders* headers, std::string* problem);

}  // namespace mirolta::loader
